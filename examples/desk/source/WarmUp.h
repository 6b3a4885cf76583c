#pragma once

#include <QFontDatabase>
#include <QThreadPool>

/// Begins to look for the system's fonts on another thread, which takes longer than all else that the first
/// frame waits for. Needs a QGuiApplication.
inline void warmUp()
{
    QThreadPool::globalInstance()->start([] { (void)QFontDatabase::families(); });
}
