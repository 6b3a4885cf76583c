#pragma once

#include "LimitedFibonacciGenerator.h"
#include "ReconnectionWaits.h"

#include <softphonecore_export.h>

#include <QTimer>
#include <atomic>
#include <chrono>
#include <memory>

/// Paces the attempts to reconnect after a connection is lost.
///
/// The application says when to begin waiting (onStartTimer()) and when the connection is good again
/// (onResetTimer()). After each wait the manager asks for another attempt (tryConnectionAgain()), or says
/// that the attempts are used up (connectionAttemptsExhausted()). The waits come from a generator, in
/// seconds: with the default one 0, 1, 1, 2, 3, 5, 8, 13, 21 and, as the last, 34; after a reset 1, 2, 3 and
/// so on. What comes after the last is the application's choice: each further wait takes 55 s and again ends
/// in connectionAttemptsExhausted(). When a wait begins, waitStarted() tells how long it takes.
///
/// The manager belongs to the thread that made it and needs its event loop; enable() alone may be called from
/// other threads.
///
/// Example:
/// \code
/// ReconnectionManager manager;
/// QObject::connect(&manager, &ReconnectionManager::tryConnectionAgain, &manager, [] { connectToServer(); });
/// manager.onStartTimer(); // the connection is lost, or the attempt has failed
/// manager.onResetTimer(); // the connection is good again
/// \endcode
class SOFTPHONECORE_EXPORT ReconnectionManager : public ReconnectionWaits
{
    Q_OBJECT

public:
    /// A manager whose waits follow the Fibonacci sequence up to 55 s. It has no parent.
    ReconnectionManager();

    /// A manager with the waits of \a generator, for example with a random offset. Without one it has the
    /// default waits. It has no parent.
    explicit ReconnectionManager(std::unique_ptr<LimitedFibonacciGenerator> generator);
    ~ReconnectionManager() override;

    /// Prepares the timer; the constructors have done so.
    ///
    /// Each further call connects the timer once more, and every timeout then counts as often: callers do
    /// not call this on a manager that is constructed.
    void initializeManager();

    /// Whether a wait is under way.
    [[nodiscard]] bool isActive() const;

    /// The time until the wait that is under way ends, and with it until the next attempt is due; zero when
    /// none is under way, and when its end is overdue.
    ///
    /// Together with waitStarted() this is what a window needs to say "trying again in 8 s".
    [[nodiscard]] std::chrono::milliseconds remainingTime() const;

    /// Allows or forbids waiting. A fresh manager is enabled.
    ///
    /// Forbidding ends the wait that is under way and resets the generator; allowing starts nothing. From
    /// another thread the flag is set at once, and the manager's own thread ends the wait when it comes to
    /// it: before it starts another one, and in any case without a signal for the one that was forbidden.
    ///
    /// \param on  whether to allow waiting
    void enable(bool on);

Q_SIGNALS:
    /// A wait is over and another attempt may be made.
    void tryConnectionAgain() const;

    /// A wait is over and no attempt is left.
    void connectionAttemptsExhausted() const;

public Q_SLOTS:
    /// The connection is good: ends the wait, and the next one is again the generator's first.
    virtual void onResetTimer();

    /// The connection is lost: waits for the generator's next number of seconds. Nothing happens when
    /// disabled. A wait that is under way starts over with that number.
    ///
    /// Emits waitStarted() once the wait is under way.
    ///
    /// The milliseconds are counted modulo 2^32; what exceeds the longest wait that a timer knows, about 25
    /// days, waits that long. Nothing is waited for when the generator throws.
    virtual void onStartTimer();

    /// A wait is over: emits one of the signals, or none when disabled. What a receiver throws ends with it.
    virtual void onTimeoutReached();

private:
    void halt();
    bool haltIfAsked();

    std::unique_ptr<LimitedFibonacciGenerator> m_generator;
    std::atomic<bool> m_enabled = true;
    QTimer m_timer;
    /// Set by enable(false) on another thread, until the manager's own thread has caught up with it.
    std::atomic<bool> m_haltAsked = false;
};
