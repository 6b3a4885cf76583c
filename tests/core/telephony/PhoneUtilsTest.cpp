#include <telephony/PhoneUtils.h>

#include <RunTest.h>

class PhoneUtilsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void describesLandline_data();
    void describesLandline();
    void describesSipAccount_data();
    void describesSipAccount();
};

void PhoneUtilsTest::describesLandline_data()
{
    QTest::addColumn<QString>("first");
    QTest::addColumn<QString>("second");
    QTest::addColumn<QString>("description");
    auto const row = [](char const* tag, char const* first, char const* second, char const* description) {
        QTest::newRow(tag) << QString::fromUtf8(first) << QString::fromUtf8(second)
                           << QString::fromUtf8(description);
    };
    row("both", "Office", "0612345678", "Office 0612345678");
    row("no second", "Office", "", "Office");
    row("no first", "", "0612345678", "0612345678");
    row("neither", "", "", "");
    row("outer white space", " \tOffice", "2\n ", "Office 2");
    row("inner white space stays", "Office ", " 2", "Office   2");
    row("placeholders", "%2", "%1", "%2 %1");
}

void PhoneUtilsTest::describesLandline()
{
    QFETCH(QString, first);
    QFETCH(QString, second);
    QTEST(PhoneUtils::getLandlineSelectedDescription(first, second), "description");
}

void PhoneUtilsTest::describesSipAccount_data()
{
    QTest::addColumn<QString>("first");
    QTest::addColumn<QString>("middle");
    QTest::addColumn<QString>("last");
    QTest::addColumn<QString>("description");
    auto const row = [](char const* tag, char const* first, char const* middle, char const* last,
                        char const* description) {
        QTest::newRow(tag) << QString::fromUtf8(first) << QString::fromUtf8(middle) << QString::fromUtf8(last)
                           << QString::fromUtf8(description);
    };
    row("all", "Reception", "201", "Main", "Reception (201) Main");
    row("no middle", "Reception", "", "Main", "Reception Main");
    row("middle alone", "", "201", "", "(201)");
    row("no last", "Reception", "201", "", "Reception (201)");
    row("no first", "", "201", "Main", "(201) Main");
    row("first alone", "Reception", "", "", "Reception");
    row("none", "", "", "", "");
    row("blank middle is a middle", "a", " ", "b", "a ( ) b");
    row("inner white space stays", " Reception ", "201", "Main ", "Reception  (201) Main");
    row("placeholders", "%3", "%1", "%2", "%3 (%1) %2");
}

void PhoneUtilsTest::describesSipAccount()
{
    QFETCH(QString, first);
    QFETCH(QString, middle);
    QFETCH(QString, last);
    QTEST(PhoneUtils::getSipAccountDescription(first, middle, last), "description");
}

int main(int argc, char** argv)
{
    return runTest<PhoneUtilsTest>(argc, argv);
}

#include "PhoneUtilsTest.moc"
