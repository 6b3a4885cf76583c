#include <telephony/DTMFHelpers.h>

#include <RunTest.h>
#include <limits>

using Signal = DTMFHelpers::DTMFSignal;

class DTMFHelpersTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void translates_data();
    void translates();
    void refusesOtherSignals_data();
    void refusesOtherSignals();
    void refusesOtherCharacters();
    void knowsValidCharacters();
};

void DTMFHelpersTest::translates_data()
{
    QTest::addColumn<Signal>("signal");
    QTest::addColumn<int>("number");
    QTest::addColumn<char>("character");
    QTest::newRow("pause") << Signal::Pause << 0 << ',';
    QTest::newRow("digit 0") << Signal::Digit0 << 1 << '0';
    QTest::newRow("digit 1") << Signal::Digit1 << 2 << '1';
    QTest::newRow("digit 2") << Signal::Digit2 << 3 << '2';
    QTest::newRow("digit 3") << Signal::Digit3 << 4 << '3';
    QTest::newRow("digit 4") << Signal::Digit4 << 5 << '4';
    QTest::newRow("digit 5") << Signal::Digit5 << 6 << '5';
    QTest::newRow("digit 6") << Signal::Digit6 << 7 << '6';
    QTest::newRow("digit 7") << Signal::Digit7 << 8 << '7';
    QTest::newRow("digit 8") << Signal::Digit8 << 9 << '8';
    QTest::newRow("digit 9") << Signal::Digit9 << 10 << '9';
    QTest::newRow("star") << Signal::Star << 11 << '*';
    QTest::newRow("hash") << Signal::Hash << 12 << '#';
}

void DTMFHelpersTest::translates()
{
    QFETCH(Signal, signal);
    QFETCH(int, number);
    QFETCH(char, character);
    QCOMPARE(static_cast<int>(signal), number);
    QVERIFY(DTMFHelpers::translateDTMFSignalToChar(signal) == character);
    QVERIFY(DTMFHelpers::translateCharToDTMFSignal(character) == signal);
    QVERIFY(DTMFHelpers::isValidDTMFCharacter(QLatin1Char(character)));
}

void DTMFHelpersTest::refusesOtherSignals_data()
{
    QTest::addColumn<int>("number");
    QTest::newRow("first behind the last") << 13;
    QTest::newRow("negative") << -1;
    QTest::newRow("highest") << std::numeric_limits<int>::max();
    QTest::newRow("lowest") << std::numeric_limits<int>::min();
}

void DTMFHelpersTest::refusesOtherSignals()
{
    QFETCH(int, number);
    QVERIFY(!DTMFHelpers::translateDTMFSignalToChar(static_cast<Signal>(number)));
}

void DTMFHelpersTest::refusesOtherCharacters()
{
    int known = 0;
    for (int code = std::numeric_limits<char>::min(); code <= std::numeric_limits<char>::max(); ++code) {
        char const character = static_cast<char>(code);
        auto const signal = DTMFHelpers::translateCharToDTMFSignal(character);
        QCOMPARE(signal.has_value(), DTMFHelpers::isValidDTMFCharacter(QLatin1Char(character)));
        if (signal) {
            QVERIFY(DTMFHelpers::translateDTMFSignalToChar(*signal) == character);
            ++known;
        }
    }
    QCOMPARE(known, 13);
}

void DTMFHelpersTest::knowsValidCharacters()
{
    QString const valid = QStringLiteral(",0123456789*#");
    for (int code = 0; code <= 0xffff; ++code) {
        QChar const character(code);
        QCOMPARE(DTMFHelpers::isValidDTMFCharacter(character), valid.contains(character));
    }
}

int main(int argc, char** argv)
{
    return runTest<DTMFHelpersTest>(argc, argv);
}

#include "DTMFHelpersTest.moc"
