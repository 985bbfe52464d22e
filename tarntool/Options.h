// The options that commands take. Which command takes which is said in Commands.cpp.
#pragma once

#include <afx.h>

struct Options
{
    enum Option : UINT
    {
        Parent = 1U << 0,
        Title = 1U << 1,
        Message = 1U << 2,
        ID = 1U << 3,
        Folder = 1U << 4,
        Filter = 1U << 5,
        Extension = 1U << 6,
        File = 1U << 7,
        Patience = 1U << 8,
        Out = 1U << 9,
        Quiet = 1U << 10
    };
    static constexpr int kOptions = 11;
};
