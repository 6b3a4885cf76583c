#include "ConstantSequenceGenerator.h"

#include <utility>

ConstantSequenceGenerator::ConstantSequenceGenerator(unsigned int value,
                                                     std::unique_ptr<SequenceModifier> modifier)
    : SequenceGenerator(std::move(modifier))
    , m_value(value)
{
}

ConstantSequenceGenerator::~ConstantSequenceGenerator() = default;

unsigned int ConstantSequenceGenerator::getNext()
{
    return modified(m_value);
}

void ConstantSequenceGenerator::reset() {}
