#include "MathUtils.h"

#include <cmath>
#include <limits>

int MathUtils::dBToAmplitude(int dB)
{
    constexpr int highest = std::numeric_limits<int>::max();
    float const amplitude = std::pow(10.0F, static_cast<float>(dB) / 20.0F) * 100.0F;
    return amplitude >= static_cast<float>(highest) ? highest : static_cast<int>(amplitude);
}
