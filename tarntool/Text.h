// Text between the forms that it has here: UTF-16 on the command line, the process's code page in the
// library, UTF-8 in what is written. From Windows 10 1903 on the last two are the same.
#pragma once

#include <afx.h>

// UTF-8; what is not valid UTF-16 becomes U+FFFD.
CString ToUtf8(LPCWSTR psz);

// The process's code page, for files and commands. Throws Failure when the text cannot be said in it.
CString ToExactText(LPCWSTR psz);

// From the process's code page to the system's, which is that of ordinary programs. False when the text
// cannot be said in it.
bool ToSystemCodePage(const CString& strText, CString* pstrResult);

// The system's ANSI code page.
UINT GetSystemCodePage();

// The process's code page, for the eye: what cannot be said becomes '?'. Null is empty.
CString ToDisplayText(LPCWSTR psz);

// From the process's code page to UTF-8.
CString TextToUtf8(LPCSTR psz);

// The number in decimal digits.
CString NumberText(LONGLONG n);

// The system's own words for an error, in UTF-8, without line end and full stop; then the number.
CString SystemErrorText(DWORD nError);
