#include <runtime/MathUtils.h>

int main()
{
    return MathUtils::dBToAmplitude(0) == 100 ? 0 : 1;
}
