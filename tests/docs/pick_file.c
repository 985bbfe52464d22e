/*
 * pick_file.exe TITLE PATH - the user of an Open dialog: waits for the dialog of that title, types the
 * path and presses Enter. Exit code 0 when the dialog has gone.
 */
#include <stdio.h>
#include <windows.h>

enum
{
    FILE_NAME = 1148, /* the control that the name is typed into */
    WAIT_MS = 50,
    PATIENCE_MS = 30000
};

static HWND FindDialog(const char* title)
{
    HWND dialog = FindWindowA("#32770", title);

    return dialog != NULL && IsWindowVisible(dialog) && GetDlgItem(dialog, FILE_NAME) != NULL
               ? dialog
               : NULL;
}

int main(int argc, char** argv)
{
    HWND dialog;
    int waited;

    if (argc != 3)
        return 2;
    for (waited = 0; (dialog = FindDialog(argv[1])) == NULL; waited += WAIT_MS)
    {
        if (waited >= PATIENCE_MS)
        {
            printf("There is no dialog '%s'.\n", argv[1]);
            return 1;
        }
        Sleep(WAIT_MS);
    }
    SendMessageA(GetDlgItem(dialog, FILE_NAME), WM_SETTEXT, 0, (LPARAM)argv[2]);
    PostMessageA(dialog, WM_COMMAND, IDOK, (LPARAM)GetDlgItem(dialog, IDOK));
    for (waited = 0; IsWindow(dialog); waited += WAIT_MS)
    {
        if (waited >= PATIENCE_MS)
        {
            printf("The dialog '%s' does not take '%s'.\n", argv[1], argv[2]);
            return 1;
        }
        Sleep(WAIT_MS);
    }
    return 0;
}
