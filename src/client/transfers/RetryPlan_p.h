#pragma once

#include <client/Softphone.h>

#include <QByteArray>
#include <chrono>
#include <optional>
#include <runtime/LimitedFibonacciGenerator.h>

namespace Softphone {

/// Whether and when a transfer that has failed is tried again.
class RetryPlan
{
public:
    /// How an attempt ended.
    struct Failure
    {
        TransferError error;
        int status;            ///< 0: there was no answer
        QByteArray retryAfter; ///< the answer's field of that name
        bool mayHaveArrived;   ///< of a request that must not be carried out twice
    };

    /// Whether what failed with \a error, after an answer of the status \a status, may succeed another time.
    [[nodiscard]] static bool mayPassByItself(TransferError error, int status);

    /// At most \a retries attempts after the first.
    explicit RetryPlan(int retries);

    /// How long to wait before the next attempt; nothing when it could not help, may do harm, or the attempts
    /// are used up. The server's own wish is obeyed up to a minute; one that wants a longer rest is left
    /// alone.
    [[nodiscard]] std::optional<std::chrono::milliseconds> next(Failure const& failure);

private:
    int m_left;
    LimitedFibonacciGenerator m_waits; ///< in milliseconds
};

} // namespace Softphone
