#pragma once

#include "SequenceGenerator.h"

#include <softphonecore_export.h>

#include <memory>

/// The same number each time.
class SOFTPHONECORE_EXPORT ConstantSequenceGenerator : public SequenceGenerator
{
public:
    /// Hands out \a value, through \a modifier.
    ConstantSequenceGenerator(unsigned int value, std::unique_ptr<SequenceModifier> modifier);
    ~ConstantSequenceGenerator() override;

    /// The number, modified.
    unsigned int getNext() override;

    /// Does nothing: the sequence has no beginning.
    void reset() override;

private:
    unsigned int m_value;
};
