// Root header of the framework: strings, exceptions and files.
#pragma once

#ifdef _WIN32
#include <windows.h>
#else
#include "framework/text/NativeTypes.h"
#endif

#include "afxstr.h"
#include "framework/exceptions/CException.h"
#include "framework/exceptions/CInvalidArgException.h"
#include "framework/exceptions/CMemoryException.h"

#ifdef _WIN32
#include "framework/files/CFile.h"
#include "framework/files/CFileException.h"
#endif
