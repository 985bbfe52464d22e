// A test program with all that can go wrong with one.
#include <gtest/gtest.h>

#include <windows.h>

#include <cstdlib>
#include <string>

namespace
{
bool Wants(const char* pszTrouble)
{
    const char* const pszTroubles = std::getenv("TARN_TROUBLE");
    return pszTroubles != nullptr && std::string(pszTroubles).find(pszTrouble) != std::string::npos;
}

// Another copy of this program, which lives for a minute unless it is ended.
void LeaveAProcessBehind()
{
    char szProgram[MAX_PATH] = "";
    ::GetModuleFileNameA(nullptr, szProgram, MAX_PATH);
    std::string command =
        "\"" + std::string(szProgram) + "\" --gtest_also_run_disabled_tests --gtest_filter=*Sleeps";
    STARTUPINFOA startup = {};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION process = {};
    ASSERT_TRUE(::CreateProcessA(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr,
                                 nullptr, &startup, &process));
    ::CloseHandle(process.hThread);
    ::CloseHandle(process.hProcess);
}
} // namespace

TEST(Troublesome, Passes)
{
}

TEST(Troublesome, MayCrash)
{
    if (Wants("crash"))
        *static_cast<volatile int*>(nullptr) = 1;
}

TEST(Troublesome, MayFail)
{
    EXPECT_FALSE(Wants("fail")) << "as it was told";
}

TEST(Troublesome, MayHang)
{
    if (Wants("hang"))
        ::Sleep(60000);
}

TEST(Troublesome, MayEndTheProgramAsIfAllWereWell)
{
    if (Wants("quit"))
        ::ExitProcess(0);
}

TEST(Troublesome, MayLeaveAProcessBehind)
{
    if (Wants("leave"))
        LeaveAProcessBehind();
}

TEST(Troublesome, MaySkip)
{
    if (Wants("skip"))
        GTEST_SKIP() << "as it was told";
}

TEST(Troublesome, DISABLED_Sleeps)
{
    ::Sleep(60000);
}

int main(int argc, char** argv)
{
    ::SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX | SEM_NOOPENFILEERRORBOX);
    testing::InitGoogleTest(&argc, argv);
    const bool bLists = testing::GTEST_FLAG(list_tests);
    if (bLists && Wants("no list"))
        return 3;
    const int nResult = RUN_ALL_TESTS();
    return !bLists && Wants("bad end") ? 77 : nResult;
}
