#include "SpcoreProcess.h"

#include <Completion.h>
#include <ProgressBar.h>
#include <QTemporaryDir>
#include <RunTest.h>
#include <TestFiles.h>
#include <csignal>
#include <unistd.h>

namespace {

QStringList words(char const* line)
{
    return QString::fromUtf8(line).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

/// The command with standard output where \a output is.
SpcoreResult runInto(int output, QStringList const& arguments, bool ignoresPipeSignal = false)
{
    QProcess process;
    process.setChildProcessModifier([output] { ::dup2(output, STDOUT_FILENO); });
    // Some versions of Qt set the signal back after that function, so a shell has to ignore it.
    QString const script = QStringLiteral("trap %1 PIPE; exec \"$@\"")
                               .arg(ignoresPipeSignal ? QStringLiteral("''") : QStringLiteral("-"));
    process.start(QStringLiteral("/bin/sh"), QStringList{QStringLiteral("-c"), script, QStringLiteral("sh"),
                                                         QStringLiteral(SPCORE_PROGRAM)} +
                                                 arguments);
    process.write(R"([{"firstName":"Mario","contacts":[{"type":"exten","value":"101"}]}])");
    process.closeWriteChannel();
    process.waitForFinished();
    bool const ended = process.exitStatus() == QProcess::NormalExit;
    return {ended ? process.exitCode() : -1, QByteArray(), process.readAllStandardError()};
}

} // namespace

class CommandLineTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void showsHelpAndVersion_data();
    void showsHelpAndVersion();
    void refusesWhatItDoesNotKnow_data();
    void refusesWhatItDoesNotKnow();
    void tellsWhatIsMeant_data();
    void tellsWhatIsMeant();
    void tellsWhenOutputIsLost_data();
    void tellsWhenOutputIsLost();
    void tellsNothingToAReaderThatHasGone_data();
    void tellsNothingToAReaderThatHasGone();
    void takesNamesThatAreNoUtf8();
    void completes_data();
    void completes();
    void drawsProgress_data();
    void drawsProgress();
};

void CommandLineTest::showsHelpAndVersion_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("start");
    QTest::addColumn<int>("exitCode");
    auto const row = [](char const* arguments, char const* start, int exitCode) {
        QTest::newRow(arguments) << words(arguments) << QByteArray(start) << exitCode;
    };
    row("", "Usage: spcore COMMAND", 2);
    row("--help", "Usage: spcore COMMAND", 0);
    row("-h", "Usage: spcore COMMAND", 0);
    row("help", "Usage: spcore COMMAND", 0);
    row("--version", "spcore 1.", 0);
    row("-v", "spcore 1.", 0);
    row("wav", "Usage: spcore wav COMMAND", 2);
    row("wav --help", "Usage: spcore wav COMMAND", 0);
    row("help wav", "Usage: spcore wav COMMAND", 0);
    row("wav join --help", "Usage: spcore wav join [options] OUT IN...", 0);
    row("help wav join", "Usage: spcore wav join [options] OUT IN...", 0);
    row("help contact", "Usage: spcore contact [options] [FILE...]", 0);
    row("help help", "Usage: spcore help [options] [COMMAND...]", 0);
}

void CommandLineTest::showsHelpAndVersion()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, start);
    SpcoreResult const result = runSpcore(arguments);
    QTEST(result.exitCode, "exitCode");
    QVERIFY2(result.out.startsWith(start), result.out.constData());
    QCOMPARE(result.err, QByteArray());
}

void CommandLineTest::refusesWhatItDoesNotKnow_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("a command that does not exist") << QStringList{QStringLiteral("nonsense")};
    QTest::newRow("an option before the command") << QStringList{QStringLiteral("--nonsense")};
    QTest::newRow("a command with line breaks") << QStringList{QStringLiteral("a\nb\nc")};
    QTest::newRow("help of what does not exist")
        << QStringList{QStringLiteral("help"), QStringLiteral("nonsense")};
    QTest::newRow("a command longer than any") << QStringList{QString(100'000, QLatin1Char('x'))};
}

void CommandLineTest::refusesWhatItDoesNotKnow()
{
    QFETCH(QStringList, arguments);
    SpcoreResult const result = runSpcore(arguments);
    QVERIFY2(result.failedWithOneLine(2), result.err.constData());
}

void CommandLineTest::tellsWhatIsMeant_data()
{
    QTest::addColumn<QByteArray>("message");
    auto const row = [](char const* arguments, char const* message) {
        QTest::newRow(arguments) << QByteArray(message);
    };
    row("asets", "unknown command \"asets\"; did you mean \"assets\"? (see spcore --help");
    row("--hepl", "unknown command \"--hepl\"; did you mean \"--help\"? (see spcore --help");
    row("wvav join", "unknown command \"wvav\"; did you mean \"wav\"? (see spcore --help");
    row("wav jion", "wav has no command \"jion\"; did you mean \"join\"? (see spcore --help");
    row("wav nonsense", "wav has no command \"nonsense\" (see spcore --help");
    row("file prune --recursve x",
        "file prune: there is no option --recursve; did you mean \"--recursive\"? (see spcore help file prune");
    row("file prune --nonsense x", "file prune: there is no option --nonsense (see spcore help file prune");
    row("crypt encrypt -k 1 --mode hsah",
        "crypt encrypt: --mode is none or checksum or hash, not \"hsah\"; did "
        "you mean \"hash\"? (see spcore help crypt encrypt");
    row("assets --language latin",
        "assets: --language is italian or english, not \"latin\" (see spcore help assets");
    row("wav join",
        "wav join: OUT is missing: WAV file to write; beyond 4 GiB it becomes RF64 (see spcore help "
        "wav join");
    row("number compare 1",
        "number compare: OTHER is missing: The number to compare with (see spcore help number "
        "compare");
    row("file move a b c", "file move: \"c\" is one argument too many (see spcore help file move");
}

void CommandLineTest::tellsWhatIsMeant()
{
    QFETCH(QByteArray, message);
    SpcoreResult const result = runSpcore(words(QTest::currentDataTag()));
    QVERIFY2(result.failedWithOneLine(2), result.err.constData());
    QCOMPARE(result.err, "spcore: " + message + ")\n");
}

void CommandLineTest::tellsWhenOutputIsLost_data()
{
    QTest::addColumn<QStringList>("arguments");
    for (char const* const arguments :
         {"--help", "--version", "wav", "help wav join", "assets", "assets --json", "contact",
          "contact --json", "contact find mario", "crypt encrypt -k 1", "crypt sha256 -",
          "file find /etc passwd", "file prune --dry-run --days 0 /etc", "number parse 061234567",
          "number compare 1 1", "text links --json", "text link", "text filter mario"}) {
        QTest::newRow(arguments) << words(arguments);
    }
}

void CommandLineTest::tellsWhenOutputIsLost()
{
    QFile full(QStringLiteral("/dev/full"));
    QVERIFY(full.open(QIODevice::WriteOnly));
    QFETCH(QStringList, arguments);
    SpcoreResult const result = runInto(full.handle(), arguments);
    QCOMPARE(result.err, QByteArray("spcore: cannot write standard output: no space left on device\n"));
    QCOMPARE(result.exitCode, arguments == words("wav") ? 2 : 1);
}

void CommandLineTest::tellsNothingToAReaderThatHasGone_data()
{
    QTest::addColumn<bool>("ignoresPipeSignal");
    QTest::addColumn<int>("exitCode");
    QTest::newRow("as shells start it") << false << -1;
    QTest::newRow("as some programs start it") << true << 1;
}

void CommandLineTest::tellsNothingToAReaderThatHasGone()
{
    QFETCH(bool, ignoresPipeSignal);
    int ends[2];
    QCOMPARE(::pipe(ends), 0);
    ::close(ends[0]);
    SpcoreResult const result = runInto(ends[1], words("--help"), ignoresPipeSignal);
    ::close(ends[1]);
    QCOMPARE(result.err, QByteArray());
    QTEST(result.exitCode, "exitCode");
}

void CommandLineTest::takesNamesThatAreNoUtf8()
{
    QTemporaryDir const folder;
    QVERIFY(TestFiles::write(folder.filePath(QStringLiteral("plain")), "abc"));
    QProcess shell;
    shell.setWorkingDirectory(folder.path());
    shell.start(QStringLiteral("sh"), {QStringLiteral("-c"),
                                       QStringLiteral("name=$(printf 'caf\\351'); cp plain \"$name\"\n"
                                                      "$0 crypt sha256 \"$name\"\n"
                                                      "$0 crypt sha256 --json \"$name\"\n"
                                                      "$0 text link \"$name\"\n"
                                                      "$0 file copy \"$name\" copy\n"
                                                      "$0 file move \"$name\" .\n"
                                                      "$0 file move \"$name\" moved && ! test -e \"$name\"\n"
                                                      "$0 text link \"$name\"\n"),
                                       QStringLiteral(SPCORE_PROGRAM)});
    QVERIFY(shell.waitForFinished());
    QByteArray const digest = "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad";
    QCOMPARE(shell.readAllStandardOutput(), digest + "  caf\351\n" +
                                                "{\"file\":\"caf\\udce9\",\"sha256\":\"" + digest +
                                                "\"}\nabc\ncopy\nmoved\n");
    QCOMPARE(shell.readAllStandardError(),
             QByteArray("spcore: the move needs a name in UTF-8\n"
                        "spcore: cannot read caf\351: no such file or directory\n"));
}

void CommandLineTest::completes_data()
{
    QTest::addColumn<QStringList>("words");
    QTest::addColumn<QString>("completed"); // without what the words mean
    auto const row = [](char const* line, char const* completed) {
        QTest::newRow(line) << QString::fromUtf8(line).split(QLatin1Char('|'))
                            << QString::fromUtf8(completed);
    };
    row("", "assets contact crypt doctor file guard help net number text wav");
    row("n", "net number");
    row("wav|", "check info join repair");
    row("nonsense|", "");
    row("help|wav|j", "join");
    row("wav|join|--", "--help --json");
    row("wav|info|", ":files");
    row("wav|info|a|b|", ":files");
    row("contact|", "find :files");
    row("contact|find|", "");
    row("contact|find|mario|", ":files");
    row("file|prune|--days|7|", ":folders");
    row("file|prune|--days|", "");
    row("crypt|encrypt|-m|", "checksum hash none");
    row("crypt|encrypt|--mode=h", "--mode=hash");
    row("crypt|encrypt|--mode|=|h", "hash");
    row("crypt|encrypt|--mode|=", "checksum hash none");
    row("crypt|encrypt|--output|", ":files");
    row("crypt|encrypt|a|b", "");
    row("assets|--language|it", "italian");
    row("assets|--resources|", ":folders");
    row("number|parse|--region|VA", "VA");
    row("net|get|http://x/|", ":files");
    row("net|get|", "");
    row("guard|--|-", "");
}

void CommandLineTest::completes()
{
    QFETCH(QStringList, words);
    QFETCH(QString, completed);
    QStringList found;
    for (QString const& line : completions(words)) {
        found += line.section(QLatin1Char('\t'), 0, 0);
    }
    found.sort();
    QStringList expected = completed.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    expected.sort();
    QCOMPARE(found, expected);
}

void CommandLineTest::drawsProgress_data()
{
    QTest::addColumn<long long>("now");
    QTest::addColumn<long long>("total");
    QTest::addColumn<int>("width");
    QTest::addColumn<QString>("line");
    constexpr long long half = 5'000'000;
    constexpr long long all = 10'000'000;
    auto const row = [](char const* tag, long long now, long long total, int width, char const* line) {
        QTest::newRow(tag) << now << total << width << QString::fromLatin1(line);
    };
    row("wide", half, all, 100,
        "get [####################....................] 50%  5.0 MB of 10.0 MB  2.5 MB/s  0:03 left");
    row("usual", half, all, 79,
        "get [##############...............] 50%  5.0 MB of 10.0 MB  2.5 MB/s  0:03 left");
    row("no room for a bar", half, all, 50, "get 50%  5.0 MB of 10.0 MB  2.5 MB/s  0:03 left");
    row("no room for the time", half, all, 40, "get 50%  5.0 MB of 10.0 MB  2.5 MB/s");
    row("no room for anything else", half, all, 10, "get 50%");
    row("hardly any room", half, all, 3, "get");
    row("the end", all, all, 60, "get [###################] 100%  10.0 MB of 10.0 MB  5.0 MB/s");
    row("of nobody knows how many", half, -1, 79, "get 5.0 MB  2.5 MB/s");
    row("more than there are", all + 1, all, 30, "get 100%  10.0 MB of 10.0 MB");
    row("the beginning", 0, all, 79, "get [........................................] 0%  0 bytes of 10.0 MB");
}

void CommandLineTest::drawsProgress()
{
    QFETCH(long long, now);
    QFETCH(long long, total);
    QFETCH(int, width);
    constexpr long long twoSeconds = 2'000;
    QTEST(ProgressBar::line(QStringLiteral("get"), now, total, twoSeconds, width), "line");
}

int main(int argc, char** argv)
{
    return runTest<CommandLineTest>(argc, argv);
}

#include "CommandLineTest.moc"
