#include "ThreadUtils.h"

#include "../Boundary_p.h"

#include <QCoreApplication>
#include <QThread>
#include <utility>

void ThreadUtils::setThreadName(QString const&) {}

bool ThreadUtils::isMainThread()
{
    return isObjectThread(QCoreApplication::instance());
}

bool ThreadUtils::isObjectThread(QObject const* object)
{
    return object != nullptr && QThread::currentThread() == object->thread();
}

void ThreadUtils::moveExecutionToObjectThread(QObject* target, std::function<void()> fn,
                                              Qt::ConnectionType type)
{
    if (target == nullptr) {
        return;
    }
    guarded([&] {
        QMetaObject::invokeMethod(
            target, [fn = std::move(fn)] { guarded(fn); }, type);
    });
}

void ThreadUtils::moveExecutionToMainThread(std::function<void()> fn, Qt::ConnectionType type)
{
    moveExecutionToObjectThread(QCoreApplication::instance(), std::move(fn), type);
}
