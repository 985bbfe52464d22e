// Hosts that are built with the library's compiler: its exceptions are theirs to catch.
#include "framework/exceptions/CException.h"
#include "tests/support/CallersState.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/LoadedTarn.h"
#include "tests/support/RoundCost.h"
#include "tests/support/TempFolder.h"

#include <cxxabi.h>
#include <gtest/gtest.h>

#include <exception>
#include <vector>

namespace
{
// jobs.dll, beside this program: the library, with exports that tell how it is inside.
class LoadedInside
{
public:
    LoadedInside() : tarn(Path())
    {
        IsAtRest = reinterpret_cast<int (*)(int*)>(
            reinterpret_cast<void*>(::GetProcAddress(tarn.Module(), "IsAtRest")));
    }

    const LoadedTarn tarn;
    int (*IsAtRest)(int* pnUncaught);

private:
    static std::string Path()
    {
        char szProgram[MAX_PATH] = "";
        ::GetModuleFileNameA(nullptr, szProgram, MAX_PATH);
        const std::string program = szProgram;
        return program.substr(0, program.rfind('\\') + 1) + "jobs.dll";
    }
};

// What a host does whose own run-time code must count right: its catch counts down an exception that
// somebody else's throw counted up. docs/hosts.md shows it.
void CountCaught(int nCount = 1)
{
    *reinterpret_cast<int*>(reinterpret_cast<void**>(abi::__cxa_get_globals()) + 1) += nCount;
}

enum class Way
{
    ByBaseClass,
    ByAnything,
    ByRethrowing,
    ByNesting,
    WhileUnwinding
};

void Throw(const LoadedTarn& tarn)
{
    tarn.Write_ch_config_File("\\\\");
}

// Calls while another exception is on its way.
struct CallsInDestructor
{
    const LoadedTarn& tarn;
    ~CallsInDestructor()
    {
        try
        {
            Throw(tarn);
        }
        catch (CException* pException)
        {
            CountCaught();
            pException->Delete();
        }
    }
};

// Returns how many exceptions were caught.
int Catch(const LoadedTarn& tarn, Way way)
{
    int nCaught = 0;
    switch (way)
    {
    case Way::ByBaseClass:
        try
        {
            Throw(tarn);
        }
        catch (CException* pException)
        {
            CountCaught();
            ++nCaught;
            pException->Delete();
        }
        break;
    case Way::ByAnything:
        try
        {
            Throw(tarn);
        }
        catch (...)
        {
            CountCaught();
            ++nCaught;
        }
        break;
    case Way::ByRethrowing:
        try
        {
            try
            {
                Throw(tarn);
            }
            catch (...)
            {
                CountCaught();
                ++nCaught;
                throw;
            }
        }
        catch (CException* pException)
        {
            ++nCaught;
            pException->Delete();
        }
        break;
    case Way::ByNesting:
        try
        {
            Throw(tarn);
        }
        catch (...)
        {
            CountCaught();
            ++nCaught;
            nCaught += Catch(tarn, Way::ByBaseClass);
        }
        break;
    case Way::WhileUnwinding:
        try
        {
            const CallsInDestructor calls{tarn};
            Throw(tarn);
        }
        catch (CException* pException)
        {
            CountCaught();
            nCaught += 2;
            pException->Delete();
        }
        break;
    }
    return nCaught;
}

class SameCompilerHost : public testing::TestWithParam<Way>
{
};

TEST_P(SameCompilerHost, CatchesTenThousandTimesAndBothSidesCountRight)
{
    const LoadedInside inside;
    ASSERT_TRUE(inside.tarn.IsComplete() && inside.IsAtRest != nullptr);
    const int nExpected = GetParam() == Way::ByBaseClass || GetParam() == Way::ByAnything ? 1 : 2;
    EXPECT_TRUE(LeavesNothingBehind([&] {
        const CallersState before = CallersState::Now();
        for (int i = 0; i < 10000; ++i)
        {
            ASSERT_EQ(Catch(inside.tarn, GetParam()), nExpected);
            ASSERT_EQ(std::uncaught_exceptions(), 0);
            int nUncaught = -1;
            ASSERT_TRUE(inside.IsAtRest(&nUncaught));
            ASSERT_EQ(nUncaught, 0);
        }
        ASSERT_EQ(CallersState::Now(), before);
    }));
}

struct Thread
{
    const LoadedInside* pInside;
    Way way;
    int nWrong;
};

DWORD WINAPI CatchManyTimes(LPVOID pThread)
{
    auto& thread = *static_cast<Thread*>(pThread);
    int nUncaught = -1;
    for (int i = 0; i < 10000; ++i)
    {
        Catch(thread.pInside->tarn, thread.way);
        if (std::uncaught_exceptions() != 0 || !thread.pInside->IsAtRest(&nUncaught) ||
            nUncaught != 0)
            ++thread.nWrong;
    }
    return 0;
}

TEST_P(SameCompilerHost, CatchesOnEightThreadsAtOnce)
{
    const LoadedInside inside;
    ASSERT_TRUE(inside.tarn.IsComplete() && inside.IsAtRest != nullptr);
    std::vector<Thread> work(8, {&inside, GetParam(), 0});
    std::vector<HANDLE> threads;
    for (Thread& thread : work)
        threads.push_back(::CreateThread(nullptr, 0, &CatchManyTimes, &thread, 0, nullptr));
    for (std::size_t i = 0; i < threads.size(); ++i)
    {
        EXPECT_EQ(::WaitForSingleObject(threads[i], 200000), WAIT_OBJECT_0);
        ::CloseHandle(threads[i]);
        EXPECT_EQ(work[i].nWrong, 0);
    }
}

INSTANTIATE_TEST_SUITE_P(InEachWay, SameCompilerHost,
                         testing::Values(Way::ByBaseClass, Way::ByAnything, Way::ByRethrowing,
                                         Way::ByNesting, Way::WhileUnwinding));

INT_PTR CALLBACK ThrowInWindow(HWND /*hWnd*/, UINT message, WPARAM /*wParam*/, LPARAM /*lParam*/)
{
    if (message == WM_APP)
        throw 4711;
    return FALSE;
}

// A host that puts a procedure of its own under the wait window's, and throws in it.
TEST(SameCompilerHostInTheWindow, ThrowsNoFurtherThanTheLibraryWhichCountsRight)
{
    const LoadedInside inside;
    ASSERT_TRUE(inside.tarn.IsComplete() && inside.IsAtRest != nullptr);
    inside.tarn.DoWaitDlgModless(nullptr, "A host that throws", "message");
    HWND const hWnd = ::FindWindowA("#32770", "A host that throws");
    ASSERT_NE(hWnd, nullptr);
    ::SetWindowLongPtrA(hWnd, DWLP_DLGPROC, reinterpret_cast<LONG_PTR>(&ThrowInWindow));
    const int nBefore = std::uncaught_exceptions();
    int nUncaught = -1;
    for (int i = 0; i < 3; ++i)
    {
        EXPECT_EQ(::SendMessageA(hWnd, WM_APP, 0, 0), 0);
        EXPECT_TRUE(inside.IsAtRest(&nUncaught));
        EXPECT_EQ(nUncaught, 0);
    }
    EXPECT_EQ(std::uncaught_exceptions(), nBefore + 3) << "out of the library's reach";
    for (int i = 0; i < 3; ++i)
        CountCaught(-1);
    inside.tarn.CloseWaitDlg();
    EXPECT_FALSE(::IsWindow(hWnd));
}

// The host's run-time code is its own copy, and the library cannot reach the count in it.
TEST(SameCompilerHostThatDoesNotCount, ReadsOneLessForEachCatch)
{
    const LoadedTarn tarn;
    ASSERT_TRUE(tarn.IsComplete());
    const int nBefore = std::uncaught_exceptions();
    for (int i = 0; i < 3; ++i)
    {
        try
        {
            Throw(tarn);
        }
        catch (CException* pException)
        {
            pException->Delete();
        }
    }
    EXPECT_EQ(std::uncaught_exceptions(), nBefore - 3);
    for (int i = 0; i < 3; ++i)
        CountCaught();
}
} // namespace
