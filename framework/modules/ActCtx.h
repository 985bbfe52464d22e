// Activation contexts.
#pragma once

#include <windows.h>

// Activates a context on the calling thread and stores the cookie that deactivates it. FALSE,
// without a cookie, when hActCtx is no context or cannot be activated.
BOOL AfxActivateActCtx(HANDLE hActCtx, ULONG_PTR* lpCookie) noexcept;

// Deactivates the context that the cookie stands for; it must be the thread's latest.
BOOL AfxDeactivateActCtx(DWORD dwFlags, ULONG_PTR ulCookie) noexcept;
