// PatchFunction: replaces a function of a system library for the whole process, for good.
//
// An ImportPatch replaces what one module calls. Here the function itself begins with a jump to the
// replacement, so that calls from within its own library arrive there, too. The instructions that make
// room for the jump move to a page nearby, by way of which the function is still to be called.
#pragma once

#include <windows.h>

#include <cstdint>
#include <cstring>
#include <initializer_list>

namespace function_patch
{
constexpr SIZE_T kJump = 5;
constexpr SIZE_T kFarJump = 64; // in the page
constexpr SIZE_T kPage = 0x10000;
constexpr SIZE_T kReach = 0x70000000; // of a jump

// How many bytes of whole instructions make room for a jump; 0 when there is one among them that may
// depend on its address.
inline SIZE_T BytesToMove(const BYTE* pCode)
{
    constexpr BYTE kLea[] = {0x48, 0x8D, 0xA4, 0x24, 0, 0, 0, 0}; // lea rsp, [rsp + 0]
    const auto isPush = [](BYTE nCode) { return nCode >= 0x50 && nCode <= 0x57; };
    SIZE_T cb = 0;
    while (cb < kJump)
    {
        const BYTE* const p = pCode + cb;
        if (isPush(p[0]))
            cb += 1;
        else if (p[0] == 0x41 && isPush(p[1])) // r8 and up
            cb += 2;
        else if (std::memcmp(p, kLea, sizeof(kLea)) == 0)
            cb += sizeof(kLea);
        else
            return 0;
    }
    return cb;
}

inline BYTE* AllocateNear(const BYTE* pFunction)
{
    const auto nFunction = reinterpret_cast<std::uintptr_t>(pFunction) & ~(kPage - 1);
    for (SIZE_T nAway = kPage; nAway < kReach; nAway += kPage)
    {
        for (const std::uintptr_t nAddress : {nFunction - nAway, nFunction + nAway})
        {
            void* const p = ::VirtualAlloc(reinterpret_cast<void*>(nAddress), kPage,
                                           MEM_RESERVE | MEM_COMMIT, PAGE_EXECUTE_READWRITE);
            if (p != nullptr)
                return static_cast<BYTE*>(p);
        }
    }
    return nullptr;
}

inline void WriteJump(BYTE* pAt, const BYTE* pTo)
{
    const auto nDistance = static_cast<std::int32_t>(pTo - (pAt + kJump));
    *pAt = 0xE9;
    std::memcpy(pAt + 1, &nDistance, sizeof(nDistance));
}
} // namespace function_patch

// While the process has one thread. False when this system's function does not begin in one of the ways
// that are known; it is as it was then.
template <class Function>
bool PatchFunction(HMODULE hModule, const char* pszFunction, Function* pReplacement,
                   Function*& pOriginal)
{
    using namespace function_patch;
    // By way of a number: a function's address converts to nothing else.
    auto* const pFunction = reinterpret_cast<BYTE*>(
        reinterpret_cast<std::uintptr_t>(::GetProcAddress(hModule, pszFunction)));
    const SIZE_T cb = pFunction != nullptr ? BytesToMove(pFunction) : 0;
    BYTE* const pPage = cb != 0 ? AllocateNear(pFunction) : nullptr;
    DWORD nProtection = 0;
    if (pPage == nullptr ||
        !::VirtualProtect(pFunction, kJump, PAGE_EXECUTE_READWRITE, &nProtection))
        return false;

    std::memcpy(pPage, pFunction, cb);
    WriteJump(pPage + cb, pFunction + cb);
    constexpr BYTE kJumpToAddress[] = {0xFF, 0x25, 0, 0, 0, 0}; // which follows
    std::memcpy(pPage + kFarJump, kJumpToAddress, sizeof(kJumpToAddress));
    std::memcpy(pPage + kFarJump + sizeof(kJumpToAddress), &pReplacement, sizeof(pReplacement));
    pOriginal = reinterpret_cast<Function*>(reinterpret_cast<std::uintptr_t>(pPage));

    WriteJump(pFunction, pPage + kFarJump);
    ::VirtualProtect(pFunction, kJump, nProtection, &nProtection);
    ::FlushInstructionCache(::GetCurrentProcess(), nullptr, 0);
    return true;
}
