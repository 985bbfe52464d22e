#include "selftest/Results.h"

namespace selftest
{
void Counts::Add(const ProgramResult& program)
{
    for (const TestResult& test : program.tests)
    {
        ++nTests;
        switch (test.verdict)
        {
        case Verdict::Passed:
            ++nPassed;
            break;
        case Verdict::Failed:
            ++nFailed;
            break;
        case Verdict::Skipped:
            ++nSkipped;
            break;
        case Verdict::Crashed:
        case Verdict::Hung:
        case Verdict::NotRun:
            ++nUnfinished;
            break;
        }
    }
    if (!program.trouble.empty())
        ++nTroubles;
}

Counts Count(const std::vector<ProgramResult>& programs)
{
    Counts counts;
    for (const ProgramResult& program : programs)
        counts.Add(program);
    return counts;
}
} // namespace selftest
