// How tarntool ends: its exit codes, and what is thrown on the way there.
#pragma once

#include <afx.h>

// Documented in docs/tarntool.md. "run" gives back the program's own code, so those of tarntool stand
// where programs rarely put theirs.
enum class ExitCode : UINT
{
    Done = 0,
    Refused = 1,            // the address is not one
    WrongArguments = 100,   // nothing was done, no window was shown
    Failed = 101,           // what was asked for could not be done
    Cancelled = 102,        // by the user
    TimedOut = 103,         // the program took too long, and was ended
    CannotStart = 104,      // the program
    NoWaitWindow = 105,     // of this identifier
    WaitWindowExists = 106, // of this identifier
    SystemFailure = 107     // out of memory, no place for output
};

// Thrown by value; the sentence, in UTF-8 and without a full stop, goes to the error output.
struct Failure
{
    ExitCode exitCode;
    CString strSentence;
};
