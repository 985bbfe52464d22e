// Request: what the caller asks for, checked as far as that is possible without doing it.
//
// An argument is an option only if it is the name of one to the letter; everything else is an operand,
// the first one the command. Options may stand anywhere. Behind -- there are none.
#pragma once

#include <afx.h>

#include "tarntool/CommandLine.h"

#include <memory>

struct Command;

class Request
{
public:
    enum Option : UINT
    {
        Parent = 1U << 0,
        Title = 1U << 1,
        Message = 1U << 2,
        ID = 1U << 3,
        Folder = 1U << 4,
        Filter = 1U << 5,
        Extension = 1U << 6,
        File = 1U << 7,
        Patience = 1U << 8,
        Out = 1U << 9,
        Quiet = 1U << 10
    };
    static constexpr int kOptions = 11;

    // pszArguments: the command line behind the program's name; must outlive the object. Throws Failure
    // when the arguments are not those of a command.
    explicit Request(LPCWSTR pszArguments);

    const Command& GetCommand() const { return *m_pCommand; }
    bool Has(Option option) const { return (m_nGiven & option) != 0; }
    LPCWSTR Value(Option option) const; // null when it is not given
    int GetOperandCount() const { return m_nOperands - 1; }
    LPCWSTR Operand(int i) const { return m_ppszOperands.get()[i + 1]; }
    // The line behind --, of a command that takes one; null without.
    LPCWSTR GetTail() const { return m_line.GetTail(); }

private:
    void Sort();
    void Check() const;

    const CommandLine m_line;
    std::unique_ptr<CommandLine> m_pBehindDashes; // of a command that takes no line there
    std::unique_ptr<LPCWSTR[]> m_ppszOperands;    // the first is the command
    int m_nOperands = 0;
    UINT m_nGiven = 0;
    LPCWSTR m_pszValues[kOptions] = {};
    const Command* m_pCommand = nullptr;
};
