// The interpreter's start-up file on disk.
#pragma once

#include <afx.h>

// Where the start-up file of an installation folder is, which has no separator at its end.
CString ChrcPath(const CString& strFolder);

// Writes the start-up file for an installation folder to a path, whole, replacing what is there.
// Returns 1 when it was written. Returns 0 when the file could not be opened; with bReportErrors a
// message box has then told why. Throws CFileException when the write or the close fails, and
// CInvalidArgException, before anything is opened, for a folder of separators and nothing else.
int WriteChrcFile(LPCTSTR pszPath, LPCTSTR pszFolder, BOOL bReportErrors);

// The same with a text that is there already.
int WriteChrcText(LPCTSTR pszPath, const CString& strText, BOOL bReportErrors);
