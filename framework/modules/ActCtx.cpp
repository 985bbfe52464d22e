#include "framework/modules/ActCtx.h"

BOOL AfxActivateActCtx(HANDLE hActCtx, ULONG_PTR* lpCookie) noexcept
{
    return hActCtx != INVALID_HANDLE_VALUE && ::ActivateActCtx(hActCtx, lpCookie);
}

BOOL AfxDeactivateActCtx(DWORD dwFlags, ULONG_PTR ulCookie) noexcept
{
    return ::DeactivateActCtx(dwFlags, ulCookie);
}
