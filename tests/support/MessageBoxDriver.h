// Answers message boxes of this process with their one button, on a thread of its own, and keeps
// what they said.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

struct SeenMessageBox
{
    std::string caption;
    std::string text;
    int nButtons;
};

class MessageBoxDriver
{
public:
    // Watches until Stop, or for nLimit milliseconds.
    explicit MessageBoxDriver(DWORD nLimit = 30000);
    ~MessageBoxDriver() { Stop(); }
    MessageBoxDriver(const MessageBoxDriver&) = delete;
    MessageBoxDriver& operator=(const MessageBoxDriver&) = delete;

    // Ends the watch; the boxes in the order in which they came. A box keeps the call that shows it
    // from returning until it is answered, so none is missed that came before this call.
    const std::vector<SeenMessageBox>& Stop();

private:
    static DWORD WINAPI Run(LPVOID pThis);
    void Watch();

    DWORD m_nLimit;
    HANDLE m_hStop;                      // owned; set by Stop
    std::vector<SeenMessageBox> m_boxes; // the thread's until it has ended
    HANDLE m_hThread;                    // owned; null when it has ended
};
