#include "BlockCopy.h"

std::size_t copyWithinSystem(int, int, std::size_t)
{
    return 0; // there is a call for whole files only
}
