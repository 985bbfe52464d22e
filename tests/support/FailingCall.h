// FailingCall: a system function that fails for one module, without doing anything, for as long as the
// object lives. One at a time; of any number of parameters, since the caller cleans the stack.
#pragma once

#include "tests/support/ImportPatch.h"

class FailingCall
{
public:
    FailingCall(HMODULE hModule, const char* pszFunction, ULONG_PTR nResult = 0,
                DWORD nError = ERROR_NOT_ENOUGH_MEMORY)
        : m_patch(hModule, pszFunction, reinterpret_cast<void*>(&FailingCall::Fail))
    {
        s_nResult = nResult;
        s_nError = nError;
        s_nCalls = 0;
    }
    FailingCall(const FailingCall&) = delete;
    FailingCall& operator=(const FailingCall&) = delete;

    // False when the module has no such import.
    bool IsActive() const { return m_patch.IsActive(); }
    // How often the module asked, and was refused.
    static int Calls() { return s_nCalls; }

private:
    static ULONG_PTR WINAPI Fail()
    {
        ::InterlockedIncrement(&s_nCalls);
        ::SetLastError(s_nError);
        return s_nResult;
    }

    static inline ULONG_PTR s_nResult = 0;
    static inline DWORD s_nError = 0;
    static inline volatile LONG s_nCalls = 0;

    ImportPatch m_patch;
};
