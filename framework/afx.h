// Root header of the framework: strings, exceptions and files.
#pragma once

#include "afxstr.h"
#include "framework/exceptions/CException.h"
#include "framework/exceptions/CInvalidArgException.h"
#include "framework/exceptions/CMemoryException.h"
#include "runtime/PlatformTypes.h"

#ifdef _WIN32
#include "framework/files/CFile.h"
#include "framework/files/CFileException.h"
#endif
