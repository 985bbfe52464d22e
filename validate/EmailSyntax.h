// Syntax of e-mail addresses.
#pragma once

#include <afx.h>

// Removes white space around the address, in place, and decides whether what is left has the shape of
// an address. Returns 1 with *pnErrorPos -1 and an empty message when it has. Returns 0 otherwise,
// with the message and the position of the fault: 0-based in the local part, 1-based in the domain,
// -1 for an empty address (which has no message either) and for one without '@'.
//
// The text is taken byte by byte, whatever the code page. Makes no call to the system.
int CheckEmailSyntax(CString& strAddress, int* pnErrorPos, CString& strMessage);
