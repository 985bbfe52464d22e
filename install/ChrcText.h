// The text of the interpreter's start-up file. No calls to the system.
#pragma once

#include <afx.h>

// The start-up file for an installation folder: the folder stands without trailing separators, and
// its backslashes are escaped for the interpreter's string literals. A folder of separators and
// nothing else throws CInvalidArgException.
CString MakeChrcText(CString strFolder);
