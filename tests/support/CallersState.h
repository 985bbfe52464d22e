// What a call into the library must leave as it found it.
#pragma once

#include <windows.h>

#include <ostream>
#include <string>

struct CallersState
{
    HANDLE hActivationContext = nullptr;
    std::string currentFolder;
    UINT nErrorMode = 0;

    static CallersState Now()
    {
        CallersState state;
        // Counted up by the call; the number itself is what is compared.
        if (::GetCurrentActCtx(&state.hActivationContext) && state.hActivationContext != nullptr)
            ::ReleaseActCtx(state.hActivationContext);
        char szFolder[MAX_PATH] = "";
        ::GetCurrentDirectoryA(MAX_PATH, szFolder);
        state.currentFolder = szFolder;
        state.nErrorMode = ::GetErrorMode();
        return state;
    }
};

inline bool operator==(const CallersState& a, const CallersState& b)
{
    return a.hActivationContext == b.hActivationContext && a.currentFolder == b.currentFolder &&
           a.nErrorMode == b.nErrorMode;
}

inline std::ostream& operator<<(std::ostream& stream, const CallersState& state)
{
    return stream << "activation context " << state.hActivationContext << ", folder "
                  << state.currentFolder << ", error mode " << state.nErrorMode;
}
