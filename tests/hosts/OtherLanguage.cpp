// A language with a handler of its own, by hand: what its compiler and run-time would make of "try".
#include "tests/hosts/structured.h"

extern "C" {
// Calls pCall with this language's handler around; gives 0, or what the handler unwinds with.
int GuardedCall(const Call* pCall, int nWay);
extern char g_nGuardedCallEnd; // where that goes on
EXCEPTION_DISPOSITION HandleInOtherLanguage(EXCEPTION_RECORD* pRecord, void* pFrame,
                                            CONTEXT* pContext, DISPATCHER_CONTEXT* pDispatch);
}

__asm__(".text\n"
        ".globl GuardedCall\n"
        ".def GuardedCall; .scl 2; .type 32; .endef\n"
        ".seh_proc GuardedCall\n"
        "GuardedCall:\n"
        "    push %rbx\n"
        "    .seh_pushreg %rbx\n"
        "    sub $0x40, %rsp\n"
        "    .seh_stackalloc 0x40\n"
        "    .seh_endprologue\n"
        "    mov %edx, 0x38(%rsp)\n" // where the handler finds the way
        "    mov %rcx, %rax\n"
        "    mov 40(%rax), %rcx\n"
        "    mov %rcx, 0x20(%rsp)\n"
        "    mov 32(%rax), %r9\n"
        "    mov 24(%rax), %r8\n"
        "    mov 16(%rax), %rdx\n"
        "    mov 8(%rax), %rcx\n"
        "    call *(%rax)\n"
        "    xor %eax, %eax\n"
        ".globl g_nGuardedCallEnd\n"
        "g_nGuardedCallEnd:\n"
        "    add $0x40, %rsp\n"
        "    pop %rbx\n"
        "    ret\n"
        ".seh_handler HandleInOtherLanguage, @except, @unwind\n"
        ".seh_endproc\n");

extern "C" EXCEPTION_DISPOSITION HandleInOtherLanguage(EXCEPTION_RECORD* pRecord, void* pFrame,
                                                       CONTEXT* pContext,
                                                       DISPATCHER_CONTEXT* pDispatch)
{
    void* const pTarget = &g_nGuardedCallEnd;
    if ((pRecord->ExceptionFlags & EXCEPTION_UNWIND) != 0)
        return ExceptionContinueSearch;
    switch (*reinterpret_cast<const int*>(static_cast<const char*>(pFrame) + 0x38))
    {
    case 0:
        RtlUnwindEx(pFrame, pTarget, pRecord, reinterpret_cast<void*>(1), pContext,
                    pDispatch->HistoryTable);
        break;
    case 1:
        RtlUnwind(pFrame, pTarget, pRecord, reinterpret_cast<void*>(1));
        break;
    default:
        RtlUnwind(pFrame, pTarget, nullptr, reinterpret_cast<void*>(1));
        break;
    }
    return ExceptionContinueSearch;
}

int CallFromOtherLanguage(const Call* pCall, int nWay)
{
    return GuardedCall(pCall, nWay);
}
