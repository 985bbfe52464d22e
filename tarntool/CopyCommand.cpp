// copy FOLDER FILE...
#include "tarntool/Commands.h"
#include "tarntool/Failure.h"
#include "tarntool/Output.h"
#include "tarntool/Request.h"
#include "tarntool/Text.h"

#include <tarn.h>

#include <cwchar>

namespace
{
bool IsFolder(LPCWSTR psz)
{
    const DWORD nAttributes = ::GetFileAttributesW(psz);
    return nAttributes != INVALID_FILE_ATTRIBUTES && (nAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

// The library does not say why.
CString Reason(LPCWSTR pszFolder, LPCWSTR pszFile, DWORD nError)
{
    if (IsFolder(pszFile))
        return "it is a folder";
    if (::GetFileAttributesW(pszFile) == INVALID_FILE_ATTRIBUTES)
        return "there is no such file";
    if (!IsFolder(pszFolder))
        return "there is no such folder";
    return SystemErrorText(nError);
}
} // namespace

UINT CopyFiles(const Request& request)
{
    Output output(request.Value(Request::Out));
    LPCWSTR const pszFolder = request.Operand(0);
    CString strFolder = ToExactText(pszFolder);
    const std::size_t cch = std::wcslen(pszFolder);
    // The library adds no separator.
    if (cch > 0 && pszFolder[cch - 1] != L'\\' && pszFolder[cch - 1] != L'/')
        strFolder += '\\';
    for (int i = 1; i < request.GetOperandCount(); ++i)
    {
        LPCWSTR const pszFile = request.Operand(i);
        const CString strFile = ToExactText(pszFile);
        ::SetLastError(ERROR_SUCCESS);
        if (FileCopy(strFile, strFolder) == 0)
        {
            const CString strReason = Reason(pszFolder, pszFile, ::GetLastError());
            throw Failure{ExitCode::Failed, "cannot copy " + ToUtf8(pszFile) + " to " +
                                                ToUtf8(pszFolder) + ": " + strReason};
        }
        output.WriteLine("copied " + ToUtf8(pszFile));
    }
    return static_cast<UINT>(ExitCode::Done);
}
