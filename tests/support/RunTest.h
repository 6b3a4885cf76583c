#pragma once

#include "TestEnvironment.h"

#include <QCoreApplication>
#include <QTest>

/// The main function of a test: runs the class \a Test in a fresh TestEnvironment.
///
/// \a Application is the application class that the code under test needs; QGuiApplication for images
/// with plugins, fonts and shortcuts.
template <typename Test, typename Application = QCoreApplication>
int runTest(int argc, char** argv)
{
    TestEnvironment const environment;
    Application application(argc, argv);
    Test test;
    return QTest::qExec(&test, argc, argv);
}
