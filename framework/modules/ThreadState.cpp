#include "framework/modules/ThreadState.h"

#include "framework/exceptions/CSimpleException.h"

namespace
{
__attribute__((noinline)) ThreadState* MakeThreadState()
{
    auto* const pState = new ThreadState;
    if (!SetThreadBlock(pState))
    {
        delete pState;
        AfxThrowMemoryException();
    }
    return pState;
}
} // namespace

ThreadState* GetThreadState()
{
    ThreadState* const pState = FindThreadState();
    return pState != nullptr ? pState : MakeThreadState();
}

void FreeThreadState() noexcept
{
    ThreadState* const pState = FindThreadState();
    if (pState != nullptr)
    {
        SetThreadBlock(nullptr);
        delete pState;
    }
}
