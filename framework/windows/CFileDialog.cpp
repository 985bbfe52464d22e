#include "framework/windows/CFileDialog.h"

#include "framework/text/CodePage.h"
#include "framework/windows/ModalOwner.h"
#include "runtime/SystemLibrary.h"

#include <cstring>

CFileDialog::CFileDialog(BOOL /*bOpenFileDialog*/, LPCSTR lpszDefExt, LPCSTR lpszFileName,
                         DWORD dwFlags, LPCSTR lpszFilter, CWnd* pParentWnd, DWORD dwSize,
                         BOOL /*bVistaStyle*/)
{
    m_pParentWnd = pParentWnd;
    m_ofn.lStructSize = dwSize != 0 ? dwSize : sizeof(m_ofn);
    m_ofn.lpstrDefExt = lpszDefExt;
    m_ofn.lpstrFile = m_szFileName;
    m_ofn.nMaxFile = sizeof(m_szFileName);
    m_ofn.Flags = dwFlags | OFN_EXPLORER;

    if (lpszFileName != nullptr)
    {
        // As many whole characters as fit.
        const char* const pEnd = lpszFileName + std::strlen(lpszFileName);
        const char* p = lpszFileName;
        while (p < pEnd && p + CharLength(p, pEnd) - lpszFileName < MAX_PATH)
            p += CharLength(p, pEnd);
        std::memcpy(m_szFileName, lpszFileName, static_cast<std::size_t>(p - lpszFileName));
    }
    if (lpszFilter != nullptr)
    {
        // The list ends with an empty text; the string's own terminator makes sure of it.
        m_strFilter = lpszFilter;
        m_strFilter += '\0';
        m_strFilter.Replace('|', '\0');
        m_ofn.lpstrFilter = m_strFilter;
    }
}

INT_PTR CFileDialog::DoModal()
{
    // Not linked: it would bring the shell into every process that loads this library.
    HMODULE const hDialogs = LoadSystemLibrary("comdlg32.dll");
    if (hDialogs == nullptr)
        return IDCANCEL;
    using OpenFunction = BOOL(APIENTRY*)(LPOPENFILENAMEA);
    const auto pfnOpen = reinterpret_cast<OpenFunction>(
        reinterpret_cast<void*>(::GetProcAddress(hDialogs, "GetOpenFileNameA")));
    if (pfnOpen == nullptr)
        return IDCANCEL;
    const ModalOwner owner(m_pParentWnd);
    m_ofn.hwndOwner = owner.Handle();
    const BOOL bConfirmed = pfnOpen(&m_ofn);
    // A path that fills all of it comes without a terminator.
    m_szFileName[sizeof(m_szFileName) - 1] = '\0';
    return bConfirmed ? IDOK : IDCANCEL;
}
