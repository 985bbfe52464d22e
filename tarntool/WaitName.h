// The names under which a wait window of one process is found by another: objects of the session, made
// from the identifier that the caller chose.
#pragma once

#include "tarntool/Request.h"

// What the owner of a wait window tells whoever ends it.
struct WaitRecord
{
    DWORD nProcessID;
};

class WaitName
{
public:
    // Of what --id names. Any text will do: what has a meaning in names of objects is written in another
    // way, so that different identifiers have different names. Throws Failure when there is none.
    explicit WaitName(const Request& request);

    LPCWSTR Record() const { return m_szRecord; } // a section with a WaitRecord
    LPCWSTR Done() const { return m_szDone; }     // an event: the window is to go

private:
    static constexpr int kMaxName = 250;
    WCHAR m_szRecord[kMaxName + 1] = {};
    WCHAR m_szDone[kMaxName + 1] = {};
};
