// CCmdTarget: base of everything that has a message map.
#pragma once

#include "framework/modules/MessageMap.h"

class CCmdTarget
{
public:
    virtual ~CCmdTarget() = default;
    CCmdTarget(const CCmdTarget&) = delete;
    CCmdTarget& operator=(const CCmdTarget&) = delete;

protected:
    CCmdTarget() = default;

    DECLARE_MESSAGE_MAP()
};
