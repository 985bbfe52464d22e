// The compiler's table of a function: what there is to do about an exception where a call in it throws.
#pragma once

#include <unwind.h>
#include <windows.h>

struct Handling
{
    enum class Kind
    {
        Nothing,
        CleanUp,
        Catch,
        Terminate // the function throws nothing
    };
    Kind kind;
    ULONG_PTR nLandingPad; // where the function goes on
    ULONG_PTR nSelector;   // which catch of several; 0 for a clean-up
    void* pObject;         // as the catch sees it
};

// dispatch: of a frame that has such a table.
Handling FindHandling(const DISPATCHER_CONTEXT& dispatch, _Unwind_Exception* pException);

// The object behind its header, and what the header says of it; only of exceptions of this compiler.
void SetCaughtObject(_Unwind_Exception* pException, void* pObject);
