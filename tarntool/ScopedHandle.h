// ScopedHandle: a handle of the system's, closed with the object.
#pragma once

#include <windows.h>

class ScopedHandle
{
public:
    // INVALID_HANDLE_VALUE counts as none.
    explicit ScopedHandle(HANDLE hOwned = nullptr) noexcept
        : m_h(hOwned == INVALID_HANDLE_VALUE ? nullptr : hOwned)
    {
    }
    ~ScopedHandle() { Close(); }
    ScopedHandle(const ScopedHandle&) = delete;
    ScopedHandle& operator=(const ScopedHandle&) = delete;

    operator HANDLE() const noexcept { return m_h; }
    bool IsValid() const noexcept { return m_h != nullptr; }

    void Reset(HANDLE hOwned) noexcept
    {
        Close();
        m_h = hOwned == INVALID_HANDLE_VALUE ? nullptr : hOwned;
    }

    // Keeps the last error, which is often still to be told.
    void Close() noexcept
    {
        const DWORD nError = ::GetLastError();
        if (m_h != nullptr)
            ::CloseHandle(m_h);
        m_h = nullptr;
        ::SetLastError(nError);
    }

private:
    HANDLE m_h; // null: none
};
