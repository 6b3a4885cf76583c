#pragma once

#include "InstancePlace_p.h"

#include <QByteArray>
#include <QDeadlineTimer>
#include <chrono>

class QLocalSocket;

namespace Softphone::Impl {

/// A later copy's end: hands one message to the first copy.
class InstanceSender
{
public:
    enum class Outcome {
        Delivered,
        Unreachable, ///< nobody listened
        Unanswered,  ///< somebody listened, and the time was over before the slots had run
        Broken,      ///< the other copy ended while its slots ran
    };

    explicit InstanceSender(InstancePlace place);

    /// Hands over \a message, header included. Knocks again until \a patience is over, as long as it is
    /// certain that nothing was handed over: the first copy may not listen yet, or end and have a successor.
    [[nodiscard]] Outcome send(QByteArray const& message, std::chrono::milliseconds patience) const;

    /// Whether somebody listens at this moment, alive or not.
    [[nodiscard]] bool isHeard() const;

    /// Whether the copy that listens says that it is alive before \a patience is over.
    [[nodiscard]] bool isGreeted(std::chrono::milliseconds patience) const;

private:
    [[nodiscard]] Outcome knock(QByteArray const& message, QDeadlineTimer deadline) const;
    bool connectTo(QLocalSocket& first, QDeadlineTimer deadline) const;

    InstancePlace m_place;
};

} // namespace Softphone::Impl
