#include "SpcoreProcess.h"

#include "../core/audio/WavFiles.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QSet>
#include <QTemporaryDir>
#include <RunTest.h>
#include <TestFiles.h>

using TestFiles::write;

namespace {

QByteArray const mario = R"({"id":7,"firstName":"Mario","lastName":"Rossi","company":"Officine",)"
                         R"("unit":"Vendite","contacts":[{"type":"exten","value":"101"}]})";

QByteArray const tune = R"("format_name":"wav","codec_name":"pcm_s16le","sample_rate":8000,"channels":1,)"
                        R"("bits_per_sample":16,"block_align":2,"bit_rate":128000,"data_offset":44,)";

/// The values in \a lines, one on each.
QJsonArray values(QByteArray const& lines)
{
    QJsonArray array;
    for (QByteArray const& line : lines.trimmed().split('\n')) {
        QJsonDocument const document = QJsonDocument::fromJson(line);
        array.append(document.isArray() ? QJsonValue(document.array()) : QJsonValue(document.object()));
    }
    return array;
}

void collectKeys(QJsonValue const& value, QSet<QString>& keys)
{
    QJsonObject const object = value.toObject();
    for (QString const& key : object.keys()) {
        keys.insert(key);
        collectKeys(object[key], keys);
    }
    for (QJsonValue const& element : value.toArray()) {
        collectKeys(element, keys);
    }
}

} // namespace

/// What --json prints, command by command. The net, guard and assets commands have theirs in their own tests.
class JsonTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void answers_data();
    void answers();
    void everyCommandTellsWhatItPrints();

private:
    QTemporaryDir m_folder;
    QJsonArray m_commands;
};

void JsonTest::initTestCase()
{
    QVERIFY(write(m_folder.filePath(QStringLiteral("right.wav")), plainWav("samples!")));
    QVERIFY(write(
        m_folder.filePath(QStringLiteral("wrong.wav")),
        withSizeAt(riff({chunk("fmt ", pcmFormat()), chunk("data", "ss"), chunk("LIST", "INFO")}), 4, 0)));
    QVERIFY(write(m_folder.filePath(QStringLiteral("broken.wav")), withSizeAt(plainWav("samples!"), 40, 0)));
    QVERIFY(write(m_folder.filePath(QStringLiteral("text")), "abc"));
    for (char const* const name : {"copied/text", "copied/old", "kept/x"}) {
        QString const file = m_folder.filePath(QString::fromLatin1(name));
        QVERIFY(QDir().mkpath(QFileInfo(file).path()));
        QVERIFY(write(file, "x"));
    }
    QVERIFY(TestFiles::setAge(m_folder.filePath(QStringLiteral("copied/old")), 8 * 24 * 3600));
    m_commands = values(runSpcore({QStringLiteral("help"), QStringLiteral("--json")}).out)
                     .at(0)[QStringLiteral("commands")]
                     .toArray();
}

void JsonTest::answers_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("input");
    QTest::addColumn<QByteArray>("out");
    QTest::addColumn<int>("exitCode");
    auto const row = [](char const* command, QStringList const& arguments, QByteArray const& out,
                        QByteArray const& input = QByteArray(), int exitCode = 0) {
        QTest::addRow("%s %s", command, qPrintable(arguments.join(QLatin1Char(' '))))
            << QString::fromLatin1(command) << arguments << input << out << exitCode;
    };
    auto const words = [](char const* line) { return QString::fromUtf8(line).split(QLatin1Char('|')); };
    row("contact", {},
        R"({"company":"Officine","department":"Vendite","firstName":"Mario",)"
        R"("lastName":"Rossi","number":"101"})",
        mario);
    row("contact find", words("mario"),
        R"({"id":"7","firstName":"Mario","lastName":"Rossi","company":"Officine","unit":"Vendite",)"
        R"("contacts":[{"type":"exten","value":"101"}]})",
        mario);
    row("file copy", words("text|copied"), R"({"source":"text","file":"%DIR%/copied/text(1)."})");
    row("file copy", words("-|copied/input"), R"({"source":"-","file":"copied/input"})", "typed");
    row("file prune", words("--days|7|--dry-run|copied"),
        R"({"removed":["copied/old"],"left":[],"dryRun":true})");
    row("file prune", words("--days|7|copied"), R"({"removed":["copied/old"],"left":[],"dryRun":false})");
    row("file find", words("kept|x"), R"({"file":"%DIR%/kept/x"})");
    row("file move", words("kept/x|moved"), R"({"source":"kept/x","file":"moved"})");
    row("crypt encrypt", words("-k|1|-o|out.bin|text"), R"({"bytes":25,"file":"out.bin"})");
    row("crypt decrypt", words("-k|1|out.bin"), R"({"bytes":3,"base64":"YWJj"})");
    row("crypt sha256", words("text|missing"),
        R"({"file":"text","sha256":"ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"})"
        "\n"
        R"({"file":"missing","error":"no such file or directory"})",
        QByteArray(), 1);
    row("number parse", words("--region|GB|020 7946 0018"),
        R"({"e164":"+442079460018","extension":"","international":"+44 20 7946 0018","kind":"FixedLine",)"
        R"("national":"020 7946 0018","region":"GB","uri":"tel:+44-20-7946-0018","valid":true})");
    row("number dial", words("(06) 1234567"), R"({"typed":"(06) 1234567","dial":"061234567"})");
    row("number clean", words("+39 06-1"), R"({"typed":"+39 06-1","number":"+39061"})");
    row("number validate", words("tel:061,,9"), R"({"typed":"tel:061,,9","number":"061"})");
    row("number compare", words("1|2"), R"({"first":"1","second":"2","same":false})", QByteArray(), 1);
    row("number compare", words("1|1"), R"({"first":"1","second":"1","same":true})");
    row("number split", words("061,,9"), R"({"typed":"061,,9","number":"061","tones":",,9"})");
    row("text links", {},
        R"([{"position":0,"length":8,"text":"www.a.it","kind":"Web","target":"https://www.a.it"}])",
        "www.a.it");
    row("text links", words("--html"), R"({"html":"a&lt;b"})", "a<b");
    row("text mark", words("a|abc"), R"({"html":"<b>a</b>bc"})");
    row("text link", {}, R"({"html":"a&lt;b"})", "a<b");
    row("text filter", words("b"), "{\"line\":2,\"text\":\"b\"}\n{\"line\":3,\"text\":\"ab b\"}",
        "a\nb\nab b\n");
    row("wav info", words("right.wav|text"),
        R"({"filename":"right.wav",)" + tune +
            R"("duration":0.0005,"nb_samples":4,"size":52,"data_size":8,"chunks":["fmt","data"],)"
            R"("problems":[],"joinable":true})"
            "\n"
            R"({"filename":"text","error":"it does not begin as a WAV file does"})",
        QByteArray(), 1);
    row("wav check", words("right.wav|wrong.wav|missing"),
        R"({"file":"right.wav","ok":true,"problems":[]})"
        "\n"
        R"({"file":"wrong.wav","ok":false,"problems":["RIFF size 0 instead of 50"],)"
        R"("repair":{"possible":true,"bytesBecomeSound":12,"chunksBecomeSound":["LIST"]}})"
        "\n"
        R"({"file":"missing","error":"no such file or directory"})",
        QByteArray(), 1);
    row("wav repair", words("right.wav|broken.wav|text"),
        R"({"file":"right.wav","status":"ok"})"
        "\n"
        R"({"file":"broken.wav","status":"repaired"})"
        "\n"
        R"({"file":"text","error":"it does not begin as a WAV file does"})",
        QByteArray(), 1);
    row("wav join", words("joined.wav|right.wav|right.wav"),
        R"({"filename":"joined.wav",)" + tune +
            R"("duration":0.001,"nb_samples":8,"size":60,"data_size":16,"chunks":["fmt","data"],)"
            R"("problems":[],"joinable":true})");
}

void JsonTest::answers()
{
    QFETCH(QString, command);
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, input);
    QFETCH(QByteArray, out);
    SpcoreProcess spcore;
    spcore.workingDirectory = m_folder.path();
    SpcoreResult const result = spcore.run(
        command.split(QLatin1Char(' ')) + QStringList(QStringLiteral("--json")) + arguments, input);
    QJsonArray const expected = values(out.replace("%DIR%", m_folder.path().toUtf8()));
    QVERIFY2(values(result.out) == expected, result.out + result.err);
    QTEST(result.exitCode, "exitCode");

    QSet<QString> keys;
    collectKeys(expected, keys);
    for (QJsonValue const& described : m_commands) {
        if (described[QStringLiteral("name")].toString() != command) {
            continue;
        }
        static QRegularExpression const noWord(QStringLiteral("\\W+"));
        QStringList const said = described[QStringLiteral("json")].toString().split(noWord);
        QVERIFY2((keys - QSet<QString>(said.begin(), said.end())).isEmpty(),
                 qPrintable(said.join(QLatin1Char(' '))));
        return;
    }
    QFAIL("the help does not list the command");
}

void JsonTest::everyCommandTellsWhatItPrints()
{
    QVERIFY(m_commands.size() > 20);
    for (QJsonValue const& command : m_commands) {
        QString const name = command[QStringLiteral("name")].toString();
        QVERIFY2(!command[QStringLiteral("json")].toString().isEmpty(), qPrintable(name));
        QByteArray const help =
            runSpcore(QStringList(QStringLiteral("help")) + name.split(QLatin1Char(' '))).out;
        QVERIFY2(help.contains("\nWith --json: ") && help.contains("\nExample: spcore " + name.toUtf8()),
                 help.constData());
    }
}

int main(int argc, char** argv)
{
    return runTest<JsonTest>(argc, argv);
}

#include "JsonTest.moc"
