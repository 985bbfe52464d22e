#include "tests/support/ResourceCount.h"

#include <tlhelp32.h>

namespace
{
constexpr DWORD kMaxHeaps = 256;

int CountThreads()
{
    HANDLE const hSnapshot = ::CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    if (hSnapshot == INVALID_HANDLE_VALUE)
        return -1;
    int nThreads = 0;
    THREADENTRY32 entry = {};
    entry.dwSize = sizeof(entry);
    for (BOOL bMore = ::Thread32First(hSnapshot, &entry); bMore;
         bMore = ::Thread32Next(hSnapshot, &entry))
    {
        if (entry.th32OwnerProcessID == ::GetCurrentProcessId())
            ++nThreads;
    }
    ::CloseHandle(hSnapshot);
    return nThreads;
}

void Walk(HANDLE hHeap, std::size_t& nBlocks, std::size_t& cbBlocks)
{
    if (!::HeapLock(hHeap))
        return;
    PROCESS_HEAP_ENTRY entry = {};
    while (::HeapWalk(hHeap, &entry))
    {
        if ((entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0)
        {
            ++nBlocks;
            cbBlocks += entry.cbData;
        }
    }
    ::HeapUnlock(hHeap);
}
} // namespace

ResourceCount ResourceCount::Now()
{
    ResourceCount count;
    count.nThreads = CountThreads();
    count.nGdiObjects = ::GetGuiResources(::GetCurrentProcess(), GR_GDIOBJECTS);
    count.nUserObjects = ::GetGuiResources(::GetCurrentProcess(), GR_USEROBJECTS);
    HANDLE heaps[kMaxHeaps];
    count.nHeaps = ::GetProcessHeaps(kMaxHeaps, heaps);
    for (DWORD i = 0; i < count.nHeaps && i < kMaxHeaps; ++i)
        Walk(heaps[i], count.nHeapBlocks, count.cbHeapBlocks);
    ::GetProcessHandleCount(::GetCurrentProcess(), &count.nHandles);
    return count;
}

std::size_t ResourceCount::BlocksIn(HANDLE hHeap)
{
    std::size_t nBlocks = 0;
    std::size_t cbBlocks = 0;
    Walk(hHeap, nBlocks, cbBlocks);
    return nBlocks;
}

bool operator==(const ResourceCount& a, const ResourceCount& b)
{
    return a.nHandles == b.nHandles && a.nGdiObjects == b.nGdiObjects &&
           a.nUserObjects == b.nUserObjects && a.nThreads == b.nThreads && a.nHeaps == b.nHeaps &&
           a.nHeapBlocks == b.nHeapBlocks && a.cbHeapBlocks == b.cbHeapBlocks;
}

std::ostream& operator<<(std::ostream& stream, const ResourceCount& count)
{
    return stream << count.nHandles << " handles, " << count.nGdiObjects << " GDI objects, "
                  << count.nUserObjects << " USER objects, " << count.nThreads << " threads, "
                  << count.nHeaps << " heaps with " << count.nHeapBlocks << " blocks of "
                  << count.cbHeapBlocks << " bytes";
}
