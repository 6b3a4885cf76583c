#pragma once

#include "SequenceGenerator.h"

#include <softphonecore_export.h>

#include <memory>
#include <utility>

/// The Fibonacci sequence up to a limit, at which it stays.
///
/// A fresh generator starts at 0, so that a first retry is immediate; a reset one starts at the initial pair,
/// so that after a success the next loss waits a little. With the limit 55 and the pair (1, 1) a fresh one
/// gives 0, 1, 1, 2, 3, 5, 8, 13, 21, 34, 55, 55 and so on, and after reset() 1, 2, 3, 5 and so on.
///
/// Example, with up to 3 s more for each wait:
/// \code
/// using Offset = SequenceGenerator::RandomSequenceModifier;
/// LimitedFibonacciGenerator waits(55, {1, 1}, std::make_unique<Offset>(0, 3));
/// unsigned int const seconds = waits.getNext(); // 0 to 3
/// \endcode
class SOFTPHONECORE_EXPORT LimitedFibonacciGenerator : public SequenceGenerator
{
public:
    /// A sequence without a limit, which starts at 0 after reset() too.
    explicit LimitedFibonacciGenerator(std::unique_ptr<SequenceModifier> modifier);

    /// A sequence that stays at \a limit once it has gone beyond it.
    ///
    /// \param limit     the highest number, before the modifier; 0 means no limit: the sums then wrap at 2^32
    /// \param initial   what reset() starts with: the number before the first one, and the first one
    /// \param modifier  what each number passes through
    LimitedFibonacciGenerator(unsigned int limit, std::pair<unsigned int, unsigned int> initial,
                              std::unique_ptr<SequenceModifier> modifier);
    ~LimitedFibonacciGenerator() override;

    /// The next number of the sequence, modified.
    unsigned int getNext() override;

    /// Goes back to the initial pair, also on a generator that started at 0.
    void reset() override;

    /// Whether the number that the next call hands out reaches the limit; false without a limit.
    ///
    /// This turns true one number early, when the last number below the limit has been handed out.
    [[nodiscard]] bool isLimitReached() const;

private:
    unsigned int m_previous = 0;
    unsigned int m_current = 0;
    std::pair<unsigned int, unsigned int> m_initial;
    unsigned int m_limit;
};
