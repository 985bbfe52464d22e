// CTarnApp, of which the library has one object: the base class's behaviour and nothing besides.
#include "frame/TarnApp.h"

#include <gtest/gtest.h>

namespace
{
// The classes with their message maps in reach.
class OpenTarnApp : public CTarnApp
{
public:
    using CTarnApp::GetMessageMap;
};
class OpenWinApp : public CWinApp
{
public:
    using CWinApp::GetThisMessageMap;
};

class TarnApp : public testing::Test
{
protected:
    ~TarnApp() override { GetCurrentModuleState()->m_pCurrentWinApp = m_pBefore; }

private:
    CWinApp* m_pBefore = AfxGetApp();
};
} // namespace

TEST_F(TarnApp, HandlesNoMessageItselfAndLeavesThemToTheBaseClass)
{
    const OpenTarnApp app;
    const AFX_MSGMAP* const pMap = app.GetMessageMap();
    ASSERT_NE(pMap, nullptr);
    EXPECT_EQ(pMap->lpEntries[0].pfnMessage, nullptr);
    EXPECT_EQ(pMap->lpEntries[0].pfnTimer, nullptr);
    ASSERT_NE(pMap->pfnGetBaseMap, nullptr);
    EXPECT_EQ(pMap->pfnGetBaseMap(), OpenWinApp::GetThisMessageMap());
}

TEST_F(TarnApp, IsNamedAfterItsModule)
{
    const OpenTarnApp app;
    EXPECT_STREQ(app.m_pszAppName, "frame.TarnAppTest");
}

TEST_F(TarnApp, IsTheCurrentApplicationForAsLongAsItLives)
{
    {
        OpenTarnApp app;
        EXPECT_EQ(AfxGetApp(), &app);
        EXPECT_TRUE(app.InitInstance());
        EXPECT_EQ(app.ExitInstance(), 0);
    }
    EXPECT_EQ(AfxGetApp(), nullptr);
}
