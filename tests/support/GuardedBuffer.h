// GuardedBuffer: memory of an exact size in which a write outside is noticed: behind it lies a page
// that cannot be touched at all, before it a run of known bytes.
#pragma once

#include <windows.h>

#include <cstddef>
#include <cstring>

class GuardedBuffer
{
public:
    // The bytes are filled with kFill.
    explicit GuardedBuffer(std::size_t cb)
    {
        const std::size_t cbUsable = (cb + kFront + kPage - 1) / kPage * kPage;
        m_pBase = static_cast<unsigned char*>(
            ::VirtualAlloc(nullptr, cbUsable + kPage, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE));
        DWORD nOld = 0;
        ::VirtualProtect(m_pBase + cbUsable, kPage, PAGE_NOACCESS, &nOld);
        std::memset(m_pBase, kFront, cbUsable);
        m_pData = m_pBase + cbUsable - cb;
        m_cb = cb;
        Refill();
    }
    ~GuardedBuffer() { ::VirtualFree(m_pBase, 0, MEM_RELEASE); }
    GuardedBuffer(const GuardedBuffer&) = delete;
    GuardedBuffer& operator=(const GuardedBuffer&) = delete;

    char* Data() { return reinterpret_cast<char*>(m_pData); }
    void Refill() { std::memset(m_pData, kFill, m_cb); }

    // Whether nothing was written before the buffer.
    bool IsFrontIntact() const
    {
        for (const unsigned char* p = m_pBase; p < m_pData; ++p)
        {
            if (*p != kFront)
                return false;
        }
        return true;
    }
    // Whether the bytes from an offset on are as Refill left them.
    bool IsUntouchedFrom(std::size_t nOffset) const
    {
        for (std::size_t i = nOffset; i < m_cb; ++i)
        {
            if (m_pData[i] != kFill)
                return false;
        }
        return true;
    }

    static constexpr unsigned char kFill = 0xA5;

private:
    static constexpr std::size_t kPage = 4096;
    static constexpr unsigned char kFront = 0x5A; // bytes in front, at least, and their value

    unsigned char* m_pBase = nullptr;
    unsigned char* m_pData = nullptr;
    std::size_t m_cb = 0;
};
