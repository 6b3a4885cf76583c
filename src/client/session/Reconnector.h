/// \file
/// When to try again after a connection is lost, and what a window says meanwhile.

#pragma once

#include <client/softphoneclient_export.h>

#include <runtime/LimitedFibonacciGenerator.h>

#include <QObject>
#include <QTimer>
#include <chrono>
#include <memory>

namespace Softphone {

/// Decides when the application tries to connect again, and counts down to it.
///
/// The application reports what happens to its connection; the reconnector asks for an attempt by attempt().
/// The waits follow the Fibonacci sequence up to 55 s, each with up to three more seconds by chance, so that
/// the clients of a server that comes back do not all return in the same second. The very first wait is these
/// seconds alone. It never gives up: at the longest wait it stays.
///
/// An attempt is asked for at once when the machine wakes from sleep or the network comes back. What the
/// system says about the network is a hint only: without it, or against it, the waits go on as before.
///
/// A connection that held for half a minute starts the waits over; one that breaks sooner goes on where they
/// were, since a server that takes connections and drops them is no better than one that takes none.
///
/// The object belongs to the thread that made it and needs its event loop.
///
/// \code
/// Softphone::Reconnector reconnector;
/// QObject::connect(&reconnector, &Softphone::Reconnector::attempt, [] { connectToServer(); });
/// reconnector.reportLost(); // the connection is gone, or an attempt has failed
/// reconnector.reportConnected();
/// \endcode
class SOFTPHONECLIENT_EXPORT Reconnector : public QObject
{
    Q_OBJECT
    /// What is going on.
    Q_PROPERTY(State state READ state NOTIFY stateChanged)
    /// The whole seconds until the next attempt, rounded up; 0 when none is waited for.
    Q_PROPERTY(int remaining READ remaining NOTIFY remainingChanged)

public:
    /// What is going on.
    enum class State {
        Idle,      ///< nothing was reported yet, or stop() was called
        Waiting,   ///< the next attempt is due in remaining() seconds
        Trying,    ///< attempt() was emitted, and its outcome was not reported yet
        Connected, ///< reportConnected() was called
    };
    Q_ENUM(State)

    /// How long a connection has to hold for the waits to start over.
    static constexpr std::chrono::seconds held{30};

    /// A reconnector with the waits described above.
    explicit Reconnector(QObject* parent = nullptr);

    /// A reconnector with the waits of \a waits, in seconds; without one, those described above.
    explicit Reconnector(std::unique_ptr<LimitedFibonacciGenerator> waits, QObject* parent = nullptr);

    ~Reconnector() override;

    /// What is going on.
    [[nodiscard]] State state() const;

    /// The whole seconds until the next attempt, rounded up; 0 when none is waited for.
    [[nodiscard]] int remaining() const;

public Q_SLOTS:
    /// The connection is lost, or the attempt has failed: waits, then asks for an attempt. A wait that is
    /// under way goes on.
    void reportLost();

    /// The connection is good.
    void reportConnected();

    /// Ends a wait at once and asks for the attempt, as a button "Try now" does. Nothing happens without a
    /// wait.
    void tryNow();

    /// Ends the wait. What is reported next starts the waits over.
    void stop();

Q_SIGNALS:
    /// It is time to try. The application answers by reportConnected() or reportLost().
    void attempt();
    /// state() has changed.
    void stateChanged();
    /// remaining() has changed.
    void remainingChanged();

private:
    void enter(State state);
    void endWait();
    void askForAttempt();
    void watchNetwork();
    void countDown();

    std::unique_ptr<LimitedFibonacciGenerator> m_waits;
    QTimer m_wait;
    QTimer m_countdown;
    State m_state = State::Idle;
    int m_remaining = 0;
    std::chrono::nanoseconds m_connectedSince{0};
    std::chrono::nanoseconds m_sleptBefore{0}; ///< what the machine had slept when the wait began
};

} // namespace Softphone
