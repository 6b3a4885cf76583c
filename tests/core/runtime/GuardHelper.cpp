// A copy of a client, as a real process, for the tests of SingleInstanceGuard. It says on standard output,
// one word a line, what becomes of it.
//
//   GuardHelper probe NAME        asks whether another copy runs: "running" or "free"
//   GuardHelper serve NAME        launches its server without asking: "launching", "serving", "kick"...;
//                                 "stop" and "start" on standard input are done and answered
//   GuardHelper serve-mute NAME   the same with nothing to run on a kick
//   GuardHelper client NAME       asks first, and launches its server when it is alone
//   GuardHelper connect NAME COUNT  connects COUNT times, says "connected", and lets go at the end of input
//   GuardHelper pose NAME         listens under the client's name without being one: "posing" and "kick"
//   GuardHelper crowd NAME COUNT  lets COUNT clients loose at one moment, and kills them at the end of input
//
// With AS_OTHER_USER in the environment the process is another user's, which only root may ask for.

#include <runtime/SingleInstanceGuard.h>

#include <QCoreApplication>
#include <QLocalServer>
#include <QLocalSocket>
#include <QSocketNotifier>
#include <QStringList>
#include <csignal>
#include <cstdlib>
#include <memory>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

void say(char const* word)
{
    // One write a line: the lines of a crowd do not mix.
    std::string const line = std::string(word) + '\n';
    if (::write(STDOUT_FILENO, line.data(), line.size()) < 0) {
        std::_Exit(3);
    }
}

class Copy
{
public:
    explicit Copy(QString const& name) { m_guard.setup(name, QStringLiteral("user"), QStringLiteral("x")); }

    int probe()
    {
        say(m_guard.isAnotherRunning() ? "running" : "free");
        return 0;
    }

    int serve()
    {
        m_guard.setNewInstanceKicking([] { say("kick"); });
        return serveMute();
    }

    int serveMute()
    {
        launch();
        return QCoreApplication::exec();
    }

    int client()
    {
        if (m_guard.isAnotherRunning()) {
            say("running");
            return 0;
        }
        return serve();
    }

    void listenToInput()
    {
        m_input = std::make_unique<QSocketNotifier>(STDIN_FILENO, QSocketNotifier::Read);
        QObject::connect(m_input.get(), &QSocketNotifier::activated, m_input.get(), [this] { obey(); });
    }

private:
    void launch()
    {
        say("launching");
        say(m_guard.launchServer() ? "serving" : "failed");
    }

    void obey()
    {
        char line[64] = "";
        ssize_t const length = ::read(STDIN_FILENO, line, sizeof line - 1);
        std::string const order(line, length > 0 ? static_cast<std::size_t>(length) : 0);
        if (order == "stop\n") {
            m_guard.stopServer();
            say("stopped");
        } else if (order == "start\n") {
            launch();
        } else {
            m_guard.stopServer();
            QCoreApplication::quit();
        }
    }

    SingleInstanceGuard m_guard;
    std::unique_ptr<QSocketNotifier> m_input;
};

QString serverName(QString const& name)
{
    return SingleInstanceGuard::getServerName(name, QStringLiteral("user"), QStringLiteral("x"));
}

/// Waits until this process is told to end, or has nobody left to tell it.
void waitForEndOfInput()
{
    char byte = 0;
    while (::read(STDIN_FILENO, &byte, 1) > 0) {
    }
}

int connectOften(QString const& name, int count)
{
    std::vector<std::unique_ptr<QLocalSocket>> sockets;
    for (int index = 0; index < count; ++index) {
        sockets.push_back(std::make_unique<QLocalSocket>());
        sockets.back()->connectToServer(serverName(name));
        if (!sockets.back()->waitForConnected()) {
            say("refused");
            return 1;
        }
    }
    say("connected");
    waitForEndOfInput();
    return 0;
}

int pose(QString const& name)
{
    QLocalServer server;
    server.setSocketOptions(QLocalServer::WorldAccessOption);
    QObject::connect(&server, &QLocalServer::newConnection, &server, [] { say("kick"); });
    say(server.listen(serverName(name)) ? "posing" : "failed");
    QSocketNotifier const input(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, &server, &QCoreApplication::quit);
    return QCoreApplication::exec();
}

int runCopy(int argc, char** argv, std::string const& command)
{
    constexpr uid_t otherUser = 65534;
    if (std::getenv("AS_OTHER_USER") != nullptr && ::setuid(otherUser) != 0) {
        return 2;
    }
    QCoreApplication const application(argc, argv);
    QCoreApplication::setOrganizationName(QStringLiteral("softphone"));
    QCoreApplication::setApplicationName(QStringLiteral("guard"));
    QString const name = QString::fromLocal8Bit(argv[2]);
    if (command == "connect") {
        return connectOften(name, std::atoi(argv[3]));
    }
    if (command == "pose") {
        return pose(name);
    }
    Copy copy(name);
    if (command == "crowd") {
        return copy.client();
    }
    copy.listenToInput();
    if (command == "serve") {
        return copy.serve();
    }
    if (command == "serve-mute") {
        return copy.serveMute();
    }
    return command == "client" ? copy.client() : copy.probe();
}

/// The processes are forked before anything of Qt has run, and stand at the gate until it opens for all.
int runCrowd(int argc, char** argv, std::string const& command)
{
    int const count = std::atoi(argv[3]);
    int gate[2];
    if (::pipe(gate) != 0) {
        return 2;
    }
    std::vector<pid_t> children;
    for (int index = 0; index < count; ++index) {
        pid_t const child = ::fork();
        if (child == 0) {
            ::alarm(300);
            ::close(gate[1]);
            char none;
            [[maybe_unused]] ssize_t const opened = ::read(gate[0], &none, 1);
            std::exit(runCopy(argc, argv, command));
        }
        children.push_back(child);
    }
    ::close(gate[1]);
    waitForEndOfInput();
    // All stand still before the first dies: a copy that waits for the lock would take it over, and could be
    // killed half-way.
    for (pid_t const child : children) {
        ::kill(child, SIGSTOP);
    }
    for (pid_t const child : children) {
        ::kill(child, SIGKILL);
        ::waitpid(child, nullptr, 0);
    }
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 3) {
        return 2;
    }
    // Nobody is left behind when the test itself is killed.
    ::alarm(300);
    std::string const command = argv[1];
    return command == "crowd" && argc > 3 ? runCrowd(argc, argv, command) : runCopy(argc, argv, command);
}
