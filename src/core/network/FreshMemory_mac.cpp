#include "FreshMemory_p.h"

void preparePages(std::span<char>)
{
    // There is no such request here.
}
