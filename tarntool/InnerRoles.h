// Parts of tarntool that have to be processes of their own. tarntool starts them, with handles that they
// inherit; they are not for its users.
#pragma once

#include "tarntool/ScopedHandle.h"

// True when the arguments begin with the name of a role, which has then been played.
bool PlayInnerRole(LPCWSTR pszArguments, UINT* pnExitCode);

// Starts a role and waits until it says that it is ready. Returns its process; null, with the last error,
// when it cannot be started. *pbReady is false when it has ended instead, or did not come as far in two
// minutes and was ended. Should this process be killed meanwhile, the role is, too.
//
// The role gets copies of the given handles, at most kMaxInherited, and nothing else, not even the
// streams: a caller that reads a pipe to its end would wait for it. Its current folder is the system's.
//
// Its command line: the role; the numbers of an event, to be set when it is ready, and of the handles;
// the rest.
HANDLE StartInnerRole(LPCWSTR pszProgram, LPCWSTR pszRole, const HANDLE* phHandles, int nHandles,
                      LPCWSTR pszRest, bool* pbReady);
constexpr int kMaxInherited = 2;

// Takes the next number off a role's arguments; 0 for what is none.
ULONG_PTR TakeNumber(LPCWSTR* ppszArguments);

// A handle to the calling process that only waits for its end; to be closed.
HANDLE OpenOwnProcess();

// The roles. They get the arguments behind their names.
UINT KeepWaitWindow(LPCWSTR pszArguments); // WaitKeeper.cpp
UINT GuardParent(LPCWSTR pszArguments);    // ParentGuard.cpp
