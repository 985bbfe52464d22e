// The installer's window: a window of another process, whose thread may be busy at any time.
#pragma once

#include "tarntool/Request.h"

// The top-level window that --parent names; null without the option, and for 0, which is what installers
// have while they show none. Throws Failure for what is no window.
HWND GetParentWindow(const Request& request);

// The window's thread handles its messages.
bool Answers(HWND hWnd);

// EnableWindow, which sends messages, for a window whose thread may not take them: not waited for
// longer than a second.
void EnableForeignWindow(HWND hWnd, BOOL bEnable);
