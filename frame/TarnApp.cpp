#include "frame/TarnApp.h"

BEGIN_MESSAGE_MAP(CTarnApp, CWinApp)
END_MESSAGE_MAP()

CTarnApp::~CTarnApp() = default;

static CTarnApp g_theApp;
