// The command line, taken apart. Makes no call to the system.
//
// Two ways of writing arguments are in use, and they disagree about a backslash before a quotation mark:
//
//   plain     what people and installer scripts write. A backslash is a backslash, "C:\Target\" is a
//             folder. Inside quotation marks two of them stand for one.
//   standard  what the libraries of programming languages write. A backslash before a quotation mark
//             makes it part of the argument, "C:\Target\\" is the folder.
//
// In both, a quotation mark stands only where an argument begins or ends, with a blank or the line's end
// beside it. That tells them apart: a line of one kind, read as the other, has a mark in the midst of an
// argument, or one too few. What is right in neither way is refused, not guessed at.
#pragma once

#ifdef _WIN32
#include <windows.h>
#endif

class CommandLine
{
public:
    // pszArguments: a line without the program's name; must outlive the object. bDashes: an argument that
    // is just -- ends the arguments.
    explicit CommandLine(const wchar_t* pszArguments, bool bDashes = true);
    ~CommandLine();
    CommandLine(const CommandLine&) = delete;
    CommandLine& operator=(const CommandLine&) = delete;

    // False: the quotation marks do not match, and there are no arguments.
    bool IsValid() const { return m_bValid; }

    int GetCount() const { return m_nCount; }
    const wchar_t* operator[](int i) const { return m_ppszArguments[i]; }

    // What follows the -- that ended the arguments, as it stands in the line; null without one.
    const wchar_t* GetTail() const { return m_pszTail; }

    // What follows the program's name in a line.
    static const wchar_t* SkipProgram(const wchar_t* pszLine);

private:
    enum class Way
    {
        Standard,
        Plain
    };
    bool Read(const wchar_t* psz, Way way);
    bool ReadQuoted(const wchar_t** ppsz, Way way);
    bool ReadBare(const wchar_t** ppsz, Way way);
    void ReadBackslashes(const wchar_t** ppsz);

    const bool m_bDashes;
    int m_nCount = 0;
    wchar_t* m_pText;                // owned; the arguments' texts, one behind the other
    wchar_t* m_pEnd = nullptr;       // of what is written of them
    const wchar_t** m_ppszArguments; // owned
    const wchar_t* m_pszTail = nullptr;
    const bool m_bValid; // after what reading writes to
};
