// NewHeap: finds the heap that a library makes for itself, on which its blocks can be counted exactly.
#pragma once

#include <windows.h>

#include <vector>

// A heap that came into being since the object was made.
class NewHeap
{
public:
    NewHeap() : m_before(All()) {}

    // Null when there is none.
    HANDLE Find() const
    {
        for (HANDLE const hHeap : All())
        {
            bool bOld = false;
            for (HANDLE const hBefore : m_before)
                bOld = bOld || hBefore == hHeap;
            if (!bOld)
                return hHeap;
        }
        return nullptr;
    }

private:
    static std::vector<HANDLE> All()
    {
        std::vector<HANDLE> heaps(64);
        heaps.resize(::GetProcessHeaps(64, heaps.data()));
        return heaps;
    }
    std::vector<HANDLE> m_before;
};
