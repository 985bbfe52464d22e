// CTarnApp: the library's one application object, which the framework requires of every library that
// is built on it. It adds nothing: loading and unloading run no code of the library's own.
#pragma once

#include <afxwin.h>

class CTarnApp : public CWinApp
{
public:
    CTarnApp() = default; // no name: the framework takes the module's
    ~CTarnApp() override;

    DECLARE_MESSAGE_MAP()
};
