#include "SingleInstanceGuard.h"

#include <files/FilePaths.h>

#include <QFile>
#include <QLocalServer>
#include <QLocalSocket>
#include <QLockFile>
#include <QPointer>
#include <QScopeGuard>
#include <algorithm>
#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace {

constexpr int staleLockTime = 10'000;
constexpr int connectTimeout = 30;
constexpr qsizetype mostConnections = 16;
constexpr std::chrono::seconds longestConnection(1);
constexpr std::chrono::seconds listeningCheckInterval(1);

/// Whether \a path is a socket of this user. In a temporary folder that all users share, anybody may have
/// been first to take its name.
bool isOwnSocket(QString const& path)
{
    struct stat status
    {
    };
    return ::lstat(QFile::encodeName(path).constData(), &status) == 0 && S_ISSOCK(status.st_mode) &&
           status.st_uid == ::geteuid();
}

} // namespace

SingleInstanceGuard::SingleInstanceGuard()
{
    m_listeningCheck.setInterval(listeningCheckInterval);
    QObject::connect(&m_listeningCheck, &QTimer::timeout, &m_context, [this] { keepListening(); });
}

SingleInstanceGuard::~SingleInstanceGuard() = default;

void SingleInstanceGuard::setup(QString const& path, QString const& second, QString const& third)
{
    m_lockFile.reset();
    m_serverName = getServerName(path, second, third);
    QString const folder = FilePaths::buildTempPath();
    // Without the folder the lock would lie where no other copy looks for it.
    if (!folder.isEmpty()) {
        m_lockFile = std::make_unique<QLockFile>(
            FilePaths::buildAbsoluteFilePath(folder, m_serverName + QStringLiteral(".qlf"), false));
        m_lockFile->setStaleLockTime(staleLockTime);
    }
}

QString SingleInstanceGuard::getServerName(QString const& path, QString const& second, QString const& third)
{
    std::filesystem::path const file(path.toUtf8().toStdString());
    std::filesystem::path const folders = file.parent_path().relative_path();
    std::string name = file.filename().string() + '_';
    for (auto folder = folders.end(); folder != folders.begin();) {
        --folder;
        name += folder->string() + '_';
    }
    QString const whole = QString::fromStdString(name) + second + QLatin1Char('_') + third;
    return QString(whole).replace(QLatin1Char(' '), QLatin1Char('_')).trimmed();
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
    m_server = std::make_unique<QLocalServer>();
    m_server->setSocketOptions(QLocalServer::WorldAccessOption);
    QObject::connect(m_server.get(), &QLocalServer::newConnection, &m_context, [this] { onNewConnection(); });
    listen();
    // Waiting for a lock that this guard holds itself would never end.
    bool const locked = m_lockFile->isLocked() || m_lockFile->lock();
    if (locked) {
        m_listeningCheck.start();
        keepListening();
    }
    return locked;
}

void SingleInstanceGuard::onNewConnection()
{
    QPointer<QLocalSocket> const connection = m_server ? m_server->nextPendingConnection() : nullptr;
    if (!connection) {
        return;
    }
    // Anybody may connect, and each connection costs this process a descriptor. A kick has nothing to read or
    // to answer, so the connection goes when it is done; one that takes its time, say with a dialogue, does
    // not keep it.
    auto const closing = qScopeGuard([connection] {
        if (connection) {
            connection->abort();
            connection->deleteLater();
        }
    });
    auto const isOpen = [](QLocalSocket const* socket) { return socket->isValid(); };
    if (std::ranges::count_if(m_server->findChildren<QLocalSocket*>(), isOpen) > mostConnections) {
        return;
    }
    connection->setReadBufferSize(1);
    QTimer::singleShot(longestConnection, connection.data(), &QLocalSocket::abort);
    if (!m_newInstanceKicking) {
        throw std::bad_function_call();
    }
    try {
        // A copy, since the function may store another one.
        auto const kicking = m_newInstanceKicking;
        kicking();
    } catch (...) {
        // The function is the caller's. The event loop that this runs in lets no exception through.
        return;
    }
}

void SingleInstanceGuard::stopServer()
{
    m_listeningCheck.stop();
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
    bool const isLeftOver = m_lockFile->tryLock(0);
    if (isLeftOver) {
        m_lockFile->unlock();
    }
    QLocalSocket socket;
    socket.setServerName(m_serverName);
    socket.connectToServer(QIODevice::WriteOnly);
    if (!isLeftOver) {
        return true;
    }
    return socket.waitForConnected(connectTimeout) && isOwnSocket(socket.fullServerName());
}

void SingleInstanceGuard::listen()
{
    QLocalServer::removeServer(m_serverName);
    m_server->listen(m_serverName);
}

void SingleInstanceGuard::keepListening()
{
    // Qt stops listening for good when it cannot take a connection, as in a process that has no descriptor
    // left. The socket's name goes when the temporary folder is cleaned, and with a copy that served until
    // now.
    bool const isServing = m_lockFile && m_lockFile->isLocked();
    if (isServing && !(m_server->isListening() && isOwnSocket(m_server->fullServerName()))) {
        m_server->close();
        listen();
    }
}
