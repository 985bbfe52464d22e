// Host: a program with a module state and an activation context of its own, as seen by a library that
// it calls; notes what a call changes in either.
#pragma once

#include <afxwin.h>

#include <functional>
#include <string>

// A context of the test's own, active on the calling thread for as long as the object lives.
class HostContext
{
public:
    HostContext();
    ~HostContext();
    HostContext(const HostContext&) = delete;
    HostContext& operator=(const HostContext&) = delete;

    bool IsActive() const { return Current() == m_hActCtx && m_bActivated != FALSE; }
    HANDLE Handle() const { return m_hActCtx; }

    // The context that is active on the calling thread; only to compare.
    static HANDLE Current();

private:
    HANDLE m_hActCtx = INVALID_HANDLE_VALUE; // owned
    ULONG_PTR m_ulCookie = 0;
    BOOL m_bActivated = FALSE;
};

// How a call ended.
enum class Left
{
    ByReturning,
    ByMemoryException,
    ByInvalidArgException,
    ByFileException,
    BySomethingElse
};

struct CallOutcome
{
    Left left = Left::ByReturning;
    int nResult = -1;          // meaningful after a return
    bool bStateKept = false;   // the host's module state is current, as before
    bool bContextKept = false; // the host's context is active, as before
};

// Calls a function as a program does that catches what it throws.
CallOutcome CallAsHost(const std::function<int()>& function);
