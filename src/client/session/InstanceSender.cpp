#include "InstanceSender_p.h"

#include "InstanceListener_p.h"
#include "InstanceLock_p.h"
#include "LocalPeer_p.h"

#include <QLocalSocket>
#include <QThread>
#include <optional>
#include <utility>

namespace Softphone::Impl {

using namespace std::chrono_literals;

namespace {

constexpr auto betweenKnocks = 20ms;

int remaining(QDeadlineTimer const& deadline)
{
    return static_cast<int>(deadline.remainingTime());
}

/// The next answer; nothing when the connection or the time ends first.
std::optional<InstanceAnswer> nextAnswer(QLocalSocket& first, QDeadlineTimer const& deadline)
{
    char byte = 0;
    if ((first.bytesAvailable() == 0 && !first.waitForReadyRead(remaining(deadline))) ||
        first.read(&byte, 1) != 1) {
        return std::nullopt;
    }
    return static_cast<InstanceAnswer>(byte);
}

} // namespace

InstanceSender::InstanceSender(InstancePlace place)
    : m_place(std::move(place))
{
}

InstanceSender::Outcome InstanceSender::send(QByteArray const& message,
                                             std::chrono::milliseconds patience) const
{
    QDeadlineTimer const deadline(patience);
    for (;;) {
        Outcome const outcome = knock(message, deadline);
        if (outcome != Outcome::Unreachable || deadline.hasExpired()) {
            return outcome;
        }
        QThread::msleep(betweenKnocks.count());
    }
}

bool InstanceSender::isHeard() const
{
    QLocalSocket first;
    // Fails at once where nobody listens; one who has more to do than it can take is waited for.
    first.connectToServer(m_place.socket(InstanceLock::holder(m_place.lock)));
    return first.state() != QLocalSocket::UnconnectedState;
}

bool InstanceSender::isGreeted(std::chrono::milliseconds patience) const
{
    QDeadlineTimer const deadline(patience);
    QLocalSocket first;
    return connectTo(first, deadline) && nextAnswer(first, deadline) == InstanceAnswer::Greeting;
}

InstanceSender::Outcome InstanceSender::knock(QByteArray const& message, QDeadlineTimer deadline) const
{
    QLocalSocket first;
    if (!connectTo(first, deadline)) {
        return Outcome::Unreachable;
    }
    first.write(message);
    while (first.bytesToWrite() > 0 && first.waitForBytesWritten(remaining(deadline))) {
    }
    bool taken = false;
    while (auto const answer = nextAnswer(first, deadline)) {
        if (*answer == InstanceAnswer::Done) {
            return Outcome::Delivered;
        }
        taken = taken || *answer == InstanceAnswer::Taken;
    }
    if (first.state() == QLocalSocket::ConnectedState) {
        return Outcome::Unanswered;
    }
    return taken ? Outcome::Broken : Outcome::Unreachable;
}

bool InstanceSender::connectTo(QLocalSocket& first, QDeadlineTimer deadline) const
{
    // Asked again each time: the first copy may have a successor.
    first.connectToServer(m_place.socket(InstanceLock::holder(m_place.lock)));
    return first.waitForConnected(remaining(deadline)) && isOwnUser(first.socketDescriptor());
}

} // namespace Softphone::Impl
