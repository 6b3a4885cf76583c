#pragma once

#include <QDir>
#include <QFile>
#include <QProcessEnvironment>
#include <QTemporaryDir>
#include <sys/stat.h>
#include <unistd.h>

/// A machine with two users: the test's own, who has to be root, and one that no permission is granted to.
///
/// They share a temporary folder as /tmp is shared; the second has a home of its own, and no runtime folder.
/// The test's TMPDIR is the shared folder as long as this lives.
class SecondUser
{
public:
    static constexpr uid_t id = 65534;

    /// Whether this process may act for a second user; where it may not, a test that needs one skips itself.
    static bool isPossible() { return ::geteuid() == 0; }

    SecondUser()
    {
        QDir const root(m_root.path());
        for (char const* const name : {"tmp", "home"}) {
            root.mkdir(QLatin1String(name));
        }
        m_isReady = ::chmod(nameOf(m_root.path()).constData(), 0755) == 0 &&
                    ::chmod(nameOf(temp()).constData(), 01777) == 0 &&
                    ::chown(nameOf(home()).constData(), id, id) == 0;
        qputenv("TMPDIR", nameOf(temp()));
    }
    ~SecondUser() { qputenv("TMPDIR", m_tempBefore); }
    SecondUser(SecondUser const&) = delete;
    SecondUser& operator=(SecondUser const&) = delete;

    [[nodiscard]] bool isReady() const { return m_isReady; }
    [[nodiscard]] QString temp() const { return m_root.filePath(QStringLiteral("tmp")); }
    [[nodiscard]] QString home() const { return m_root.filePath(QStringLiteral("home")); }

    /// Gives \a path, not what a link there leads to, to the second user.
    static bool give(QString const& path) { return ::lchown(nameOf(path).constData(), id, id) == 0; }

    /// What a process of the second user finds around it.
    [[nodiscard]] QProcessEnvironment environment() const
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("HOME"), home());
        environment.insert(QStringLiteral("TMPDIR"), temp());
        environment.remove(QStringLiteral("XDG_RUNTIME_DIR"));
        environment.insert(QStringLiteral("AS_OTHER_USER"), QStringLiteral("1"));
        return environment;
    }

private:
    static QByteArray nameOf(QString const& path) { return QFile::encodeName(path); }

    QTemporaryDir m_root{QStringLiteral("/tmp/two-users-XXXXXX")};
    QByteArray m_tempBefore = qgetenv("TMPDIR");
    bool m_isReady = false;
};

/// As long as this lives the test itself is the second user, in all its threads.
class SecondUsersTurn
{
public:
    SecondUsersTurn()
        : m_isTaken(::setresuid(SecondUser::id, SecondUser::id, 0) == 0)
    {
    }
    ~SecondUsersTurn() { static_cast<void>(::setresuid(0, 0, 0)); }
    SecondUsersTurn(SecondUsersTurn const&) = delete;
    SecondUsersTurn& operator=(SecondUsersTurn const&) = delete;

    [[nodiscard]] bool isTaken() const { return m_isTaken; }

private:
    bool m_isTaken;
};
