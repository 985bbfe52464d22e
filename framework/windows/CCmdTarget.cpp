#include "framework/windows/CCmdTarget.h"

// The root of every chain of maps: it has no base and no entries.
const AFX_MSGMAP* CCmdTarget::GetThisMessageMap()
{
    static constexpr AFX_MSGMAP_ENTRY kEntries[] = {AFX_MSGMAP_END};
    static constexpr AFX_MSGMAP kMap = {nullptr, kEntries};
    return &kMap;
}

const AFX_MSGMAP* CCmdTarget::GetMessageMap() const
{
    return GetThisMessageMap();
}
