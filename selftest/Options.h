// Options: the words behind the program's name.
#pragma once

#include <string>
#include <vector>

namespace selftest
{
struct Options
{
    bool bHelp = false;
    bool bMayTouchUser = false;
    unsigned int nSilenceSeconds = 180;
    std::vector<std::string> programs; // parts of names; empty: all
    std::string error;                 // what is not understood
};

Options ReadOptions(const std::vector<std::string>& words);
// Whether a program is among those that were asked for.
bool IsWanted(const Options& options, const std::string& program);
extern const char* const kUsage;
} // namespace selftest
