#include "InstanceListener_p.h"

#include "InstanceLock_p.h"
#include "LocalPeer_p.h"

#include <QFile>
#include <QPointer>
#include <QTimer>
#include <chrono>
#include <utility>

namespace Softphone::Impl {

using namespace std::chrono_literals;

namespace {

/// A sender has its message ready when it connects; one that takes longer is none.
constexpr auto patience = 2s;
/// Enough for all that a desktop starts at once. Those beyond it knock again.
constexpr int mostSenders = 64;

void answer(QLocalSocket* sender, InstanceAnswer answer)
{
    char const byte = static_cast<char>(answer);
    sender->write(&byte, 1);
    sender->flush();
}

} // namespace

InstanceListener::InstanceListener(InstancePlace place)
    : m_place(std::move(place))
{
    m_server.setListenBacklogSize(mostSenders);
    connect(&m_server, &QLocalServer::newConnection, this, &InstanceListener::greet);
}

bool InstanceListener::listen()
{
    // Whoever made them is gone, or deaf: this copy has the lock.
    m_place.removeOldSockets();
    return m_server.listen(m_place.socket(InstanceLock::holder(m_place.lock)));
}

QString InstanceListener::errorText() const
{
    return m_server.errorString();
}

void InstanceListener::greet()
{
    while (QLocalSocket* const sender = m_server.nextPendingConnection()) {
        // A copy that comes here is alive, whatever one that could not wait has noted.
        QFile::remove(m_place.deaf);
        connect(sender, &QLocalSocket::disconnected, sender, &QObject::deleteLater);
        if (!isOwnUser(sender->socketDescriptor()) ||
            m_server.findChildren<QLocalSocket*>().size() > mostSenders) {
            sender->abort();
            continue;
        }
        sender->setReadBufferSize(InstanceMessage::headerSize + InstanceMessage::wireLimit);
        connect(sender, &QLocalSocket::readyRead, this, [this, sender] { read(sender); });
        auto* const deadline = new QTimer(sender);
        connect(deadline, &QTimer::timeout, sender, &QLocalSocket::abort);
        deadline->start(patience);
        answer(sender, InstanceAnswer::Greeting);
    }
}

void InstanceListener::read(QLocalSocket* sender)
{
    if (sender->bytesAvailable() < InstanceMessage::headerSize) {
        return;
    }
    std::optional<qsizetype> const length =
        InstanceMessage::lengthAfter(sender->peek(InstanceMessage::headerSize));
    if (!length) {
        sender->abort();
        return;
    }
    if (sender->bytesAvailable() < InstanceMessage::headerSize + *length) {
        return;
    }
    sender->skip(InstanceMessage::headerSize);
    std::optional<InstanceMessage> message = InstanceMessage::decoded(sender->read(*length));
    if (!message || sender->bytesAvailable() > 0) {
        sender->abort();
        return;
    }
    sender->disconnect(this);
    delete sender->findChild<QTimer*>();
    // Queued, so that a slot that runs an event loop of its own finds nothing of this connection on the
    // stack.
    QMetaObject::invokeMethod(
        sender, [this, sender, message = std::move(*message)] { deliver(sender, message); },
        Qt::QueuedConnection);
}

void InstanceListener::deliver(QLocalSocket* sender, InstanceMessage const& message)
{
    // A sender that has stopped waiting was told that nothing was handed over.
    if (sender->state() != QLocalSocket::ConnectedState || isHungUp(sender->socketDescriptor())) {
        sender->abort();
        return;
    }
    QPointer<QLocalSocket> const stillThere(sender);
    answer(sender, InstanceAnswer::Taken);
    Q_EMIT received(message.arguments, message.activationToken);
    if (stillThere) {
        QFile::remove(m_place.deaf);
        answer(sender, InstanceAnswer::Done);
        sender->disconnectFromServer();
    }
}

} // namespace Softphone::Impl
