// What the unwinder needs of the library that it serves.
#pragma once

// Somebody outside takes the calls into the library away that stand below pEnd on the calling thread's
// stack, and none of their destructors will run.
void GiveUpCalls(const void* pEnd) noexcept;

// Frees what an object that was thrown stands for.
void DisposeOfThrown(void* pObject) noexcept;
