/* A host that knows structured handling only: what it makes of a call that does not return. */
#ifndef TESTS_HOSTS_STRUCTURED_H
#define TESTS_HOSTS_STRUCTURED_H

#include <windows.h>

#ifdef __cplusplus
extern "C" {
#endif

/* A call of an export; each takes five arguments of a word at most. */
typedef int (*Export)(const void*, const void*, const void*, const void*, const void*);
struct Call
{
    Export pfn;
    const void* arguments[5];
};

struct Ending
{
    int nReturned; /* calls that came back as calls do */
    int nFilters;  /* how often a filter was asked */
    int nFinally;  /* how often a __finally ran because of an exception */
    int nAccepted; /* handlers that ran */
    DWORD nCode;   /* what the filter saw last */
    DWORD nDepth;  /* of the handler that ran: 1 is the innermost */
};

/* __try and __except: accepts whatever comes. */
void CallAndAccept(const struct Call* pCall, struct Ending* pEnding);
/* Two handlers; the inner one's filter says that it is none of its business. */
void CallAndAcceptOutside(const struct Call* pCall, struct Ending* pEnding);
/* __try and __finally inside of __try and __except. */
void CallWithFinally(const struct Call* pCall, struct Ending* pEnding);
/* The filter calls, too, and accepts what comes of that in itself. */
void CallAgainInFilter(const struct Call* pCall, struct Ending* pEnding);
/* The handler calls, too. */
void CallAgainInHandler(const struct Call* pCall, struct Ending* pEnding);
/* A filter that lets the program go on where the exception was raised. */
void CallAndContinue(const struct Call* pCall);
/* No handler at all. */
void CallPlainly(const struct Call* pCall);

/* A language with a handler of its own, which takes the frames away itself:
   0  by RtlUnwindEx, with the exception's record, as a language's run-time does
   1  by RtlUnwind, with that record
   2  by RtlUnwind, without a record
   Returns 1 when it had to, 0 when the call returned. */
int CallFromOtherLanguage(const struct Call* pCall, int nWay);

#ifdef __cplusplus
}
#endif

#endif
