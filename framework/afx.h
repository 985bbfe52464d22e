// Root header of the framework: strings, exceptions and files.
#pragma once

#include "afxstr.h"
#include "framework/exceptions/CException.h"
#include "framework/exceptions/CSimpleException.h"
#include "runtime/PlatformTypes.h"

#ifdef _WIN32
#include "framework/files/CFile.h"
#include "framework/files/CFileException.h"
#endif
