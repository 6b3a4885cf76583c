#pragma once

#include <softphonecore_export.h>

/// Conversions of audio levels.
class SOFTPHONECORE_EXPORT MathUtils
{
public:
    MathUtils() = delete;

    /// Converts a level in decibels to an amplitude in percent of full scale: 10^(dB / 20) * 100, computed
    /// in single precision and truncated toward zero.
    ///
    /// \param dB  level relative to full scale; 0 is full scale
    /// \return the percentage; 0 for levels too low to show, INT_MAX for levels too high for an int
    ///
    /// Any thread. Example: dBToAmplitude(-6) is 50.
    [[nodiscard]] static int dBToAmplitude(int dB);
};
