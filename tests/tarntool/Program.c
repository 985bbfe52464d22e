/* What "tarntool run" runs in its tests. Its first argument says what it does. */
#include <windows.h>

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static void Start(const char* argument)
{
    char path[MAX_PATH];
    char line[MAX_PATH + 20];
    STARTUPINFOA startup = {sizeof(startup)};
    PROCESS_INFORMATION process;
    GetModuleFileNameA(NULL, path, MAX_PATH);
    sprintf(line, "\"%s\" %s", path, argument);
    if (CreateProcessA(path, line, NULL, NULL, FALSE, 0, NULL, NULL, &startup, &process))
    {
        CloseHandle(process.hThread);
        CloseHandle(process.hProcess);
    }
}

/* Until a test lets it go, or for two minutes. */
static void Wait(void)
{
    HANDLE go = CreateEventA(NULL, TRUE, FALSE, "Local\\tarn tool-program");
    WaitForSingleObject(go, 120000);
}

int main(int argc, char** argv)
{
    const char* what = argc > 1 ? argv[1] : "";
    if (strcmp(what, "exit") == 0)
    {
        puts("to the output");
        fputs("to the error output\n", stderr);
        return (int)strtoul(argv[2], NULL, 10);
    }
    if (strcmp(what, "line") == 0)
    {
        /* The command line in UTF-8, without a line's end. */
        static char text[4096];
        DWORD written;
        int length =
            WideCharToMultiByte(CP_UTF8, 0, GetCommandLineW(), -1, text, sizeof(text), NULL, NULL);
        WriteFile(GetStdHandle(STD_OUTPUT_HANDLE), text, (DWORD)length - 1, &written, NULL);
        return 0;
    }
    if (strcmp(what, "tree") == 0)
        Start("branch");
    else if (strcmp(what, "branch") == 0)
        Start("wait");
    else if (strcmp(what, "leave") == 0)
    {
        Start("wait");
        return 6;
    }
    Wait();
    return 4;
}
