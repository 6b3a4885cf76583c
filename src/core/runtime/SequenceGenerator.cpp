#include "SequenceGenerator.h"

#include "../Boundary_p.h"

#include <QRandomGenerator>
#include <algorithm>
#include <utility>

namespace {

/// The device cannot be opened when the process has run out of file descriptors; Qt's generator then serves.
unsigned int randomSeed()
{
    return guarded([] { return std::random_device("/dev/urandom")(); },
                   static_cast<unsigned int>(QRandomGenerator::global()->generate()));
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
    return m_modifier ? guarded([&] { return m_modifier->modify(value); }, value) : value;
}
