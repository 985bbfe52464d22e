// Joining a folder and a file name, and taking them apart. Separators are '\' and '/'; the one that
// is added is always '\'. No calls to the system.
#pragma once

#include <afx.h>

inline bool IsSeparator(char ch)
{
    return ch == '\\' || ch == '/';
}

// The path, with a backslash appended unless it is empty or its last byte is a separator.
CString AddTrailingSeparator(CString strPath);

// Takes the last byte of the path away, if that is a separator: one, and no more.
void RemoveTrailingSeparator(CString& strPath);

// What follows the last separator; the whole path when there is none.
CString FileNamePart(CString strPath);
