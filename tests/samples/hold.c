/*
 * hold FILE MARK - keeps a file open, which others may read but neither write nor delete, from when it makes
 * the file MARK until that is gone: a file in use, or a program that runs, for the tests of the installers.
 */
#include <windows.h>

int main(int argc, char** argv)
{
    HANDLE file, mark;
    int i;
    if (argc != 3)
        return 2;
    file = CreateFileA(argv[1], GENERIC_READ, FILE_SHARE_READ, NULL, OPEN_EXISTING, 0, NULL);
    if (file == INVALID_HANDLE_VALUE)
        return 1;
    mark = CreateFileA(argv[2], GENERIC_WRITE, 0, NULL, CREATE_ALWAYS, 0, NULL);
    if (mark == INVALID_HANDLE_VALUE)
        return 1;
    CloseHandle(mark);
    for (i = 0; i < 6000 && GetFileAttributesA(argv[2]) != INVALID_FILE_ATTRIBUTES; ++i)
        Sleep(50);
    CloseHandle(file);
    return 0;
}
