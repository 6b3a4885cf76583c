// Numbers in running text.

#include <client/PhoneNumber.h>

#include <RunTest.h>
#include <TextGenerator.h>

using namespace Softphone;

namespace {

QStringList foundTexts(QString const& text, QString const& region)
{
    QStringList texts;
    for (FoundNumber const& found : findPhoneNumbers(text, region)) {
        texts += text.sliced(found.position, found.length);
    }
    return texts;
}

} // namespace

class FoundNumbersTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void finds_data();
    void finds();
    void findsNothing_data();
    void findsNothing();
    void findsExtension();
    void findsOneEndingOfTwo();
    void differsInAnyField();
    void placesAreInOrder();
    void findsFromEveryPlace();
    void longTexts();
};

void FoundNumbersTest::finds_data()
{
    QTest::addColumn<QString>("region");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("numbers");
    auto const row = [](char const* tag, char const* region, char const* text,
                        std::initializer_list<char const*> numbers) {
        QStringList list;
        for (char const* number : numbers) {
            list += QString::fromUtf8(number);
        }
        QTest::newRow(tag) << QString::fromUtf8(region) << QString::fromUtf8(text) << list;
    };
    row("two", "IT", "casa 06 1234567, ufficio 02 88451234", {"06 1234567", "02 88451234"});
    row("two with a slash", "IT", "06 1234567 / 333 1234567", {"06 1234567", "333 1234567"});
    row("two with a slash and no blanks", "IT", "06 1234567/333 1234567", {"06 1234567", "333 1234567"});
    row("three with slashes", "IT", "06 1234567/333 1234567/+39 02 88451234",
        {"06 1234567", "333 1234567", "+39 02 88451234"});
    row("slash after an extension", "IT", "06 1234567 int. 12/333 1234567",
        {"06 1234567 int. 12", "333 1234567"});
    row("slash after what is no number", "IT", "12/333 1234567", {});
    row("two lines", "IT", "06 1234567\n333 1234567", {"06 1234567", "333 1234567"});
    row("quoted and bracketed", "IT", "(06 1234567) \"333 1234567\"", {"06 1234567", "333 1234567"});
    row("marks around are left outside", "IT", "\u202a+39 333 1234567\u202c", {"+39 333 1234567"});
    row("marks inside", "IT", "+39\u200b333\u20601234567", {"+39\u200b333\u20601234567"});
    row("blanks that do not break", "IT", "a 06\u00a0123\u202f4567 b", {"06\u00a0123\u202f4567"});
    row("minus sign", "IT", "06\u22121234567", {"06\u22121234567"});
    row("Arabic digits", "IT", "\u0660\u0666\u0661\u0662\u0663\u0664\u0665\u0666\u0667 x",
        {"\u0660\u0666\u0661\u0662\u0663\u0664\u0665\u0666\u0667"});
    row("mathematical digits", "IT", "x \U0001d7ce\U0001d7d4 1234567", {"\U0001d7ce\U0001d7d4 1234567"});
    row("extension", "IT", "06 1234567 int. 12 grazie", {"06 1234567 int. 12"});
    row("extension in brackets", "IT", "06 1234567 (int. 12)", {"06 1234567 (int. 12)"});
    row("extension in front of another number", "IT", "06 1234567 int. 12 333 1234567",
        {"06 1234567 int. 12", "333 1234567"});
    row("extension that looks like another number", "IT", "+39 333 1234567 int:06 123456",
        {"+39 333 1234567 int:06"});
    row("slash in front of a word", "IT", "06 1234567/ufficio", {});
    row("end of a sentence", "IT", "06 1234567. 12 persone", {"06 1234567"});
    row("no region", "", "06 1234567 e +39 06 1234567", {"+39 06 1234567"});
    row("label without a blank", "IT", "Tel:061234567", {"061234567"});
    row("brackets inside", "IT", "(06) 1234567", {"(06) 1234567"});
    row("bracket behind that closes another", "IT", "(ufficio (06) 1234567)", {"(06) 1234567"});
    row("glued to a picture", "IT", "\U0001f4de06 1234567\U0001f600", {"06 1234567"});
    row("slash after a number that is too short", "IT", "06 1234567, 12/333 1234567", {"06 1234567"});
    row("Danish number that is no date", "DK", "20 26 11 22", {"20 26 11 22"});
}

void FoundNumbersTest::finds()
{
    QFETCH(QString, region);
    QFETCH(QString, text);
    QTEST(foundTexts(text, region), "numbers");
}

void FoundNumbersTest::findsNothing_data()
{
    QTest::addColumn<QString>("region");
    QTest::addColumn<QString>("text");
    auto const row = [](char const* region, char const* text) {
        QTest::addRow("%s: %s", region, text) << QString::fromUtf8(region) << QString::fromUtf8(text);
    };
    row("IT", "");
    row("IT", "nessun numero");
    row("IT", "20261122");
    row("DK", "20261122");
    row("DK", "20261122083000");
    row("DK", "20261122 0830");
    row("IT", "1.2.3.4");
    row("DK", "31.12.20.20");
    row("DK", "192.168.10.20");
    row("IT", "31/8/2011");
    row("DK", "31/8/2011");
    row("DK", "31-08-2011");
    row("DK", "2011-08-31 08:30");
    row("DK", "28.08.2011 08:30:15");
    row("IT", "alle 08:30-09:30");
    row("IT", "118");
    row("IT", "\u20ac 061234567");
    row("IT", "\u20ac061234567");
    row("IT", "061234567 \u20ac");
    row("IT", "061234567,50");
    row("IT", "061234567%");
    row("IT", "a0612345678");
    row("IT", "0612345678b");
    row("IT", "_0612345678");
    row("IT", "ABC-0612345678");
    row("IT", "0612345678-ABC");
    row("IT", "#0612345678");
    row("IT", "https://example.org/0612345678");
    row("IT", "https://example.org/?id=0612345678");
    row("IT", "0612345678@example.org");
    row("IT", "mario.0612345678@example.org");
    row("IT", "0612345678.html");
    row("IT", "\u00e00612345678");
    row("IT", "\U0001d4d00612345678");
    row("IT", "0612345678\U0001d4d0");
    row("IT", "+1 (0)212 555");
    row("GB", "+999 (0)20 7946 0018");
    row("IT", "061234567 %");
    row("IT", "550e8400-e29b-41d4-a716-446655440000");
    row("IT", "9780306406157");
    row("IT", "IT60 X054 2811 1010 0000 0123 456");
    row("IT", "4111 1111 1111 1111");
}

void FoundNumbersTest::findsNothing()
{
    QFETCH(QString, region);
    QFETCH(QString, text);
    QCOMPARE(foundTexts(text, region), QStringList());
    QCOMPARE(foundTexts(QStringLiteral("Il ") + text + QStringLiteral(" e basta."), region), QStringList());
}

void FoundNumbersTest::findsExtension()
{
    auto const found = findPhoneNumbers(QStringLiteral("06 1234567, interno 12."), QStringLiteral("IT"));
    QCOMPARE(found.size(), 1);
    QCOMPARE(found[0].number.extension(), QStringLiteral("12"));
}

void FoundNumbersTest::findsOneEndingOfTwo()
{
    auto const found = findPhoneNumbers(QStringLiteral("06 1234567/8"), QStringLiteral("IT"));
    QCOMPARE(found.size(), 1);
    QCOMPARE(found[0].number.e164(), QStringLiteral("+39061234567"));
}

void FoundNumbersTest::differsInAnyField()
{
    QString const region = QStringLiteral("IT");
    auto const found = Softphone::findPhoneNumbers(QStringLiteral("06 6982 8121, 333 123 4567"), region);
    QCOMPARE(found.size(), 2);
    QVERIFY(FoundNumber(found[0]) == found[0]);
    for (auto const change : {+[](FoundNumber& of) { ++of.position; }, +[](FoundNumber& of) { ++of.length; },
                              +[](FoundNumber& of) { of.number = {}; }}) {
        FoundNumber other = found[0];
        change(other);
        QVERIFY(!(other == found[0]));
    }
}

void FoundNumbersTest::placesAreInOrder()
{
    TextGenerator generator(3, {QStringLiteral("06 1234567"), QStringLiteral("+39 333 1234567"),
                                QStringLiteral(" "), QStringLiteral("/"), QStringLiteral("int. 12"),
                                QStringLiteral("x"), QStringLiteral("int:"), QStringLiteral("("),
                                QStringLiteral(")"), QStringLiteral("+"), QStringLiteral("12"),
                                QStringLiteral("\n"), QChar(0x202a), QChar(0xdc00), QChar(0xd800),
                                QStringLiteral("\U0001d7ce"), QStringLiteral("Mario"), QStringLiteral(", ")});
    int total = 0;
    for (int i = 0; i < 2000; ++i) {
        QString const text = generator.text(12);
        qsizetype end = 0;
        for (FoundNumber const& found : findPhoneNumbers(text, QStringLiteral("IT"))) {
            QVERIFY(found.position >= end);
            QVERIFY(found.length > 0);
            end = found.position + found.length;
            QVERIFY(end <= text.size());
            QVERIFY(found.number.isValid());
            ++total;
        }
    }
    QVERIFY(total > 500);
}

/// The end of a text that holds a number holds that number, one that begins inside it, or none.
void FoundNumbersTest::findsFromEveryPlace()
{
    QString const text =
        QStringLiteral("Il 31/8/2011 (+39 06 1234567 int. 12) o 333 1234567/8, \u20ac 1.234.567,00");
    for (qsizetype start = 0; start <= text.size(); ++start) {
        for (FoundNumber const& found : findPhoneNumbers(text.sliced(start), QStringLiteral("IT"))) {
            QVERIFY(found.position + found.length <= text.size() - start);
        }
    }
}

void FoundNumbersTest::longTexts()
{
    QString const number = QStringLiteral("06 1234567");
    for (QString const& piece :
         {QStringLiteral("1.1.1."), QStringLiteral("(((("), QStringLiteral("+"), QStringLiteral("1 "),
          QStringLiteral("1"), QStringLiteral("1-"), QStringLiteral("\u200b")}) {
        QString const text = piece.repeated(5'000) + QStringLiteral("x ") + number;
        QCOMPARE(foundTexts(text, QStringLiteral("IT")), QStringList(number));
    }
    QCOMPARE(foundTexts(QStringLiteral(". ").repeated(200) + number, QStringLiteral("IT")),
             QStringList(number));
    QCOMPARE(findPhoneNumbers((number + QStringLiteral(", ")).repeated(200), QStringLiteral("IT")).size(),
             200);
}

int main(int argc, char** argv)
{
    return runTest<FoundNumbersTest>(argc, argv);
}

#include "FoundNumbersTest.moc"
