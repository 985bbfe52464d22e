// Report: the outcome as a text for people and as JUnit's XML for programs.
#pragma once

#include "selftest/Results.h"

#include <string>
#include <utility>
#include <vector>

namespace selftest
{
// What it ran on, as name and value, in the order in which it is shown.
using Facts = std::vector<std::pair<std::string, std::string>>;

struct Report
{
    Facts facts;
    std::vector<ProgramResult> programs;
    // Said at the head when it is not empty: why the run is not complete.
    std::string interrupted;
    std::string sendTo;
    double dSeconds = 0;

    bool IsGood() const { return interrupted.empty() && Count(programs).IsGood(); }
    // "12 programs, 300 tests: 298 passed, 2 skipped"
    std::string Summary() const;
    std::string Text() const;
    std::string Xml() const;
};

// "passed", "FAILED", ...
const char* Word(Verdict verdict);
} // namespace selftest
