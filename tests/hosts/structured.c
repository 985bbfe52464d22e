/* Compiled by Clang: GCC knows no __try. */
#include "structured.h"

static int Invoke(const struct Call* pCall)
{
    const void* const* p = pCall->arguments;
    return pCall->pfn(p[0], p[1], p[2], p[3], p[4]);
}

static int Note(struct Ending* pEnding, DWORD nCode, int nAnswer)
{
    ++pEnding->nFilters;
    pEnding->nCode = nCode;
    return nAnswer;
}

static void Accept(struct Ending* pEnding, DWORD nDepth)
{
    ++pEnding->nAccepted;
    pEnding->nDepth = nDepth;
}

void CallAndAccept(const struct Call* pCall, struct Ending* pEnding)
{
    __try
    {
        Invoke(pCall);
        ++pEnding->nReturned;
    }
    __except (Note(pEnding, GetExceptionCode(), EXCEPTION_EXECUTE_HANDLER))
    {
        Accept(pEnding, 1);
    }
}

static void CallAndDecline(const struct Call* pCall, struct Ending* pEnding)
{
    __try
    {
        Invoke(pCall);
        ++pEnding->nReturned;
    }
    __except (Note(pEnding, GetExceptionCode(), EXCEPTION_CONTINUE_SEARCH))
    {
        Accept(pEnding, 1);
    }
}

void CallAndAcceptOutside(const struct Call* pCall, struct Ending* pEnding)
{
    __try
    {
        CallAndDecline(pCall, pEnding);
    }
    __except (Note(pEnding, GetExceptionCode(), EXCEPTION_EXECUTE_HANDLER))
    {
        Accept(pEnding, 2);
    }
}

static void CallAndTidy(const struct Call* pCall, struct Ending* pEnding)
{
    __try
    {
        Invoke(pCall);
        ++pEnding->nReturned;
    }
    __finally
    {
        if (AbnormalTermination())
            ++pEnding->nFinally;
    }
}

void CallWithFinally(const struct Call* pCall, struct Ending* pEnding)
{
    __try
    {
        CallAndTidy(pCall, pEnding);
    }
    __except (Note(pEnding, GetExceptionCode(), EXCEPTION_EXECUTE_HANDLER))
    {
        Accept(pEnding, 2);
    }
}

static int NoteAndCall(const struct Call* pCall, struct Ending* pEnding, DWORD nCode)
{
    CallAndAccept(pCall, pEnding);
    return Note(pEnding, nCode, EXCEPTION_EXECUTE_HANDLER);
}

void CallAgainInFilter(const struct Call* pCall, struct Ending* pEnding)
{
    __try
    {
        Invoke(pCall);
        ++pEnding->nReturned;
    }
    __except (NoteAndCall(pCall, pEnding, GetExceptionCode()))
    {
        Accept(pEnding, 1);
    }
}

void CallAgainInHandler(const struct Call* pCall, struct Ending* pEnding)
{
    __try
    {
        Invoke(pCall);
        ++pEnding->nReturned;
    }
    __except (Note(pEnding, GetExceptionCode(), EXCEPTION_EXECUTE_HANDLER))
    {
        Accept(pEnding, 1);
        CallAndAccept(pCall, pEnding);
    }
}

void CallAndContinue(const struct Call* pCall)
{
    __try
    {
        Invoke(pCall);
    }
    __except (EXCEPTION_CONTINUE_EXECUTION)
    {
    }
}

void CallPlainly(const struct Call* pCall)
{
    Invoke(pCall);
}
