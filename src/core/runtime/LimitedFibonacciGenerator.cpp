#include "LimitedFibonacciGenerator.h"

#include <tuple>

LimitedFibonacciGenerator::LimitedFibonacciGenerator(std::unique_ptr<SequenceModifier> modifier)
    : LimitedFibonacciGenerator(0, {0, 0}, std::move(modifier))
{
}

LimitedFibonacciGenerator::LimitedFibonacciGenerator(unsigned int limit,
                                                     std::pair<unsigned int, unsigned int> initial,
                                                     std::unique_ptr<SequenceModifier> modifier)
    : SequenceGenerator(std::move(modifier))
    , m_initial(initial)
    , m_limit(limit)
{
}

LimitedFibonacciGenerator::~LimitedFibonacciGenerator() = default;

unsigned int LimitedFibonacciGenerator::getNext()
{
    if (m_current == 0) {
        m_current = 1;
        return modified(0);
    }
    // Beyond the limit the sums stand still, so that they cannot wrap around.
    if (m_limit != 0 && m_current > m_limit) {
        return modified(m_limit);
    }
    unsigned int const value = m_current;
    m_current += m_previous;
    m_previous = value;
    return modified(value);
}

void LimitedFibonacciGenerator::reset()
{
    std::tie(m_previous, m_current) = m_initial;
}

bool LimitedFibonacciGenerator::isLimitReached() const
{
    return m_limit != 0 && m_current >= m_limit;
}
