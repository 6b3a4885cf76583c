#include "SingleInstanceGuard.h"

#include "../Boundary_p.h"

#include <files/FilePaths.h>

#include <QFile>
#include <QLocalServer>
#include <QLocalSocket>
#include <QLockFile>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <utility>

namespace {

constexpr int staleLockTime = 10'000;
constexpr int connectTimeout = 30;

} // namespace

SingleInstanceGuard::SingleInstanceGuard() = default;

SingleInstanceGuard::~SingleInstanceGuard() = default;

void SingleInstanceGuard::setup(QString const& path, QString const& second, QString const& third)
{
    m_lockFile.reset();
    m_serverName = getServerName(path, second, third);
    guarded([&] {
        QString const suffix = QStringLiteral(".qlf");
        QString const folder = FilePaths::buildTempPath();
        QString const lockPath = FilePaths::buildAbsoluteFilePath(folder, m_serverName + suffix, false);
        // Where memory runs out, or there can be no such folder, the lock would lie where nobody looks for
        // it.
        if (!m_serverName.isEmpty() && !folder.isEmpty() && lockPath.endsWith(suffix)) {
            m_lockFile = std::make_unique<QLockFile>(lockPath);
            m_lockFile->setStaleLockTime(staleLockTime);
        }
    });
}

QString SingleInstanceGuard::getServerName(QString const& path, QString const& second, QString const& third)
{
    return guarded([&] {
        std::filesystem::path const file(path.toUtf8().toStdString());
        std::filesystem::path const folders = file.parent_path().relative_path();
        std::string name = file.filename().string() + '_';
        for (auto folder = folders.end(); folder != folders.begin();) {
            --folder;
            name += folder->string() + '_';
        }
        QString const whole = QString::fromStdString(name) + second + QLatin1Char('_') + third;
        return QString(whole).replace(QLatin1Char(' '), QLatin1Char('_')).trimmed();
    });
}

void SingleInstanceGuard::setNewInstanceKicking(std::function<void()> kicking)
{
    m_newInstanceKicking = std::move(kicking);
}

bool SingleInstanceGuard::launchServer()
{
    if (!m_lockFile) {
        return false;
    }
    return guarded([&] {
        m_server = std::make_unique<QLocalServer>();
        m_server->setSocketOptions(QLocalServer::WorldAccessOption);
        QObject::connect(m_server.get(), &QLocalServer::newConnection, &m_context,
                         [this] { onNewConnection(); });
        listen();
        // Waiting for a lock that this guard holds itself would never end.
        bool const locked = m_lockFile->isLocked() || m_lockFile->lock();
        // A copy that served until now has taken the socket's name with it when it closed.
        if (m_server->isListening() && !QFile::exists(m_server->fullServerName())) {
            m_server->close();
            listen();
        }
        return locked;
    });
}

void SingleInstanceGuard::onNewConnection()
{
    QLocalSocket* const connection = m_server ? m_server->nextPendingConnection() : nullptr;
    if (connection == nullptr) {
        return;
    }
    guarded([connection] {
        QObject::connect(connection, &QLocalSocket::disconnected, connection, &QObject::deleteLater);
        // Anybody may connect: what is sent is dropped, so that it does not fill the memory.
        QObject::connect(connection, &QLocalSocket::readyRead, connection,
                         [connection] { connection->readAll(); });
    });
    if (!m_newInstanceKicking) {
        throw std::bad_function_call();
    }
    guarded([this] {
        // A copy, since the function may store another one.
        auto const kicking = m_newInstanceKicking;
        kicking();
    });
}

void SingleInstanceGuard::stopServer()
{
    if (m_server) {
        m_server->close();
    }
    if (m_lockFile && m_lockFile->isLocked()) {
        m_lockFile->unlock();
    }
}

bool SingleInstanceGuard::isAnotherRunning()
{
    if (!m_lockFile || !FilePaths::fileExists(m_lockFile->fileName())) {
        return false;
    }
    bool const isLeftOver = guarded([&] { return m_lockFile->tryLock(0); });
    if (isLeftOver) {
        m_lockFile->unlock();
    }
    bool const isConnected = guarded([&] {
        QLocalSocket socket;
        socket.setServerName(m_serverName);
        socket.connectToServer(QIODevice::WriteOnly);
        return isLeftOver && socket.waitForConnected(connectTimeout);
    });
    return !isLeftOver || isConnected;
}

void SingleInstanceGuard::listen()
{
    QLocalServer::removeServer(m_serverName);
    m_server->listen(m_serverName);
}
