#include "LocalNginx.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QHostAddress>
#include <QStandardPaths>
#include <QTcpServer>
#include <QTcpSocket>
#include <csignal>
#include <unistd.h>
#ifdef Q_OS_LINUX
#include <sys/prctl.h>
#endif

namespace {

constexpr int startSeconds = 20;

/// One process and no worker, so that killing it kills everything. Without a "user" line a server that root
/// starts hands its folders to a user who cannot reach the test's.
QByteArray configuration(quint16 port, quint16 securePort)
{
    QByteArray user;
    if (geteuid() == 0) {
        user = "user root;\n";
    }
    QByteArray statuses;
    for (char const* status : {"206", "403", "404", "500", "503"}) {
        statuses += QByteArray("        location = /status/") + status + " { return " + status +
                    " \"status " + status + "\"; }\n";
    }
    return user + R"(daemon off;
master_process off;
pid nginx.pid;
error_log error.log warn;
events { worker_connections 256; }
http {
    access_log off;
    default_type application/octet-stream;
    sendfile on;
    client_max_body_size 0;
    client_body_temp_path temp/body;
    proxy_temp_path temp/proxy;
    fastcgi_temp_path temp/fastcgi;
    uwsgi_temp_path temp/uwsgi;
    scgi_temp_path temp/scgi;
    server {
        listen 127.0.0.1:)" +
           QByteArray::number(port) + R"(;
        listen 127.0.0.1:)" +
           QByteArray::number(securePort) + R"( ssl http2;
        ssl_certificate certificate.pem;
        ssl_certificate_key key.pem;
        root files;
        location /slow/ { alias files/; limit_rate 256k; }
        location /private/ { alias files/; auth_basic "files"; auth_basic_user_file users; }
        location /packed/ { alias files/; gzip on; gzip_types *; gzip_min_length 1; gzip_proxied any; }
        location = /downgrade { return 302 http://127.0.0.1/small; }
        location = /moved { return 302 /small; }
        location = /protocol { return 200 $server_protocol; }
        location /upload/ { dav_methods PUT; create_full_put_path on; }
)" + statuses +
           "    }\n}\n";
}

quint16 freePort()
{
    QTcpServer probe;
    probe.listen(QHostAddress::LocalHost);
    return probe.serverPort();
}

bool answers(quint16 port)
{
    QTcpSocket socket;
    socket.connectToHost(QHostAddress(QHostAddress::LocalHost), port);
    return socket.waitForConnected(1000);
}

QString program(char const* name)
{
    QString const found = QStandardPaths::findExecutable(QLatin1String(name));
    return found.isEmpty()
               ? QStandardPaths::findExecutable(QLatin1String(name), {QStringLiteral("/usr/sbin")})
               : found;
}

} // namespace

LocalNginx::LocalNginx()
{
    m_process.setWorkingDirectory(m_prefix.path());
    m_process.setStandardOutputFile(QProcess::nullDevice());
    m_process.setStandardErrorFile(m_prefix.filePath(QStringLiteral("stderr.log")));
#ifdef Q_OS_LINUX
    // A test that crashes or is killed takes its server along.
    m_process.setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGKILL); });
#endif
    QDir const prefix(m_prefix.path());
    for (char const* name : {"files/upload", "temp"}) {
        prefix.mkpath(QLatin1String(name));
    }
    if (!makeCertificate()) {
        m_problem = QStringLiteral("openssl made no certificate");
        return;
    }
    // Between the search for a free port and the server's own start another process may take it.
    for (int attempt = 0; attempt < 5 && !startOn(freePort(), freePort()); ++attempt) {
        kill();
    }
}

LocalNginx::~LocalNginx()
{
    kill();
}

bool LocalNginx::makeCertificate() const
{
    QProcess openssl;
    openssl.setWorkingDirectory(m_prefix.path());
    openssl.start(program("openssl"),
                  {QStringLiteral("req"), QStringLiteral("-x509"), QStringLiteral("-nodes"),
                   QStringLiteral("-newkey"), QStringLiteral("ec"), QStringLiteral("-pkeyopt"),
                   QStringLiteral("ec_paramgen_curve:prime256v1"), QStringLiteral("-days"),
                   QStringLiteral("2"), QStringLiteral("-subj"), QStringLiteral("/CN=localhost"),
                   QStringLiteral("-addext"), QStringLiteral("subjectAltName=IP:127.0.0.1"),
                   QStringLiteral("-keyout"), QStringLiteral("key.pem"), QStringLiteral("-out"),
                   QStringLiteral("certificate.pem")});
    return openssl.waitForFinished() && openssl.exitStatus() == QProcess::NormalExit &&
           openssl.exitCode() == 0;
}

bool LocalNginx::startOn(quint16 port, quint16 securePort)
{
    QFile file(m_prefix.filePath(QStringLiteral("nginx.conf")));
    if (port == securePort || !file.open(QIODevice::WriteOnly) ||
        file.write(configuration(port, securePort)) < 0) {
        return false;
    }
    file.close();
    QFile users(m_prefix.filePath(QStringLiteral("users")));
    if (!users.open(QIODevice::WriteOnly) || users.write("ann:{PLAIN}s@cret\n") < 0) {
        return false;
    }
    users.close();
    m_port = port;
    m_securePort = securePort;
    m_process.start(program("nginx"), {QStringLiteral("-p"), m_prefix.path(), QStringLiteral("-e"),
                                       QStringLiteral("error.log"), QStringLiteral("-c"), file.fileName()});
    QDeadlineTimer const deadline(startSeconds * 1000);
    while (!deadline.hasExpired() && !m_process.waitForFinished(10) && isRunning()) {
        if (answers(port) && answers(securePort)) {
            return true;
        }
    }
    return false;
}

QString LocalNginx::problem() const
{
    QString text = m_problem;
    for (char const* name : {"stderr.log", "error.log"}) {
        QFile file(m_prefix.filePath(QLatin1String(name)));
        if (file.open(QIODevice::ReadOnly)) {
            text += QString::fromUtf8(file.readAll());
        }
    }
    return text.isEmpty() ? m_process.errorString() : text;
}

QString LocalNginx::url(QString const& path) const
{
    return QStringLiteral("http://127.0.0.1:%1%2").arg(QString::number(m_port), path);
}

QString LocalNginx::secureUrl(QString const& path) const
{
    return QStringLiteral("https://127.0.0.1:%1%2").arg(QString::number(m_securePort), path);
}

QString LocalNginx::folder() const
{
    return m_prefix.filePath(QStringLiteral("files"));
}

QString LocalNginx::certificate() const
{
    return m_prefix.filePath(QStringLiteral("certificate.pem"));
}

bool LocalNginx::addFile(QString const& name, QByteArray const& content) const
{
    QFile file(QDir(folder()).filePath(name));
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size();
}

void LocalNginx::kill()
{
    m_process.kill();
    m_process.waitForFinished();
}
