#include "SequenceGenerator.h"

#include <QRandomGenerator>
#include <algorithm>
#include <exception>
#include <utility>

namespace {

unsigned int randomSeed()
{
    try {
        return std::random_device("/dev/urandom")();
    } catch (std::exception const&) {
        // The device cannot be opened when the process has run out of file descriptors.
        return QRandomGenerator::global()->generate();
    }
}

} // namespace

SequenceGenerator::SequenceModifier::~SequenceModifier() = default;

SequenceGenerator::NoOpSequenceModifier::~NoOpSequenceModifier() = default;

unsigned int SequenceGenerator::NoOpSequenceModifier::modify(unsigned int value)
{
    return value;
}

SequenceGenerator::RandomSequenceModifier::RandomSequenceModifier(unsigned int min, unsigned int max)
    : m_engine(randomSeed())
    , m_distribution(min, std::max(min, max))
{
}

SequenceGenerator::RandomSequenceModifier::~RandomSequenceModifier() = default;

unsigned int SequenceGenerator::RandomSequenceModifier::modify(unsigned int value)
{
    return value + m_distribution(m_engine);
}

SequenceGenerator::SequenceGenerator(std::unique_ptr<SequenceModifier> modifier)
    : m_modifier(std::move(modifier))
{
}

SequenceGenerator::~SequenceGenerator() = default;

unsigned int SequenceGenerator::modified(unsigned int value)
{
    try {
        return m_modifier ? m_modifier->modify(value) : value;
    } catch (...) {
        // The modifier is the caller's own. A retry without its offset is better than none.
        return value;
    }
}
