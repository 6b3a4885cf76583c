#pragma once

#include <QTemporaryDir>

/// The surroundings of one test process: a home and temporary folder of its own, no display, the usual mask
/// for new files, and a pinned time zone and locale.
///
/// Made before the application object, so that everything that Qt reads from the environment, and every
/// process that the test starts, sees it. SPCORE_TEST_TZ and SPCORE_TEST_LOCALE replace the pinned UTC
/// and C.UTF-8; CI runs the tests once with an odd pair.
class TestEnvironment
{
public:
    TestEnvironment();

    [[nodiscard]] QString home() const;

private:
    QTemporaryDir m_root;
};
