// The DLL's own unwinder, where the library itself catches.
#include <gtest/gtest.h>
#include <windows.h>

#include <string>

namespace
{
// jobs.dll, beside this program: the library, with an export that throws and catches inside of it.
std::string PathOfJobs()
{
    char szProgram[MAX_PATH] = "";
    ::GetModuleFileNameA(nullptr, szProgram, MAX_PATH);
    const std::string program = szProgram;
    return program.substr(0, program.rfind('\\') + 1) + "jobs.dll";
}

TEST(Unwinder, TakesAnExceptionPastFramesThatCleanUpToTheCatchThatFits)
{
    HMODULE const hJobs = ::LoadLibraryA(PathOfJobs().c_str());
    ASSERT_NE(hJobs, nullptr);
    const auto pfnCatchInside = reinterpret_cast<int (*)(int, int*)>(
        reinterpret_cast<void*>(::GetProcAddress(hJobs, "CatchInside")));
    ASSERT_NE(pfnCatchInside, nullptr);
    int nCleaned = 0;
    EXPECT_EQ(pfnCatchInside(TRUE, &nCleaned), 1);
    EXPECT_EQ(nCleaned, 2);
    EXPECT_EQ(pfnCatchInside(FALSE, &nCleaned), 2);
    EXPECT_EQ(nCleaned, 2);
    ::FreeLibrary(hJobs);
}
} // namespace
