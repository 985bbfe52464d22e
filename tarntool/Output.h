// What the program says: UTF-8, lines that end in CR LF.
//
// A windowed program has what its caller gave it: a pipe, a file, or nothing. Started from a console
// without redirection it gets nothing either, but may attach itself to that console, which opens no
// window; it does so when it has something to say.
#pragma once

#include "tarntool/ScopedHandle.h"

#include <afx.h>

// Standard output, or the file that --out names.
class Output
{
public:
    // Null: standard output. Throws Failure when the file cannot be made.
    explicit Output(LPCWSTR pszFile);

    // UTF-8, without the line's end. Throws Failure when it cannot be written.
    void WriteLine(LPCSTR pszLine);

    // Where a program that is started may write to; null for nowhere.
    HANDLE GetHandle() const { return m_hStream; }
    bool IsFile() const { return m_file.IsValid(); }

private:
    ScopedHandle m_file;
    HANDLE m_hStream = nullptr; // the file, or borrowed from the process
};

// "tarntool: SENTENCE." on the error output; where there is none, nowhere.
void WriteError(LPCSTR pszSentence) noexcept;

// One of the process's own streams (STD_OUTPUT_HANDLE and so on), or null where the caller gave none and
// there is no console either. Borrowed.
HANDLE GetStream(DWORD nStream) noexcept;

// The process uses the console that it was started from.
bool IsAttachedToConsole() noexcept;
