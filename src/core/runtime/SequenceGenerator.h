#pragma once

#include <softphonecore_export.h>

#include <memory>
#include <random>

/// A sequence of unsigned 32-bit numbers, one a call; the client waits so many seconds between retries.
///
/// Every generator owns a modifier, through which each number passes before it is handed out: unchanged, or
/// with a random offset, so that many clients that lose one server do not all come back at the same moment.
///
/// A generator and its modifier are used from one thread at a time.
class SOFTPHONECORE_EXPORT SequenceGenerator
{
public:
    /// What happens to a number before it is handed out.
    class SOFTPHONECORE_EXPORT SequenceModifier
    {
    public:
        virtual ~SequenceModifier();

        /// The number to hand out in place of \a value.
        virtual unsigned int modify(unsigned int value) = 0;
    };

    /// Leaves every number as it is.
    class SOFTPHONECORE_EXPORT NoOpSequenceModifier : public SequenceModifier
    {
    public:
        ~NoOpSequenceModifier() override;

        /// \a value itself.
        unsigned int modify(unsigned int value) override;
    };

    /// Adds a random offset, evenly distributed between two bounds.
    class SOFTPHONECORE_EXPORT RandomSequenceModifier : public SequenceModifier
    {
    public:
        /// Offsets from \a min to \a max, both included; always \a min when \a max is smaller.
        ///
        /// Seeds its own Mersenne Twister from the system's random device.
        RandomSequenceModifier(unsigned int min, unsigned int max);
        ~RandomSequenceModifier() override;

        /// \a value plus the next offset, modulo 2^32.
        unsigned int modify(unsigned int value) override;

    private:
        std::mt19937 m_engine;
        std::uniform_int_distribution<unsigned int> m_distribution;
    };

    /// Takes over \a modifier. Without one the numbers stay as they are, and so does a number for which the
    /// modifier throws.
    explicit SequenceGenerator(std::unique_ptr<SequenceModifier> modifier);
    virtual ~SequenceGenerator();

    /// The next number, modified.
    virtual unsigned int getNext() = 0;

    /// Begins the sequence again.
    virtual void reset() = 0;

protected:
    /// \a value as the modifier hands it out.
    unsigned int modified(unsigned int value);

private:
    std::unique_ptr<SequenceModifier> m_modifier;
};
