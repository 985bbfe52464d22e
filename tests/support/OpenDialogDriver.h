// Finds the parts of the system's Open dialog and works them, in the classic dialog, which Wine shows, and
// in the newer one of Windows. The documented numbers of the classic controls hold in both; in the newer
// dialog the name is in an edit box inside of the control of that number.
#pragma once

#include <windows.h>

#include <commctrl.h>

#include <string>

namespace open_dialog_driver
{
// The first descendant of a window class, or null.
HWND FindDescendant(HWND hWnd, const char* pszClass);

HWND FileNameBox(HWND hDialog);
HWND FileTypes(HWND hDialog);   // a combo box; null in the newer dialog when there are none
HWND FilesShown(HWND hDialog);  // a list view, of the classic dialog only
HWND ReadOnlyBox(HWND hDialog); // of the classic dialog only

// Whether it is on the screen and takes a name.
bool IsReady(HWND hDialog);

void Type(HWND hDialog, const std::string& text);
std::string FileName(HWND hDialog);
void Confirm(HWND hDialog);
void Cancel(HWND hDialog);
// The dialog's own question or complaint: OK.
void AnswerBox(HWND hBox);
} // namespace open_dialog_driver
