// Tests that leave something in the settings of the user who runs them, be it for a moment, ask first.
// The build's tests run for the user of a Wine of their own; on a person's machine nobody is asked,
// and they are skipped.
#pragma once

#include <cstdlib>

constexpr char kDialogTouchesSettings[] =
    "the user's settings are left alone: the system's Open dialog keeps folders and files in them";

inline bool MayTouchUsersSettings()
{
    const char* const pszAnswer = std::getenv("TARN_MAY_TOUCH_USER");
    return pszAnswer != nullptr && *pszAnswer == '1';
}
