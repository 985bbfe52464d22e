// config FOLDER
#include "tarntool/Commands.h"
#include "tarntool/Failure.h"
#include "tarntool/Output.h"
#include "tarntool/Request.h"
#include "tarntool/Text.h"

#include "install/ChrcFile.h"

#include <tarn.h>

namespace
{
CString MessageOf(CException* pException)
{
    char szText[1024];
    pException->GetErrorMessage(szText, sizeof(szText));
    return TextToUtf8(szText);
}

// As Write_ch_config_File, without the box. Returns why the file could not be opened, or nothing.
CString WriteQuietly(const CString& strFolder)
{
    CString strTrimmed = strFolder;
    if (!strFolder.IsEmpty())
    {
        const char chLast = strFolder.GetAt(strFolder.GetLength() - 1);
        if (chLast == '\\' || chLast == '/')
            strTrimmed = strFolder.Left(strFolder.GetLength() - 1);
    }
    const CString strPath = strTrimmed + "\\embedch\\config\\chrc";
    if (WriteChrcFile(strPath, strTrimmed, FALSE) != 0)
        return CString();
    const auto nError = static_cast<LONG>(::GetLastError());
    CFileException exception(CFileException::OsErrorToException(nError), nError, strPath);
    return MessageOf(&exception);
}

// What leaves the library as an exception is a failure like the others: a full disk, a folder that is
// none.
CString Write(const CString& strFolder, bool bQuiet)
{
    try
    {
        if (bQuiet)
            return WriteQuietly(strFolder);
        return Write_ch_config_File(strFolder) != 0 ? CString() : "it cannot be opened";
    }
    catch (CException* pException)
    {
        const CString strReason = MessageOf(pException);
        pException->Delete();
        return strReason;
    }
}
} // namespace

UINT WriteConfig(const Request& request)
{
    Output output(request.Value(Request::Out));
    const bool bQuiet = request.Has(Request::Quiet);
    const CString strReason = Write(ToExactText(request.Operand(0)), bQuiet);
    if (strReason.IsEmpty())
        return static_cast<UINT>(ExitCode::Done);
    if (bQuiet)
        output.WriteLine(strReason);
    throw Failure{ExitCode::Failed, "the start-up file is not written: " + strReason};
}
