// Replaced, too, since the stock reader brings exception specifications along, and what a violated one
// throws: a tenth of the DLL.
//
// The table, as GCC and Clang write it for this system:
//   byte              0xff: landing pads count from the function's start
//   byte              how types are written, or 0xff: there are none
//   number            from behind itself to the end of the types, when there are some
//   byte              0x01: call sites are written as numbers
//   number            size of the call sites
//   call sites        start, length, landing pad, first action + 1; sorted; 0 is none
//   actions           signed: which type, 0 is a clean-up; offset of the next action, 0 is none
//   types             counted backwards from their end
#include "runtime/HandlerTable.h"

#include <typeinfo>

namespace
{
constexpr BYTE kOmitted = 0xff;
constexpr BYTE kAbsolute = 0; // Clang; GCC has offsets of 4 bytes to pointers
constexpr _Unwind_Exception_Class kCpp = 0x474E5543432B2B00; // "GNUCC++"

ULONG_PTR ReadNumber(const BYTE*& p)
{
    ULONG_PTR nValue = 0;
    unsigned int nShift = 0;
    BYTE byte = 0;
    do
    {
        byte = *p++;
        nValue |= static_cast<ULONG_PTR>(byte & 0x7f) << nShift;
        nShift += 7;
    }
    while ((byte & 0x80) != 0);
    return nValue;
}

LONG_PTR ReadSigned(const BYTE*& p)
{
    const BYTE* const pStart = p;
    const ULONG_PTR nValue = ReadNumber(p);
    const int nUnused = 64 - 7 * static_cast<int>(p - pStart);
    return static_cast<LONG_PTR>(nValue << nUnused) >> nUnused;
}

const std::type_info* ReadType(const BYTE* pEnd, BYTE nEncoding, LONG_PTR nType)
{
    if (nEncoding == kAbsolute)
        return reinterpret_cast<const std::type_info* const*>(pEnd)[-nType];
    const int* const pOffset = reinterpret_cast<const int*>(pEnd) - nType;
    // NOLINTNEXTLINE(clang-analyzer-core.NullDereference): who names a type has written types
    if (*pOffset == 0)
        return nullptr;
    return *reinterpret_cast<const std::type_info* const*>(reinterpret_cast<const BYTE*>(pOffset) +
                                                           *pOffset);
}

// The header in front of the exception; the compiler's binary interface fixes it.
const std::type_info& TypeOf(const _Unwind_Exception* pException)
{
    return *reinterpret_cast<const std::type_info* const*>(pException)[-10];
}

bool Catches(const std::type_info* pType, _Unwind_Exception* pException, void*& pObject)
{
    pObject = pException + 1;
    if (pType == nullptr)
        return true;
    if (pException->exception_class != kCpp)
        return false;
    const std::type_info& thrown = TypeOf(pException);
    if (thrown.__is_pointer_p())
        pObject = *static_cast<void**>(pObject);
    return pType->__do_catch(&thrown, &pObject, 1);
}
} // namespace

Handling FindHandling(const DISPATCHER_CONTEXT& dispatch, _Unwind_Exception* pException)
{
    const ULONG_PTR nFunction = dispatch.ImageBase + dispatch.FunctionEntry->BeginAddress;
    const ULONG_PTR nCall = dispatch.ControlPc - 1 - nFunction;
    const BYTE* p = static_cast<const BYTE*>(dispatch.HandlerData) + 1;
    const BYTE nEncoding = *p++;
    const BYTE* pTypes = nullptr;
    if (nEncoding != kOmitted)
    {
        const ULONG_PTR cb = ReadNumber(p);
        pTypes = p + cb;
    }
    ++p;
    const ULONG_PTR cbCallSites = ReadNumber(p);
    const BYTE* const pActions = p + cbCallSites;

    Handling handling = {Handling::Kind::Terminate, 0, 0, nullptr};
    while (p < pActions)
    {
        const ULONG_PTR nStart = ReadNumber(p);
        const ULONG_PTR cb = ReadNumber(p);
        const ULONG_PTR nLandingPad = ReadNumber(p);
        const ULONG_PTR nAction = ReadNumber(p);
        if (nCall - nStart >= cb)
            continue;
        handling.kind = Handling::Kind::Nothing;
        if (nLandingPad == 0)
            break;
        handling.nLandingPad = nFunction + nLandingPad;
        if (nAction == 0)
            handling.kind = Handling::Kind::CleanUp;
        for (p = nAction != 0 ? pActions + nAction - 1 : nullptr; p != nullptr;)
        {
            const LONG_PTR nType = ReadSigned(p);
            if (nType == 0)
                handling.kind = Handling::Kind::CleanUp;
            else if (Catches(ReadType(pTypes, nEncoding, nType), pException, handling.pObject))
            {
                handling.kind = Handling::Kind::Catch;
                handling.nSelector = static_cast<ULONG_PTR>(nType);
                break;
            }
            const BYTE* const pNext = p;
            const LONG_PTR nOffset = ReadSigned(p);
            p = nOffset != 0 ? pNext + nOffset : nullptr;
        }
        break;
    }
    return handling;
}

void SetCaughtObject(_Unwind_Exception* pException, void* pObject)
{
    if (pException->exception_class == kCpp)
        reinterpret_cast<void**>(pException)[-1] = pObject;
}
