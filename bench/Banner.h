// Banner: the installer system's plug-in that shows a small window with a line of text, called by its
// documented interface as an installer of that system calls it.
#pragma once

#include <windows.h>

#include <cstddef>
#include <cwchar>
#include <string>

class Banner
{
public:
    Banner(const std::string& path, HWND hWndParent)
        : m_hWndParent(hWndParent), m_hModule(::LoadLibraryA(path.c_str()))
    {
        m_pfnShow = Find("show");
        m_pfnDestroy = Find("destroy");
    }
    ~Banner()
    {
        if (m_hModule != nullptr)
            ::FreeLibrary(m_hModule);
    }
    Banner(const Banner&) = delete;
    Banner& operator=(const Banner&) = delete;

    bool IsComplete() const { return m_pfnShow != nullptr && m_pfnDestroy != nullptr; }

    // Returns once the window is visible.
    void Show(const wchar_t* pszText)
    {
        m_pStack = nullptr;
        Push(pszText);
        Call(m_pfnShow);
        while (!IsVisible())
            ::Sleep(0);
    }
    void Destroy() { Call(m_pfnDestroy); }

    // Whether a window of this process is visible besides the parent.
    bool IsVisible() const
    {
        HWND hWndOther = m_hWndParent;
        ::EnumWindows(&FindOther, reinterpret_cast<LPARAM>(&hWndOther));
        return hWndOther != m_hWndParent;
    }

private:
    static constexpr int kStringSize = 1024;

    struct Item
    {
        Item* pNext;
        wchar_t text[kStringSize];
    };
    struct Extra
    {
        void* pFlags;
        int (*pfnExecute)(int, HWND);
        void (*pfnValidate)(wchar_t*);
        int (*pfnRegister)(HMODULE, void*);
    };
    using Function = void (*)(HWND, int, wchar_t*, Item**, Extra*);

    // Leaves another visible window of this process in place of the parent's.
    static BOOL CALLBACK FindOther(HWND hWnd, LPARAM lParam)
    {
        HWND& hWndFound = *reinterpret_cast<HWND*>(lParam);
        DWORD nProcess = 0;
        ::GetWindowThreadProcessId(hWnd, &nProcess);
        if (hWnd == hWndFound || nProcess != ::GetCurrentProcessId() || !::IsWindowVisible(hWnd))
            return TRUE;
        hWndFound = hWnd;
        return FALSE;
    }

    static int Register(HMODULE /*hModule*/, void* /*pfnCallback*/) { return 0; }

    Function Find(const char* pszName) const
    {
        return m_hModule == nullptr ? nullptr
                                    : reinterpret_cast<Function>(reinterpret_cast<void*>(
                                          ::GetProcAddress(m_hModule, pszName)));
    }
    void Push(const wchar_t* pszText)
    {
        // The plug-in frees it.
        auto* const pItem = static_cast<Item*>(::GlobalAlloc(GPTR, sizeof(Item)));
        pItem->pNext = m_pStack;
        std::wcsncpy(pItem->text, pszText, kStringSize - 1);
        m_pStack = pItem;
    }
    void Call(Function pfn)
    {
        pfn(m_hWndParent, kStringSize, m_variables.data(), &m_pStack, &m_extra);
    }

    HWND m_hWndParent;
    HMODULE m_hModule;
    Function m_pfnShow = nullptr;
    Function m_pfnDestroy = nullptr;
    Item* m_pStack = nullptr;
    std::wstring m_variables = std::wstring(static_cast<std::size_t>(kStringSize) * 32, L'\0');
    int m_flags[16] = {};
    Extra m_extra = {m_flags, nullptr, nullptr, &Register};
};
