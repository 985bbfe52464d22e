// HandleList: the attribute of a new process that names the handles which it inherits, and so keeps it
// from inheriting others.
#pragma once

#include <windows.h>

#include <memory>

class HandleList
{
public:
    HandleList()
    {
        SIZE_T cb = 0;
        ::InitializeProcThreadAttributeList(nullptr, 1, 0, &cb);
        m_pBytes.reset(new BYTE[cb]);
        m_bValid = ::InitializeProcThreadAttributeList(Get(), 1, 0, &cb) != FALSE;
    }
    ~HandleList()
    {
        if (m_bValid)
            ::DeleteProcThreadAttributeList(Get());
    }
    HandleList(const HandleList&) = delete;
    HandleList& operator=(const HandleList&) = delete;

    // The array stays the caller's, until the process has been made.
    bool Set(HANDLE* phHandles, int nHandles)
    {
        return m_bValid && ::UpdateProcThreadAttribute(
                               Get(), 0, PROC_THREAD_ATTRIBUTE_HANDLE_LIST, phHandles,
                               static_cast<SIZE_T>(nHandles) * sizeof(HANDLE), nullptr, nullptr);
    }

    LPPROC_THREAD_ATTRIBUTE_LIST Get() const
    {
        return reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(m_pBytes.get());
    }

private:
    std::unique_ptr<BYTE[]> m_pBytes;
    bool m_bValid = false;
};
