// GoogleTest's place for adaptations, read by its headers: the compiler's win32 thread model has no
// std::mutex and std::condition_variable, which one class of GoogleTest's is made of.
#pragma once

#if defined(_WIN32)

#define GTEST_HAS_NOTIFICATION_ 1

#include <atomic>

namespace testing::internal
{
class Notification
{
public:
    void Notify() { m_bNotified = true; }
    void WaitForNotification() const
    {
        while (!m_bNotified)
        {
        }
    }

private:
    std::atomic<bool> m_bNotified{false};
};
} // namespace testing::internal

#endif
