#include "install/ChrcText.h"

#include "install/ChrcTemplate.h"
#include "install/PathHelpers.h"

CString MakeChrcText(CString strFolder)
{
    int nLength = strFolder.GetLength();
    if (nLength > 0)
    {
        // Not asked again whether anything is left: a folder of separators only is the caller's
        // mistake and must not pass for the root, so the index -1 throws.
        while (IsSeparator(strFolder.GetAt(nLength - 1)))
            --nLength;
        strFolder = strFolder.Left(nLength);
    }
    strFolder.Replace("\\", "\\\\");
    // Folders that were put together with one separator too many come out with one less.
    strFolder.Replace("\\\\\\", "\\\\");

    CString strText(kChrcTemplate);
    strText.Replace(kChrcFolderMarker, strFolder);
    return strText;
}
