#pragma once

#include <QtGlobal>

/// Whether valgrind watches this process, as scripts/valgrind tells it. No limit on memory can be set then,
/// since it would be valgrind's too.
inline bool underValgrind()
{
    static bool const is = qEnvironmentVariableIsSet("SPCORE_TEST_VALGRIND");
    return is;
}

/// \a size in a plain run, and a fiftieth of it under valgrind, where everything takes that much longer.
template <typename Size>
Size sizeForThisRun(Size size)
{
    constexpr Size shrinkage = 50;
    return underValgrind() ? size / shrinkage : size;
}
