// Memory of the compiler's exception handling, in the DLL.
#pragma once

// Frees what exception handling keeps for the calling thread, which ends.
void FreeThreadExceptions() noexcept;

// The calling thread's exception with that object was caught nowhere in the library and leaves it; the
// throw stands at pStack.
void ExceptionLeaves(const void* pObject, const void* pStack) noexcept;

// An exception that somebody else has thrown is about to be caught in the library, on the calling thread.
void ExceptionComes() noexcept;

// Of those that left, the ones below pEnd on the calling thread's stack have been accepted: by a catch,
// which frees them, or (pfnDispose) by somebody who will not; then it gets each object, and they go.
void EndExceptions(const void* pEnd, void (*pfnDispose)(void* pObject)) noexcept;
