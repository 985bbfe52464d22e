#include "tests/support/ChildProcess.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/LoadedTarn.h"
#include "tests/support/NewHeap.h"
#include "tests/support/RoundCost.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

namespace
{
int Verify(const LoadedTarn& tarn, const std::string& text)
{
    std::string address = text;
    char szMessage[80] = "";
    int nPosition = 0;
    return tarn.VerifyEmail(&address[0], &nPosition, szMessage);
}

struct ThreadWork
{
    const LoadedTarn* pTarn;
    int nCalls;
    int nWrong;
};

DWORD WINAPI CallManyTimes(LPVOID pWork)
{
    auto& work = *static_cast<ThreadWork*>(pWork);
    const std::string longText = std::string(700, 'x') + "@b.c";
    for (int i = 0; i < work.nCalls; ++i)
    {
        if (Verify(*work.pTarn, "user@example.com") != 1 || Verify(*work.pTarn, "user@") != 0 ||
            Verify(*work.pTarn, longText) != 1 || work.pTarn->FileCopy("", "C:\\") != 0)
            ++work.nWrong;
    }
    return 0;
}

DWORD WINAPI ThrowAndCatch(LPVOID pWork)
{
    auto& work = *static_cast<ThreadWork*>(pWork);
    for (int i = 0; i < work.nCalls; ++i)
    {
        bool bThrown = false;
        try
        {
            work.pTarn->Write_ch_config_File("\\\\");
        }
        catch (...)
        {
            bThrown = true;
        }
        if (!bThrown || Verify(*work.pTarn, "a@b.c") != 1)
            ++work.nWrong;
    }
    return 0;
}

// Runs the work on several threads at once; returns how often it went wrong.
int RunThreads(const LoadedTarn& tarn, LPTHREAD_START_ROUTINE pfn, int nThreads, int nCalls)
{
    std::vector<ThreadWork> work(static_cast<std::size_t>(nThreads), {&tarn, nCalls, 0});
    std::vector<HANDLE> threads;
    for (ThreadWork& each : work)
        threads.push_back(::CreateThread(nullptr, 0, pfn, &each, 0, nullptr));
    int nWrong = 0;
    for (std::size_t i = 0; i < threads.size(); ++i)
    {
        if (::WaitForSingleObject(threads[i], 60000) != WAIT_OBJECT_0)
            ++nWrong;
        ::CloseHandle(threads[i]);
        nWrong += work[i].nWrong;
    }
    return nWrong;
}

TEST(LoadUnload, LeavesNothingBehindAfterAThousandTimes)
{
    int nRound = 0;
    EXPECT_TRUE(LeavesNothingBehind(334, [&nRound] {
        const LoadedTarn tarn;
        ASSERT_TRUE(tarn.IsComplete());
        if (++nRound % 2 == 0)
        {
            ASSERT_EQ(Verify(tarn, std::string(700, 'x') + "@b.c"), 1);
        }
    }));
}

TEST(LoadUnload, GivesBackWhatAnExceptionLeftBehind)
{
    EXPECT_TRUE(LeavesNothingBehind(50, [] {
        const LoadedTarn tarn;
        ThreadWork work = {&tarn, 1, 0};
        ThrowAndCatch(&work);
        ASSERT_EQ(work.nWrong, 0);
    }));
}

TEST(LoadUnload, IsReallyUnloaded)
{
    HMODULE hModule = nullptr;
    {
        const LoadedTarn tarn;
        ASSERT_TRUE(tarn.IsComplete());
        Verify(tarn, "a@b.c");
        hModule = tarn.Module();
    }
    char szPath[MAX_PATH];
    EXPECT_EQ(::GetModuleFileNameA(hModule, szPath, MAX_PATH), 0U);
    EXPECT_EQ(::GetModuleHandleA("tarn.dll"), nullptr);
}

TEST(LoadUnloadInAChild, DISABLED_EndsTheProcess)
{
    const LoadedTarn tarn;
    ThreadWork work = {&tarn, 1, 0};
    CallManyTimes(&work);
    ThrowAndCatch(&work);
    if (work.nWrong == 0)
        ::ExitProcess(42);
}

TEST(LoadUnload, MayBeLeftToTheEndOfTheProcess)
{
    EXPECT_EQ(ExitCodeOfChild("LoadUnloadInAChild.DISABLED_EndsTheProcess"), 42U);
}

TEST(LoadUnload, WorksTwiceInOneProcessUnderDifferentNames)
{
    const TempFolder folder;
    const std::string other = folder / "other.dll";
    ASSERT_TRUE(::CopyFileA(LoadedTarn::Path().c_str(), other.c_str(), TRUE));
    {
        auto pFirst = std::make_unique<LoadedTarn>();
        const LoadedTarn second(other);
        ASSERT_TRUE(pFirst->IsComplete());
        ASSERT_TRUE(second.IsComplete());
        EXPECT_NE(pFirst->Module(), second.Module());
        EXPECT_EQ(Verify(*pFirst, "a@b.c"), 1);
        EXPECT_EQ(Verify(second, "a@b.c"), 1);
        EXPECT_EQ(RunThreads(*pFirst, &CallManyTimes, 2, 50), 0);
        pFirst.reset();
        EXPECT_EQ(Verify(second, std::string(700, 'x') + "@b.c"), 1);
        EXPECT_EQ(RunThreads(second, &ThrowAndCatch, 2, 50), 0);
    }
    EXPECT_TRUE(::DeleteFileA(other.c_str()));
}

TEST(Threads, CallExportsAtTheSameTime)
{
    const LoadedTarn tarn;
    ASSERT_TRUE(tarn.IsComplete());
    EXPECT_EQ(RunThreads(tarn, &CallManyTimes, 8, 2000), 0);
}

TEST(Threads, MayBeTheFirstToUseTheLibraryAllAtOnce)
{
    for (int i = 0; i < 50; ++i)
    {
        const LoadedTarn tarn;
        ASSERT_EQ(RunThreads(tarn, &CallManyTimes, 4, 1), 0);
    }
}

TEST(Threads, CatchExceptionsAtTheSameTime)
{
    const LoadedTarn tarn;
    ASSERT_TRUE(tarn.IsComplete());
    EXPECT_EQ(RunThreads(tarn, &ThrowAndCatch, 8, 300), 0);
}

// More threads, one after the other, than the library could keep anything for.
TEST(Threads, GiveTheirStateBackWhenTheyEnd)
{
    const NewHeap heap;
    const LoadedTarn tarn;
    ASSERT_TRUE(tarn.IsComplete());
    ASSERT_EQ(Verify(tarn, "a@b.c"), 1);
    HANDLE const hHeap = heap.Find();
    ASSERT_NE(hHeap, nullptr);
    const std::size_t nBlocks = ResourceCount::BlocksIn(hHeap);
    for (int i = 0; i < 50; ++i)
    {
        ASSERT_EQ(RunThreads(tarn, &CallManyTimes, 4, 1), 0);
        ASSERT_EQ(RunThreads(tarn, &ThrowAndCatch, 4, 1), 0);
    }
    EXPECT_EQ(ResourceCount::BlocksIn(hHeap), nBlocks);
}

TEST(Threads, LeaveNothingBehindWhenTheLibraryGoesBeforeThem)
{
    struct Waiting
    {
        const LoadedTarn* pTarn;
        HANDLE hCalled;
        HANDLE hEnd;
    };
    EXPECT_TRUE(LeavesNothingBehind([] {
        auto pTarn = std::make_unique<LoadedTarn>();
        Waiting waiting = {pTarn.get(), ::CreateEventA(nullptr, TRUE, FALSE, nullptr),
                           ::CreateEventA(nullptr, TRUE, FALSE, nullptr)};
        HANDLE const hThread = ::CreateThread(
            nullptr, 0,
            [](LPVOID pWaiting) -> DWORD {
                const auto& own = *static_cast<Waiting*>(pWaiting);
                Verify(*own.pTarn, "a@b.c");
                ::SetEvent(own.hCalled);
                ::WaitForSingleObject(own.hEnd, 60000);
                return 0;
            },
            &waiting, 0, nullptr);
        EXPECT_EQ(::WaitForSingleObject(waiting.hCalled, 60000), WAIT_OBJECT_0);
        pTarn.reset();
        ::SetEvent(waiting.hEnd);
        EXPECT_EQ(::WaitForSingleObject(hThread, 60000), WAIT_OBJECT_0);
        ::CloseHandle(hThread);
        ::CloseHandle(waiting.hCalled);
        ::CloseHandle(waiting.hEnd);
    }));
}

constexpr UINT kTouched = 99;

ULONG_PTR WINAPI EndAtOnce()
{
    ::TerminateProcess(::GetCurrentProcess(), kTouched);
    return 0;
}

// Ends while the library is loaded, its context made, its heap in use and its slot taken.
TEST(ProcessEnd, DISABLED_Child)
{
    auto* const pTarn = new LoadedTarn; // nobody unloads it
    ThreadWork work = {pTarn, 1, 0};
    CallManyTimes(&work);
    ThrowAndCatch(&work);
    if (work.nWrong != 0)
        std::exit(1);
    for (const char* const pszFunction :
         {"ReleaseActCtx", "DeactivateActCtx", "HeapFree", "HeapDestroy", "TlsFree", "TlsSetValue",
          "TlsGetValue", "SetWindowLongPtrA"})
    {
        auto* const pPatch =
            new ImportPatch(pTarn->Module(), pszFunction, reinterpret_cast<void*>(&EndAtOnce));
        if (!pPatch->IsActive())
            std::exit(2);
    }
    std::exit(0);
}

TEST(ProcessEnd, TouchesNothing)
{
    EXPECT_EQ(ExitCodeOfChild("ProcessEnd.DISABLED_Child"), 0U);
}
} // namespace
