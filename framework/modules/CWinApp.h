// CWinApp: the application object of a program or library; each has one, of static life.
#pragma once

#include "framework/modules/CWinThread.h"

#include <windows.h>

class CWinApp : public CWinThread
{
public:
    // Registers the object with the current module state. Without a name the application is named
    // after its module's file.
    explicit CWinApp(LPCSTR lpszAppName = nullptr);
    ~CWinApp() override;

    BOOL InitInstance() override; // succeeds
    int ExitInstance() override;

    LPCSTR m_pszAppName;
    HINSTANCE m_hInstance;
    LPSTR m_lpCmdLine = nullptr;
    int m_nCmdShow = 0;

    DECLARE_MESSAGE_MAP()

private:
    char m_szModuleName[MAX_PATH] = {}; // what m_pszAppName points to without a given name
};

// Of the current module state; null without an application object.
CWinApp* AfxGetApp();
LPCSTR AfxGetAppName();

// The calling thread's object: of a thread that AfxBeginThread started, else the application, which
// stands for the thread that it runs on. Null without either.
CWinThread* AfxGetThread();

// Tells the framework, in a program, what the system gave to WinMain. Returns TRUE.
BOOL AfxWinInit(HINSTANCE hInstance, HINSTANCE hPrevInstance, LPSTR lpCmdLine, int nCmdShow);
