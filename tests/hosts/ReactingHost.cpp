#include "tests/hosts/ReactingHost.h"

#include <utility>

namespace
{
constexpr char kClass[] = "Tarn reacting host";
} // namespace

ReactingHost::ReactingHost()
{
    WNDCLASSA wc = {};
    wc.lpfnWndProc = &ReactingHost::Procedure;
    wc.hInstance = ::GetModuleHandleA(nullptr);
    wc.lpszClassName = kClass;
    ::RegisterClassA(&wc); // the second host finds it registered
    m_hWnd = ::CreateWindowExA(0, kClass, "host", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 100, 100, 600,
                               400, nullptr, nullptr, wc.hInstance, nullptr);
    ::SetWindowLongPtrA(m_hWnd, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    ::SetForegroundWindow(m_hWnd);
    ::SetActiveWindow(m_hWnd);
    ::SetFocus(m_hWnd);
}

ReactingHost::~ReactingHost()
{
    Stop();
    ::DestroyWindow(m_hWnd);
}

void ReactingHost::React(Trigger trigger, std::function<void()> reaction, int nTimes, int nDepth)
{
    m_trigger = trigger;
    m_reaction = std::move(reaction);
    m_nLeft = nTimes;
    m_nCalls = 0;
    m_nMaxDepth = nDepth;
}

int ReactingHost::Stop()
{
    m_nLeft = 0;
    return m_nCalls;
}

void ReactingHost::Handle(UINT nMessage, WPARAM wParam)
{
    if (m_nLeft == 0 || m_nDepth == m_nMaxDepth || nMessage != m_trigger.nMessage ||
        (m_trigger.nParam != -1 && LOWORD(wParam) != m_trigger.nParam))
        return;
    --m_nLeft;
    ++m_nCalls;
    ++m_nDepth;
    m_reaction();
    --m_nDepth;
}

LRESULT CALLBACK ReactingHost::Procedure(HWND hWnd, UINT nMessage, WPARAM wParam, LPARAM lParam)
{
    auto* const pThis = reinterpret_cast<ReactingHost*>(::GetWindowLongPtrA(hWnd, GWLP_USERDATA));
    if (pThis != nullptr)
        pThis->Handle(nMessage, wParam);
    return ::DefWindowProcA(hWnd, nMessage, wParam, lParam);
}
