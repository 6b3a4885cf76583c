#pragma once

#include <QCoreApplication>
#include <QDir>
#include <QProcess>
#include <QStringList>

/// One process of GuardHelper, and what it has said so far.
class GuardProcess
{
public:
    static constexpr int patience = 60'000;

    explicit GuardProcess(QStringList const& arguments,
                          QProcessEnvironment const& environment = QProcessEnvironment::systemEnvironment())
    {
        m_process.setProcessEnvironment(environment);
        m_process.start(QStringLiteral(GUARD_HELPER), arguments);
    }

    ~GuardProcess()
    {
        if (!end()) {
            kill();
        }
    }

    /// The next word, or nothing when the process has ended or says none for \a timeout milliseconds.
    QByteArray next(int timeout = patience)
    {
        while (!m_process.canReadLine()) {
            if (!m_process.waitForReadyRead(timeout)) {
                return {};
            }
        }
        return m_process.readLine().trimmed();
    }

    void tell(char const* order)
    {
        m_process.write(order);
        m_process.write("\n");
        m_process.waitForBytesWritten(patience);
    }

    /// Closes the process's input and waits until it is gone.
    bool end()
    {
        m_process.closeWriteChannel();
        return m_process.state() == QProcess::NotRunning || m_process.waitForFinished(patience);
    }

    /// Waits until the process is gone; answers whether it fell over.
    bool crashes()
    {
        return m_process.waitForFinished(patience) && m_process.exitStatus() == QProcess::CrashExit;
    }

    /// Ends the process with SIGKILL.
    void kill()
    {
        m_process.kill();
        m_process.waitForFinished(patience);
    }

private:
    QProcess m_process;
};

/// What a separate process that asks whether another copy runs says: "running" or "free".
inline QByteArray probeFromOutside(QString const& name)
{
    return GuardProcess({QStringLiteral("probe"), name}).next();
}

/// Where copies of the client \a name meet, worked out by hand: GuardHelper and the tests use one
/// organisation and application name.
struct GuardPaths
{
    static void nameApplication()
    {
        QCoreApplication::setOrganizationName(QStringLiteral("softphone"));
        QCoreApplication::setApplicationName(QStringLiteral("guard"));
    }

    explicit GuardPaths(QString const& name)
        : server(name + QStringLiteral("_user_x"))
        , folder(QDir::tempPath() + QStringLiteral("/softphone/guard"))
        , lock(folder + QLatin1Char('/') + server + QStringLiteral(".qlf"))
        , socket(QDir::tempPath() + QLatin1Char('/') + server)
    {
    }

    QString server;
    QString folder;
    QString lock;
    QString socket;
};
