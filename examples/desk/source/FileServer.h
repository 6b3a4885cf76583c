#pragma once

#include <QObject>
#include <QTemporaryDir>
#include <QThread>
#include <QtQml/qqml.h>

/// A web server on the loopback interface, on a thread of its own, whose files fail in different ways.
class FileServer : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    /// Where its files are, with a slash at the end.
    Q_PROPERTY(QString url READ url CONSTANT)
    /// A temporary folder to download to, with a slash at the end.
    Q_PROPERTY(QString target READ target CONSTANT)

public:
    explicit FileServer(QObject* parent = nullptr);
    ~FileServer() override;

    [[nodiscard]] QString url() const { return m_url; }
    [[nodiscard]] QString target() const { return m_target.path() + QLatin1Char('/'); }

private:
    QTemporaryDir m_target;
    QThread m_thread;
    QString m_url;
};
