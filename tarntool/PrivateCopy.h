// PrivateCopy: this program's file once more, under a name that nobody can guess, in the user's folder
// for temporary files. What runs from it does not keep the installer from deleting the original: the
// system deletes no file that a program is running from.
//
// The copy goes when the last handle to it is closed. A process that inherits the handle takes it along,
// and leaves nothing behind, however it ends.
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

    // Deletes copies of hours ago that something held on to at their end. Others are left alone.
    static void DeleteOld();

private:
    bool Make();

    WCHAR m_szPath[MAX_PATH];
    ScopedHandle m_file;
};
