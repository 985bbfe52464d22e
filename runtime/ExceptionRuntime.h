// Memory of the compiler's exception handling, in the DLL.
#pragma once

// Frees what exception handling keeps for the calling thread, which ends.
void AfxTermThreadExceptions() noexcept;
