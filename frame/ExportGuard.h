// The guard that every export opens with, before anything else: the library's module state is current
// on the calling thread, and its activation context active, until the export is left by whatever way.
#pragma once

#include <afxwin.h>

#define TARN_EXPORT_GUARD() AFX_MANAGE_STATE(AfxGetStaticModuleState())
