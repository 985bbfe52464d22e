// The compiler's unwinder, replaced in the DLL.
//
// The stock one serves a program: whoever catches an exception has the same run-time code. Exceptions of
// this library also reach hosts that accept them by structured handling, and those take frames away by
// their own means, for which the stock one has no end: it goes on towards a handler that nobody named.
// Here an exception that nothing in the library catches first runs what it has to clean up, frame by
// frame, and is only then raised to the host, which finds nothing left to do in the library's frames.
//
// Between the copies of this code in one process (the host's may be the stock one) the system's record
// of the exception and private_[1] to [3] of the compiler's are common property:
//   private_[1]   frame that catches; 0: none is known
//   private_[2]   where that frame goes on
//   private_[3]   which of its handlers
#include "runtime/Unwinder.h"

#include "runtime/ExceptionRuntime.h"
#include "runtime/HandlerTable.h"

#include <unwind.h>
#include <windows.h>

#include <cstdlib>
#include <cstring>
#include <exception>

extern "C" IMAGE_DOS_HEADER __ImageBase;

namespace
{
constexpr DWORD kThrow = 0x20474343; // of every GCC
constexpr DWORD kUnwinding = EXCEPTION_UNWINDING | EXCEPTION_EXIT_UNWIND;

[[noreturn]] void UnwindTo(void* pFrame, _Unwind_Ptr nLandingPad, _Unwind_Word nSelector,
                           _Unwind_Exception* pException)
{
    EXCEPTION_RECORD record = {};
    record.ExceptionCode = kThrow;
    record.ExceptionFlags = EXCEPTION_NONCONTINUABLE;
    record.NumberParameters = 4;
    record.ExceptionInformation[0] = reinterpret_cast<ULONG_PTR>(pException);
    record.ExceptionInformation[1] = reinterpret_cast<ULONG_PTR>(pFrame);
    record.ExceptionInformation[2] = nLandingPad;
    record.ExceptionInformation[3] = nSelector;
    CONTEXT context;
    ::RtlUnwindEx(pFrame, reinterpret_cast<void*>(nLandingPad), &record, pException, &context,
                  nullptr);
    std::abort();
}

// Steps from a frame of the library to its caller. False when the frame is none of the library's.
bool LeaveFrame(CONTEXT& context, DISPATCHER_CONTEXT& dispatch)
{
    dispatch = {};
    dispatch.ControlPc = context.Rip;
    dispatch.FunctionEntry = ::RtlLookupFunctionEntry(context.Rip, &dispatch.ImageBase, nullptr);
    if (dispatch.FunctionEntry == nullptr ||
        dispatch.ImageBase != reinterpret_cast<ULONG_PTR>(&__ImageBase))
        return false;
    dispatch.ContextRecord = &context;
    dispatch.LanguageHandler = ::RtlVirtualUnwind(
        UNW_FLAG_UHANDLER, dispatch.ImageBase, dispatch.ControlPc, dispatch.FunctionEntry, &context,
        &dispatch.HandlerData, &dispatch.EstablisherFrame, nullptr);
    return true;
}

// Offers an exception to the frames of the library that stand above the caller. Does not return when
// one of them takes it: catches it or, with EXCEPTION_UNWINDING, has something to clean up.
void Offer(_Unwind_Exception* pException, DWORD nFlags)
{
    EXCEPTION_RECORD record = {};
    record.ExceptionCode = kThrow;
    record.ExceptionFlags = nFlags;
    record.ExceptionInformation[0] = reinterpret_cast<ULONG_PTR>(pException);
    CONTEXT context;
    ::RtlCaptureContext(&context);
    DISPATCHER_CONTEXT dispatch;
    while (LeaveFrame(context, dispatch))
    {
        if (dispatch.LanguageHandler != nullptr)
            dispatch.LanguageHandler(&record, reinterpret_cast<void*>(dispatch.EstablisherFrame),
                                     &context, &dispatch);
    }
}

// Nothing in the library catches it.
[[noreturn]] void LeaveLibrary(_Unwind_Exception* pException)
{
    Offer(pException, EXCEPTION_UNWINDING);
    ::RaiseException(kThrow, 0, 1, reinterpret_cast<const ULONG_PTR*>(&pException));
    std::abort(); // nobody catches it
}

// Frames are taken away, up to where the library was called or further. By whom, and what for?
void FramesGo(const EXCEPTION_RECORD& record, const _Unwind_Exception* pException,
              const CONTEXT& frame)
{
    const bool bThrown = record.ExceptionCode == kThrow;
    // The library itself, in order to clean up: frames are left, but no call.
    if (bThrown && record.NumberParameters != 1 && pException->private_[1] == 0)
        return;
    CONTEXT context = frame;
    DISPATCHER_CONTEXT ignored;
    while (LeaveFrame(context, ignored))
    {
    }
    const auto* const pEnd = reinterpret_cast<const void*>(context.Rsp);
    // Somebody who does not know what an exception of this compiler is: nobody will ever free it.
    EndExceptions(pEnd, !bThrown || record.NumberParameters == 1 ? &DisposeOfThrown : nullptr);
    if (!bThrown)
        GiveUpCalls(pEnd);
}
} // namespace

extern "C" {
// The handler of every frame that has a catch or something to clean up.
EXCEPTION_DISPOSITION __gxx_personality_seh0(PEXCEPTION_RECORD pRecord, void* pFrame,
                                             PCONTEXT /*pContext*/, PDISPATCHER_CONTEXT pDispatch)
{
    auto* const pException = reinterpret_cast<_Unwind_Exception*>(pRecord->ExceptionInformation[0]);
    const DWORD nFlags = pRecord->ExceptionFlags;
    if ((nFlags & EXCEPTION_TARGET_UNWIND) != 0)
    {
        // The system has been told all but this.
        pDispatch->ContextRecord->Rdx = pRecord->ExceptionInformation[3];
        return ExceptionContinueSearch;
    }
    if ((nFlags & kUnwinding) != 0)
        FramesGo(*pRecord, pException, *pDispatch->ContextRecord);
    if (pRecord->ExceptionCode != kThrow)
        return ExceptionContinueSearch;

    const Handling handling = FindHandling(*pDispatch, pException);
    if ((nFlags & kUnwinding) != 0)
    {
        if (handling.kind == Handling::Kind::CleanUp)
            UnwindTo(pFrame, handling.nLandingPad, 0, pException);
        return ExceptionContinueSearch;
    }
    if (handling.kind == Handling::Kind::Terminate)
        std::terminate();
    if (handling.kind == Handling::Kind::Catch)
    {
        // Raised by the system, and not offered as above.
        if (pRecord->NumberParameters != 0)
            ExceptionComes();
        SetCaughtObject(pException, handling.pObject);
        pException->private_[1] = reinterpret_cast<_Unwind_Word>(pFrame);
        pException->private_[2] = handling.nLandingPad;
        pException->private_[3] = handling.nSelector;
        UnwindTo(pFrame, handling.nLandingPad, handling.nSelector, pException);
    }
    return ExceptionContinueSearch;
}

// GCC 14 gives frames that only clean up the handler of C, when it optimises the library as one program;
// the stock one would bring the stock unwinder with it.
EXCEPTION_DISPOSITION __gcc_personality_seh0(PEXCEPTION_RECORD pRecord, void* pFrame,
                                             PCONTEXT pContext, PDISPATCHER_CONTEXT pDispatch)
{
    return __gxx_personality_seh0(pRecord, pFrame, pContext, pDispatch);
}

_Unwind_Reason_Code _Unwind_RaiseException(_Unwind_Exception* pException)
{
    std::memset(pException->private_, 0, sizeof(pException->private_));
    Offer(pException, 0);
    ExceptionLeaves(pException + 1, &pException);
    LeaveLibrary(pException);
}

void _Unwind_Resume(_Unwind_Exception* pException)
{
    if (pException->private_[1] != 0)
        UnwindTo(reinterpret_cast<void*>(pException->private_[1]), pException->private_[2],
                 pException->private_[3], pException);
    // Its own exception on its way out; or a host's, which somebody has accepted who does not tell.
    LeaveLibrary(pException);
}

_Unwind_Reason_Code _Unwind_Resume_or_Rethrow(_Unwind_Exception* pException)
{
    return _Unwind_RaiseException(pException);
}

void _Unwind_DeleteException(_Unwind_Exception* pException)
{
    if (pException->exception_cleanup != nullptr)
        pException->exception_cleanup(_URC_FOREIGN_EXCEPTION_CAUGHT, pException);
}
}
