#pragma once

#include <QObject>
#include <atomic>
#include <chrono>
#include <string>
#include <thread>

/// Knocks at the thread that made it, again and again, and notes how long that takes to answer at worst.
///
/// The time for which the system gave the processor to others does not count, where the system tells it.
class Watchdog
{
public:
    Watchdog();
    ~Watchdog();
    Watchdog(Watchdog const&) = delete;
    Watchdog& operator=(Watchdog const&) = delete;

    /// Calls \a look, whose time does not count, on the watched thread.
    template <typename Look>
    [[nodiscard]] auto excuse(Look const& look)
    {
        auto const result = look();
        ++m_looks;
        return result;
    }

    /// The longest wait since the last call.
    [[nodiscard]] std::chrono::milliseconds takeLongest();

private:
    void knock();

    QObject m_watched;
    std::string m_schedule; ///< the file that tells how long the thread waited for a processor
    std::atomic<std::chrono::nanoseconds> m_longest{};
    std::atomic<int> m_looks = 0;
    std::atomic<bool> m_isAnswered = true;
    std::atomic<bool> m_isEnding = false;
    std::thread m_thread;
};
