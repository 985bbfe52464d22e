// What every export does before and after its own work, with each call failing in turn; and several
// threads and several copies of the library that have a fault at the same time.
#include "tests/support/CleanFault.h"
#include "tests/support/FailingCall.h"
#include "tests/support/Host.h"
#include "tests/support/LoadedTarn.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <vector>

namespace
{
// 1 for an address that is right, as documented; on the library's heap, not on the stack.
int Verify(const LoadedTarn& tarn)
{
    std::string address = std::string(700, 'x') + "@b.c";
    char szMessage[80] = "";
    int nPosition = 0;
    return tarn.VerifyEmail(&address[0], &nPosition, szMessage);
}

enum class Came
{
    Result,
    MemoryException,
    OtherException
};

Came CallVerify(const LoadedTarn& tarn, int& nResult)
{
    try
    {
        nResult = Verify(tarn);
        return Came::Result;
    }
    catch (CMemoryException* pException)
    {
        pException->Delete();
        return Came::MemoryException;
    }
    catch (...)
    {
        return Came::OtherException;
    }
}

struct Fault
{
    const char* pszFunction;
    ULONG_PTR nResult;
    Came came;
};

class FrameFault : public testing::TestWithParam<Fault>
{
protected:
    // Another file, so that loading it is the first time; not again under the same name, though.
    FrameFault() : path(folder / "tarn copy.dll")
    {
        ::CopyFileA(LoadedTarn::Path().c_str(), path.c_str(), FALSE);
    }

    TempFolder folder;
    std::string path;
    HostContext context; // of the host, active
};

INSTANTIATE_TEST_SUITE_P(
    OfTheFirstCall, FrameFault,
    testing::Values(Fault{"HeapCreate", 0, Came::MemoryException},
                    Fault{"HeapAlloc", 0, Came::MemoryException},
                    Fault{"TlsAlloc", TLS_OUT_OF_INDEXES, Came::MemoryException},
                    Fault{"TlsSetValue", FALSE, Came::MemoryException},
                    // Not needed to do the work.
                    Fault{"CreateActCtxA", ~ULONG_PTR{0}, Came::Result},
                    Fault{"ActivateActCtx", FALSE, Came::Result},
                    // Nothing can be done about these, and nothing depends on them.
                    Fault{"HeapFree", FALSE, Came::Result}),
    [](const testing::TestParamInfo<Fault>& tested) { return tested.param.pszFunction; });

TEST_P(FrameFault, EndsAsDocumentedAndTheNextCallWorks)
{
    EXPECT_TRUE(LeavesNothingBehind([this] {
        const LoadedTarn tarn(path);
        ASSERT_TRUE(tarn.IsComplete());
        const CallersState before = CallersState::Now();
        for (int i = 0; i < 2; ++i)
        {
            const FailingCall failing(tarn.Module(), GetParam().pszFunction, GetParam().nResult);
            ASSERT_TRUE(failing.IsActive());
            int nResult = 0;
            EXPECT_EQ(CallVerify(tarn, nResult), GetParam().came);
            EXPECT_EQ(nResult, GetParam().came == Came::Result ? 1 : 0);
            EXPECT_GE(FailingCall::Calls(), 1);
            EXPECT_EQ(CallersState::Now(), before);
            EXPECT_TRUE(context.IsActive());
        }
        EXPECT_EQ(Verify(tarn), 1);
        EXPECT_TRUE(context.IsActive());
        EXPECT_EQ(CallersState::Now(), before);
    }));
}

// A context that could not be made is tried again.
TEST(FrameFaultOfTheContext, IsMadeGoodByTheNextCall)
{
    const TempFolder folder;
    const std::string path = folder / "tarn copy.dll";
    ASSERT_TRUE(::CopyFileA(LoadedTarn::Path().c_str(), path.c_str(), TRUE));
    const HostContext context;
    ExpectCleanFault(
        1,
        [&path] {
            const LoadedTarn tarn(path);
            for (int i = 1; i <= 2; ++i)
            {
                const FailingCall failing(tarn.Module(), "CreateActCtxA", ~ULONG_PTR{0});
                EXPECT_EQ(Verify(tarn), 1);
                EXPECT_EQ(Verify(tarn), 1);
                EXPECT_EQ(FailingCall::Calls(), 2);
            }
            EXPECT_EQ(Verify(tarn), 1);
            const FailingCall failing(tarn.Module(), "CreateActCtxA", ~ULONG_PTR{0});
            const int nResult = Verify(tarn);
            EXPECT_EQ(FailingCall::Calls(), 0) << "there is one now";
            return nResult;
        },
        [&path] { EXPECT_EQ(Verify(LoadedTarn(path)), 1); });
}

BOOL WINAPI DeactivateAndSayNo(DWORD nFlags, ULONG_PTR nCookie)
{
    ::DeactivateActCtx(nFlags, nCookie);
    return FALSE;
}

// Only what the call returns is wrong here; see below for what it does.
TEST(FrameFaultOfTheContext, InDeactivationChangesNoResult)
{
    const LoadedTarn tarn;
    const HostContext context;
    ExpectCleanFault(
        1,
        [&] {
            const ImportPatch patch(tarn.Module(), "DeactivateActCtx",
                                    reinterpret_cast<void*>(&DeactivateAndSayNo));
            EXPECT_TRUE(patch.IsActive());
            return Verify(tarn);
        },
        [&] { EXPECT_EQ(Verify(tarn), 1); });
}

struct Refused
{
    const LoadedTarn* pTarn;
    int nResult;
    int nRefused;
    bool bStays; // the library's context, on the thread
};

DWORD WINAPI CallAndRefuse(LPVOID pRefused)
{
    auto& refused = *static_cast<Refused*>(pRefused);
    HANDLE const hBefore = HostContext::Current();
    const FailingCall failing(refused.pTarn->Module(), "DeactivateActCtx", FALSE);
    refused.nResult = Verify(*refused.pTarn);
    refused.nRefused = FailingCall::Calls();
    refused.bStays = HostContext::Current() != hBefore;
    return 0;
}

// Nobody else can take it away; the thread takes it along when it ends.
TEST(FrameFaultOfTheContext, ThatStaysActiveIsOnThatThreadOnly)
{
    const LoadedTarn tarn;
    ASSERT_TRUE(tarn.IsComplete());
    const HostContext context;
    ExpectCleanFault(
        1,
        [&] {
            Refused refused = {&tarn, 0, 0, false};
            HANDLE const hThread = ::CreateThread(nullptr, 0, &CallAndRefuse, &refused, 0, nullptr);
            EXPECT_EQ(::WaitForSingleObject(hThread, 60000), WAIT_OBJECT_0);
            ::CloseHandle(hThread);
            EXPECT_EQ(refused.nRefused, 1);
            EXPECT_TRUE(refused.bStays);
            EXPECT_TRUE(context.IsActive());
            return refused.nResult;
        },
        [&] {
            EXPECT_EQ(Verify(tarn), 1);
            EXPECT_TRUE(context.IsActive());
        });
}

// Two threads: one has no memory, the other one has.
DWORD g_nPoorThread = 0;

LPVOID WINAPI AllocForTheRich(HANDLE hHeap, DWORD nFlags, SIZE_T cb)
{
    return ::GetCurrentThreadId() == g_nPoorThread ? nullptr : ::HeapAlloc(hHeap, nFlags, cb);
}

struct Work
{
    const LoadedTarn* pTarn;
    int nCalls;
    volatile LONG nWrong;
};

DWORD WINAPI CallMany(LPVOID pWork)
{
    auto& work = *static_cast<Work*>(pWork);
    for (int i = 0; i < work.nCalls; ++i)
    {
        int nResult = 0;
        if (CallVerify(*work.pTarn, nResult) != Came::Result || nResult != 1)
            ::InterlockedIncrement(&work.nWrong);
    }
    return 0;
}

TEST(FrameFaultOfOneThread, IsNoOtherThreads)
{
    const LoadedTarn tarn;
    ASSERT_TRUE(tarn.IsComplete());
    EXPECT_EQ(Verify(tarn), 1);
    g_nPoorThread = ::GetCurrentThreadId();
    ExpectCleanFault(
        500,
        [&tarn] {
            const ImportPatch patch(tarn.Module(), "HeapAlloc",
                                    reinterpret_cast<void*>(&AllocForTheRich));
            EXPECT_TRUE(patch.IsActive());
            Work work = {&tarn, 500, 0};
            std::vector<HANDLE> threads;
            for (int i = 0; i < 4; ++i)
                threads.push_back(::CreateThread(nullptr, 0, &CallMany, &work, 0, nullptr));
            int nRefused = 0;
            for (int i = 0; i < 500; ++i)
            {
                int nResult = 0;
                nRefused += CallVerify(tarn, nResult) == Came::MemoryException ? 1 : 0;
            }
            for (HANDLE const hThread : threads)
            {
                EXPECT_EQ(::WaitForSingleObject(hThread, 60000), WAIT_OBJECT_0);
                ::CloseHandle(hThread);
            }
            EXPECT_EQ(work.nWrong, 0);
            return nRefused;
        },
        [&tarn] { EXPECT_EQ(Verify(tarn), 1); });
}

DWORD WINAPI CallOnceInVain(LPVOID pTarn)
{
    int nResult = 0;
    return CallVerify(*static_cast<const LoadedTarn*>(pTarn), nResult) == Came::MemoryException;
}

// Each has a place of its own for what it throws, although there is no memory for one.
TEST(FrameFaultOfOneThread, MayBeAnothersAtTheSameTime)
{
    const TempFolder folder;
    const std::string path = folder / "tarn copy.dll";
    ASSERT_TRUE(::CopyFileA(LoadedTarn::Path().c_str(), path.c_str(), TRUE));
    LoadedTarn tarn(path);
    ASSERT_TRUE(tarn.IsComplete());
    const FailingCall failing(tarn.Module(), "TlsSetValue", FALSE);
    for (int i = 0; i < 2; ++i)
    {
        EXPECT_TRUE(CallOnceInVain(&tarn)) << "this thread";
        HANDLE const hThread = ::CreateThread(nullptr, 0, &CallOnceInVain, &tarn, 0, nullptr);
        EXPECT_EQ(::WaitForSingleObject(hThread, 60000), WAIT_OBJECT_0);
        DWORD nExitCode = FALSE;
        ::GetExitCodeThread(hThread, &nExitCode);
        ::CloseHandle(hThread);
        EXPECT_TRUE(nExitCode) << "the other one";
    }
}

// What the library makes on first use: while one thread is at it, another one has made it already.
const LoadedTarn* g_pUsedByAnother = nullptr;

void LetAnotherThreadBeFirst()
{
    const LoadedTarn* const pTarn = g_pUsedByAnother;
    g_pUsedByAnother = nullptr;
    if (pTarn == nullptr)
        return;
    Work work = {pTarn, 1, 0};
    HANDLE const hThread = ::CreateThread(nullptr, 0, &CallMany, &work, 0, nullptr);
    EXPECT_EQ(::WaitForSingleObject(hThread, 60000), WAIT_OBJECT_0);
    ::CloseHandle(hThread);
    EXPECT_EQ(work.nWrong, 0);
}

HANDLE WINAPI HeapCreateAsTheSecond(DWORD nOptions, SIZE_T cbInitial, SIZE_T cbMaximum)
{
    LetAnotherThreadBeFirst();
    return ::HeapCreate(nOptions, cbInitial, cbMaximum);
}

DWORD WINAPI TlsAllocAsTheSecond()
{
    LetAnotherThreadBeFirst();
    return ::TlsAlloc();
}

HANDLE WINAPI CreateActCtxAsTheSecond(PCACTCTXA pActCtx)
{
    LetAnotherThreadBeFirst();
    return ::CreateActCtxA(pActCtx);
}

DWORD FirstFreeSlot()
{
    const DWORD nSlot = ::TlsAlloc();
    ::TlsFree(nSlot);
    return nSlot;
}

TEST(FrameOfTwoThreads, IsMadeOnceWhenBothAreTheFirst)
{
    const TempFolder folder;
    const std::string path = folder / "tarn copy.dll";
    ASSERT_TRUE(::CopyFileA(LoadedTarn::Path().c_str(), path.c_str(), TRUE));
    const struct
    {
        const char* pszFunction;
        void* pfnSecond;
    } cases[] = {{"HeapCreate", reinterpret_cast<void*>(&HeapCreateAsTheSecond)},
                 {"TlsAlloc", reinterpret_cast<void*>(&TlsAllocAsTheSecond)},
                 {"CreateActCtxA", reinterpret_cast<void*>(&CreateActCtxAsTheSecond)}};
    for (const auto& each : cases)
    {
        SCOPED_TRACE(each.pszFunction);
        const DWORD nSlot = FirstFreeSlot();
        EXPECT_TRUE(LeavesNothingBehind([&] {
            const LoadedTarn tarn(path);
            ASSERT_TRUE(tarn.IsComplete());
            const ImportPatch patch(tarn.Module(), each.pszFunction, each.pfnSecond);
            ASSERT_TRUE(patch.IsActive());
            g_pUsedByAnother = &tarn;
            EXPECT_EQ(Verify(tarn), 1);
            EXPECT_EQ(g_pUsedByAnother, nullptr) << "it is not made on first use";
            EXPECT_EQ(Verify(tarn), 1);
        }));
        EXPECT_EQ(FirstFreeSlot(), nSlot);
    }
}

// Each is thrown while the ones before are still being handled.
int ThrowNested(const LoadedTarn& tarn, int nDepth)
{
    if (nDepth == 0)
        return 0;
    int nCaught = 0;
    try
    {
        tarn.Write_ch_config_File("\\\\"); // a folder of separators only
    }
    catch (CInvalidArgException* pException)
    {
        nCaught = 1 + ThrowNested(tarn, nDepth - 1);
        pException->Delete();
    }
    return nCaught;
}

// More than the library has room for without asking for memory.
TEST(FrameExceptions, MayBeManyAtOnce)
{
    constexpr int kExceptions = 40;
    const LoadedTarn tarn;
    ASSERT_TRUE(tarn.IsComplete());
    EXPECT_TRUE(
        LeavesNothingBehind([&] { EXPECT_EQ(ThrowNested(tarn, kExceptions), kExceptions); }));
}

TEST(FrameFaultOfOneCopy, IsNoOtherCopys)
{
    const TempFolder folder;
    EXPECT_TRUE(LeavesNothingBehind([&folder] {
        const CallersState before = CallersState::Now();
        std::vector<std::unique_ptr<LoadedTarn>> copies;
        for (const char* const pszName : {"one.dll", "two.dll", "three.dll"})
        {
            const std::string path = folder / pszName;
            ::CopyFileA(LoadedTarn::Path().c_str(), path.c_str(), FALSE);
            copies.push_back(std::make_unique<LoadedTarn>(path));
            ASSERT_TRUE(copies.back()->IsComplete());
        }
        {
            const FailingCall failing(copies[1]->Module(), "TlsAlloc", TLS_OUT_OF_INDEXES);
            int nResult = 0;
            EXPECT_EQ(CallVerify(*copies[1], nResult), Came::MemoryException);
            EXPECT_EQ(Verify(*copies[0]), 1);
            EXPECT_EQ(Verify(*copies[2]), 1);
            copies[0].reset();
            EXPECT_EQ(CallVerify(*copies[1], nResult), Came::MemoryException);
            EXPECT_EQ(Verify(*copies[2]), 1);
        }
        EXPECT_EQ(Verify(*copies[1]), 1);
        EXPECT_EQ(CallersState::Now(), before);
    }));
}

// The name that the application takes from its module, which nothing shows but a message box.
TEST(FrameFaultOfTheModulesName, LeavesTheApplicationWithoutAName)
{
    CWinApp* const pAppBefore = GetCurrentModuleState()->m_pCurrentWinApp;
    {
        const FailingCall failing(::GetModuleHandleA(nullptr), "GetModuleFileNameA");
        ASSERT_TRUE(failing.IsActive());
        const CWinApp app(nullptr);
        EXPECT_EQ(FailingCall::Calls(), 1);
        EXPECT_STREQ(app.m_pszAppName, "");
    }
    GetCurrentModuleState()->m_pCurrentWinApp = pAppBefore;
}

std::string g_boxCaption;

int WINAPI NoteBox(HWND /*hWnd*/, LPCSTR /*pszText*/, LPCSTR pszCaption, UINT /*nType*/)
{
    g_boxCaption = pszCaption != nullptr ? pszCaption : "(null)";
    return IDOK;
}

// The caption of the box that tells of a folder that is not there.
std::string CaptionOf(const LoadedTarn& tarn, const TempFolder& folder)
{
    const ImportPatch patch(tarn.Module(), "MessageBoxA", reinterpret_cast<void*>(&NoteBox));
    EXPECT_TRUE(patch.IsActive());
    g_boxCaption = "(none)";
    EXPECT_EQ(tarn.Write_ch_config_File((folder / "missing").c_str()), 0);
    return g_boxCaption;
}

// The DLL asks for its name while it is loaded, when nobody can have patched it: in the file, its
// import is another function's, which takes the arguments for what they are not, and returns 0.
TEST(FrameFaultOfTheModulesName, LeavesTheDllsMessageBoxWithoutACaption)
{
    const TempFolder folder;
    const std::string path = folder / "nameless.dll";
    const std::string name("GetModuleFileNameA");
    std::string other("GetFileType");
    other.resize(name.size(), '\0');
    std::string bytes = ReadBytes(LoadedTarn::Path());
    const std::size_t nAt = bytes.find(name + '\0');
    ASSERT_NE(nAt, std::string::npos);
    ASSERT_EQ(bytes.find(name + '\0', nAt + 1), std::string::npos);
    WriteBytes(path, bytes);
    EXPECT_EQ(CaptionOf(LoadedTarn(path), folder), "nameless");
    WriteBytes(path, bytes.replace(nAt, name.size(), other));
    ExpectCleanFault(
        std::string(), [&] { return CaptionOf(LoadedTarn(path), folder); },
        [&path] {
            const LoadedTarn tarn(path);
            ASSERT_TRUE(tarn.IsComplete());
            EXPECT_EQ(Verify(tarn), 1);
        });
}

// What cannot be given back is left to the system.
TEST(FrameFaultAtUnload, DoesNotKeepTheLibraryFromUnloading)
{
    const TempFolder folder;
    const std::string path = folder / "tarn copy.dll";
    ASSERT_TRUE(::CopyFileA(LoadedTarn::Path().c_str(), path.c_str(), TRUE));
    const CallersState before = CallersState::Now();
    for (const char* const pszFunction : {"HeapDestroy", "TlsFree", "ReleaseActCtx"})
    {
        SCOPED_TRACE(pszFunction);
        auto pTarn = std::make_unique<LoadedTarn>(path);
        ASSERT_TRUE(pTarn->IsComplete());
        EXPECT_EQ(Verify(*pTarn), 1);
        // Not taken away again: the import table goes with the library.
        static_cast<void>(new FailingCall(pTarn->Module(), pszFunction));
        pTarn.reset();
        EXPECT_EQ(FailingCall::Calls(), 1);
        EXPECT_EQ(::GetModuleHandleA("tarn copy.dll"), nullptr);
        const LoadedTarn again(path);
        EXPECT_EQ(Verify(again), 1);
        EXPECT_EQ(CallersState::Now(), before);
    }
}
} // namespace
