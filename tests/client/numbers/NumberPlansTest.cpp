// A table of numbers from the public numbering plans.

#include <client/PhoneNumber.h>

#include <QFile>
#include <QMetaEnum>
#include <RunTest.h>

using namespace Softphone;

namespace {

struct PlannedNumber
{
    QString region;
    QString written;
    QString e164;
    QString dialled;
    QString kind;
};

QList<PlannedNumber> plannedNumbers()
{
    QFile file(QStringLiteral(NUMBER_PLANS));
    QList<PlannedNumber> numbers;
    if (!file.open(QIODevice::ReadOnly)) {
        return numbers;
    }
    while (!file.atEnd()) {
        QString const line = QString::fromUtf8(file.readLine()).trimmed();
        QStringList const cells = line.split(QStringLiteral(" | "));
        if (!line.startsWith(u'#') && cells.size() == 5) {
            numbers.push_back({cells[0], cells[1], cells[2], cells[3], cells[4]});
        }
    }
    return numbers;
}

} // namespace

class NumberPlansTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void knowsNumber_data();
    void knowsNumber();
    void findsNumberInSentence_data();
    void findsNumberInSentence();
};

void NumberPlansTest::initTestCase()
{
    QVERIFY(plannedNumbers().size() >= 300);
}

void NumberPlansTest::knowsNumber_data()
{
    QTest::addColumn<QString>("region");
    QTest::addColumn<QString>("written");
    QTest::addColumn<QString>("e164");
    QTest::addColumn<QString>("dialled");
    QTest::addColumn<QString>("kind");
    for (PlannedNumber const& row : plannedNumbers()) {
        QTest::addRow("%s: %s", qUtf8Printable(row.region), qUtf8Printable(row.written))
            << row.region << row.written << row.e164 << row.dialled << row.kind;
    }
}

void NumberPlansTest::knowsNumber()
{
    QFETCH(QString, region);
    QFETCH(QString, written);
    QFETCH(QString, e164);
    QFETCH(QString, kind);
    std::optional<PhoneNumber> const number = PhoneNumber::parse(written, region);
    QVERIFY(number);
    QCOMPARE(number->e164(), e164);
    QVERIFY(number->isValid());
    if (kind != QLatin1String("-")) {
        char const* const name =
            QMetaEnum::fromType<NumberKind>().valueToKey(static_cast<int>(number->kind()));
        QCOMPARE(QString::fromLatin1(name), kind);
    }
    QTEST(dialString(written, region), "dialled");
    QCOMPARE(PhoneNumber::parse(number->e164(), QString()), number);
    QCOMPARE(PhoneNumber::parse(number->international(), QString()), number);
    QCOMPARE(PhoneNumber::parse(number->uri().toString(), QString()), number);
    QCOMPARE(PhoneNumber::parse(number->national(), number->region()), number);
}

void NumberPlansTest::findsNumberInSentence_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("after");
    auto const row = [](char const* before, char const* after) {
        QTest::addRow("%s#%s", before, after) << QString::fromUtf8(before) << QString::fromUtf8(after);
    };
    row("", "");
    row("Chiama ", " oggi");
    row("Tel.: ", ".");
    row("Tel:", ", grazie");
    row("Il 31/8/2011 alle 08:30 da ", "; poi 3,50 euro");
    row("(", ")");
    row("\"", "\"");
    row("\u201c", "\u201d");
    row("\u202a", "\u202c");
    row("Rechnung 20261122, 1.2.3.4: ", "!");
    row("\u00fc ", " \u00fc");
    row("\n", "\n");
    row("\U0001f4de ", "\U0001f600");
    row("<", ">");
}

void NumberPlansTest::findsNumberInSentence()
{
    QFETCH(QString, before);
    QFETCH(QString, after);
    for (PlannedNumber const& row : plannedNumbers()) {
        QList<FoundNumber> const found = findPhoneNumbers(before + row.written + after, row.region);
        QVERIFY2(found.size() == 1, qUtf8Printable(row.written));
        QCOMPARE(found[0].number.e164(), row.e164);
        QCOMPARE((before + row.written + after).sliced(found[0].position, found[0].length), row.written);
    }
}

int main(int argc, char** argv)
{
    return runTest<NumberPlansTest>(argc, argv);
}

#include "NumberPlansTest.moc"
