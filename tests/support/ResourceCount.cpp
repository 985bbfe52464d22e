#include "tests/support/ResourceCount.h"

#include "tests/support/HeapCalls.h"
#include "tests/support/Wine.h"

#include <tlhelp32.h>

namespace
{
constexpr DWORD kMaxHeaps = 256;

// Wine gives 0 for every count that it does not keep. There the handles themselves are asked for: it
// gives out the lowest that is free, so the gaps are small. Not the system's table of all handles: to
// read it while another process begins or ends crashes Wine's server.
DWORD CountHandles()
{
    DWORD nHandles = 0;
    if (::GetProcessHandleCount(::GetCurrentProcess(), &nHandles) && nHandles != 0)
        return nHandles;
    constexpr int kLargestGap = 250;
    int nGap = 0;
    for (ULONG_PTR nHandle = 4; nGap < kLargestGap; nHandle += 4, ++nGap)
    {
        DWORD nFlags = 0;
        if (!::GetHandleInformation(reinterpret_cast<HANDLE>(nHandle), &nFlags))
            continue;
        ++nHandles;
        nGap = 0;
    }
    return nHandles;
}

DWORD CountGdiObjects()
{
    const DWORD nObjects = ::GetGuiResources(::GetCurrentProcess(), GR_GDIOBJECTS);
    if (nObjects != 0)
        return nObjects;
    // Under Wine the low word alone names an object of this process.
    DWORD nFound = 0;
    for (ULONG_PTR nHandle = 1; nHandle < 0x10000; ++nHandle)
    {
        if (::GetObjectType(reinterpret_cast<HGDIOBJ>(nHandle)) != 0)
            ++nFound;
    }
    return nFound;
}

BOOL CALLBACK CountWindow(HWND hWnd, LPARAM lParam)
{
    DWORD nProcessID = 0;
    ::GetWindowThreadProcessId(hWnd, &nProcessID);
    if (nProcessID == ::GetCurrentProcessId())
    {
        ++*reinterpret_cast<DWORD*>(lParam);
        if (::GetAncestor(hWnd, GA_PARENT) == ::GetDesktopWindow())
            ::EnumChildWindows(hWnd, &CountWindow, lParam); // all below, not only its own
    }
    return TRUE;
}

// Windows at least, where the system does not count its objects.
DWORD CountUserObjects()
{
    DWORD nObjects = ::GetGuiResources(::GetCurrentProcess(), GR_USEROBJECTS);
    if (nObjects == 0)
        ::EnumWindows(&CountWindow, reinterpret_cast<LPARAM>(&nObjects));
    return nObjects;
}

// Before the first test. On Windows HeapWalk knows all blocks.
const bool g_bHeapCallsCounted = RunsUnderWine() && HeapCalls::CountFromNowOn();

void CountBlocks(HANDLE hHeap, std::size_t& nBlocks, std::size_t& cbBlocks)
{
    if (g_bHeapCallsCounted)
    {
        const HeapCalls::Blocks blocks = HeapCalls::In(hHeap);
        nBlocks += static_cast<std::size_t>(blocks.nBlocks);
        cbBlocks += static_cast<std::size_t>(blocks.cbBlocks);
        return;
    }
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
    count.nThreads = Threads();
    count.nGdiObjects = CountGdiObjects();
    count.nUserObjects = CountUserObjects();
    HANDLE heaps[kMaxHeaps];
    count.nHeaps = ::GetProcessHeaps(kMaxHeaps, heaps);
    for (DWORD i = 0; i < count.nHeaps && i < kMaxHeaps; ++i)
        CountBlocks(heaps[i], count.nHeapBlocks, count.cbHeapBlocks);
    count.nHandles = CountHandles();
    return count;
}

int ResourceCount::Threads()
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

std::size_t ResourceCount::BlocksIn(HANDLE hHeap)
{
    std::size_t nBlocks = 0;
    std::size_t cbBlocks = 0;
    CountBlocks(hHeap, nBlocks, cbBlocks);
    return nBlocks;
}

std::ostream& operator<<(std::ostream& stream, const ResourceCount& count)
{
    return stream << count.nHandles << " handles, " << count.nGdiObjects << " GDI objects, "
                  << count.nUserObjects << " USER objects, " << count.nThreads << " threads, "
                  << count.nHeaps << " heaps with " << count.nHeapBlocks << " blocks of "
                  << count.cbHeapBlocks << " bytes";
}
