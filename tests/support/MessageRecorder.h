#pragma once

#include <QMutex>
#include <QStringList>
#include <QtGlobal>
#include <utility>

/// Records what Qt's logging is given while it lives, from any thread. One at a time.
///
/// The library reports by results only, so a test of its failures also asks that messages() is empty.
class MessageRecorder
{
public:
    MessageRecorder()
        : m_previous(qInstallMessageHandler(record))
    {
        messages();
    }
    ~MessageRecorder() { qInstallMessageHandler(m_previous); }
    MessageRecorder(MessageRecorder const&) = delete;
    MessageRecorder& operator=(MessageRecorder const&) = delete;

    /// What was logged since the last call.
    QStringList messages()
    {
        QMutexLocker const lock(&store().mutex);
        return std::exchange(store().messages, {});
    }

private:
    struct Store
    {
        QMutex mutex;
        QStringList messages;
    };

    static Store& store()
    {
        static Store instance;
        return instance;
    }

    static void record(QtMsgType, QMessageLogContext const&, QString const& message)
    {
        QMutexLocker const lock(&store().mutex);
        store().messages.append(message);
    }

    QtMessageHandler m_previous;
};
