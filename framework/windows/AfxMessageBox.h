// Message boxes of the framework.
#pragma once

#include <windows.h>

// Shows a box captioned with the application's name, over the calling thread's window that stays on
// top, or its active one; meanwhile the others take no clicks.
// Without an icon in nType it gets the warning icon. Returns the button chosen, 0 when the box could
// not be shown. Pumps messages.
int AfxMessageBox(LPCSTR lpszText, UINT nType = MB_OK, UINT nIDHelp = 0);
