// Hosts that accept every exception by structured handling, and know nothing of C++: other compilers,
// other languages. What they call does not return, and they go on all the same.
#include "tests/hosts/structured.h"
#include "tests/support/AllocationFaults.h"
#include "tests/support/CallersState.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/FailingCall.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/LoadedTarn.h"
#include "tests/support/RegistrySandbox.h"
#include "tests/support/RoundCost.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

#include <functional>
#include <vector>

namespace
{
constexpr DWORD kCppException = 0x20474343;
constexpr char kRunOnce[] = "Software\\Microsoft\\Windows\\CurrentVersion\\Runonce";

template <class Function>
Export AsExport(Function* pfn)
{
    return reinterpret_cast<Export>(reinterpret_cast<void*>(pfn));
}

BOOL WINAPI WriteHalf(HANDLE /*hFile*/, LPCVOID /*lpBuffer*/, DWORD cbToWrite, LPDWORD pcbWritten,
                      LPOVERLAPPED /*lpOverlapped*/)
{
    *pcbWritten = cbToWrite / 2;
    return TRUE;
}

// Counts the exceptions that the whole process sees first, whoever handles them.
class FirstSight
{
public:
    FirstSight() : m_pHandler(::AddVectoredExceptionHandler(1, &FirstSight::Count)) { s_nSeen = 0; }
    ~FirstSight() { ::RemoveVectoredExceptionHandler(m_pHandler); }
    FirstSight(const FirstSight&) = delete;
    FirstSight& operator=(const FirstSight&) = delete;

    static int Seen() { return s_nSeen; }

private:
    static LONG CALLBACK Count(EXCEPTION_POINTERS* /*pPointers*/)
    {
        ::InterlockedIncrement(&s_nSeen);
        return EXCEPTION_CONTINUE_SEARCH;
    }

    static inline volatile LONG s_nSeen = 0;
    void* m_pHandler;
};

class StructuredHost : public testing::Test
{
protected:
    StructuredHost()
    {
        folder.MakeFolder("embedch\\config");
        path = folder / "embedch\\config\\chrc";
        // The thread is known to the library.
        EXPECT_TRUE(Works());
    }

    // The library does its work for this host.
    bool Works() const
    {
        char szAddress[] = " user@example.com";
        char szMessage[80] = "";
        int nPosition = 0;
        return tarn.VerifyEmail(szAddress, &nPosition, szMessage) == 1 &&
               tarn.Write_ch_config_File(folder.Path().c_str()) == 1;
    }

    // Nobody has it open, and it can be made anew.
    bool FileIsClosed() const { return ::DeleteFileA(path.c_str()) != FALSE; }

    // A host of that kind meets that exception again and again.
    void ExpectSurvives(const Call& call, void (*pfnHost)(const Call*, Ending*),
                        const Ending& documented)
    {
        const testing::AssertionResult clean = LeavesNothingBehind([&] {
            for (int i = 0; i < 100; ++i)
            {
                const CallersState before = CallersState::Now();
                Ending ending = {};
                pfnHost(&call, &ending);
                ASSERT_EQ(ending.nReturned, documented.nReturned);
                ASSERT_EQ(ending.nFilters, documented.nFilters);
                ASSERT_EQ(ending.nFinally, documented.nFinally);
                ASSERT_EQ(ending.nAccepted, documented.nAccepted);
                ASSERT_EQ(ending.nCode, documented.nCode);
                ASSERT_EQ(ending.nDepth, documented.nDepth);
                ASSERT_EQ(CallersState::Now(), before);
            }
        });
        EXPECT_TRUE(clean);
        EXPECT_TRUE(Works());
    }

    const TempFolder folder;
    std::string path;
    const LoadedTarn tarn;
    const Call separators = {AsExport(tarn.Write_ch_config_File), {"\\\\"}};
    const Call fullDisk = {AsExport(tarn.Write_ch_config_File), {folder.Path().c_str()}};
};

TEST_F(StructuredHost, IsAskedOnceAndGoesOn)
{
    ExpectSurvives(separators, &CallAndAccept, {0, 1, 0, 1, kCppException, 1});
}

TEST_F(StructuredHost, GoesOnTenThousandTimes)
{
    EXPECT_TRUE(LeavesNothingBehind([&] {
        Ending ending = {};
        for (int i = 0; i < 10000; ++i)
            CallAndAccept(&separators, &ending);
        ASSERT_EQ(ending.nAccepted, 10000);
        ASSERT_EQ(ending.nFilters, 10000);
    }));
    EXPECT_TRUE(Works());
}

TEST_F(StructuredHost, MayAcceptInAnOuterBlock)
{
    ExpectSurvives(separators, &CallAndAcceptOutside, {0, 2, 0, 1, kCppException, 2});
}

TEST_F(StructuredHost, RunsItsOwnFinally)
{
    ExpectSurvives(separators, &CallWithFinally, {0, 1, 1, 1, kCppException, 2});
}

TEST_F(StructuredHost, MayCallFromItsFilter)
{
    ExpectSurvives(separators, &CallAgainInFilter, {0, 2, 0, 2, kCppException, 1});
}

TEST_F(StructuredHost, MayCallFromItsHandler)
{
    ExpectSurvives(separators, &CallAgainInHandler, {0, 2, 0, 2, kCppException, 1});
}

TEST_F(StructuredHost, FindsTheFileClosedWhenTheDiskWasFull)
{
    {
        const ImportPatch patch(tarn.Module(), "WriteFile", reinterpret_cast<void*>(&WriteHalf));
        ASSERT_TRUE(patch.IsActive());
        EXPECT_TRUE(LeavesNothingBehind([&] {
            for (int i = 0; i < 100; ++i)
            {
                Ending ending = {};
                CallAndAccept(&fullDisk, &ending);
                ASSERT_EQ(ending.nAccepted, 1);
                ASSERT_EQ(ending.nFilters, 1);
                ASSERT_TRUE(FileIsClosed());
            }
        }));
    }
    EXPECT_TRUE(Works());
}

TEST_F(StructuredHost, SeesOneExceptionACall)
{
    const FirstSight sight;
    Ending ending = {};
    CallWithFinally(&separators, &ending);
    EXPECT_EQ(ending.nAccepted, 1);
    EXPECT_EQ(FirstSight::Seen(), 1);
}

struct Thread
{
    const Call* pCall;
    Ending ending;
};

DWORD WINAPI AcceptManyTimes(LPVOID pThread)
{
    auto& thread = *static_cast<Thread*>(pThread);
    for (int i = 0; i < 1000; ++i)
        CallAndAccept(thread.pCall, &thread.ending);
    return 0;
}

TEST_F(StructuredHost, MayHaveSeveralThreads)
{
    EXPECT_TRUE(LeavesNothingBehind([&] {
        std::vector<Thread> work(8, {&separators, {}});
        std::vector<HANDLE> threads;
        for (Thread& thread : work)
            threads.push_back(::CreateThread(nullptr, 0, &AcceptManyTimes, &thread, 0, nullptr));
        for (std::size_t i = 0; i < threads.size(); ++i)
        {
            EXPECT_EQ(::WaitForSingleObject(threads[i], 120000), WAIT_OBJECT_0);
            ::CloseHandle(threads[i]);
            EXPECT_EQ(work[i].ending.nAccepted, 1000);
        }
    }));
    EXPECT_TRUE(Works());
}

TEST_F(StructuredHost, OutOfMemoryGoesOnFromEachExport)
{
    // No dialog is shown: nobody would close it.
    const FailingCall noDialog(tarn.Module(), "LoadLibraryExA");
    ASSERT_TRUE(noDialog.IsActive());
    const std::string text(700, 'x');
    std::string address;
    char szMessage[80] = "";
    char szPath[260] = "";
    int nPosition = 0;
    const Call calls[] = {
        {AsExport(tarn.VerifyEmail), {nullptr, &nPosition, szMessage}},
        {AsExport(tarn.FileCopy), {text.c_str(), text.c_str()}},
        {AsExport(tarn.PutInRunOnce), {"name", text.c_str()}},
        {AsExport(tarn.Write_ch_config_File), {folder.Path().c_str()}},
        {AsExport(tarn.DoFileOpenDialog), {"C:\\", text.c_str(), "All|*.*||", nullptr, szPath}},
        {AsExport(tarn.DoWaitDlgModless), {nullptr, text.c_str(), text.c_str()}},
        {AsExport(tarn.CloseWaitDlg), {}},
    };
    const RegistrySandbox sandbox;
    int nExceptions = 0;
    for (Call call : calls)
    {
        // A thread of its own each: the first call needs most.
        const auto everyPoint = [&] {
            AllocationFaults faults(tarn.Module());
            for (int n = 1; n < 100; ++n)
            {
                address = text + "@b.c";
                if (call.arguments[1] == &nPosition)
                    call.arguments[0] = address.data();
                const CallersState before = CallersState::Now();
                Ending ending = {};
                faults.Arm(n, AllocationFaults::After::StaysOut);
                CallAndAccept(&call, &ending);
                const bool bCame = faults.Disarm();
                ASSERT_EQ(CallersState::Now(), before);
                ASSERT_EQ(ending.nReturned + ending.nAccepted, 1);
                ASSERT_EQ(ending.nFilters, ending.nAccepted);
                nExceptions += ending.nAccepted;
                tarn.CloseWaitDlg();
                if (!bCame)
                    return;
            }
            FAIL() << "it never ends";
        };
        std::function<void()> work = everyPoint;
        HANDLE const hThread = ::CreateThread(
            nullptr, 0,
            [](LPVOID p) -> DWORD {
                (*static_cast<std::function<void()>*>(p))();
                return 0;
            },
            &work, 0, nullptr);
        ASSERT_EQ(::WaitForSingleObject(hThread, 120000), WAIT_OBJECT_0);
        ::CloseHandle(hThread);
    }
    EXPECT_GT(nExceptions, 7) << "at least the thread's first request, in each";
    EXPECT_TRUE(Works());
}

// A fault of the processor's, which no compiler here turns into an exception of its language.
TEST_F(StructuredHost, ThatSurvivesAFaultHasItsOwnStateAgain)
{
    const RegistrySandbox sandbox;
    ASSERT_TRUE(MakeKey(kRunOnce));
    const Call call = {AsExport(tarn.PutInRunOnce), {"x", nullptr}};
    void (*const hosts[])(const Call*, Ending*) = {&CallAndAccept, &CallAndAcceptOutside,
                                                   &CallWithFinally, &CallAgainInFilter};
    for (const auto pfnHost : hosts)
    {
        const CallersState before = CallersState::Now();
        Ending ending = {};
        pfnHost(&call, &ending);
        EXPECT_GE(ending.nAccepted, 1);
        EXPECT_EQ(ending.nCode, static_cast<DWORD>(EXCEPTION_ACCESS_VIOLATION));
        EXPECT_EQ(CallersState::Now(), before);
    }
    EXPECT_TRUE(Works());
    EXPECT_EQ(tarn.PutInRunOnce("x", "command"), 1);
}

TEST_F(StructuredHost, ThatSurvivesAFaultKeepsAHandleOfTheKey)
{
    const RegistrySandbox sandbox;
    ASSERT_TRUE(MakeKey(kRunOnce));
    const Call call = {AsExport(tarn.PutInRunOnce), {"x", nullptr}};
    const RoundCost cost = RoundCost::Of(5, [&] {
        Ending ending = {};
        CallAndAccept(&call, &ending);
    });
    EXPECT_EQ(cost.PerRound(RoundCost::kHandles), 1) << cost;
    RoundCost::Allowance allowed = {};
    allowed[RoundCost::kHandles] = 1;
    EXPECT_TRUE(cost.IsWithin(allowed)) << cost;
}

class OtherLanguage : public StructuredHost, public testing::WithParamInterface<int>
{
};

TEST_P(OtherLanguage, TakesTheFramesAwayItself)
{
    EXPECT_TRUE(LeavesNothingBehind([&] {
        for (int i = 0; i < 10000; ++i)
        {
            const CallersState before = CallersState::Now();
            ASSERT_EQ(CallFromOtherLanguage(&separators, GetParam()), 1);
            ASSERT_EQ(CallersState::Now(), before);
        }
    }));
    EXPECT_TRUE(Works());
}

TEST_P(OtherLanguage, SurvivesAFault)
{
    const RegistrySandbox sandbox;
    ASSERT_TRUE(MakeKey(kRunOnce));
    const Call call = {AsExport(tarn.PutInRunOnce), {"x", nullptr}};
    const CallersState before = CallersState::Now();
    ASSERT_EQ(CallFromOtherLanguage(&call, GetParam()), 1);
    EXPECT_EQ(CallersState::Now(), before);
    EXPECT_TRUE(Works());
}

TEST_P(OtherLanguage, IsNotAskedAboutACallThatReturns)
{
    const Call call = {AsExport(tarn.CloseWaitDlg), {}};
    EXPECT_EQ(CallFromOtherLanguage(&call, GetParam()), 0);
}

INSTANTIATE_TEST_SUITE_P(ByEachWay, OtherLanguage, testing::Values(0, 1, 2));

// In a process of its own.
void CallWithoutHandler()
{
    const LoadedTarn tarn;
    const Call call = {AsExport(tarn.Write_ch_config_File), {"\\\\"}};
    // Not on this thread, on which GoogleTest has a handler.
    HANDLE const hThread = ::CreateThread(
        nullptr, 0,
        [](LPVOID pCall) -> DWORD {
            CallPlainly(static_cast<const Call*>(pCall));
            return 0;
        },
        const_cast<Call*>(&call), 0, nullptr);
    ::WaitForSingleObject(hThread, INFINITE);
    ::ExitProcess(77);
}

TEST(HostWithoutHandler, DISABLED_Child)
{
    ::SetUnhandledExceptionFilter(nullptr); // MinGW's is left out
    CallWithoutHandler();
}

TEST(HostWithoutHandler, EndsWithTheCodeOfTheException)
{
    EXPECT_EQ(ExitCodeOfChild("HostWithoutHandler.DISABLED_Child"), kCppException);
}

// MinGW's start-up code has a filter that sends exceptions of this kind back to where they came from.
TEST(MinGwHostWithoutHandler, DISABLED_Child)
{
    CallWithoutHandler();
}

TEST(MinGwHostWithoutHandler, EndsByAbort)
{
    EXPECT_EQ(ExitCodeOfChild("MinGwHostWithoutHandler.DISABLED_Child"), 3U);
}

TEST(HostThatContinues, DISABLED_Child)
{
    const LoadedTarn tarn;
    const Call call = {AsExport(tarn.Write_ch_config_File), {"\\\\"}};
    CallAndContinue(&call);
    ::ExitProcess(77);
}

TEST(HostThatContinues, EndsByAbort)
{
    EXPECT_EQ(ExitCodeOfChild("HostThatContinues.DISABLED_Child"), 3U);
}
} // namespace
