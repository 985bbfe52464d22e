#include "tests/support/MessageBoxDriver.h"

#include <cstring>

namespace
{
constexpr DWORD kPollMilliseconds = 5;
constexpr UINT kAnswerMilliseconds = 5000;

BOOL CALLBACK FindBox(HWND hWnd, LPARAM lParam)
{
    DWORD nProcessID = 0;
    ::GetWindowThreadProcessId(hWnd, &nProcessID);
    char szClass[16] = "";
    ::GetClassNameA(hWnd, szClass, sizeof(szClass));
    if (nProcessID != ::GetCurrentProcessId() || std::strcmp(szClass, "#32770") != 0 ||
        !::IsWindowVisible(hWnd))
        return TRUE;
    *reinterpret_cast<HWND*>(lParam) = hWnd;
    return FALSE;
}

// Adds to the text; false when the window does not answer, which on a busy machine it may do later.
bool AddTextOf(HWND hWnd, std::string& text)
{
    char szText[2048] = "";
    DWORD_PTR nResult = 0;
    if (::SendMessageTimeoutA(hWnd, WM_GETTEXT, sizeof(szText), reinterpret_cast<LPARAM>(szText),
                              SMTO_ABORTIFHUNG, kAnswerMilliseconds, &nResult) == 0)
        return false;
    text += szText;
    return true;
}

struct Parts
{
    HWND hButton;
    int nButtons;
    std::string text;
    bool bAnswered;
};

// By class: the system's number for the text control is not the same everywhere.
BOOL CALLBACK CollectPart(HWND hWnd, LPARAM lParam)
{
    auto& parts = *reinterpret_cast<Parts*>(lParam);
    char szClass[16] = "";
    ::GetClassNameA(hWnd, szClass, sizeof(szClass));
    if (::lstrcmpiA(szClass, "Button") == 0 && ::IsWindowVisible(hWnd))
    {
        parts.hButton = hWnd;
        ++parts.nButtons;
    }
    if (::lstrcmpiA(szClass, "Static") == 0)
        parts.bAnswered = AddTextOf(hWnd, parts.text) && parts.bAnswered;
    return TRUE;
}
} // namespace

MessageBoxDriver::MessageBoxDriver(DWORD nLimit)
    : m_nLimit(nLimit), m_hStop(::CreateEventA(nullptr, TRUE, FALSE, nullptr)),
      m_hThread(::CreateThread(nullptr, 0, &MessageBoxDriver::Run, this, 0, nullptr))
{
}

const std::vector<SeenMessageBox>& MessageBoxDriver::Stop()
{
    if (m_hThread != nullptr)
    {
        ::SetEvent(m_hStop);
        ::WaitForSingleObject(m_hThread, INFINITE);
        ::CloseHandle(m_hThread);
        ::CloseHandle(m_hStop);
        m_hThread = nullptr;
    }
    return m_boxes;
}

DWORD WINAPI MessageBoxDriver::Run(LPVOID pThis)
{
    static_cast<MessageBoxDriver*>(pThis)->Watch();
    return 0;
}

void MessageBoxDriver::Watch()
{
    const DWORD nStart = ::GetTickCount();
    HWND hAnswered = nullptr;
    while (::WaitForSingleObject(m_hStop, kPollMilliseconds) == WAIT_TIMEOUT &&
           ::GetTickCount() - nStart < m_nLimit)
    {
        HWND hBox = nullptr;
        ::EnumWindows(&FindBox, reinterpret_cast<LPARAM>(&hBox));
        if (hBox == nullptr || hBox == hAnswered)
        {
            if (hBox == nullptr)
                hAnswered = nullptr;
            continue;
        }
        Parts parts = {nullptr, 0, "", true};
        std::string caption;
        ::EnumChildWindows(hBox, &CollectPart, reinterpret_cast<LPARAM>(&parts));
        if (parts.hButton == nullptr || !parts.bAnswered || !AddTextOf(hBox, caption))
            continue;
        m_boxes.push_back({caption, parts.text, parts.nButtons});
        hAnswered = hBox;
        ::PostMessageA(hBox, WM_COMMAND, MAKEWPARAM(::GetDlgCtrlID(parts.hButton), BN_CLICKED),
                       reinterpret_cast<LPARAM>(parts.hButton));
    }
}
