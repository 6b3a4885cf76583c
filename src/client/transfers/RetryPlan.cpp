#include "RetryPlan_p.h"

#include "HttpFields_p.h"

#include <algorithm>
#include <memory>

namespace Softphone {

namespace {

using std::chrono::milliseconds;

constexpr unsigned int longestWait = 30'000;
constexpr unsigned int firstWait = 500;
// So that clients that lost a server at the same moment do not come back at the same moment.
constexpr unsigned int randomShare = 500;
constexpr std::chrono::seconds longestWish{60};

} // namespace

bool RetryPlan::mayPassByItself(TransferError error, int status)
{
    switch (error) {
    case TransferError::HostNotFound:
    case TransferError::Refused:
    case TransferError::TimedOut:
    case TransferError::Stalled:
    case TransferError::Truncated:
        return true;
    case TransferError::HttpStatus:
        return status == 408 || status == 429 || status >= 500;
    default:
        return false;
    }
}

RetryPlan::RetryPlan(int retries)
    : m_left(retries)
    , m_waits(longestWait, {firstWait, firstWait},
              std::make_unique<SequenceGenerator::RandomSequenceModifier>(0, randomShare))
{
    // A fresh generator begins with no wait at all.
    m_waits.reset();
}

std::optional<milliseconds> RetryPlan::next(Failure const& failure)
{
    if (m_left <= 0 || failure.mayHaveArrived || !mayPassByItself(failure.error, failure.status)) {
        return std::nullopt;
    }
    auto const wish = HttpFields::retryAfter(failure.retryAfter, QDateTime::currentDateTimeUtc())
                          .value_or(std::chrono::seconds(0));
    if (wish > longestWish) {
        return std::nullopt;
    }
    --m_left;
    return std::max<milliseconds>(milliseconds(m_waits.getNext()), wish);
}

} // namespace Softphone
