#include "tarntool/Commands.h"

#include "tarntool/Options.h"

#include <cwchar>

namespace
{
using R = Options;

constexpr int kAnyNumber = 0x7FFFFFFF;

constexpr Command kCommands[] = {
    {L"check", 1, 1, R::Out, false, "one ADDRESS", &CheckAddress},
    {L"copy", 2, kAnyNumber, R::Out, false, "a FOLDER and at least one FILE", &CopyFiles},
    {L"runonce", 1, 2, R::Out, true, "a NAME and a COMMAND", &QueueRunOnce},
    {L"config", 1, 1, R::Out | R::Quiet, false, "one FOLDER", &WriteConfig},
    {L"open", 0, 0, R::Parent | R::Title | R::Folder | R::Filter | R::Extension | R::File | R::Out,
     false, "options only", &OpenFile},
    {L"wait", 0, 0, R::Parent | R::Title | R::Message | R::ID | R::Out, false, "options only",
     &ShowWaitWindow},
    {L"done", 0, 0, R::ID | R::Out, false, "options only", &EndWaitWindow},
    {L"run", 0, 0, R::Parent | R::Title | R::Message | R::Patience | R::Out, true,
     "the program behind --", &RunProgram},
    {L"version", 0, 0, R::Out, false, "nothing else", &ShowVersion},
    {L"help", 0, 0, R::Out, false, "nothing else", &ShowHelp},
};

struct Alias
{
    LPCWSTR pszAlias;
    LPCWSTR pszName;
};
constexpr Alias kAliases[] = {
    {L"--help", L"help"}, {L"-h", L"help"}, {L"/?", L"help"}, {L"--version", L"version"}};
} // namespace

const Command* FindCommand(LPCWSTR pszName)
{
    for (const Alias& alias : kAliases)
    {
        if (std::wcscmp(pszName, alias.pszAlias) == 0)
            pszName = alias.pszName;
    }
    for (const Command& command : kCommands)
    {
        if (std::wcscmp(pszName, command.pszName) == 0)
            return &command;
    }
    return nullptr;
}
