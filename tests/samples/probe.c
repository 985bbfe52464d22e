/*
 * Prints what a user sees on the screen, for scripts that drive the sample's windows: a line for each
 * visible top-level window, and below it one for each visible control of it. Fields are separated by
 * tabs:
 *
 *   window   class  left top right bottom  foreground or -  title
 *   control  class  id  enabled or disabled  focus or -  selection (edit controls) or -  text
 */
#include <windows.h>

#include <stdio.h>
#include <string.h>

static BOOL CALLBACK PrintControl(HWND control, LPARAM focus)
{
    char name[64] = "", text[1024] = "", selection[32] = "-";
    if (!IsWindowVisible(control))
        return TRUE;
    GetClassNameA(control, name, sizeof(name));
    SendMessageTimeoutA(control, WM_GETTEXT, sizeof(text), (LPARAM)text, SMTO_ABORTIFHUNG, 2000,
                        NULL);
    if (strstr(name, "Edit") != NULL) /* also those of a framework with names of its own */
    {
        DWORD_PTR range = 0;
        SendMessageTimeoutA(control, EM_GETSEL, 0, 0, SMTO_ABORTIFHUNG, 2000, &range);
        snprintf(selection, sizeof(selection), "%d-%d", LOWORD(range), HIWORD(range));
    }
    for (char* c = text; *c != 0; ++c)
        if (*c == '\r' || *c == '\n' || *c == '\t')
            *c = ' ';
    printf("control\t%s\t%d\t%s\t%s\t%s\t%s\n", name, GetDlgCtrlID(control),
           IsWindowEnabled(control) ? "enabled" : "disabled",
           control == (HWND)focus ? "focus" : "-", selection, text);
    return TRUE;
}

static BOOL CALLBACK PrintTopLevel(HWND window, LPARAM unused)
{
    char name[64] = "", title[256] = "";
    RECT rect;
    GUITHREADINFO info = {.cbSize = sizeof(info)};
    (void)unused;
    if (!IsWindowVisible(window) || GetWindowTextA(window, title, sizeof(title)) == 0)
        return TRUE;
    GetClassNameA(window, name, sizeof(name));
    GetWindowRect(window, &rect);
    GetGUIThreadInfo(GetWindowThreadProcessId(window, NULL), &info);
    printf("window\t%s\t%ld %ld %ld %ld\t%s\t%s\n", name, rect.left, rect.top, rect.right,
           rect.bottom, GetForegroundWindow() == window ? "foreground" : "-", title);
    EnumChildWindows(window, PrintControl, (LPARAM)info.hwndFocus);
    return TRUE;
}

int main(void)
{
    EnumWindows(PrintTopLevel, 0);
    return 0;
}
