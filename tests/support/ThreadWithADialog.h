// What the system itself keeps of a thread that has shown a dialog and ended: two blocks of memory under
// Wine 10, nothing under Wine 8. Nobody but the system can give it back.
#pragma once

#include "tests/support/RoundCost.h"
#include "tests/support/WindowDriver.h"

#include <algorithm>

// Measured, with a dialog without any code of the library.
inline RoundCost::Allowance CostOfAThreadWithADialog()
{
    const auto showDialog = [] {
        window_driver::DriverThread([] {
            struct
            {
                DLGTEMPLATE dialog;
                WORD nMenu, nClass, nTitle;
            } dialog = {
                {WS_POPUP | WS_CAPTION | WS_VISIBLE | DS_MODALFRAME, 0, 0, 0, 0, 100, 50}, 0, 0, 0};
            HWND const hWnd = ::CreateDialogIndirectParamA(
                ::GetModuleHandleA(nullptr), &dialog.dialog, nullptr,
                [](HWND, UINT nMessage, WPARAM, LPARAM) -> INT_PTR {
                    return nMessage == WM_INITDIALOG;
                },
                0);
            EXPECT_TRUE(::DestroyWindow(hWnd));
        }).Join();
    };
    showDialog(); // what it keeps once
    const RoundCost cost = RoundCost::Of(1, showDialog);
    RoundCost::Allowance allowed = {};
    for (std::size_t i = 0; i < allowed.size(); ++i)
        allowed[i] = std::max(0.0, cost.PerRound(static_cast<RoundCost::Kind>(i)));
    return allowed;
}
