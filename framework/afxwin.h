// Applications, threads, windows and dialogs.
#pragma once

#include <afx.h>

#include <afxstat_.h>

#include "framework/modules/CCmdTarget.h"
#include "framework/modules/CWinApp.h"
#include "framework/modules/CWinThread.h"
#include "framework/modules/MessageMap.h"
#include "framework/windows/AfxMessageBox.h"
#include "framework/windows/CDialog.h"
#include "framework/windows/CWnd.h"
