#pragma once

#include "InstanceMessage_p.h"
#include "InstancePlace_p.h"

#include <QLocalServer>
#include <QLocalSocket>
#include <QObject>

namespace Softphone::Impl {

/// What the first copy says to a sender, a byte each, in this order.
enum class InstanceAnswer : char {
    Greeting = 'H', ///< at once: it is alive
    Taken = 'T',    ///< the message is whole, and the slots begin now; until here nothing was handed over
    Done = 'D',     ///< the slots have run
};

/// The first copy's end: takes messages and hands them on from the event loop.
class InstanceListener : public QObject
{
    Q_OBJECT

public:
    explicit InstanceListener(InstancePlace place);

    /// Starts to listen, in place of whoever listened here before.
    bool listen();
    [[nodiscard]] QString errorText() const;

Q_SIGNALS:
    void received(QStringList const& arguments, QByteArray const& activationToken);

private:
    void greet();
    void read(QLocalSocket* sender);
    void deliver(QLocalSocket* sender, InstanceMessage const& message);

    InstancePlace m_place;
    QLocalServer m_server;
};

} // namespace Softphone::Impl
