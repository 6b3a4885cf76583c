#pragma once

#include <softphonecore_export.h>

#include <QObject>
#include <QString>
#include <QTimer>
#include <functional>
#include <memory>

class QLocalServer;
class QLockFile;

/// Lets one copy of the client run at a time, and lets that copy know when another one is started.
///
/// The first copy holds a lock file in the temporary folder and listens on a local socket; later copies find
/// both. The order of calls: setup(), then isAnotherRunning(); where that is false, setNewInstanceKicking()
/// and launchServer(), and stopServer() at the end.
///
/// A guard is used from the thread that made it and needs its event loop to hear of other copies. Of copies
/// that start at the same moment one at most holds the lock.
///
/// Example:
/// \code
/// SingleInstanceGuard guard;
/// guard.setup(QCoreApplication::applicationFilePath(), userName, QString());
/// if (guard.isAnotherRunning()) {
///     return 0; // that copy knows now, and raises its window
/// }
/// guard.setNewInstanceKicking([&window] { window.raise(); });
/// guard.launchServer();
/// \endcode
class SOFTPHONECORE_EXPORT SingleInstanceGuard
{
public:
    SingleInstanceGuard();

    /// Closes the server and releases the lock, if held.
    ~SingleInstanceGuard();

    SingleInstanceGuard(SingleInstanceGuard const&) = delete;
    SingleInstanceGuard& operator=(SingleInstanceGuard const&) = delete;

    /// Names the server and its lock file after the three texts of getServerName().
    ///
    /// The lock file is the name with ".qlf" in FilePaths::buildTempPath(). A lock held under an earlier name
    /// is released.
    ///
    /// \param path    the client's program
    /// \param second  a text that tells copies apart that may run side by side, such as the user's name
    /// \param third   another such text
    void setup(QString const& path, QString const& second, QString const& third);

    /// The name under which copies find each other: the folders of \a path from the innermost to the
    /// outermost, after the file's own name, then \a second and \a third, all joined by "_", with "_" for
    /// spaces.
    ///
    /// The name is not shortened. Beyond about 100 bytes the system refuses the socket, so that kicks do not
    /// arrive; beyond 251 bytes it refuses the lock file too. Any thread.
    ///
    /// Example: "/Applications/My App.app/Contents/MacOS/My App", "alice" and "x" give
    /// "My_App_MacOS_Contents_My_App.app_Applications_alice_x".
    ///
    /// \param path    a file-system path; a relative one contributes what it has
    /// \param second  goes after the path
    /// \param third   goes last
    /// \return the name, never empty
    [[nodiscard]] static QString getServerName(QString const& path, QString const& second,
                                               QString const& third);

    /// Stores what to run each time another copy connects; an earlier one is replaced.
    ///
    /// \param kicking  runs in the guard's thread; what it throws ends with it
    void setNewInstanceKicking(std::function<void()> kicking);

    /// Makes this copy the first one: listens, and waits for the lock until it is held.
    ///
    /// A server that another copy left is removed, and one of this guard is replaced. When the system
    /// refuses the socket, nothing reports it: the lock guards without it, and only kicks do not arrive. From
    /// then on the guard looks once a second whether it still listens, and listens again where it does not.
    ///
    /// \return whether the lock is held; false without setup(), or where the lock file cannot be made
    bool launchServer();

    /// Takes the next connection of another copy, runs what setNewInstanceKicking() stored and closes the
    /// connection. Nothing happens when none is waiting.
    ///
    /// Any user of the machine may connect, so no connection lives longer than a second, even while what was
    /// stored is still running, and no more than 16 are open at once: one more is closed without a kick. What
    /// is sent is not read.
    ///
    /// \throws std::bad_function_call when nothing is stored: a client that serves without it has a bug
    void onNewConnection();

    /// Closes the server and releases the lock. launchServer() may follow.
    void stopServer();

    /// Whether another copy runs. When one listens, it is told of this call.
    ///
    /// Without a lock file the answer is false at once. A lock that a living process holds answers true, also
    /// when it does not listen, and so does one that this process may not take. With a lock file that was
    /// left over, the answer is whether a server of this user accepts a connection within 30 ms. Copies of
    /// other users have their lock files in folders of their own and do not count (see
    /// FilePaths::buildTempPath()).
    ///
    /// A guard that serves finds its own lock and kicks itself: the question is for copies that do not serve.
    ///
    /// \return whether there is another copy; false without setup()
    bool isAnotherRunning();

private:
    void listen();
    void keepListening();

    QObject m_context;
    std::unique_ptr<QLocalServer> m_server;
    std::unique_ptr<QLockFile> m_lockFile;
    QString m_serverName;
    std::function<void()> m_newInstanceKicking;
    /// Runs while this copy serves.
    QTimer m_listeningCheck;
};
