#include <afxwin.h>

#include "tests/support/Host.h"
#include "tests/support/RoundCost.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <type_traits>

namespace
{
// One application object, of static life, like a program's.
class HostApp : public CWinApp
{
};
HostApp g_app;

static_assert(!std::is_copy_constructible_v<AFX_MODULE_STATE>, "two would release one context");
static_assert(!std::is_copy_constructible_v<AFX_MAINTAIN_STATE2>, "two would end one call");
static_assert(!std::is_copy_constructible_v<TrackedState>, "two would end one call");

std::string ModuleName()
{
    char szPath[MAX_PATH];
    ::GetModuleFileNameA(nullptr, szPath, MAX_PATH);
    std::string name = szPath;
    name = name.substr(name.rfind('\\') + 1);
    return name.substr(0, name.rfind('.'));
}

TEST(CWinApp, IsNamedAfterItsModuleWithoutFolderAndExtension)
{
    EXPECT_EQ(ModuleName(), g_app.m_pszAppName);
    EXPECT_EQ(ModuleName(), AfxGetAppName());
}

TEST(CWinApp, KeepsTheNameThatItIsGiven)
{
    {
        const CWinApp app("A name of its own");
        EXPECT_STREQ(AfxGetAppName(), "A name of its own");
    }
    EXPECT_EQ(AfxGetAppName(), nullptr) << "it is gone, and no other one took its place";
    GetCurrentModuleState()->m_pCurrentWinApp = &g_app;
}

TEST(CWinApp, ThatGoesLeavesALaterOneInItsPlace)
{
    auto pFirst = std::make_unique<CWinApp>("first");
    {
        const CWinApp second("second");
        EXPECT_EQ(AfxGetApp(), &second);
        pFirst.reset();
        EXPECT_EQ(AfxGetApp(), &second);
    }
    GetCurrentModuleState()->m_pCurrentWinApp = &g_app;
}

TEST(CWinApp, IsTheOneOfTheModuleThatIsCurrent)
{
    EXPECT_EQ(AfxGetApp(), &g_app);
    EXPECT_EQ(AfxGetThread(), &g_app);
    const AFX_MAINTAIN_STATE2 guard(AfxGetStaticModuleState());
    EXPECT_NE(AfxGetApp(), &g_app);
}

TEST(CWinApp, StartsAndEndsByItsOwnAccord)
{
    EXPECT_TRUE(g_app.InitInstance());
    EXPECT_EQ(g_app.ExitInstance(), 0);
}

TEST(CWinApp, IsToldWhatTheSystemGaveToTheProgram)
{
    char szCommandLine[] = "/switch";
    HINSTANCE const hInstance = ::GetModuleHandleA(nullptr);
    EXPECT_TRUE(AfxWinInit(hInstance, nullptr, szCommandLine, SW_SHOWMAXIMIZED));
    EXPECT_EQ(g_app.m_hInstance, hInstance);
    EXPECT_EQ(g_app.m_lpCmdLine, szCommandLine);
    EXPECT_EQ(g_app.m_nCmdShow, SW_SHOWMAXIMIZED);
    EXPECT_EQ(AfxGetInstanceHandle(), hInstance);
    EXPECT_EQ(AfxGetResourceHandle(), hInstance);
}

TEST(CWinApp, NeedNotBeThereWhenTheSystemStartsTheProgram)
{
    AFX_MODULE_STATE own(FALSE, &AfxWndProc);
    AFX_MODULE_STATE* const pBefore = SetCurrentModuleState(&own);
    HINSTANCE const hInstance = ::GetModuleHandleA("kernel32.dll"); // not what it starts with
    EXPECT_TRUE(AfxWinInit(hInstance, nullptr, nullptr, SW_SHOW));
    EXPECT_EQ(AfxGetInstanceHandle(), hInstance);
    EXPECT_EQ(AfxGetResourceHandle(), hInstance);
    EXPECT_EQ(AfxGetApp(), nullptr);
    SetCurrentModuleState(pBefore);
}

TEST(ModuleState, IsAProgramsOrALibrarys)
{
    EXPECT_NE(AfxGetStaticModuleState(), GetDefaultModuleState());
    EXPECT_EQ(GetCurrentModuleState(), GetDefaultModuleState());
    EXPECT_FALSE(GetDefaultModuleState()->m_bDLL);
    EXPECT_EQ(GetDefaultModuleState()->m_pfnWndProc, &AfxWndProc);
    EXPECT_TRUE(AfxGetStaticModuleState()->m_bDLL);
    EXPECT_EQ(AfxGetStaticModuleState()->m_pfnWndProc, &LibraryWndProc);
}

TEST(ModuleState, IsSetAndGivenBack)
{
    AFX_MODULE_STATE own(FALSE, &AfxWndProc);
    AFX_MODULE_STATE* const pBefore = GetCurrentModuleState();
    EXPECT_EQ(SetCurrentModuleState(&own), pBefore);
    EXPECT_EQ(GetCurrentModuleState(), &own);
    EXPECT_EQ(SetCurrentModuleState(nullptr), &own);
    EXPECT_EQ(GetCurrentModuleState(), GetDefaultModuleState());
}

TEST(ModuleState, BelongsToTheThread)
{
    AFX_MODULE_STATE own(FALSE, &AfxWndProc);
    const AFX_MAINTAIN_STATE2 guard(&own);
    AFX_MODULE_STATE* pOther = nullptr;
    HANDLE const hThread = ::CreateThread(
        nullptr, 0,
        [](LPVOID ppState) -> DWORD {
            *static_cast<AFX_MODULE_STATE**>(ppState) = GetCurrentModuleState();
            return 0;
        },
        &pOther, 0, nullptr);
    ASSERT_EQ(::WaitForSingleObject(hThread, 60000), WAIT_OBJECT_0);
    ::CloseHandle(hThread);
    EXPECT_EQ(pOther, GetDefaultModuleState());
    EXPECT_EQ(GetCurrentModuleState(), &own);
}

TEST(ThreadState, IsTheSameForEachCallOfAThread)
{
    EXPECT_NE(GetThreadState(), nullptr);
    EXPECT_EQ(GetThreadState(), GetThreadState());
}

// Looks at the guard's fields, which it may as a derived class.
class GuardFields : public AFX_MAINTAIN_STATE2
{
public:
    using AFX_MAINTAIN_STATE2::AFX_MAINTAIN_STATE2;
    struct Offsets
    {
        std::ptrdiff_t nPrevious, nThread, nCookie, nValid;
    };
    Offsets Get() const
    {
        const auto* const pBase = reinterpret_cast<const char*>(this);
        return {reinterpret_cast<const char*>(&m_pPrevModuleState) - pBase,
                reinterpret_cast<const char*>(&m_pThreadState) - pBase,
                reinterpret_cast<const char*>(&m_ulActCtxCookie) - pBase,
                reinterpret_cast<const char*>(&m_bValidActCtxCookie) - pBase};
    }
    AFX_MODULE_STATE* Previous() const { return m_pPrevModuleState; }
    ThreadState* Thread() const { return m_pThreadState; }
    BOOL IsCookieValid() const { return m_bValidActCtxCookie; }
};

TEST(MaintainState, HoldsFourFieldsInTheirOrder)
{
    const GuardFields guard(AfxGetStaticModuleState());
    const GuardFields::Offsets offsets = guard.Get();
    EXPECT_EQ(offsets.nPrevious, 0);
    EXPECT_EQ(offsets.nThread, 8);
    EXPECT_EQ(offsets.nCookie, 16);
    EXPECT_EQ(offsets.nValid, 24);
    EXPECT_EQ(sizeof(AFX_MAINTAIN_STATE2), 32U);
    EXPECT_EQ(guard.Thread(), GetThreadState());
    EXPECT_FALSE(guard.IsCookieValid()); // this program carries no manifest for the library
}

TEST(MaintainState, MakesAStateCurrentForABlock)
{
    AFX_MODULE_STATE first(TRUE, &LibraryWndProc);
    AFX_MODULE_STATE second(TRUE, &LibraryWndProc);
    AFX_MODULE_STATE* const pHost = GetCurrentModuleState();
    {
        AFX_MANAGE_STATE(&first);
        EXPECT_EQ(GetCurrentModuleState(), &first);
        {
            const GuardFields guard(&second);
            EXPECT_EQ(GetCurrentModuleState(), &second);
            EXPECT_EQ(guard.Previous(), &first);
        }
        EXPECT_EQ(GetCurrentModuleState(), &first);
        {
            const GuardFields guard(&first);
            EXPECT_EQ(GetCurrentModuleState(), &first);
        }
        EXPECT_EQ(GetCurrentModuleState(), &first);
    }
    EXPECT_EQ(GetCurrentModuleState(), pHost);
}

TEST(MaintainState, RestoresTheStateWhenAnExceptionPasses)
{
    AFX_MODULE_STATE own(TRUE, &LibraryWndProc);
    AFX_MODULE_STATE* const pHost = GetCurrentModuleState();
    try
    {
        AFX_MANAGE_STATE(&own);
        AfxThrowInvalidArgException();
    }
    catch (CInvalidArgException* pException)
    {
        EXPECT_EQ(GetCurrentModuleState(), pHost);
        pException->Delete();
    }
    EXPECT_EQ(GetCurrentModuleState(), pHost);
}

TEST(MaintainState, LeavesTheHostsContextActiveAfterwards)
{
    const HostContext context;
    ASSERT_TRUE(context.IsActive());
    {
        AFX_MANAGE_STATE(AfxGetStaticModuleState());
        EXPECT_EQ(HostContext::Current(), context.Handle()); // it has none of its own here
    }
    EXPECT_TRUE(context.IsActive());
}

TEST(ActivationContext, IsActivatedAndDeactivated)
{
    HANDLE hContext = nullptr;
    {
        const HostContext outer;
        ASSERT_TRUE(outer.IsActive());
        hContext = outer.Handle();
        const HostContext inner;
        ASSERT_TRUE(inner.IsActive());
        ULONG_PTR nCookie = 0;
        ASSERT_TRUE(AfxActivateActCtx(hContext, &nCookie));
        EXPECT_NE(nCookie, 0U);
        EXPECT_EQ(HostContext::Current(), hContext);
        EXPECT_TRUE(AfxDeactivateActCtx(0, nCookie));
        EXPECT_TRUE(inner.IsActive());
    }
    EXPECT_EQ(HostContext::Current(), nullptr);
}

TEST(ActivationContext, IsNotActivatedWhenThereIsNone)
{
    ULONG_PTR nCookie = 4711;
    EXPECT_FALSE(AfxActivateActCtx(INVALID_HANDLE_VALUE, &nCookie));
    EXPECT_EQ(nCookie, 4711U);
    EXPECT_EQ(HostContext::Current(), nullptr);
}

// The library linked statically, as here.
TEST(ThreadState, IsGivenBackByAThreadThatEnds)
{
    EXPECT_TRUE(LeavesNothingBehind([] {
        for (int i = 0; i < 100; ++i)
        {
            HANDLE const hThread = ::CreateThread(
                nullptr, 0,
                [](LPVOID /*pParameter*/) -> DWORD { return GetThreadState() != nullptr; }, nullptr,
                0, nullptr);
            ASSERT_EQ(::WaitForSingleObject(hThread, 60000), WAIT_OBJECT_0);
            DWORD nMade = FALSE;
            ASSERT_TRUE(::GetExitCodeThread(hThread, &nMade) && nMade != FALSE);
            ::CloseHandle(hThread);
        }
    }));
}
} // namespace
