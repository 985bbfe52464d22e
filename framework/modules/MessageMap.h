// Message maps: tables from messages to member functions, one a class, each chained to its base
// class's.
#pragma once

#include <windows.h>

class CCmdTarget;

#define afx_msg // marks message handlers

// One message and its handler: one of the two pointers; an entry with neither ends the map.
struct AFX_MSGMAP_ENTRY
{
    UINT nMessage;
    LRESULT (CCmdTarget::*pfnMessage)(WPARAM, LPARAM);
    void (CCmdTarget::*pfnTimer)(UINT_PTR);
};

struct AFX_MSGMAP
{
    const AFX_MSGMAP* (*pfnGetBaseMap)();
    const AFX_MSGMAP_ENTRY* lpEntries;
};

#define DECLARE_MESSAGE_MAP()                                                                      \
protected:                                                                                         \
    static const AFX_MSGMAP* GetThisMessageMap();                                                  \
    virtual const AFX_MSGMAP* GetMessageMap() const;

#define BEGIN_MESSAGE_MAP(theClass, baseClass)                                                     \
    const AFX_MSGMAP* theClass::GetMessageMap() const                                              \
    {                                                                                              \
        return GetThisMessageMap();                                                                \
    }                                                                                              \
    const AFX_MSGMAP* theClass::GetThisMessageMap()                                                \
    {                                                                                              \
        using ThisClass [[maybe_unused]] = theClass;                                               \
        using TheBaseClass = baseClass;                                                            \
        static const AFX_MSGMAP_ENTRY kEntries[] = {

#define END_MESSAGE_MAP()                                                                          \
    {                                                                                              \
        0, nullptr, nullptr                                                                        \
    }                                                                                              \
    }                                                                                              \
    ;                                                                                              \
    static const AFX_MSGMAP kMap = {&TheBaseClass::GetThisMessageMap, kEntries};                   \
    return &kMap;                                                                                  \
    }

// LRESULT memberFxn(WPARAM, LPARAM)
#define ON_MESSAGE(message, memberFxn)                                                             \
    {message, static_cast<LRESULT (CCmdTarget::*)(WPARAM, LPARAM)>(memberFxn), nullptr},

// void OnTimer(UINT_PTR nIDEvent)
#define ON_WM_TIMER()                                                                              \
    {WM_TIMER, nullptr, static_cast<void (CCmdTarget::*)(UINT_PTR)>(&ThisClass::OnTimer)},
