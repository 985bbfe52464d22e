// Request: what the caller asks for, checked as far as that is possible without doing it.
//
// An argument is an option only if it is the name of one to the letter; everything else is an operand,
// the first one the command. Options may stand anywhere. Behind -- there are none.
#pragma once

#include <afx.h>

#include "tarntool/CommandLine.h"
#include "tarntool/Options.h"

#include <memory>

struct Command;

class Request : public Options
{
public:
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
