#include "SpcoreProcess.h"
#include "Terminal.h"

#include <QFile>
#include <QTemporaryDir>
#include <RunTest.h>

class TextCommandsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void answers_data();
    void answers();
    void linksAFile();
    void fails_data();
    void fails();
    void highlightsInATerminal_data();
    void highlightsInATerminal();
};

void TextCommandsTest::answers_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("input");
    QTest::addColumn<QByteArray>("out");
    auto const row = [](char const* tag, std::initializer_list<char const*> words, char const* input,
                        char const* out) {
        QStringList arguments(QStringLiteral("text"));
        for (char const* word : words) {
            arguments += QString::fromUtf8(word);
        }
        QTest::newRow(tag) << arguments << QByteArray(input) << QByteArray(out);
    };
    row("mark the words of a filter", {"mark", "ro ma", "Mario & Rossi"}, "",
        "<b>Ma</b>rio &amp; <b>Ro</b>ssi\n");
    row("mark at word starts only", {"mark", "--word-start", "ssi", "Mario Rossi"}, "", "Mario Rossi\n");
    row("mark a literal text", {"mark", "--literal", "o r", "Mario Rossi"}, "", "Mari<b>o R</b>ossi\n");
    row("mark with another element", {"mark", "--tag", "em", "ma", "Mario"}, "", "<em>Ma</em>rio\n");
    row("mark what looks like an option", {"mark", "--", "-m", "x-m"}, "", "x<b>-m</b>\n");
    row("mark with placeholders", {"mark", "%1", "%1 %2"}, "", "<b>%1</b> %2\n");
    row("link standard input", {"link"}, "see www.example.com\nbye\n",
        "see <a href=\"www.example.com\">www.example.com</a><br>bye\n");
    row("link standard input by name", {"link", "-"}, "a<b", "a&lt;b\n");
    row("link nothing", {"link"}, "", "\n");
    row("list links", {"links"}, "see www.example.com, m@a.it or 06 1234567\n",
        "Web    https://www.example.com  www.example.com\n"
        "Email  mailto:m@a.it  m@a.it\n"
        "Phone  tel:+39061234567  06 1234567\n");
    row("list links of another region", {"links", "--region", "GB", "-"}, "020 7946 0018",
        "Phone  tel:+442079460018  020 7946 0018\n");
    row("list links where there are none", {"links"}, "javascript:alert(1)\n", "");
    row("list links as JSON", {"links", "--json"}, "a www.a.it\n",
        R"([{"kind":"Web","length":8,"position":2,"target":"https://www.a.it","text":"www.a.it"}])"
        "\n");
    row("no links as JSON", {"links", "--json"}, "a\n", "[]\n");
    row("links as HTML", {"links", "--html"}, "a<b www.a.it\n\n",
        "a&lt;b <a href=\"https://www.a.it\">www.a.it</a><br>\n");
    row("filter names", {"filter", "ma ro"}, "Mario Rossi\nAnna Bianchi\nRoberto Marino\n",
        "Mario Rossi\nRoberto Marino\n");
    row("filter at word starts", {"filter", "--word-start", "ssi"}, "Rossi\nSsimone\n", "Ssimone\n");
    row("filter without a line break at the end", {"filter", "a"}, "a\nb\na", "a\na\n");
    row("an empty filter shows all", {"filter", ""}, "a\n\nb\n", "a\n\nb\n");
    row("filter standard input by name", {"filter", "a", "-"}, "a\nb\n", "a\n");
    row("in a pipe, names stay as they are", {"filter", "a"}, "a\x1b[31m\xC3\xA8\r\n",
        "a\x1b[31m\xC3\xA8\r\n");
}

void TextCommandsTest::answers()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, input);
    SpcoreResult const result = runSpcore(arguments, input);
    QCOMPARE(result.err, QByteArray());
    QTEST(result.out, "out");
    QCOMPARE(result.exitCode, 0);
}

void TextCommandsTest::linksAFile()
{
    QTemporaryDir const folder;
    QFile file(folder.filePath(QStringLiteral("message.txt")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("write to a.b@example.com\n");
    file.close();
    SpcoreResult const result = runSpcore({QStringLiteral("text"), QStringLiteral("link"), file.fileName()});
    QCOMPARE(result.out, QByteArray("write to <a href=\"a.b@example.com\">a.b@example.com</a>\n"));
    QCOMPARE(result.exitCode, 0);
}

void TextCommandsTest::fails_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("exitCode");
    auto const row = [](char const* tag, char const* arguments, int exitCode) {
        QTest::newRow(tag) << QString::fromUtf8(arguments).split(QLatin1Char(' ')) << exitCode;
    };
    row("no name matches", "text filter xyz", 1);
    row("a file that is not there", "text link /nonexistent/message.txt", 1);
    row("a folder", "text link /", 1);
    row("mark without a text", "text mark a", 2);
    row("filter without a filter", "text filter", 2);
    row("filter a file that is not there", "text filter a /nonexistent/names.txt", 1);
    row("link two files", "text link a b", 2);
    row("links of a file that is not there", "text links /nonexistent/message.txt", 1);
    row("links of two files", "text links a b", 2);
    row("an unknown option", "text mark --nonsense a b", 2);
    row("an unknown command of the group", "text nonsense", 2);
}

void TextCommandsTest::fails()
{
    QFETCH(QStringList, arguments);
    QFETCH(int, exitCode);
    SpcoreResult const result = runSpcore(arguments, "Mario Rossi\n");
    QVERIFY2(result.failedWithOneLine(exitCode), result.err.constData());
}

void TextCommandsTest::highlightsInATerminal_data()
{
    QTest::addColumn<QString>("noColor");
    QTest::addColumn<QByteArray>("shown");
    QTest::newRow("hits in bold, no control characters")
        << QString() << QByteArray("\x1b[1mMa\x1b[0mrio \x1b[1mRo\x1b[0mssi [31m\r\n");
    QTest::newRow("without colours") << QStringLiteral("1") << QByteArray("Mario Rossi [31m\r\n");
}

void TextCommandsTest::highlightsInATerminal()
{
    QFETCH(QString, noColor);
    Terminal const terminal;
    QVERIFY(terminal.isOpen());
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("TERM"), QStringLiteral("xterm"));
    environment.insert(QStringLiteral("NO_COLOR"), noColor);
    process.setProcessEnvironment(environment);
    process.setStandardOutputFile(terminal.name());
    process.start(QStringLiteral(SPCORE_PROGRAM),
                  {QStringLiteral("text"), QStringLiteral("filter"), QStringLiteral("ma ro")});
    process.write("Mario Rossi\x1b[31m\nAnna\n");
    process.closeWriteChannel();
    QTEST(terminal.readAll(process), "shown");
    QCOMPARE(process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(process.exitCode(), 0);
}

int main(int argc, char** argv)
{
    return runTest<TextCommandsTest>(argc, argv);
}

#include "TextCommandsTest.moc"
