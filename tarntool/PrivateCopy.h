// PrivateCopy: this program's file once more, under a name that nobody can guess, in the user's folder
// for temporary files. What runs from it does not keep the installer from deleting the original: the
// system deletes no file that a program is running from.
//
// The copy goes when the last handle to it is closed. A process that inherits the handle takes it along,
// and leaves nothing behind, however it ends. Only one that is killed between making the file and asking for
// its deletion, which no call of the system does in one, leaves it, empty, for DeleteOld.
#pragma once

#include "tarntool/ScopedHandle.h"

class PrivateCopy
{
public:
    PrivateCopy(); // throws Failure
    PrivateCopy(const PrivateCopy&) = delete;
    PrivateCopy& operator=(const PrivateCopy&) = delete;

    LPCWSTR Path() const { return m_szPath; }
    HANDLE Handle() const { return m_file; }

    // For what is still there although the process has ended, because something else held the file.
    static void Delete(LPCWSTR pszPath); // nothing but a copy
    static void DeleteOld();             // those of more than an hour ago

private:
    bool Make();

    WCHAR m_szPath[MAX_PATH] = {};
    ScopedHandle m_file;
};
