// TestProgram: runs all tests of one program. One that crashes or hangs takes only itself along: the
// program is started again for those that are left.
#pragma once

#include "selftest/Process.h"
#include "selftest/Results.h"

#include <functional>
#include <string>

namespace selftest
{
// Told of the tests that have ended, and of all.
using Progress = std::function<void(int nEnded, int nTests)>;

// The folder is one in which a file can be made.
ProgramResult RunTests(const std::wstring& program, const std::wstring& folder,
                       const Limits& limits, const Progress& progress);
} // namespace selftest
