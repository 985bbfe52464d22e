// Measures two ways of doing the same thing in turn, round by round, and prints the table's rows.
#pragma once

#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

class Clock
{
public:
    static double Seconds()
    {
        LARGE_INTEGER n;
        LARGE_INTEGER nPerSecond;
        ::QueryPerformanceCounter(&n);
        ::QueryPerformanceFrequency(&nPerSecond);
        return static_cast<double>(n.QuadPart) / static_cast<double>(nPerSecond.QuadPart);
    }
};

// One way: what is timed, and what puts things back afterwards, outside the time.
struct Way
{
    std::function<void()> run;
    std::function<void()> after = [] {};
};

// Seconds of each way, medians over the rounds. In every round each way has its turn, with nCalls
// calls; the order alternates.
inline std::vector<double> MeasureInTurn(const std::vector<Way>& ways, int nRounds, int nCalls)
{
    std::vector<std::vector<double>> times(ways.size());
    for (int nRound = -2; nRound < nRounds; ++nRound) // the first two warm up
    {
        for (std::size_t i = 0; i < ways.size(); ++i)
        {
            const std::size_t nWay = nRound % 2 == 0 ? i : ways.size() - 1 - i;
            const double start = Clock::Seconds();
            for (int nCall = 0; nCall < nCalls; ++nCall)
                ways[nWay].run();
            const double end = Clock::Seconds();
            if (nRound >= 0)
                times[nWay].push_back((end - start) / nCalls);
            ways[nWay].after();
        }
    }
    std::vector<double> medians;
    for (std::vector<double>& series : times)
    {
        const auto middle = series.begin() + static_cast<std::ptrdiff_t>(series.size() / 2);
        std::nth_element(series.begin(), middle, series.end());
        medians.push_back(*middle);
    }
    return medians;
}

class Table
{
public:
    Table()
    {
        std::printf("%-46s %12s %12s %7s %7s  %s\n", "what", "ours", "bare", "ratio", "limit",
                    "verdict");
    }

    // A row whose two figures are compared with a limit of their ratio.
    void Row(const std::string& what, const std::string& ours, const std::string& bare,
             double ratio, double limit)
    {
        const bool bKept = ratio <= limit;
        m_bKept = m_bKept && bKept;
        std::printf("%-46s %12s %12s %7.3f %7.3f  %s\n", what.c_str(), ours.c_str(), bare.c_str(),
                    ratio, limit, bKept ? "kept" : "PASSED");
        std::fflush(stdout);
    }

    void Times(const std::string& what, double limit, int nRounds, int nCalls, const Way& ours,
               const Way& bare)
    {
        const std::vector<double> t = MeasureInTurn({ours, bare}, nRounds, nCalls);
        Row(what, Text(t[0]), Text(t[1]), t[0] / t[1], limit);
    }

    // Ten times the work: how many times the time, ours and bare.
    void Growth(const std::string& what, double limit, int nRounds, int nCalls, const Way& ours,
                const Way& oursTenfold, const Way& bare, const Way& bareTenfold)
    {
        const std::vector<double> t =
            MeasureInTurn({ours, oursTenfold, bare, bareTenfold}, nRounds, nCalls);
        const double growth = t[1] / t[0];
        const double growthBare = t[3] / t[2];
        char szOurs[32];
        char szBare[32];
        std::snprintf(szOurs, sizeof(szOurs), "x %.2f", growth);
        std::snprintf(szBare, sizeof(szBare), "x %.2f", growthBare);
        Row(what, szOurs, szBare, growth / growthBare, limit);
        // Linear: ten times the work costs no more than ten times the time.
        Row(what + ": linear", szOurs, "x 10", growth / 10, limit);
    }

    bool AllKept() const { return m_bKept; }

private:
    static std::string Text(double seconds)
    {
        char sz[32];
        if (seconds < 1e-5)
            std::snprintf(sz, sizeof(sz), "%.1f ns", seconds * 1e9);
        else if (seconds < 1e-2)
            std::snprintf(sz, sizeof(sz), "%.1f us", seconds * 1e6);
        else
            std::snprintf(sz, sizeof(sz), "%.2f ms", seconds * 1e3);
        return sz;
    }

    bool m_bKept = true;
};
