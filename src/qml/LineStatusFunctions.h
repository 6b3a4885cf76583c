#pragma once

#include <telephony/LineStatus.h>

#include <QObject>
#include <QString>
#include <QtQml/qqml.h>

namespace SoftphoneQml {

/// `LineStatus`: the states of a line and the groups that they form. The core's value has no meta-object; a
/// state is its number here, as in CallClock's `status`.
class LineStatusFunctions : public QObject
{
    Q_OBJECT
    QML_NAMED_ELEMENT(LineStatus)
    QML_SINGLETON

public:
    /// The states, each with the number and the meaning that the core's LineStatus::Status gives it.
    enum Status : int {
        Free = static_cast<int>(LineStatus::Status::Free),
        Connecting = static_cast<int>(LineStatus::Status::Connecting),
        Ringing = static_cast<int>(LineStatus::Status::Ringing),
        Incoming = static_cast<int>(LineStatus::Status::Incoming),
        IncomingAsWaitEstablished = static_cast<int>(LineStatus::Status::IncomingAsWaitEstablished),
        Busy = static_cast<int>(LineStatus::Status::Busy),
        Active = static_cast<int>(LineStatus::Status::Active),
        ActiveAsSessionProgress = static_cast<int>(LineStatus::Status::ActiveAsSessionProgress),
        Terminated = static_cast<int>(LineStatus::Status::Terminated),
        TerminatedAsBusy = static_cast<int>(LineStatus::Status::TerminatedAsBusy),
        TerminatedAsAnsweredElsewhere = static_cast<int>(LineStatus::Status::TerminatedAsAnsweredElsewhere),
        TerminatedAsTemporaryUnavailable =
            static_cast<int>(LineStatus::Status::TerminatedAsTemporaryUnavailable),
        Error = static_cast<int>(LineStatus::Status::Error),
    };
    Q_ENUM(Status)

    /// For the engine, which makes one.
    using QObject::QObject;

    /// Whether \a status is Incoming or IncomingAsWaitEstablished.
    [[nodiscard]] Q_INVOKABLE bool isIncoming(int status) const;
    /// Whether \a status is Active or ActiveAsSessionProgress.
    [[nodiscard]] Q_INVOKABLE bool isActive(int status) const;
    /// Whether \a status is one of the four terminated states.
    [[nodiscard]] Q_INVOKABLE bool isTerminated(int status) const;
    /// The name of \a status as Status spells it; empty for a number outside it.
    [[nodiscard]] Q_INVOKABLE QString name(int status) const;
};

} // namespace SoftphoneQml
