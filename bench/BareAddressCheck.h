// The address check by hand, as an installer could write it for itself: one pass over the caller's
// buffer, no copy, no string class. Same results as VerifyEmail.
#pragma once

// Trims the address in place. Returns 1, or 0 with what is wrong in *ppszMessage (null: nothing to
// say). The position is stored on every return.
int BareAddressCheck(char* pszAddress, int* pnErrorPosition, const char** ppszMessage);
