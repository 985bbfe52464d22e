// The system's common dialogs.
#pragma once

#include <afxwin.h>

#include "CFileDialog.h"
