#pragma once

#include <QProcess>
#include <QString>
#include <QTemporaryDir>

/// An nginx on two loopback ports of its own, with a folder of its own; it ends with the object.
///
/// Served over HTTP/1.1, and over TLS with HTTP/2 under a certificate made for this run that nobody trusts:
///
/// | path | what |
/// |---|---|
/// | /NAME | the file NAME of folder() |
/// | /slow/NAME | the same, sent at 256 KiB a second |
/// | /private/NAME | the same for the user "ann" with the password "s@cret" (basic authentication) |
/// | /packed/NAME | the same, packed by gzip for whoever takes that |
/// | /upload/NAME | takes a PUT and stores it in folder() under upload/ |
/// | /status/N | the status N (206, 403, 404, 500, 503) with the body "status N" |
/// | /downgrade | a redirect (302) to plain HTTP |
/// | /protocol | the protocol's name and version, "HTTP/1.1" or "HTTP/2.0" |
///
/// Runs as the user who runs the test, root included.
class LocalNginx
{
public:
    LocalNginx();
    ~LocalNginx();
    LocalNginx(LocalNginx const&) = delete;
    LocalNginx& operator=(LocalNginx const&) = delete;

    /// Whether the server answers; problem() tells why when not.
    [[nodiscard]] bool isRunning() const { return m_process.state() == QProcess::Running; }
    [[nodiscard]] QString problem() const;

    [[nodiscard]] QString url(QString const& path) const;
    [[nodiscard]] QString secureUrl(QString const& path) const;
    [[nodiscard]] QString folder() const;
    [[nodiscard]] QString certificate() const;

    /// Puts a file of \a content into folder().
    bool addFile(QString const& name, QByteArray const& content) const;

    /// Ends the server as a crash does, in the middle of whatever it is doing.
    void kill();

private:
    bool makeCertificate() const;
    bool startOn(quint16 port, quint16 securePort);

    QTemporaryDir m_prefix;
    QProcess m_process;
    quint16 m_port = 0;
    quint16 m_securePort = 0;
    QString m_problem;
};
