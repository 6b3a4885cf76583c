#include "SpcoreProcess.h"

#include <RunTest.h>

class NumberCommandsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void answers_data();
    void answers();
    void fails_data();
    void fails();
    void refusesWrongCommandLine_data();
    void refusesWrongCommandLine();
};

void NumberCommandsTest::answers_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("out");
    auto const row = [](char const* tag, std::initializer_list<char const*> words, char const* out) {
        QStringList arguments(QStringLiteral("number"));
        for (char const* word : words) {
            arguments += QString::fromUtf8(word);
        }
        QTest::newRow(tag) << arguments << QByteArray(out) + '\n';
    };
    row("clean", {"clean", "+39 (06) 1234"}, "+39061234");
    row("clean with zeros", {"clean", "--plus-as-zeros", "+39 (06) 1234"}, "0039061234");
    row("clean behind a double dash", {"clean", "--", "-06-1"}, "061");
    row("clean digits beyond ASCII", {"clean", "\u0661-2"}, "\u06612");
    row("validate", {"validate", "tel:+39 333-1234567,,99#"}, "+393331234567");
    row("validate with zeros", {"validate", "--plus-as-zeros", "tel:+39 333-1234567,,99#"}, "00393331234567");
    row("validate with symbols", {"validate", "*21*06#"}, "*21*06#");
    row("validate without symbols", {"validate", "--strip-symbols", "*21*06#"}, "*2106");
    row("validate with own start", {"validate", "--start", "0", "+39061"}, "061");
    row("validate with placeholders", {"validate", "%1%2"}, "12");
    row("compare the same", {"compare", "+39 333 1234567", "0039-333-1234567"}, "the numbers are the same");
    row("parse", {"parse", "06 1234567 int. 12"},
        "e164          +39061234567\n"
        "international +39 06 123 4567 ext. 12\n"
        "national      06 123 4567 ext. 12\n"
        "extension     12\n"
        "uri           tel:+39-06-123-4567;ext=12\n"
        "region        IT\n"
        "kind          FixedLine\n"
        "valid         yes");
    row("parse in a region", {"parse", "--region", "GB", "--json", "020 7946 0018"},
        R"({"e164":"+442079460018","extension":"","international":"+44 20 7946 0018","kind":"FixedLine",)"
        R"("national":"020 7946 0018","region":"GB","uri":"tel:+44-20-7946-0018","valid":true})");
    row("dial", {"dial", "+44 (0)20 7946 0018"}, "+442079460018");
    row("dial with zeros", {"dial", "--plus-as-zeros", "+44 (0)20 7946 0018"}, "00442079460018");
    row("dial in a region", {"dial", "--region", "US", "011 44 20 7946 0018"}, "+442079460018");
    row("dial an emergency number", {"dial", "118"}, "118");
    row("dial as JSON", {"dial", "--json", "(06) 1234567"}, R"({"dial":"061234567","typed":"(06) 1234567"})");
    row("split", {"split", "0612345678,,123#"}, "number 0612345678\ntones  ,,123#");
    row("split without tones", {"split", "0612345678"}, "number 0612345678\ntones  ");
}

void NumberCommandsTest::answers()
{
    QFETCH(QStringList, arguments);
    SpcoreResult const result = runSpcore(arguments);
    QCOMPARE(result.err, QByteArray());
    QTEST(result.out, "out");
    QCOMPARE(result.exitCode, 0);
}

void NumberCommandsTest::fails_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("message");
    QTest::newRow("nothing to clean")
        << QStringList{QStringLiteral("clean"), QStringLiteral("abc")} << QByteArray("no number in \"abc\"");
    QTest::newRow("nothing to dial") << QStringList{QStringLiteral("validate"), QStringLiteral("a%xb")}
                                     << QByteArray("no number in \"a%xb\"");
    QTest::newRow("nothing to split")
        << QStringList{QStringLiteral("split"), QStringLiteral(",,")} << QByteArray("no number in \",,\"");
    QTest::newRow("nothing to parse") << QStringList{QStringLiteral("parse"), QStringLiteral("Mario")}
                                      << QByteArray("no number in \"Mario\"");
    QTest::newRow("nothing to dial the new way")
        << QStringList{QStringLiteral("dial"), QStringLiteral("--json"), QStringLiteral("Mario")}
        << QByteArray("no number in \"Mario\"");
    QTest::newRow("different numbers")
        << QStringList{QStringLiteral("compare"), QStringLiteral("1"), QStringLiteral("2")}
        << QByteArray("the numbers differ");
}

void NumberCommandsTest::fails()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, message);
    SpcoreResult const result = runSpcore(QStringList(QStringLiteral("number")) + arguments);
    QVERIFY(result.failedWithOneLine(1));
    QCOMPARE(result.err, "spcore: " + message + '\n');
}

void NumberCommandsTest::refusesWrongCommandLine_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("unknown command") << QStringList{QStringLiteral("ring"), QStringLiteral("1")};
    QTest::newRow("no number") << QStringList{QStringLiteral("clean")};
    QTest::newRow("no number to dial") << QStringList{QStringLiteral("dial")};
    QTest::newRow("one number to compare") << QStringList{QStringLiteral("compare"), QStringLiteral("1")};
    QTest::newRow("two numbers to split")
        << QStringList{QStringLiteral("split"), QStringLiteral("1"), QStringLiteral("2")};
    QTest::newRow("unknown option") << QStringList{QStringLiteral("clean"), QStringLiteral("--dial"),
                                                   QStringLiteral("1")};
}

void NumberCommandsTest::refusesWrongCommandLine()
{
    QFETCH(QStringList, arguments);
    QVERIFY(runSpcore(QStringList(QStringLiteral("number")) + arguments).failedWithOneLine(2));
}

int main(int argc, char** argv)
{
    return runTest<NumberCommandsTest>(argc, argv);
}

#include "NumberCommandsTest.moc"
