/*
 * setup.c - a small installer: checks the user's e-mail address, copies files and writes the
 * interpreter's start-up file, with the wait window shown meanwhile.
 *
 *   setup ADDRESS FOLDER FILE...
 *
 * Linked with the import library: Windows loads tarn.dll together with the program, and says so
 * itself when it cannot. (The sample in C++ loads the library when it runs, and can say more.)
 *
 * Exit codes: 0 installed; 1 wrong arguments; 2 the address is refused; 3 installing failed.
 */
#if !defined(_M_X64) && !defined(__x86_64__)
#error "tarn.dll is a library for 64-bit Windows on x86-64: build this program for x64"
#endif

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <tarn.h>

/* The three texts in one; the caller frees it. */
static char* join(const char* first, const char* second, const char* third)
{
    char* text = malloc(strlen(first) + strlen(second) + strlen(third) + 1);
    if (text == NULL)
    {
        fprintf(stderr, "setup: out of memory\n");
        exit(3);
    }
    strcpy(text, first);
    strcat(text, second);
    strcat(text, third);
    return text;
}

/* The 0-based place of the fault. The library counts from 0 up to the '@', and from 1 behind it. */
static int column_of_fault(const char* address, int position)
{
    const char* at = strchr(address, '@');
    return at != NULL && position > at - address ? position - 1 : position;
}

static int check_address(const char* given)
{
    char message[TARN_EMAIL_MESSAGE_SIZE] = "";
    int position = TARN_NO_ERROR_POSITION;
    char* address = join(given, "", ""); /* the library writes the trimmed address over it */
    int accepted = VerifyEmail(address, &position, message);
    if (!accepted)
    {
        fprintf(stderr, "setup: %s\n", message[0] != '\0' ? message : "The address is empty.");
        fprintf(stderr, "  %s\n", address);
        if (position != TARN_NO_ERROR_POSITION)
            fprintf(stderr, "  %*s\n", column_of_fault(address, position) + 1, "^");
    }
    free(address);
    return accepted;
}

/* Also succeeds when the folder is there already. */
static int make_folder(const char* folder)
{
    DWORD attributes;
    if (CreateDirectoryA(folder, NULL))
        return 1;
    attributes = GetFileAttributesA(folder);
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0)
        return 1;
    fprintf(stderr, "setup: cannot make the folder %s\n", folder);
    return 0;
}

static int make_folders(const char* folder)
{
    char* interpreter = join(folder, "\\embedch", "");
    char* config = join(interpreter, "\\config", "");
    int made = make_folder(folder) && make_folder(interpreter) && make_folder(config);
    free(config);
    free(interpreter);
    return made;
}

/* Between two steps: the wait window is painted and its minute counted by the messages of its thread,
   and Windows takes a thread that handles none for hung. */
static void handle_messages(void)
{
    MSG message;
    while (PeekMessageA(&message, NULL, 0, 0, PM_REMOVE))
    {
        TranslateMessage(&message);
        DispatchMessageA(&message);
    }
}

static int copy_files(const char* folder, char** files, int count)
{
    char* target = join(folder, "\\", ""); /* the library adds no separator */
    int i;
    for (i = 0; i < count; ++i)
    {
        if (!FileCopy(files[i], target))
        {
            fprintf(stderr, "setup: cannot copy %s to %s\n", files[i], target);
            break;
        }
        printf("copied %s\n", files[i]);
        handle_messages();
    }
    free(target);
    return i == count;
}

static int install(const char* folder, char** files, int count)
{
    if (!make_folders(folder) || !copy_files(folder, files, count))
        return 0;
    if (!Write_ch_config_File(folder)) /* has told the user why */
        return 0;
    printf("wrote %s\\embedch\\config\\chrc\n", folder);
    return 1;
}

int main(int argc, char** argv)
{
    int installed;
    if (argc < 4)
    {
        fprintf(stderr, "usage: setup ADDRESS FOLDER FILE...\n");
        return 1;
    }
    if (!check_address(argv[1]))
        return 2;

    DoWaitDlgModless(NULL, "Please wait", "Files are being copied.");
    installed = install(argv[2], argv + 3, argc - 3);
    CloseWaitDlg();
    return installed ? 0 : 3;
}
