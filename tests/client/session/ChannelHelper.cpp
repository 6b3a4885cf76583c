// A copy of a program, as a real process, for the tests of InstanceChannel. It says on standard output, one
// word a line, what becomes of it, and ends with its input.
//
//   ChannelHelper first NAME           opens the channel: "first" or "other", then each message as its
//   arguments in hex,
//                                      separated by commas, or the SHA-256 of that when it is
//                                      long, and the token after a slash
//   ChannelHelper first-of NAME COUNT  the same, and ends by itself after COUNT messages
//   ChannelHelper hanging NAME         the same as first, but its slot never returns
//   ChannelHelper nested NAME          the same as first, but its slot runs an event loop of its own for 300
//   ms ChannelHelper send NAME MILLISECONDS ARGUMENT...   "delivered" or the reason why not ChannelHelper
//   flood NAME FIRST COUNT               sends the numbers from FIRST on, one a message; says each delivered
//   ChannelHelper crowd NAME COUNT     lets COUNT copies open the channel at one moment: how many are the
//   first

#include <client/InstanceChannel.h>

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QEventLoop>
#include <QSocketNotifier>
#include <QThread>
#include <QTimer>
#include <array>
#include <cstdlib>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

using Softphone::InstanceChannel;
using namespace std::chrono_literals;

namespace {

void say(QByteArray const& word)
{
    // One write a line: the lines of several processes do not mix.
    QByteArray const line = word + '\n';
    if (::write(STDOUT_FILENO, line.constData(), static_cast<std::size_t>(line.size())) < 0) {
        std::_Exit(3);
    }
}

QByteArray hex(QString const& text)
{
    return QByteArray(reinterpret_cast<char const*>(text.utf16()), text.size() * 2).toHex();
}

class FirstCopy
{
public:
    FirstCopy(QString const& name, QString const& manner, int messages)
        : m_channel(name)
        , m_manner(manner)
        , m_messages(messages)
    {
        QObject::connect(
            &m_channel, &InstanceChannel::received, &m_channel,
            [this](QStringList const& arguments, QByteArray const& token) { take(arguments, token); });
    }

    int run()
    {
        QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
        QObject::connect(&input, &QSocketNotifier::activated, &input, [] { QCoreApplication::quit(); });
        say(m_channel.open() ? "first" : "other");
        return QCoreApplication::exec();
    }

private:
    void take(QStringList const& arguments, QByteArray const& token)
    {
        QByteArrayList parts;
        for (QString const& argument : arguments) {
            parts << hex(argument);
        }
        QByteArray const all = parts.join(',');
        // A pipe that nobody reads yet holds only so much.
        say((all.size() < 1000 ? all : QCryptographicHash::hash(all, QCryptographicHash::Sha256).toHex()) +
            '/' + token);
        if (m_manner == QLatin1String("hanging")) {
            QThread::sleep(1000);
        } else if (m_manner == QLatin1String("nested")) {
            QEventLoop loop;
            QTimer::singleShot(300ms, &loop, &QEventLoop::quit);
            loop.exec();
        }
        if (--m_messages == 0) {
            QCoreApplication::quit();
        }
    }

    InstanceChannel m_channel;
    QString m_manner;
    int m_messages;
};

int send(QString const& name, std::chrono::milliseconds patience, QStringList const& arguments)
{
    InstanceChannel channel(name);
    say(channel.sendAndWait(arguments, patience) ? "delivered" : channel.errorText().toUtf8());
    return 0;
}

int flood(QString const& name, int first, int count)
{
    InstanceChannel channel(name);
    for (int i = first; i < first + count; ++i) {
        if (channel.sendAndWait({QString::number(i)}, 30s)) {
            say(QByteArray::number(i));
        }
    }
    return 0;
}

/// What one copy of a crowd does: waits for the start, tells whether it is the first, and stays until the
/// end.
int joinCrowd(QString const& name, int start, int outcome, int end)
{
    int argc = 0;
    QCoreApplication const application(argc, nullptr);
    char byte = 0;
    while (::read(start, &byte, 1) > 0) {
    }
    InstanceChannel channel(name);
    byte = channel.open() ? '1' : '0';
    if (::write(outcome, &byte, 1) != 1) {
        return 1;
    }
    while (::read(end, &byte, 1) > 0) {
    }
    return 0;
}

/// Before there is an application object: a forked one shares its event loop's descriptors.
int crowd(QString const& name, int count)
{
    std::array<int, 2> start{};
    std::array<int, 2> outcome{};
    std::array<int, 2> end{};
    if (pipe(start.data()) != 0 || pipe(outcome.data()) != 0 || pipe(end.data()) != 0) {
        return 1;
    }
    for (int i = 0; i < count; ++i) {
        if (fork() == 0) {
            close(start[1]);
            close(end[1]);
            _exit(joinCrowd(name, start[0], outcome[1], end[0]));
        }
    }
    close(start[1]);
    int firsts = 0;
    for (int i = 0; i < count; ++i) {
        char byte = 0;
        if (::read(outcome[0], &byte, 1) != 1) {
            return 1;
        }
        firsts += byte == '1' ? 1 : 0;
    }
    close(end[1]);
    while (wait(nullptr) > 0) {
    }
    say(QByteArray::number(firsts));
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    std::vector<QString> words;
    for (int i = 1; i < argc; ++i) {
        words.push_back(QString::fromLocal8Bit(argv[i]));
    }
    if (words.size() == 3 && words[0] == QLatin1String("crowd")) {
        return crowd(words[1], words[2].toInt());
    }
    QCoreApplication const application(argc, argv);
    QString const manner = words.at(0);
    if (manner == QLatin1String("send")) {
        return send(words.at(1), std::chrono::milliseconds(words.at(2).toInt()),
                    QCoreApplication::arguments().mid(4));
    }
    if (manner == QLatin1String("flood")) {
        return flood(words.at(1), words.at(2).toInt(), words.at(3).toInt());
    }
    return FirstCopy(words.at(1), manner, words.size() > 2 ? words.at(2).toInt() : -1).run();
}
