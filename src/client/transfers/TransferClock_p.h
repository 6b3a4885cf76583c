#pragma once

#include "TransferRequest.h"

#include <QElapsedTimer>
#include <algorithm>
#include <chrono>
#include <optional>

namespace Softphone {

/// The three clocks of a transfer, looked at from time to time.
class TransferClock
{
public:
    enum class Limit { Connect, Stalled, Total };

    explicit TransferClock(TransferLimits const& limits)
        : m_limits(limits)
    {
    }

    /// A request begins.
    void request() { enter(Phase::Connecting); }

    /// Bytes may flow; once a request.
    void connected()
    {
        if (m_phase == Phase::Connecting) {
            enter(Phase::Flowing);
        }
    }

    /// Bytes have moved.
    void heard()
    {
        connected();
        m_quiet = milliseconds(0);
    }

    /// There is no request: only the total time goes on.
    void rest() { enter(Phase::Resting); }

    /// Which limit has been reached. The caller, who looks at the clock every \a step, says whether the disk
    /// holds the bytes back.
    [[nodiscard]] std::optional<Limit> look(std::chrono::milliseconds step, bool isHeldBack)
    {
        // Nobody could read while the program was busy or the machine asleep, so that is no silence of the
        // server's.
        milliseconds const passed(m_sinceLook.restart());
        if (m_phase != Phase::Resting && !isHeldBack) {
            m_quiet += std::min(passed, 2 * step);
        }
        if (isReached(m_limits.total, milliseconds(m_sinceStart.elapsed()))) {
            return Limit::Total;
        }
        if (m_phase == Phase::Connecting && isReached(m_limits.connect, m_quiet)) {
            return Limit::Connect;
        }
        if (m_phase == Phase::Flowing && isReached(m_limits.stalled, m_quiet)) {
            return Limit::Stalled;
        }
        return std::nullopt;
    }

private:
    using milliseconds = std::chrono::milliseconds;

    enum class Phase { Resting, Connecting, Flowing };

    static bool isReached(milliseconds limit, milliseconds time)
    {
        return limit.count() > 0 && time >= limit;
    }

    void enter(Phase phase)
    {
        if (!m_sinceStart.isValid()) {
            m_sinceStart.start();
        }
        m_phase = phase;
        m_quiet = milliseconds(0);
        m_sinceLook.start();
    }

    TransferLimits m_limits;
    Phase m_phase = Phase::Resting;
    milliseconds m_quiet{0};
    QElapsedTimer m_sinceLook;
    QElapsedTimer m_sinceStart;
};

} // namespace Softphone
