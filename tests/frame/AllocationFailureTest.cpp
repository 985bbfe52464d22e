#include "tests/frame/Exports.h"

#include "tests/support/AllocationFaults.h"
#include "tests/support/RoundCost.h"

#include <gtest/gtest.h>

namespace
{
class AllocationFailure : public testing::TestWithParam<Form>
{
protected:
    enum class Age
    {
        First, // the call is the first that the library sees
        Later
    };

    struct Attempt
    {
        bool bFailed = false; // the n-th request came, and failed
        CallOutcome outcome;
        bool bWorksAfterwards = false;
    };

    // From loading to unloading, with the n-th request of the call failing.
    static Attempt Try(const Situation& situation, int n, AllocationFaults::After after, Age age)
    {
        Library library(GetParam());
        if (age == Age::Later)
            Verify(library);
        Attempt attempt;
        {
            AllocationFaults faults(library.Module());
            std::unique_ptr<ImportPatch> pPatch;
            if (situation.pszPatched != nullptr)
                pPatch = std::make_unique<ImportPatch>(library.Module(), situation.pszPatched,
                                                       situation.pReplacement);
            attempt.outcome = CallAsHost([&] {
                faults.Arm(n, after);
                // Disarmed by the time the host handles what was thrown.
                struct Disarm
                {
                    AllocationFaults& faults;
                    bool& bFailed;
                    ~Disarm() { bFailed = faults.Disarm(); }
                } disarm{faults, attempt.bFailed};
                return situation.call(library);
            });
        }
        CallAsHost([&] { return library.CloseWaitDlg(); });
        attempt.bWorksAfterwards = Verify(library);
        return attempt;
    }

    static bool Verify(const Library& library)
    {
        std::string text = std::string(500, 'x') + "@b.c";
        char szMessage[80] = "";
        int nPosition = 0;
        return library.VerifyEmail(&text[0], &nPosition, szMessage) == 1;
    }

    // Lets each request of the call fail in turn. Returns how many there are.
    int TryEach(const Situation& situation, AllocationFaults::After after, Age age)
    {
        for (int n = 1; n < 100; ++n)
        {
            SCOPED_TRACE(testing::Message() << "request " << n);
            const Attempt attempt = Try(situation, n, after, age);
            EXPECT_TRUE(attempt.bWorksAfterwards);
            EXPECT_TRUE(attempt.outcome.bStateKept);
            EXPECT_TRUE(attempt.outcome.bContextKept);
            EXPECT_EQ(GetCurrentModuleState(), &m_hostState);
            EXPECT_TRUE(m_context.IsActive());
            // Without memory the call fails with that exception, or does without.
            if (!attempt.bFailed || attempt.outcome.left != Left::ByMemoryException)
            {
                EXPECT_EQ(attempt.outcome.left, situation.left);
            }
            if (attempt.outcome.left == Left::ByReturning)
            {
                EXPECT_EQ(attempt.outcome.nResult, situation.nResult);
            }
            if (!attempt.bFailed)
                return n - 1;
        }
        ADD_FAILURE() << "the requests do not end";
        return 0;
    }

    void ExpectEveryFailureToBeClean(AllocationFaults::After after, Age age)
    {
        int nRequests = 0;
        for (const Situation& situation : AllSituations(m_files))
        {
            SCOPED_TRACE(situation.pszSentence);
            int nOfThis = 0;
            EXPECT_TRUE(LeavesNothingBehind([&] { nOfThis = TryEach(situation, after, age); }));
            nRequests += nOfThis;
        }
        // Only the DLL makes and activates a context, at least once a call.
        EXPECT_GE(nRequests, GetParam() == Form::Loaded ? 100 : 40);
    }

    void SetUp() override
    {
        ASSERT_TRUE(Library(GetParam()).IsComplete());
        ASSERT_TRUE(m_context.IsActive());
        SetCurrentModuleState(&m_hostState);
    }
    void TearDown() override { SetCurrentModuleState(nullptr); }

    Files m_files;
    AFX_MODULE_STATE m_hostState{FALSE, &AfxWndProc};
    HostContext m_context;
};

INSTANTIATE_TEST_SUITE_P(BothForms, AllocationFailure, testing::Values(Form::Loaded, Form::Linked),
                         FormName);

TEST_P(AllocationFailure, AtEachPointOfTheFirstCallIsClean)
{
    ExpectEveryFailureToBeClean(AllocationFaults::After::Recovers, Age::First);
}

TEST_P(AllocationFailure, AtEachPointOfALaterCallIsClean)
{
    ExpectEveryFailureToBeClean(AllocationFaults::After::Recovers, Age::Later);
}

TEST_P(AllocationFailure, ThatLastsFromEachPointOfTheFirstCallIsClean)
{
    ExpectEveryFailureToBeClean(AllocationFaults::After::StaysOut, Age::First);
}

TEST_P(AllocationFailure, ThatLastsFromEachPointOfALaterCallIsClean)
{
    ExpectEveryFailureToBeClean(AllocationFaults::After::StaysOut, Age::Later);
}

// Not any exception will do: a host that handles lack of memory catches this one.
TEST(AllocationFailureOfTheDll, IsTheMemoryException)
{
    const Library library(Form::Loaded);
    ASSERT_TRUE(library.IsComplete());
    AllocationFaults faults(library.Module());
    std::string text = std::string(1000, 'x') + "@b.c";
    char szMessage[80] = "untouched";
    int nPosition = 4711;
    bool bCaught = false;
    faults.Arm(1, AllocationFaults::After::StaysOut);
    try
    {
        library.VerifyEmail(&text[0], &nPosition, szMessage);
    }
    catch (CMemoryException* pException)
    {
        bCaught = true;
        pException->Delete();
    }
    EXPECT_TRUE(faults.Disarm());
    EXPECT_TRUE(bCaught);
    EXPECT_EQ(nPosition, 4711);
    EXPECT_STREQ(szMessage, "untouched");
    EXPECT_EQ(text, std::string(1000, 'x') + "@b.c");
}

// A thread without memory for a state of its own can still throw, and takes nothing with it when it
// ends: there are more threads here than the library has places for such.
TEST(AllocationFailureOfTheDll, OnTheFirstCallOfAThreadIsThrownOnAnyNumberOfThreads)
{
    const Library library(Form::Loaded);
    ASSERT_TRUE(library.IsComplete());
    struct Work
    {
        const Library& library;
        int nCaught;
    } work = {library, 0};
    for (int i = 0; i < 200; ++i)
    {
        HANDLE const hThread = ::CreateThread(
            nullptr, 0,
            [](LPVOID pWork) -> DWORD {
                auto& own = *static_cast<Work*>(pWork);
                AllocationFaults faults(own.library.Module());
                faults.Arm(1, AllocationFaults::After::StaysOut);
                try
                {
                    own.library.CloseWaitDlg();
                }
                catch (CMemoryException* pException)
                {
                    ++own.nCaught;
                    pException->Delete();
                }
                return 0;
            },
            &work, 0, nullptr);
        ASSERT_EQ(::WaitForSingleObject(hThread, 60000), WAIT_OBJECT_0);
        ::CloseHandle(hThread);
        ASSERT_EQ(work.nCaught, i + 1);
    }
}
} // namespace
