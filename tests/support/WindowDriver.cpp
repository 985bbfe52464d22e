#include "tests/support/WindowDriver.h"

#include <cstdlib>
#include <cstring>
#include <utility>
#include <vector>

namespace window_driver
{
namespace
{
constexpr DWORD kPollMilliseconds = 5;

struct Search
{
    std::string caption;
    bool bByCaption;
    HWND hFound;
    int nCount;
    HWND hVisible;
};

// Without a message: the window's thread may be busy, and may be waiting for this one.
std::string CaptionOf(HWND hWnd)
{
    WCHAR szWide[512] = L"";
    char szText[1024] = "";
    ::InternalGetWindowText(hWnd, szWide, 512);
    ::WideCharToMultiByte(CP_ACP, 0, szWide, -1, szText, sizeof(szText), nullptr, nullptr);
    return szText;
}

BOOL CALLBACK Visit(HWND hWnd, LPARAM lParam)
{
    auto& search = *reinterpret_cast<Search*>(lParam);
    DWORD nProcessID = 0;
    ::GetWindowThreadProcessId(hWnd, &nProcessID);
    if (nProcessID != ::GetCurrentProcessId())
        return TRUE;
    char szClass[32] = "";
    ::GetClassNameA(hWnd, szClass, sizeof(szClass));
    if (!search.bByCaption && std::strcmp(szClass, "#32770") == 0)
    {
        ++search.nCount;
        if (::IsWindowVisible(hWnd))
            search.hVisible = hWnd;
    }
    if (search.bByCaption && search.caption == CaptionOf(hWnd))
    {
        search.hFound = hWnd;
        return FALSE;
    }
    return TRUE;
}
} // namespace

bool WaitFor(const std::function<bool()>& condition, DWORD nLimit)
{
    const DWORD nStart = ::GetTickCount();
    while (!condition())
    {
        if (::GetTickCount() - nStart > nLimit)
            return false;
        ::Sleep(kPollMilliseconds);
    }
    return true;
}

bool PumpUntil(const std::function<bool()>& condition, HWND hDialog, DWORD nLimit)
{
    const DWORD nStart = ::GetTickCount();
    for (;;)
    {
        MSG msg;
        while (::PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE))
        {
            if (hDialog == nullptr || !::IsDialogMessageA(hDialog, &msg))
            {
                ::TranslateMessage(&msg);
                ::DispatchMessageA(&msg);
            }
        }
        if (condition())
            return true;
        if (::GetTickCount() - nStart > nLimit)
            return false;
        ::MsgWaitForMultipleObjects(0, nullptr, FALSE, kPollMilliseconds, QS_ALLINPUT);
    }
}

HWND FindTopLevel(const std::string& caption)
{
    Search search = {caption, true, nullptr, 0, nullptr};
    ::EnumWindows(&Visit, reinterpret_cast<LPARAM>(&search));
    return search.hFound;
}

HWND WaitForTopLevel(const std::string& caption)
{
    HWND hFound = nullptr;
    WaitFor([&] { return (hFound = FindTopLevel(caption)) != nullptr; });
    return hFound;
}

int CountDialogs()
{
    Search search = {"", false, nullptr, 0, nullptr};
    ::EnumWindows(&Visit, reinterpret_cast<LPARAM>(&search));
    return search.nCount;
}

HWND FindVisibleDialog()
{
    Search search = {"", false, nullptr, 0, nullptr};
    ::EnumWindows(&Visit, reinterpret_cast<LPARAM>(&search));
    return search.hVisible;
}

std::string TextOf(HWND hWnd)
{
    char szText[512] = "";
    ::SendMessageA(hWnd, WM_GETTEXT, sizeof(szText), reinterpret_cast<LPARAM>(szText));
    return szText;
}

void PostKey(HWND hWnd, WPARAM nKey)
{
    ::PostMessageA(hWnd, WM_KEYDOWN, nKey, 1);
    ::PostMessageA(hWnd, WM_KEYUP, nKey, static_cast<LPARAM>(0xC0000001));
}

DriverThread::DriverThread(std::function<void()> function)
    : m_function(std::move(function)),
      m_hThread(::CreateThread(nullptr, 0, &DriverThread::Run, this, 0, nullptr))
{
}

void DriverThread::Join()
{
    if (m_hThread != nullptr)
    {
        // The thread may send messages to windows of this one.
        PumpUntil([this] { return ::WaitForSingleObject(m_hThread, 0) == WAIT_OBJECT_0; }, nullptr,
                  INFINITE);
        ::CloseHandle(m_hThread);
        m_hThread = nullptr;
    }
}

DWORD WINAPI DriverThread::Run(LPVOID pThis)
{
    static_cast<DriverThread*>(pThis)->m_function();
    return 0;
}

HostWindow::HostWindow(int nLeft, int nTop, int nRight, int nBottom)
    : m_hWnd(::CreateWindowExA(0, "STATIC", "host", WS_POPUP, nLeft, nTop, nRight - nLeft,
                               nBottom - nTop, nullptr, nullptr, nullptr, nullptr))
{
}

HostWindow::~HostWindow()
{
    ::DestroyWindow(m_hWnd);
}

namespace
{
// The flat interface of the system's imaging library, as far as saving a bitmap goes.
struct GdiplusStartupInput
{
    UINT32 nVersion = 1;
    void* pDebugCallback = nullptr;
    BOOL bSuppressThread = FALSE;
    BOOL bSuppressCodecs = FALSE;
};

bool SaveBitmap(HBITMAP hBitmap, const std::string& path)
{
    HMODULE const hLibrary = ::LoadLibraryA("gdiplus.dll");
    if (hLibrary == nullptr)
        return false;
    const auto find = [hLibrary](const char* pszName) {
        return reinterpret_cast<void*>(::GetProcAddress(hLibrary, pszName));
    };
    const auto startup =
        reinterpret_cast<int(WINAPI*)(ULONG_PTR*, const GdiplusStartupInput*, void*)>(
            find("GdiplusStartup"));
    const auto shutdown = reinterpret_cast<void(WINAPI*)(ULONG_PTR)>(find("GdiplusShutdown"));
    const auto create = reinterpret_cast<int(WINAPI*)(HBITMAP, HPALETTE, void**)>(
        find("GdipCreateBitmapFromHBITMAP"));
    const auto save = reinterpret_cast<int(WINAPI*)(void*, const WCHAR*, const GUID*, const void*)>(
        find("GdipSaveImageToFile"));
    const auto dispose = reinterpret_cast<int(WINAPI*)(void*)>(find("GdipDisposeImage"));
    static const GUID kPngEncoder = {
        0x557cf406, 0x1a04, 0x11d3, {0x9a, 0x73, 0x00, 0x00, 0xf8, 0x1e, 0xf3, 0x2e}};

    ULONG_PTR nToken = 0;
    const GdiplusStartupInput input;
    void* pImage = nullptr;
    bool bSaved = false;
    if (startup(&nToken, &input, nullptr) == 0)
    {
        if (create(hBitmap, nullptr, &pImage) == 0)
        {
            WCHAR szPath[MAX_PATH];
            ::MultiByteToWideChar(CP_ACP, 0, path.c_str(), -1, szPath, MAX_PATH);
            bSaved = save(pImage, szPath, &kPngEncoder, nullptr) == 0;
            dispose(pImage);
        }
        shutdown(nToken);
    }
    ::FreeLibrary(hLibrary);
    return bSaved;
}
} // namespace

bool SaveScreenshot(const std::string& name)
{
    const char* const pszFolder = std::getenv("TARN_SCREENSHOTS");
    if (pszFolder == nullptr)
        return false;
    HDC const hScreen = ::GetDC(nullptr);
    const int nWidth = ::GetSystemMetrics(SM_CXSCREEN);
    const int nHeight = ::GetSystemMetrics(SM_CYSCREEN);
    HDC const hMemory = ::CreateCompatibleDC(hScreen);
    HBITMAP const hBitmap = ::CreateCompatibleBitmap(hScreen, nWidth, nHeight);
    HGDIOBJ const hOld = ::SelectObject(hMemory, hBitmap);
    ::BitBlt(hMemory, 0, 0, nWidth, nHeight, hScreen, 0, 0, SRCCOPY);
    ::SelectObject(hMemory, hOld);
    const bool bSaved = SaveBitmap(hBitmap, std::string(pszFolder) + "\\" + name + ".png");
    ::DeleteObject(hBitmap);
    ::DeleteDC(hMemory);
    ::ReleaseDC(nullptr, hScreen);
    return bSaved;
}
} // namespace window_driver
