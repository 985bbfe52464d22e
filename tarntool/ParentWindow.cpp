#include "tarntool/ParentWindow.h"

#include "tarntool/Failure.h"
#include "tarntool/ScopedHandle.h"
#include "tarntool/Text.h"

namespace
{
constexpr DWORD kPatienceMilliseconds = 1000;

int DigitOf(WCHAR ch)
{
    if (ch >= L'0' && ch <= L'9')
        return ch - L'0';
    const auto chLower = static_cast<WCHAR>(ch | 0x20);
    return chLower >= L'a' && chLower <= L'f' ? chLower - L'a' + 10 : 99;
}

// Decimal, also negative as a 32-bit script writes a large one, or hexadecimal with 0x. All handles of
// windows have 32 bits that count.
bool ReadHandle(LPCWSTR psz, HWND* phWnd)
{
    const bool bNegative = *psz == L'-';
    if (bNegative)
        ++psz;
    int nBase = 10;
    if (psz[0] == L'0' && (psz[1] | 0x20) == L'x')
    {
        nBase = 16;
        psz += 2;
    }
    if (*psz == L'\0')
        return false;
    LONGLONG n = 0;
    for (; *psz != L'\0'; ++psz)
    {
        const int nDigit = DigitOf(*psz);
        if (nDigit >= nBase)
            return false;
        n = n * nBase + nDigit;
        if (n > (bNegative ? 0x80000000LL : 0xFFFFFFFFLL))
            return false;
    }
    *phWnd = reinterpret_cast<HWND>(static_cast<LONG_PTR>(static_cast<LONG>(bNegative ? -n : n)));
    return true;
}

struct EnableCall
{
    HWND hWnd;
    BOOL bEnable;
};

// On a thread of its own; the call may outlive the function that started it, hence static.
EnableCall g_enableCalls[2];

DWORD WINAPI EndThread(LPVOID hInstaller)
{
    ::WaitForSingleObject(hInstaller, INFINITE);
    ::TerminateProcess(::GetCurrentProcess(), static_cast<UINT>(ExitCode::Cancelled));
    return 0;
}

DWORD WINAPI EnableThread(LPVOID pCall)
{
    const EnableCall& call = *static_cast<EnableCall*>(pCall);
    ::EnableWindow(call.hWnd, call.bEnable);
    return 0;
}
} // namespace

HWND GetParentWindow(const Request& request)
{
    LPCWSTR const psz = request.Value(Request::Parent);
    if (psz == nullptr)
        return nullptr;
    HWND hWnd = nullptr;
    if (!ReadHandle(psz, &hWnd))
        throw Failure{ExitCode::WrongArguments,
                      "--parent needs the number of a window, not \"" + ToUtf8(psz) + "\""};
    if (hWnd == nullptr)
        return nullptr;
    HWND const hWndRoot = ::GetAncestor(hWnd, GA_ROOT);
    if (hWndRoot == nullptr)
        throw Failure{ExitCode::WrongArguments, "there is no window " + ToUtf8(psz)};
    return hWndRoot;
}

HANDLE OpenInstaller(HWND hWnd)
{
    DWORD nProcessID = 0;
    if (hWnd == nullptr || ::GetWindowThreadProcessId(hWnd, &nProcessID) == 0)
        return nullptr;
    return ::OpenProcess(SYNCHRONIZE, FALSE, nProcessID);
}

void EndWithInstaller(HWND hWnd)
{
    HANDLE const hInstaller = OpenInstaller(hWnd); // the thread's, for the rest of the process
    if (hInstaller != nullptr)
        ScopedHandle(::CreateThread(nullptr, 0, &EndThread, hInstaller, 0, nullptr));
}

bool Answers(HWND hWnd)
{
    DWORD_PTR nResult = 0;
    return ::SendMessageTimeoutW(hWnd, WM_NULL, 0, 0, SMTO_ABORTIFHUNG, kPatienceMilliseconds,
                                 &nResult) != 0;
}

void EnableForeignWindow(HWND hWnd, BOOL bEnable)
{
    EnableCall& call = g_enableCalls[bEnable ? 1 : 0];
    call.hWnd = hWnd;
    call.bEnable = bEnable;
    const ScopedHandle thread(::CreateThread(nullptr, 0, &EnableThread, &call, 0, nullptr));
    if (thread.IsValid())
        ::WaitForSingleObject(thread, kPatienceMilliseconds);
}
