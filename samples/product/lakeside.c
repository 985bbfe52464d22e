/*
 * The sample product's program: says where it is installed and whether its parts are there.
 * Exit code 0 when they are. "--first-run" is what the installer queues for the next log-on.
 */
#include <windows.h>

#include <stdio.h>
#include <string.h>

static int Check(const char* folder, const char* name)
{
    char path[2 * MAX_PATH];
    snprintf(path, sizeof(path), "%s\\%s", folder, name);
    int found = GetFileAttributesA(path) != INVALID_FILE_ATTRIBUTES;
    printf("  %s  %s\n", found ? "found  " : "MISSING", name);
    return found;
}

int main(int argc, char** argv)
{
    char folder[MAX_PATH];
    DWORD length = GetModuleFileNameA(NULL, folder, sizeof(folder));
    if (length == 0 || length >= sizeof(folder))
        return 2;
    for (int levels = 0; levels < 2; ++levels) /* the file's name, then "bin" */
    {
        char* end = strrchr(folder, '\\');
        if (end == NULL)
            return 2;
        *end = 0;
    }

    if (argc > 1 && strcmp(argv[1], "--first-run") == 0)
        printf("Welcome to Lakeside Workbench.\n");
    printf("Lakeside Workbench in %s\n", folder);
    int complete = Check(folder, "bin\\survey.dat");
    complete &= Check(folder, "embedch\\config\\chrc");
    complete &= Check(folder, "registration.ini");
    return complete ? 0 : 1;
}
