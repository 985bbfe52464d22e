// The installer's window: a window of another process, whose thread may be busy at any time.
#pragma once

#include "tarntool/Request.h"

// The top-level window that --parent names; null without the option, and for 0, which is what installers
// have while they show none. Throws Failure for what is no window.
HWND GetParentWindow(const Request& request);

// The process that the window belongs to, to wait for its end; null when there is none or it may not be
// waited for. To be closed.
HANDLE OpenInstaller(HWND hWnd);

// From now on this process ends when that one does, and at once: nobody is left to tell anything, and a
// dialog without an installer behind it means nothing. Does nothing for null.
void EndWithInstaller(HWND hWnd);

// The window's thread handles its messages.
bool Answers(HWND hWnd);

// EnableWindow, which sends messages, for a window whose thread may not take them: not waited for
// longer than a second.
void EnableForeignWindow(HWND hWnd, BOOL bEnable);
