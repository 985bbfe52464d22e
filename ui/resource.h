// Numbers of the library's resources and of the controls in them.
#pragma once

#define IDD_WAITDLG 14000
#define IDC_WAITDLG_MESSAGE 14000
