// TestOutput: reads what GoogleTest prints, also when it stops in the middle.
#pragma once

#include "selftest/Results.h"

#include <cstddef>
#include <string>
#include <vector>

namespace selftest
{
// The tests of a program that prints its list (--gtest_list_tests), none of which has run. Disabled
// ones are left out: they are parts of others, which start them.
std::vector<TestResult> ReadList(const std::string& list);

// Puts into the tests what a run of them printed. Returns the index of the test that had begun and not
// ended, or tests.size(). What the run says of other tests than these is text like any other.
std::size_t ReadRun(const std::string& output, std::vector<TestResult>& tests);

// How many tests had ended when the program had printed this much.
int CountEnded(const std::string& output);
} // namespace selftest
