#include "InstanceChannel.h"

#include "InstanceListener_p.h"
#include "InstanceLock_p.h"
#include "InstanceMessage_p.h"
#include "InstancePlace_p.h"
#include "InstanceSender_p.h"

#include <QFile>
#include <QSaveFile>
#include <cerrno>

namespace Softphone {

using namespace std::chrono_literals;
using namespace Impl;

class InstanceChannel::Private
{
public:
    std::optional<InstancePlace> place;
    InstanceLock lock;
    std::unique_ptr<InstanceListener> listener;
    QString error;

    bool fail(QString const& reason)
    {
        error = reason;
        return false;
    }

    bool takeLock();
    bool takeOverFromDeaf();
    void noteDeaf() const;
};

InstanceChannel::InstanceChannel(QString const& application, QObject* parent)
    : QObject(parent)
    , m(std::make_unique<Private>())
{
    m->place = InstancePlace::of(application);
}

InstanceChannel::~InstanceChannel() = default;

bool InstanceChannel::open()
{
    if (isOpen()) {
        return true;
    }
    if (!m->place) {
        return m->fail(tr("There is no folder that only this user may write to."));
    }
    if (!m->takeLock()) {
        return false;
    }
    QFile::remove(m->place->deaf);
    auto listener = std::make_unique<InstanceListener>(*m->place);
    if (!listener->listen()) {
        m->lock.release();
        return m->fail(tr("This copy cannot listen: %1").arg(listener->errorText()));
    }
    connect(listener.get(), &InstanceListener::received, this, &InstanceChannel::received);
    m->listener = std::move(listener);
    m->error.clear();
    return true;
}

bool InstanceChannel::isOpen() const
{
    return m->listener != nullptr;
}

bool InstanceChannel::hasListener() const
{
    return m->place && InstanceSender(*m->place).isHeard();
}

bool InstanceChannel::sendAndWait(QStringList const& arguments, std::chrono::milliseconds patience)
{
    if (!m->place) {
        return m->fail(tr("There is no folder that only this user may write to."));
    }
    InstanceMessage const message{.arguments = arguments, .activationToken = qgetenv("XDG_ACTIVATION_TOKEN")};
    std::optional<QByteArray> const bytes = message.encoded();
    if (!bytes) {
        return m->fail(tr("The message is too large."));
    }
    switch (InstanceSender(*m->place).send(*bytes, patience)) {
    case InstanceSender::Outcome::Delivered:
        m->error.clear();
        return true;
    case InstanceSender::Outcome::Unreachable:
        return m->fail(tr("No other copy is listening."));
    case InstanceSender::Outcome::Broken:
        return m->fail(tr("The other copy ended before it was done."));
    case InstanceSender::Outcome::Unanswered:
        m->noteDeaf();
        return m->fail(tr("The other copy does not answer."));
    }
    return false;
}

QString InstanceChannel::errorText() const
{
    return m->error;
}

bool InstanceChannel::Private::takeLock()
{
    if (lock.take(place->lock)) {
        return true;
    }
    if (errno != EWOULDBLOCK) {
        return fail(tr("This copy cannot listen: %1").arg(qt_error_string(errno)));
    }
    return takeOverFromDeaf() || fail(tr("Another copy is running already."));
}

/// Leaves a note that the present holder of the lock gave no answer.
void InstanceChannel::Private::noteDeaf() const
{
    QSaveFile note(place->deaf);
    if (note.open(QIODevice::WriteOnly)) {
        note.write(InstanceLock::holder(place->lock));
        note.commit();
    }
}

/// Takes the lock of a copy that was noted as deaf and still is.
bool InstanceChannel::Private::takeOverFromDeaf()
{
    QFile note(place->deaf);
    if (!note.open(QIODevice::ReadOnly)) {
        return false;
    }
    QByteArray const noted = note.readAll();
    note.close();
    // Of several copies that have come this far, the one that removes the note goes on.
    if (noted.isEmpty() || noted != InstanceLock::holder(place->lock) ||
        InstanceSender(*place).isGreeted(500ms) || !QFile::remove(place->deaf)) {
        return false;
    }
    QFile::remove(place->lock);
    return lock.take(place->lock);
}

} // namespace Softphone
