// config FOLDER
#include "tarntool/Commands.h"
#include "tarntool/Failure.h"
#include "tarntool/Output.h"
#include "tarntool/Request.h"
#include "tarntool/Text.h"

#include "install/ChrcFile.h"
#include "install/ChrcText.h"
#include "install/PathHelpers.h"

namespace
{
CString MessageOf(CException* pException)
{
    char szText[1024];
    pException->GetErrorMessage(szText, sizeof(szText));
    return TextToUtf8(szText);
}

// As Write_ch_config_File, except for the code page of the text: that function has the caller's, which is
// the system's in an ordinary installer and in the interpreter, and UTF-8 here. Returns why the file was
// not written, or nothing.
CString WriteFor(const CString& strFolder, bool bReportErrors)
{
    CString strTrimmed = strFolder;
    RemoveTrailingSeparator(strTrimmed);
    const CString strPath = ChrcPath(strTrimmed);
    CString strText;
    if (!ToSystemCodePage(MakeChrcText(strTrimmed), &strText))
        return "the interpreter reads it in the system's code page, " +
               NumberText(GetSystemCodePage()) + ", which cannot say " + TextToUtf8(strFolder);
    if (WriteChrcText(strPath, strText, bReportErrors) != 0)
        return CString();
    if (bReportErrors)
        return "it cannot be opened"; // the box has said why
    const auto nError = static_cast<LONG>(::GetLastError());
    CFileException exception(CFileException::OsErrorToException(nError), nError, strPath);
    return MessageOf(&exception);
}

// What leaves the library as an exception is a failure like the others: a full disk, a folder that is
// none.
CString Write(const CString& strFolder, bool bReportErrors)
{
    try
    {
        return WriteFor(strFolder, bReportErrors);
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
    const CString strReason = Write(ToExactText(request.Operand(0)), !bQuiet);
    if (strReason.IsEmpty())
        return static_cast<UINT>(ExitCode::Done);
    if (bQuiet)
        output.WriteLine(strReason);
    throw Failure{ExitCode::Failed, "the start-up file is not written: " + strReason};
}
