#include "install/PathHelpers.h"

CString AddTrailingSeparator(CString strPath)
{
    if (strPath.IsEmpty())
        return strPath;
    if (!IsSeparator(strPath.GetAt(strPath.GetLength() - 1)))
        strPath += '\\';
    return strPath;
}

void RemoveTrailingSeparator(CString& strPath)
{
    if (!strPath.IsEmpty() && IsSeparator(strPath.GetAt(strPath.GetLength() - 1)))
        strPath = strPath.Left(strPath.GetLength() - 1);
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): by value is part of the interface
CString FileNamePart(CString strPath)
{
    const int nBackslash = strPath.ReverseFind('\\');
    const int nSlash = strPath.ReverseFind('/');
    return strPath.Mid((nBackslash > nSlash ? nBackslash : nSlash) + 1);
}
