// Applications, threads, windows and dialogs.
#pragma once

#include <afx.h>

#include <afxstat_.h>

#include "AfxMessageBox.h"
#include "CCmdTarget.h"
#include "CDialog.h"
#include "CWinApp.h"
#include "CWinThread.h"
#include "CWnd.h"
#include "MessageMap.h"
