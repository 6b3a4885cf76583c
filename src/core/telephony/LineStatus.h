#pragma once

#include <softphonecore_export.h>

#include <QString>
#include <cstddef>
#include <functional>
#include <vector>

class QDebug;

/// The state of one telephone line (one call slot): a plain value with factories, predicates, an order, a
/// name and an integer form.
///
/// Which state may follow which is decided by its users. Any thread may use its own copies; all operations
/// take constant time.
///
/// \code
/// LineStatus status = LineStatus::createActiveAsSessionProgress();
/// status.isActive();         // true: the group of both active states
/// status.isStrictlyActive(); // false: exactly Status::Active
/// \endcode
class SOFTPHONECORE_EXPORT LineStatus
{
public:
    /// The states. Their numbers are stored, and the groups are adjacent: they must not be renumbered.
    enum class Status : int {
        Free = 0,                              ///< line idle
        Connecting = 1,                        ///< outgoing call being set up
        Ringing = 2,                           ///< outgoing call ringing at the far end
        Incoming = 3,                          ///< incoming call offered
        IncomingAsWaitEstablished = 4,         ///< incoming call offered during another call (call waiting)
        Busy = 5,                              ///< line busy
        Active = 6,                            ///< call in conversation
        ActiveAsSessionProgress = 7,           ///< call counted as active before it is answered
        Terminated = 8,                        ///< call ended
        TerminatedAsBusy = 9,                  ///< call ended because the far end was busy
        TerminatedAsAnsweredElsewhere = 10,    ///< call ended because another device answered it
        TerminatedAsTemporaryUnavailable = 11, ///< call ended because the far end is out of reach
        Error = 12,                            ///< line in error
    };

    /// Makes a line in the state \a status, idle unless given; it is kept as it is, also when it is none of
    /// Status.
    LineStatus(Status status = Status::Free);

    /// Makes a line in Status::Free.
    [[nodiscard]] static LineStatus createFree();
    /// Makes a line in Status::Connecting.
    [[nodiscard]] static LineStatus createConnecting();
    /// Makes a line in Status::Ringing.
    [[nodiscard]] static LineStatus createRinging();
    /// Makes a line in Status::Incoming.
    [[nodiscard]] static LineStatus createIncoming();
    /// Makes a line in Status::IncomingAsWaitEstablished.
    [[nodiscard]] static LineStatus createIncomingAsWaitEstablished();
    /// Makes a line in Status::Busy.
    [[nodiscard]] static LineStatus createBusy();
    /// Makes a line in Status::Active.
    [[nodiscard]] static LineStatus createActive();
    /// Makes a line in Status::ActiveAsSessionProgress.
    [[nodiscard]] static LineStatus createActiveAsSessionProgress();
    /// Makes a line in Status::Terminated.
    [[nodiscard]] static LineStatus createTerminated();
    /// Makes a line in Status::TerminatedAsBusy.
    [[nodiscard]] static LineStatus createTerminatedAsBusy();
    /// Makes a line in Status::TerminatedAsAnsweredElsewhere.
    [[nodiscard]] static LineStatus createTerminatedAsAnsweredElsewhere();
    /// Makes a line in Status::TerminatedAsTemporaryUnavailable.
    [[nodiscard]] static LineStatus createTerminatedAsTemporaryUnavailable();
    /// Makes a line in Status::Error.
    [[nodiscard]] static LineStatus createError();

    /// Whether the state is Status::Free.
    [[nodiscard]] bool isFree() const;
    /// Whether the state is Status::Connecting.
    [[nodiscard]] bool isConnecting() const;
    /// Whether the state is Status::Ringing.
    [[nodiscard]] bool isRinging() const;
    /// Whether the state is Status::Incoming or Status::IncomingAsWaitEstablished.
    [[nodiscard]] bool isIncoming() const;
    /// Whether the state is Status::IncomingAsWaitEstablished.
    [[nodiscard]] bool isStrictlyIncomingAsWaitEstablished() const;
    /// Whether the state is Status::Busy.
    [[nodiscard]] bool isBusy() const;
    /// Whether the state is Status::Active or Status::ActiveAsSessionProgress.
    [[nodiscard]] bool isActive() const;
    /// Whether the state is Status::Active.
    [[nodiscard]] bool isStrictlyActive() const;
    /// Whether the state is Status::ActiveAsSessionProgress.
    [[nodiscard]] bool isActiveAsSessionProgress() const;
    /// The same as isActiveAsSessionProgress(); callers use both names.
    [[nodiscard]] bool isStrictlyActiveAsSessionProgress() const;
    /// Whether the state is any of the four terminated ones. Compare with createTerminated() for the plain
    /// one.
    [[nodiscard]] bool isTerminated() const;
    /// Whether the state is Status::TerminatedAsBusy.
    [[nodiscard]] bool isStrictlyTerminatedAsBusy() const;
    /// Whether the state is Status::TerminatedAsAnsweredElsewhere.
    [[nodiscard]] bool isStrictlyTerminatedAsAnsweredElsewhere() const;
    /// Whether the state is Status::TerminatedAsTemporaryUnavailable.
    [[nodiscard]] bool isStrictlyTerminatedAsTemporaryUnavailable() const;
    /// Whether the state is Status::Error.
    [[nodiscard]] bool isError() const;

    /// Whether this and \a other are the same state; groups do not count.
    [[nodiscard]] bool operator==(LineStatus const& other) const;
    /// Whether the number of this state is below that of \a other.
    [[nodiscard]] bool operator<(LineStatus const& other) const;

    /// All thirteen states in ascending order of their numbers.
    [[nodiscard]] static std::vector<Status> getAllStatuses();

    /// The name of the state as Status spells it; empty for a number outside Status.
    [[nodiscard]] QString toString() const;

    /// The number of the state.
    [[nodiscard]] int serialize() const;

    /// The line whose state has the number \a value, without a range check: outside Status every predicate is
    /// false and the name is empty.
    [[nodiscard]] static LineStatus deserialize(int value);

private:
    Status m_status;
};

/// The hash of \a status under \a seed, for Qt's hashed containers; equal ones have equal hashes.
[[nodiscard]] SOFTPHONECORE_EXPORT std::size_t qHash(LineStatus const& status, std::size_t seed = 0) noexcept;

/// Writes \a status to \a debug, as its name, or as its number when it has none.
SOFTPHONECORE_EXPORT QDebug operator<<(QDebug debug, LineStatus const& status);

/// What QTest shows of \a status when a comparison fails; the caller frees it with delete[].
[[nodiscard]] SOFTPHONECORE_EXPORT char* toString(LineStatus const& status);

/// The same hash as qHash(), for the standard library's containers.
template <>
struct std::hash<LineStatus>
{
    /// The hash of \a status.
    std::size_t operator()(LineStatus const& status) const noexcept { return qHash(status); }
};
