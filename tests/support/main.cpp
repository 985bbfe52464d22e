// Entry point of every test program.
#include <gtest/gtest.h>

#ifdef _WIN32
#include <windows.h>

#include <cstdlib>
#endif

int main(int argc, char** argv)
{
#ifdef _WIN32
    // A crash must end the test, not wait for somebody to answer a box.
    ::SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX | SEM_NOOPENFILEERRORBOX);
    _set_abort_behavior(0, _WRITE_ABORT_MSG | _CALL_REPORTFAULT);
#endif
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
