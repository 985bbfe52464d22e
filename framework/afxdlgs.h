// The system's common dialogs.
#pragma once

#include <afxwin.h>

#include "framework/windows/CFileDialog.h"
