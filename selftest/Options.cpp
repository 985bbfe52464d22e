#include "selftest/Options.h"

#include <algorithm>
#include <cstddef>

namespace selftest
{
const char* const kUsage =
    "selftest [--touch-user] [--limit SECONDS] [PART-OF-A-NAME]...\r\n"
    "\r\n"
    "Runs the tests of tarn.dll, or those of the programs whose names have one of the parts, "
    "and\r\n"
    "writes report.txt and report.xml beside this program. Exit code 0: everything passed.\r\n"
    "\r\n"
    "  --touch-user     also what leaves traces in the settings of the user who runs it: the "
    "system's\r\n"
    "                   Open dialog, which remembers folders and files; a value in RunOnce, "
    "which\r\n"
    "                   is removed again; a folder at the root of the drive, likewise\r\n"
    "  --limit SECONDS  how long a test may be silent before it counts as hung; 180 without it\r\n";

Options ReadOptions(const std::vector<std::string>& words)
{
    Options options;
    for (std::size_t i = 0; i < words.size(); ++i)
    {
        const std::string& word = words[i];
        if (word == "--help" || word == "-h" || word == "/?")
            options.bHelp = true;
        else if (word == "--touch-user")
            options.bMayTouchUser = true;
        else if (word == "--limit" && i + 1 < words.size())
        {
            const std::string& number = words[++i];
            if (number.empty() || number.size() > 5 ||
                number.find_first_not_of("0123456789") != std::string::npos ||
                std::stoul(number) == 0)
                options.error = "--limit takes a number of seconds, not " + number;
            else
                options.nSilenceSeconds = static_cast<unsigned int>(std::stoul(number));
        }
        else if (word.empty() || word.front() == '-')
            options.error = "not understood: " + word;
        else
            options.programs.push_back(word);
    }
    return options;
}

bool IsWanted(const Options& options, const std::string& program)
{
    return options.programs.empty() ||
           std::any_of(
               options.programs.begin(), options.programs.end(),
               [&](const std::string& part) { return program.find(part) != std::string::npos; });
}
} // namespace selftest
