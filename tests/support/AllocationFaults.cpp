#include "tests/support/AllocationFaults.h"

namespace
{
struct State
{
    DWORD nThreadID;
    int nUntilFailure; // 0: not armed
    bool bStaysOut;
    bool bFailed;
};
State g_state;

bool Fails()
{
    if (g_state.nUntilFailure == 0 || ::GetCurrentThreadId() != g_state.nThreadID)
        return false;
    if (g_state.nUntilFailure > 1)
    {
        --g_state.nUntilFailure;
        return false;
    }
    if (g_state.bFailed && !g_state.bStaysOut)
        return false;
    g_state.bFailed = true;
    return true;
}

template <class... Arguments>
bool IsOfInterest(Arguments... /*arguments*/)
{
    return true;
}

// Going back to the process's own context, which is null, succeeds: Wine's controls of version 6, which
// the library keeps away from that way, leave memory behind.
bool IsOfInterest(HANDLE hActCtx, ULONG_PTR* /*pCookie*/)
{
    return hActCtx != nullptr;
}

// Stands in for one function of the system. The system's own is asked for by name, since this program
// may be the patched module.
template <int nFunction, class Function>
struct Replacement;

template <int nFunction, class Result, class... Arguments>
struct Replacement<nFunction, Result(WINAPI*)(Arguments...)>
{
    static inline Result(WINAPI* s_pfnOriginal)(Arguments...) = nullptr;
    static inline Result s_failure = Result();
    static inline DWORD s_nError = ERROR_SUCCESS;

    static Result WINAPI Call(Arguments... arguments)
    {
        if (IsOfInterest(arguments...) && Fails())
        {
            ::SetLastError(s_nError);
            return s_failure;
        }
        return s_pfnOriginal(arguments...);
    }
};

template <int nFunction, class Function, class Result>
void Patch(std::vector<std::unique_ptr<ImportPatch>>& patches, HMODULE hModule,
           Function /*pfnModel*/, const char* pszName, Result failure,
           DWORD nError = ERROR_NOT_ENOUGH_MEMORY)
{
    using Stand = Replacement<nFunction, Function>;
    auto pPatch =
        std::make_unique<ImportPatch>(hModule, pszName, reinterpret_cast<void*>(&Stand::Call));
    if (!pPatch->IsActive())
        return;
    Stand::s_pfnOriginal = reinterpret_cast<Function>(pPatch->Original());
    Stand::s_failure = failure;
    Stand::s_nError = nError;
    patches.push_back(std::move(pPatch));
}
} // namespace

AllocationFaults::AllocationFaults(HMODULE hModule)
{
    g_state = {};
    g_state.nThreadID = ::GetCurrentThreadId();
    Patch<0>(m_patches, hModule, &::HeapAlloc, "HeapAlloc", nullptr);
    Patch<1>(m_patches, hModule, &::HeapCreate, "HeapCreate", nullptr);
    Patch<2>(m_patches, hModule, &::TlsAlloc, "TlsAlloc", TLS_OUT_OF_INDEXES);
    Patch<3>(m_patches, hModule, &::TlsSetValue, "TlsSetValue", FALSE);
    Patch<4>(m_patches, hModule, &::CreateActCtxA, "CreateActCtxA", INVALID_HANDLE_VALUE);
    Patch<5>(m_patches, hModule, &::ActivateActCtx, "ActivateActCtx", FALSE);
    Patch<6>(m_patches, hModule, &::CreateDialogParamA, "CreateDialogParamA", nullptr);
}

AllocationFaults::~AllocationFaults()
{
    Disarm();
}

void AllocationFaults::Arm(int n, After after)
{
    g_state.bFailed = false;
    g_state.bStaysOut = after == After::StaysOut;
    g_state.nUntilFailure = n;
}

bool AllocationFaults::Disarm()
{
    g_state.nUntilFailure = 0;
    return g_state.bFailed;
}
