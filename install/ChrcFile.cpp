#include "install/ChrcFile.h"

#include "install/ChrcText.h"

CString ChrcPath(const CString& strFolder)
{
    return strFolder + "\\embedch\\config\\chrc";
}

int WriteChrcFile(LPCTSTR pszPath, LPCTSTR pszFolder, BOOL bReportErrors)
{
    return WriteChrcText(pszPath, MakeChrcText(pszFolder), bReportErrors);
}

int WriteChrcText(LPCTSTR pszPath, const CString& strText, BOOL bReportErrors)
{
    CFile file;
    CFileException exception;
    if (!file.Open(pszPath, CFile::modeCreate | CFile::modeWrite | CFile::shareExclusive,
                   &exception))
    {
        if (bReportErrors)
            exception.ReportError();
        return 0;
    }
    file.Write(strText.GetString(), static_cast<UINT>(strText.GetLength()));
    file.Close();
    return 1;
}
