#include "TestEnvironment.h"

#include <QDir>
#include <ctime>
#include <sys/stat.h>

namespace {

QByteArray pinned(char const* overrideName, char const* value)
{
    QByteArray const override = qgetenv(overrideName);
    return override.isEmpty() ? QByteArray(value) : override;
}

} // namespace

TestEnvironment::TestEnvironment()
{
    ::umask(022);
    for (char const* variable : {"XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME", "XDG_STATE_HOME",
                                 "LANGUAGE", "http_proxy", "https_proxy", "ALL_PROXY"}) {
        qunsetenv(variable);
    }
    QDir const root(m_root.path());
    root.mkdir(QStringLiteral("home"));
    root.mkdir(QStringLiteral("tmp"));
    root.mkdir(QStringLiteral("run"));
    QString const runtimeDir = root.filePath(QStringLiteral("run"));
    QFile::setPermissions(runtimeDir, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    qputenv("XDG_RUNTIME_DIR", QFile::encodeName(runtimeDir));
    qputenv("HOME", QFile::encodeName(root.filePath(QStringLiteral("home"))));
    qputenv("TMPDIR", QFile::encodeName(root.filePath(QStringLiteral("tmp"))));
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("TZ", pinned("SPCORE_TEST_TZ", "UTC"));
    qputenv("LC_ALL", pinned("SPCORE_TEST_LOCALE", "C.UTF-8"));
    tzset();
}

QString TestEnvironment::home() const
{
    return qEnvironmentVariable("HOME");
}
