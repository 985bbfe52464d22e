/*
 * tarn.h - the installer support library, as an installer sees it.
 *
 * tarn.dll exports the seven functions below: C linkage, undecorated names, the one calling
 * convention of Windows x86-64. The header is plain C (C89 and later) and C++.
 *
 * Rules that hold for every function:
 *
 * - Strings are 8-bit, zero-terminated, in the process's ANSI code page. The library keeps no
 *   pointer that it is given past the call.
 * - Output buffers carry no size. The caller provides at least the number of bytes named with the
 *   parameter; a smaller buffer is overrun.
 * - Results are exactly 1 or 0. DoWaitDlgModless and CloseWaitDlg always return 0: their result
 *   carries no information.
 * - No initialisation call is needed, and functions may be called in any order. They are meant to
 *   be called from the installer's user-interface thread. FileCopy, PutInRunOnce, VerifyEmail and
 *   Write_ch_config_File keep nothing between calls and may run on several threads at once; the
 *   wait window and the Open dialog belong to the thread that shows them.
 * - A function may be called from within another: showing, activating and closing windows sends the
 *   installer's windows messages before the call returns, and their procedures may call any of the
 *   seven, at any depth. Each call does what it does from outside. Of the wait window the latest call
 *   counts: CloseWaitDlg from within DoWaitDlgModless closes the window that is being opened, and the
 *   outer call returns without it; DoWaitDlgModless from within CloseWaitDlg leaves the new one open.
 * - While the library shows a box or a dialog, the other windows of the calling thread take no clicks;
 *   nor do those of other threads when the wait window is the calling thread's only window. Afterwards
 *   what was enabled is enabled, and the window that was active is active. Box and dialog stand over
 *   the wait window while that is visible, and have nothing to do with it when it has hidden.
 * - Nothing is logged. The only message box that the library shows of its own accord is the one
 *   that Write_ch_config_File documents.
 * - A failure that cannot be put into a result (no memory, a disk that fills up while a file is
 *   written) leaves the function as a C++ exception, thrown by pointer, after the caller's state
 *   has been restored and everything the call held has been released. What that means for
 *
 *     C++ with MinGW-w64's GCC          catch (...) catches it; std::uncaught_exceptions reads one
 *                                       less afterwards
 *     Visual C++, Clang with __except   an exception of the code 0x20474343; __except may accept
 *                                       it, which ends it. C++ of these compilers does not catch
 *                                       it, but for catch (...) under /EHa
 *     Delphi, 64-bit Inno Setup, .NET   the same code: an external exception, an SEHException;
 *                                       a handler may accept it, which ends it
 *     C, and all without a handler      the process ends, with that code; under MinGW-w64's
 *                                       start-up code by abort, with the code 3
 *
 *   docs/hosts.md says more, and which of these were tried: the first with GCC and the second with
 *   Clang, under Wine.
 * - A call that faults, since a pointer is not what its function asks for, releases nothing of what
 *   it held but restores the caller's activation context when a handler of the caller's survives it.
 * - None of them changes the process's locale, error mode, search path or current folder, with the
 *   one exception that DoFileOpenDialog names.
 */
#ifndef TARN_H_INCLUDED
#define TARN_H_INCLUDED

#include <windows.h>

/* Bytes, with the terminating zero, that VerifyEmail may write to its message buffer. */
#define TARN_EMAIL_MESSAGE_SIZE 73

/* What VerifyEmail stores as the error position when it reports none. */
#define TARN_NO_ERROR_POSITION (-1)

/* Bytes, with the terminating zero, that DoFileOpenDialog may write to its path buffer. */
#define TARN_OPEN_PATH_SIZE 260

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Shows the "please wait" window: captioned, without a close box, above all other windows, centred
 * over the parent and painted before the call returns. The user cannot dismiss it with Escape,
 * Alt+F4 or a close command.
 *
 * parent   The installer's window, over which the wait window is centred; borrowed for the call,
 *          and not made its owner. May be null or no longer a window: the wait window then appears
 *          at the position that the system gives it.
 * title    Caption. May be null or empty: no caption text.
 * message  The line of text. May be null or empty: no text.
 *
 * Returns 0, always; also when no window could be made.
 *
 * The window stays until CloseWaitDlg. It lives on the calling thread, which keeps it alive by
 * running its message loop; the call itself does not pump messages. After 100 ticks of a timer of
 * 600 ms (a minute in which messages are dispatched) the window hides by itself; CloseWaitDlg is
 * still due. A second call before CloseWaitDlg shows a second window: only the newer one is closed
 * by CloseWaitDlg, the older one hides after its minute and its memory stays in use until the
 * library is unloaded.
 *
 * A thread that handles no messages for 5 seconds is taken for hung: Windows then puts a ghost window
 * in the place of each of its windows, which says so, and which the user can move and close. Handle
 * messages between the steps of the work, or call the system's DisableProcessWindowsGhosting first.
 *
 * A wait window that is still open when the library is unloaded is not closed: it is left behind,
 * inert, until its thread ends.
 */
int DoWaitDlgModless(HWND parent, const char* title, const char* message);

/*
 * Destroys the wait window that the latest DoWaitDlgModless opened. Without one, or when called a
 * second time, it does nothing.
 *
 * Call it on the thread that opened the window: the system lets no other thread destroy it. On another
 * thread the library only forgets the window, which lives on until its minute is over and it hides; it
 * stays hidden until its thread ends, and its memory in use until the library is unloaded.
 *
 * Returns 0, always. Does not pump messages.
 */
int CloseWaitDlg(void);

/*
 * Lets the user pick one existing file in the system's Open dialog and returns its full path.
 *
 * initialFolder     Folder that the dialog opens in; see below for what goes before it. May be null or
 *                   empty: the system's choice.
 * title             Caption of the dialog. May be null or empty: the system's own.
 * filter            Pairs of display text and pattern, each ended by a vertical bar, the list by
 *                   one more: "Licence files (*.lic)|*.lic|All files|*.*||". Passed on as it is, an
 *                   empty one too. May be null: none.
 * defaultExtension  Appended, without a dot, to a typed name that has none. May be null: nothing
 *                   is appended.
 * path              In: the file name that the dialog starts with; an empty string for none, and at
 *                   most 259 bytes of a longer one are used. Out: the full path of the chosen file,
 *                   at most 259 bytes and the terminating zero, so the buffer has at least
 *                   TARN_OPEN_PATH_SIZE (260) bytes. Must not be null.
 *
 * Returns 1 when the user confirmed a file; path then holds it. Returns 0 when the user cancelled, the
 * dialog could not be shown, or the path has 260 bytes or more; path is then byte for byte as it was.
 *
 * The call returns when the dialog is closed; meanwhile the dialog pumps the thread's messages. Its
 * owner is the calling thread's wait window while that is visible, else its active window. The
 * system's Open dialog may change the process's current folder.
 *
 * What Windows documents for its dialog, from Windows 7 on: it opens in the folder that the user chose
 * last time, if initialFolder is the one that the program passed when it first showed such a dialog;
 * else in the folder of a path in the initial name; else in initialFolder. An initial name that is a
 * folder's is a name like any other: confirming it opens that folder in the dialog; with a separator
 * at its end the system may refuse to show the dialog. The read-only choice, whose state is ignored,
 * is a box in the classic dialog and a menu of the Open button in the newer one. The thread should
 * not be in a multithreaded COM apartment, in which the shell's parts of the dialog do not work.
 */
int DoFileOpenDialog(char* initialFolder, char* title, const char* filter,
                     const char* defaultExtension, char* path);

/*
 * Copies one file, under its own name, to the place that the folder text names.
 *
 * source  Path of the file to copy. Both '\' and '/' separate folders. Null counts as empty.
 * folder  The destination folder. The file's name is appended directly to this text, with NO
 *         separator added: pass a folder that ends in '\' or '/'. "C:\Target" with "D:\a.txt" makes
 *         "C:\Targeta.txt". Null counts as empty: the file goes to the process's current folder.
 *
 * Returns 1 when the file was copied. A file that is already there is replaced without asking.
 * Returns 0 when source is empty, does not exist or is a folder, when the destination folder does
 * not exist (none is created), when the system refuses to replace the destination (a read-only or
 * hidden file), or when the copy fails in any other way; no message is shown.
 *
 * Blocks until the copy is done and does not pump messages.
 */
int FileCopy(const char* source, const char* folder);

/*
 * Queues a command that the system runs once, for the current user, at the next log-on: a value of
 * type REG_SZ under HKEY_CURRENT_USER\Software\Microsoft\Windows\CurrentVersion\Runonce.
 *
 * valueName  Name of the value; one of the same name is replaced. Null or empty: the key's default
 *            value.
 * command    The command line, stored as it stands with its terminating zero; environment
 *            references in it are not expanded. Must not be null.
 *
 * Returns 1 when the value was written. Returns 0 when the key does not exist (it is never
 * created), cannot be opened with full access, or the value cannot be set.
 *
 * Does not pump messages.
 */
int PutInRunOnce(const char* valueName, const char* command);

/*
 * Checks the syntax of an e-mail address. The rules are strict and the library's own: a local part
 * of letters, digits, '_', '-' and '.', an '@', and a domain of at least two labels of letters,
 * digits, '_' and '-', none of them empty or longer than 64 bytes, separated by '.'.
 *
 * address        In: the text to check. Out: the same text without leading and trailing white space
 *                (space, tab, line feed, vertical tab, form feed, carriage return); it never grows.
 *                Rewritten on every return, whatever the result. Must not be null.
 * errorPosition  Out: where the fault lies in the trimmed address. A fault in the local part is
 *                given as a 0-based index, a fault in the domain as a 1-based position.
 *                TARN_NO_ERROR_POSITION (-1) when the address is accepted, is empty or holds no '@'.
 *                Must not be null.
 * message        Out: what is wrong, in English, at most 72 characters and the terminating zero, so
 *                the buffer has at least TARN_EMAIL_MESSAGE_SIZE (73) bytes. Left untouched when
 *                there is nothing to say: the address is accepted, or is empty. Must not be null.
 *
 * Returns 1 when the address is accepted, 0 otherwise.
 *
 *   what is wrong                          message                                    position
 *   nothing but white space                (none)                                     -1
 *   no '@'                                 "Missing  @  "                             -1
 *   '@' comes first                        "@  is in invalid location in email."      0
 *   byte not allowed in the local part     "invalid character in email."              its index
 *   label of more than 64 bytes            "Invalid Domain name. Domain name length
 *                                          must be less than 64 characters."          label's start
 *   empty label                            "Character  "." is in Invalid location."   label's start
 *   byte not allowed in a label            "invalid character in email."              its position
 *   domain without a dot                   "Invalid Domain name."                     '@', 1-based
 *
 * Positions in the domain are 1-based: where the failing label starts, the byte itself, or, for a
 * domain without a dot, the '@'. The text about the long label is one line of 72 characters.
 *
 * Does not pump messages.
 */
int VerifyEmail(char* address, int* errorPosition, char* message);

/*
 * Writes the start-up file of the embedded Ch interpreter, embedch\config\chrc under the
 * installation folder, with that folder put into the interpreter's search paths. An existing file
 * is replaced whole. Lines end in a single line feed.
 *
 * installationFolder  One trailing separator is ignored. Null, empty or a single separator: the file
 *                     is written under the root of the current drive and the search paths have no
 *                     folder in front. A separator is recognised by its byte: in a double-byte code
 *                     page, a last character whose second byte is 0x5C counts as ending in one.
 *
 * Returns 1 when the file was written. Returns 0 when it could not be opened (embedch\config is
 * missing and never created, access is denied, another program holds it open); a message box that
 * tells the cause and names the file has then been shown, and the call returned when the user
 * closed it; meanwhile the box pumped the thread's messages.
 *
 * Leaves by an exception when the write or the close fails (a full disk; the file may then be
 * incomplete) and when the folder consists of two or more separators and nothing else (nothing is
 * opened).
 */
int Write_ch_config_File(const char* installationFolder);

#ifdef __cplusplus
}
#endif

#endif /* TARN_H_INCLUDED */
