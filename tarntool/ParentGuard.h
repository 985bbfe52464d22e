// ParentGuard: the installer's window is enabled again, also when this process is killed while a dialog
// of its own has disabled it.
//
// A process that is killed cannot put anything right; a second one waits for that. It does nothing else,
// and is ended with the object.
#pragma once

#include "tarntool/ScopedHandle.h"

class ParentGuard
{
public:
    // Does nothing for null and for a window that is disabled already.
    explicit ParentGuard(HWND hWndParent);
    ~ParentGuard();
    ParentGuard(const ParentGuard&) = delete;
    ParentGuard& operator=(const ParentGuard&) = delete;

private:
    ScopedHandle m_process;
};
