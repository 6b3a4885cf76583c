#pragma once

#include <softphonecore_export.h>

#include <Qt>
#include <functional>

class QObject;
class QString;

/// Tests which thread is running, and hands work to another one.
///
/// The main thread is the one in which the application object lives. Any thread.
///
/// Example:
/// \code
/// ThreadUtils::moveExecutionToMainThread([&window] { window.raise(); }, Qt::QueuedConnection);
/// \endcode
class SOFTPHONECORE_EXPORT ThreadUtils
{
public:
    ThreadUtils() = delete;

    /// Does nothing on the systems that this library is built on; \a name is the name that a debugger would
    /// show.
    static void setThreadName(QString const& name);

    /// Whether the calling thread is the main thread; false without an application object.
    [[nodiscard]] static bool isMainThread();

    /// Whether \a object lives in the calling thread; false for a null pointer.
    [[nodiscard]] static bool isObjectThread(QObject const* object);

    /// Runs \a fn in the thread of \a target.
    ///
    /// \param target  whose event loop runs \a fn; nothing runs when it is null, or is destroyed earlier
    /// \param fn      what to run; an empty one does nothing, and what it throws ends with it
    /// \param type    how: Qt::AutoConnection runs it at once in the target's own thread and queues it
    ///                elsewhere; Qt::BlockingQueuedConnection waits for it, and so must not be used from the
    ///                target's own thread
    static void moveExecutionToObjectThread(QObject* target, std::function<void()> fn,
                                            Qt::ConnectionType type);

    /// Runs \a fn in the main thread, with \a type as in moveExecutionToObjectThread(). Nothing runs without
    /// an application object.
    static void moveExecutionToMainThread(std::function<void()> fn, Qt::ConnectionType type);
};
