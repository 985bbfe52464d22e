// Root header of the framework: strings, exceptions and files.
#pragma once

#ifdef _WIN32
#include <windows.h>
#else
#include "NativeTypes.h"
#endif

#include "CException.h"
#include "CInvalidArgException.h"
#include "CMemoryException.h"
#include "afxstr.h"

#ifdef _WIN32
#include "CFile.h"
#include "CFileException.h"
#endif
