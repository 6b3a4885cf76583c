/// \file
/// The clock beside a call: how long the conversation has lasted, as a window shows it.

#pragma once

#include <client/softphoneclient_export.h>

#include <telephony/LineStatus.h>

#include <QObject>
#include <QString>
#include <QTimer>
#include <chrono>
#include <functional>

namespace Softphone {

/// \a length as a window shows how long a call lasted: "00:07", "59:59", "1:02:03", "26:00:00"; "00:00" when
/// it is negative. Any thread.
[[nodiscard]] SOFTPHONECLIENT_EXPORT QString callLengthText(std::chrono::seconds length);

/// Follows the state of one line through a call and counts the conversation.
///
/// The clock starts when the line becomes active (Status::Active; the early media of
/// Status::ActiveAsSessionProgress are no conversation yet), goes on while the call is on hold, and stops
/// with its last reading when the line leaves the call: when it is free, terminated or in error. The next
/// call starts from zero.
///
/// Time is taken from the clock that counts from the start of the machine: setting the wall clock changes
/// nothing, the sleep of the machine counts, and there is no longest call.
///
/// The object belongs to the thread that made it and needs its event loop to tick.
///
/// \code
/// Softphone::CallClock clock;
/// QObject::connect(&clock, &Softphone::CallClock::textChanged, &clock, [&] { show(clock.text()); });
/// clock.setStatus(LineStatus::createActive()); // "00:00", and a second later "00:01"
/// \endcode
class SOFTPHONECLIENT_EXPORT CallClock : public QObject
{
    Q_OBJECT
    /// The state of the line, by its number; what is set here is what setStatus() takes.
    Q_PROPERTY(int status READ statusNumber WRITE setStatusNumber NOTIFY statusChanged)
    /// Whether the call is on hold.
    Q_PROPERTY(bool onHold READ isOnHold WRITE setOnHold NOTIFY onHoldChanged)
    /// Whether the clock is running.
    Q_PROPERTY(bool running READ isRunning NOTIFY runningChanged)
    /// The length of the conversation in whole seconds.
    Q_PROPERTY(qint64 elapsed READ elapsedSeconds NOTIFY elapsedChanged)
    /// The part of it that was on hold, in whole seconds.
    Q_PROPERTY(qint64 held READ heldSeconds NOTIFY elapsedChanged)
    /// The length of the conversation as text.
    Q_PROPERTY(QString text READ text NOTIFY textChanged)

public:
    /// What tells the time: the time since any fixed moment, which never goes back.
    using TimeSource = std::function<std::chrono::nanoseconds()>;

    /// A clock of a free line, at zero.
    explicit CallClock(QObject* parent = nullptr);

    /// A clock that reads \a now in place of the machine's own, to replay a call or to test.
    explicit CallClock(TimeSource now, QObject* parent = nullptr);

    ~CallClock() override;

    /// The line is in the state \a status now.
    void setStatus(LineStatus status);

    /// The state that was set last; free at first.
    [[nodiscard]] LineStatus status() const;

    /// Begins or ends a hold. The line's state does not tell it; a hold ends with the call at the latest.
    void setOnHold(bool on);

    /// Whether the call is on hold.
    [[nodiscard]] bool isOnHold() const;

    /// Whether the clock is running.
    [[nodiscard]] bool isRunning() const;

    /// The length of the conversation so far, hold included, or of the last one once it is over. Whole
    /// seconds, rounded down.
    [[nodiscard]] std::chrono::seconds elapsed() const;

    /// How much of elapsed() was on hold. Whole seconds, rounded down.
    [[nodiscard]] std::chrono::seconds held() const;

    /// callLengthText() of elapsed().
    [[nodiscard]] QString text() const;

Q_SIGNALS:
    /// status() has changed.
    void statusChanged();
    /// isOnHold() has changed.
    void onHoldChanged();
    /// isRunning() has changed.
    void runningChanged();
    /// elapsed() has changed: once a second while the clock is running, at the moment when the second is
    /// full.
    void elapsedChanged();
    /// text() has changed.
    void textChanged();

private:
    [[nodiscard]] int statusNumber() const;
    void setStatusNumber(int number);
    [[nodiscard]] qint64 elapsedSeconds() const;
    [[nodiscard]] qint64 heldSeconds() const;

    /// What the signals report, apart from the time.
    struct Shown
    {
        LineStatus status;
        bool running;
        bool onHold;
    };

    void start();
    void stop();
    void endHold();
    void tick();
    void waitForNextSecond();
    [[nodiscard]] Shown shown() const;
    void announceChangesSince(Shown const& before);
    [[nodiscard]] std::chrono::nanoseconds measured() const;
    [[nodiscard]] std::chrono::nanoseconds measuredHold() const;

    TimeSource m_now;
    QTimer m_timer;
    LineStatus m_status;
    bool m_running = false;
    bool m_onHold = false;
    std::chrono::nanoseconds m_started{0};
    std::chrono::nanoseconds m_holdStarted{0};
    std::chrono::nanoseconds m_length{0}; ///< of the last conversation
    std::chrono::nanoseconds m_held{0};   ///< the holds that are over
    std::chrono::seconds m_announced{0};
};

} // namespace Softphone
