#pragma once

#include <appdata/ApplicationData.h>

#include <QFontDatabase>
#include <QFuture>
#include <QPromise>
#include <QThreadPool>
#include <memory>

/// Does on another thread what the first frame would wait for: reads what the application is called, which
/// comes back, and looks for the system's fonts. Needs a QGuiApplication.
inline QFuture<DataSets::DataSet> warmUp()
{
    auto const names = std::make_shared<QPromise<DataSets::DataSet>>();
    names->start();
    QThreadPool::globalInstance()->start([names] {
        names->addResult(ApplicationData::getApplicationData());
        names->finish();
        (void)QFontDatabase::families();
    });
    return names->future();
}
