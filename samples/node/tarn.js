// The functions of tarn.dll, which lies beside this file.
'use strict';
const koffi = require('koffi');
const path = require('path');

// By its full path: a bare name would be looked for in other folders, too.
const library = koffi.load(path.join(__dirname, 'tarn.dll'));
const kernel = koffi.load('kernel32.dll');

const wideCharToMultiByte = kernel.func('int WideCharToMultiByte(uint page, uint flags, const char16 *wide,' +
    ' int count, _Out_ uint8 *text, int size, void *replacement, void *used)');
const multiByteToWideChar = kernel.func('int MultiByteToWideChar(uint page, uint flags, const uint8 *text,' +
    ' int count, _Out_ uint16 *wide, int size)');

const verifyEmail = library.func('int VerifyEmail(_Inout_ uint8 *address, _Out_ int *position,' +
    ' _Out_ uint8 *message)');
const fileCopy = library.func('int FileCopy(const uint8 *source, const uint8 *folder)');
const putInRunOnce = library.func('int PutInRunOnce(const uint8 *name, const uint8 *command)');
const writeChConfigFile = library.func('int Write_ch_config_File(const uint8 *folder)');
const doWaitDlgModless = library.func('int DoWaitDlgModless(void *parent, const uint8 *title,' +
    ' const uint8 *message)');
const closeWaitDlg = library.func('int CloseWaitDlg()');
const doFileOpenDialog = library.func('int DoFileOpenDialog(const uint8 *folder, const uint8 *title,' +
    ' const uint8 *filter, const uint8 *extension, _Inout_ uint8 *path)');

// The text in the process's ANSI code page, with a zero at its end.
function ansi(text) {
    const bytes = Buffer.alloc(2 * text.length + 2);
    wideCharToMultiByte(0, 0, text, -1, bytes, bytes.length, null, null);
    return bytes;
}

function fromAnsi(bytes) {
    const wide = new Uint16Array(bytes.length + 1);
    const length = multiByteToWideChar(0, 0, bytes, -1, wide, wide.length);
    return String.fromCharCode(...wide.subarray(0, length - 1));
}

module.exports = {
    // { accepted, address (trimmed), message, position (-1: none) }
    verifyEmail(address) {
        const buffer = ansi(address); // the trimmed address is written over it
        const message = Buffer.alloc(73);
        const position = [-1];
        const accepted = verifyEmail(buffer, position, message) === 1;
        return { accepted, address: fromAnsi(buffer), message: fromAnsi(message), position: position[0] };
    },

    // Copies a file under its own name; the folder ends in a backslash.
    fileCopy: (source, folder) => fileCopy(ansi(source), ansi(folder)) === 1,

    // Queues a command line for the user's next log-on.
    putInRunOnce: (name, command) => putInRunOnce(ansi(name), ansi(command)) === 1,

    // Writes embedch\config\chrc under the folder.
    writeChConfigFile: (folder) => writeChConfigFile(ansi(folder)) === 1,

    // Shows the wait window, and closes it.
    doWaitDlgModless: (title, message) => doWaitDlgModless(null, ansi(title), ansi(message)),
    closeWaitDlg: () => closeWaitDlg(),

    // Lets the user pick a file: its path, or null.
    doFileOpenDialog(folder, title, filter, extension) {
        const file = Buffer.alloc(260);
        const picked = doFileOpenDialog(ansi(folder), ansi(title), ansi(filter), ansi(extension), file);
        return picked === 1 ? fromAnsi(file) : null;
    },
};
