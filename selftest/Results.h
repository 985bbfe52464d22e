// Results: what became of each test.
#pragma once

#include <string>
#include <vector>

namespace selftest
{
enum class Verdict
{
    Passed,
    Failed,
    Skipped,
    Crashed, // the program ended while the test ran
    Hung,    // the test did not come to its end, and the program was ended
    NotRun   // the program ended before its turn came
};

struct TestResult
{
    std::string suite;
    std::string name;
    Verdict verdict = Verdict::NotRun;
    int nMilliseconds = 0;
    std::string text; // what the test said: why it failed, was skipped, was not run

    std::string FullName() const { return suite + "." + name; }
};

struct ProgramResult
{
    std::string name; // of the file, without its extension
    std::vector<TestResult> tests;
    // What is wrong with the program itself, not with one of its tests; empty when nothing is.
    std::string trouble;
};

struct Counts
{
    int nTests = 0;
    int nPassed = 0;
    int nFailed = 0;
    int nSkipped = 0;
    int nUnfinished = 0; // crashed, hung or not run
    int nTroubles = 0;   // programs with a trouble of their own

    void Add(const ProgramResult& program);
    // Something ran, and nothing went wrong.
    bool IsGood() const
    {
        return nPassed > 0 && nFailed == 0 && nUnfinished == 0 && nTroubles == 0;
    }
};

Counts Count(const std::vector<ProgramResult>& programs);
} // namespace selftest
