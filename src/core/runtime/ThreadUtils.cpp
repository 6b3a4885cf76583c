#include "ThreadUtils.h"

#include <QCoreApplication>
#include <QThread>
#include <utility>

namespace {

/// An exception would end the process: Qt's event loop does not let one through.
void runAndForget(std::function<void()> const& fn)
{
    try {
        fn();
    } catch (...) {
        return;
    }
}

} // namespace

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
    QMetaObject::invokeMethod(
        target, [fn = std::move(fn)] { runAndForget(fn); }, type);
}

void ThreadUtils::moveExecutionToMainThread(std::function<void()> fn, Qt::ConnectionType type)
{
    moveExecutionToObjectThread(QCoreApplication::instance(), std::move(fn), type);
}
