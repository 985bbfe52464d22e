#include "tests/frame/Exports.h"

#include <gtest/gtest.h>

namespace
{
class ExportGuard : public testing::TestWithParam<Form>
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_library.IsComplete());
        ASSERT_TRUE(m_context.IsActive());
        SetCurrentModuleState(&m_hostState);
    }
    void TearDown() override { SetCurrentModuleState(nullptr); }

    void Expect(const Situation& situation)
    {
        SCOPED_TRACE(situation.pszSentence);
        g_inside = {};
        CallOutcome outcome;
        {
            std::unique_ptr<ImportPatch> pPatch;
            if (situation.pszPatched != nullptr)
            {
                pPatch = std::make_unique<ImportPatch>(m_library.Module(), situation.pszPatched,
                                                       situation.pReplacement);
                ASSERT_TRUE(pPatch->IsActive());
            }
            outcome = CallAsHost([&] { return situation.call(m_library); });
        }
        EXPECT_EQ(outcome.left, situation.left);
        if (outcome.left == Left::ByReturning)
        {
            EXPECT_EQ(outcome.nResult, situation.nResult);
        }
        EXPECT_TRUE(outcome.bStateKept);
        EXPECT_TRUE(outcome.bContextKept);
        EXPECT_EQ(GetCurrentModuleState(), &m_hostState);
        EXPECT_TRUE(m_context.IsActive());

        const CallOutcome closed = CallAsHost([this] { return m_library.CloseWaitDlg(); });
        EXPECT_EQ(closed.nResult, 0);
        EXPECT_TRUE(closed.bStateKept);
        EXPECT_TRUE(closed.bContextKept);
    }

    Files m_files;
    AFX_MODULE_STATE m_hostState{FALSE, &AfxWndProc};
    HostContext m_context;
    Library m_library{GetParam()};
};

INSTANTIATE_TEST_SUITE_P(BothForms, ExportGuard, testing::Values(Form::Loaded, Form::Linked),
                         FormName);

TEST_P(ExportGuard, LeavesTheHostsStateAndContextAsTheyWereAfterEveryCall)
{
    // A second time: the first call of a thread does more than the later ones.
    for (int nRound = 0; nRound < 2; ++nRound)
    {
        for (const Situation& situation : AllSituations(m_files))
            Expect(situation);
    }
}

TEST_P(ExportGuard, LeavesThemAsTheyWereWhenTheCallIsTheFirstInItsLife)
{
    for (const Situation& situation : AllSituations(m_files))
    {
        m_library = Library(GetParam());
        Expect(situation);
    }
}

TEST_P(ExportGuard, RunsTheCallInAStateAndAContextOfTheLibrarysOwn)
{
    int nSeen = 0;
    for (const Situation& situation : AllSituations(m_files))
    {
        if (situation.pszPatched == nullptr)
            continue;
        Expect(situation);
        SCOPED_TRACE(situation.pszSentence);
        ++nSeen;
        ASSERT_GE(g_inside.nCalls, 1);
        if (GetParam() == Form::Linked)
        {
            EXPECT_EQ(g_inside.pModuleState, AfxGetStaticModuleState());
        }
        else
        {
            // The DLL has a framework of its own; ours sees nothing of its state.
            EXPECT_EQ(g_inside.pModuleState, &m_hostState);
            EXPECT_NE(g_inside.hContext, m_context.Handle());
            // A dialog's window is made in the process's context, which counts as none.
            const bool bDialog = std::string(situation.pszPatched) == "CreateDialogParamA";
            EXPECT_EQ(g_inside.hContext == nullptr, bDialog);
        }
    }
    EXPECT_GE(nSeen, 10);
}

TEST_P(ExportGuard, RestoresTheStateThatItFoundHoweverDeepTheCallsAreNested)
{
    AFX_MODULE_STATE otherState(FALSE, &AfxWndProc);
    {
        const AFX_MAINTAIN_STATE2 guard(&otherState);
        for (const Situation& situation : AllSituations(m_files))
        {
            std::unique_ptr<ImportPatch> pPatch;
            if (situation.pszPatched != nullptr)
                pPatch = std::make_unique<ImportPatch>(m_library.Module(), situation.pszPatched,
                                                       situation.pReplacement);
            CallAsHost([&] { return situation.call(m_library); });
            m_library.CloseWaitDlg();
            EXPECT_EQ(GetCurrentModuleState(), &otherState) << situation.pszSentence;
            EXPECT_TRUE(m_context.IsActive()) << situation.pszSentence;
        }
    }
    EXPECT_EQ(GetCurrentModuleState(), &m_hostState);
}

// The context is the one of the library's manifest: with the controls of version 6 in it.
bool IsControlsContext()
{
    ACTCTX_SECTION_KEYED_DATA data = {};
    data.cbSize = sizeof(data);
    return ::FindActCtxSectionStringA(0, nullptr,
                                      ACTIVATION_CONTEXT_SECTION_WINDOW_CLASS_REDIRECTION, "Button",
                                      &data) != FALSE;
}

bool g_bControlsInside = false;

BOOL WINAPI LookForControls(LPCSTR /*lpSource*/, LPCSTR /*lpDestination*/, BOOL /*bFailIfExists*/)
{
    g_bControlsInside = IsControlsContext();
    return TRUE;
}

TEST(ExportContext, IsTheOneOfTheLibrarysManifest)
{
    const Files files;
    const HostContext context;
    const Library library(Form::Loaded);
    ASSERT_TRUE(library.IsComplete());
    const ImportPatch patch(library.Module(), "CopyFileA",
                            reinterpret_cast<void*>(&LookForControls));
    ASSERT_TRUE(patch.IsActive());
    g_bControlsInside = false;
    EXPECT_FALSE(IsControlsContext());
    EXPECT_EQ(library.FileCopy(files.source.c_str(), files.destination.c_str()), 1);
    EXPECT_TRUE(g_bControlsInside);
    EXPECT_FALSE(IsControlsContext());
}

// What an exception tells and who frees it, across the boundary.
TEST(ExportException, OfAFullDiskNamesTheFileToTheHost)
{
    const Files files;
    const Library library(Form::Loaded);
    ASSERT_TRUE(library.IsComplete());
    for (const Situation& situation : AllSituations(files))
    {
        if (situation.left != Left::ByFileException)
            continue;
        SCOPED_TRACE(situation.pszSentence);
        const ImportPatch patch(library.Module(), situation.pszPatched, situation.pReplacement);
        try
        {
            situation.call(library);
            FAIL() << "nothing was thrown";
        }
        catch (CFileException* pException)
        {
            const bool bClosing = std::string(situation.pszPatched) == "CloseHandle";
            EXPECT_EQ(pException->m_cause,
                      bClosing ? CFileException::hardIO : CFileException::diskFull);
            EXPECT_STREQ(pException->m_strFileName,
                         (files.installation + "\\embedch\\config\\chrc").c_str());
            pException->Delete();
        }
    }
}
} // namespace
