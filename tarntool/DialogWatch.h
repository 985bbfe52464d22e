// DialogWatch: looks after the first dialog that the calling thread makes, for as long as the object
// lives. The dialog stands over the middle of the installer's window from its first moment on, and keeps
// to the manner that is chosen.
//
// The library makes the wait window for an installer that loads it, which is busy itself: the window
// comes to the front. Here the installer is another program, which is to keep the focus.
#pragma once

#include <windows.h>

class DialogWatch
{
public:
    enum class Manner
    {
        Ordinary,
        Patient, // Enter does not close it
        Quiet    // never takes the focus, nor a place in the task bar
    };

    // Null: over the middle of the screen. One object at a time.
    DialogWatch(HWND hWndParent, Manner manner);
    ~DialogWatch();
    DialogWatch(const DialogWatch&) = delete;
    DialogWatch& operator=(const DialogWatch&) = delete;

    static HWND GetDialog(); // null before it is made

private:
    HHOOK m_hCreationHook = nullptr;
    HHOOK m_hMessageHook = nullptr;
};

// The left upper corner that puts a window of this size over the middle of the installer's.
POINT CentredOver(HWND hWndParent, int cx, int cy);
