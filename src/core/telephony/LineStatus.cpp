#include "LineStatus.h"

#include <QDebug>
#include <QHashFunctions>
#include <magic_enum/magic_enum.hpp>
#include <string_view>

static_assert(sizeof(LineStatus) == sizeof(int));

LineStatus::LineStatus(Status status)
    : m_status(status)
{
}

LineStatus LineStatus::createFree()
{
    return Status::Free;
}

LineStatus LineStatus::createConnecting()
{
    return Status::Connecting;
}

LineStatus LineStatus::createRinging()
{
    return Status::Ringing;
}

LineStatus LineStatus::createIncoming()
{
    return Status::Incoming;
}

LineStatus LineStatus::createIncomingAsWaitEstablished()
{
    return Status::IncomingAsWaitEstablished;
}

LineStatus LineStatus::createBusy()
{
    return Status::Busy;
}

LineStatus LineStatus::createActive()
{
    return Status::Active;
}

LineStatus LineStatus::createActiveAsSessionProgress()
{
    return Status::ActiveAsSessionProgress;
}

LineStatus LineStatus::createTerminated()
{
    return Status::Terminated;
}

LineStatus LineStatus::createTerminatedAsBusy()
{
    return Status::TerminatedAsBusy;
}

LineStatus LineStatus::createTerminatedAsAnsweredElsewhere()
{
    return Status::TerminatedAsAnsweredElsewhere;
}

LineStatus LineStatus::createTerminatedAsTemporaryUnavailable()
{
    return Status::TerminatedAsTemporaryUnavailable;
}

LineStatus LineStatus::createError()
{
    return Status::Error;
}

bool LineStatus::isFree() const
{
    return m_status == Status::Free;
}

bool LineStatus::isConnecting() const
{
    return m_status == Status::Connecting;
}

bool LineStatus::isRinging() const
{
    return m_status == Status::Ringing;
}

bool LineStatus::isIncoming() const
{
    return m_status == Status::Incoming || m_status == Status::IncomingAsWaitEstablished;
}

bool LineStatus::isStrictlyIncomingAsWaitEstablished() const
{
    return m_status == Status::IncomingAsWaitEstablished;
}

bool LineStatus::isBusy() const
{
    return m_status == Status::Busy;
}

bool LineStatus::isActive() const
{
    return m_status == Status::Active || m_status == Status::ActiveAsSessionProgress;
}

bool LineStatus::isStrictlyActive() const
{
    return m_status == Status::Active;
}

bool LineStatus::isActiveAsSessionProgress() const
{
    return m_status == Status::ActiveAsSessionProgress;
}

bool LineStatus::isStrictlyActiveAsSessionProgress() const
{
    return isActiveAsSessionProgress();
}

bool LineStatus::isTerminated() const
{
    return m_status >= Status::Terminated && m_status <= Status::TerminatedAsTemporaryUnavailable;
}

bool LineStatus::isStrictlyTerminatedAsBusy() const
{
    return m_status == Status::TerminatedAsBusy;
}

bool LineStatus::isStrictlyTerminatedAsAnsweredElsewhere() const
{
    return m_status == Status::TerminatedAsAnsweredElsewhere;
}

bool LineStatus::isStrictlyTerminatedAsTemporaryUnavailable() const
{
    return m_status == Status::TerminatedAsTemporaryUnavailable;
}

bool LineStatus::isError() const
{
    return m_status == Status::Error;
}

bool LineStatus::operator==(LineStatus const& other) const
{
    return m_status == other.m_status;
}

bool LineStatus::operator<(LineStatus const& other) const
{
    return m_status < other.m_status;
}

std::vector<LineStatus::Status> LineStatus::getAllStatuses()
{
    // Read off the enumeration, so that a new status is listed without anybody thinking of it.
    constexpr auto all = magic_enum::enum_values<Status>();
    return std::vector<Status>(all.begin(), all.end());
}

QString LineStatus::toString() const
{
    std::string_view const name = magic_enum::enum_name(m_status);
    return QString::fromUtf8(name.data(), static_cast<qsizetype>(name.size()));
}

int LineStatus::serialize() const
{
    return static_cast<int>(m_status);
}

LineStatus LineStatus::deserialize(int value)
{
    // A number that names no status is kept as it is: a newer program may have stored it.
    return static_cast<Status>(value);
}

std::size_t qHash(LineStatus const& status, std::size_t seed) noexcept
{
    return ::qHash(status.serialize(), seed);
}

QDebug operator<<(QDebug debug, LineStatus const& status)
{
    QDebugStateSaver const saver(debug);
    QString const name = status.toString();
    debug.nospace().noquote() << "LineStatus("
                              << (name.isEmpty() ? QString::number(status.serialize()) : name) << ')';
    return debug;
}

char* toString(LineStatus const& status)
{
    return qstrdup(QDebug::toString(status).toUtf8().constData());
}
