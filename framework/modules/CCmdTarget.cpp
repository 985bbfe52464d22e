#include "framework/modules/CCmdTarget.h"

// The root of every chain of maps: it has no base and no entries.
const AFX_MSGMAP* CCmdTarget::GetThisMessageMap()
{
    static constexpr AFX_MSGMAP_ENTRY kEntries[] = {{0, nullptr, nullptr}};
    static constexpr AFX_MSGMAP kMap = {nullptr, kEntries};
    return &kMap;
}

const AFX_MSGMAP* CCmdTarget::GetMessageMap() const
{
    return GetThisMessageMap();
}
