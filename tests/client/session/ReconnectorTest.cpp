#include "RunTest.h"
#include "SleepingMachine.h"

#include <client/Reconnector.h>

#include <QElapsedTimer>
#include <QNetworkInformation>
#include <QPointer>
#include <QSet>
#include <QSignalSpy>
#include <algorithm>

using Softphone::Reconnector;
using namespace std::chrono_literals;
using State = Softphone::Reconnector::State;

namespace {

/// Waits of the sequence 1, 2, 3, 5 ... seconds, without chance, after the first, which is 0.
std::unique_ptr<LimitedFibonacciGenerator> plainWaits()
{
    return std::make_unique<LimitedFibonacciGenerator>(55, std::pair(1U, 1U), nullptr);
}

/// Waits that no test sits through.
std::unique_ptr<LimitedFibonacciGenerator> longWaits()
{
    auto waits = std::make_unique<LimitedFibonacciGenerator>(600, std::pair(300U, 300U), nullptr);
    waits->reset();
    return waits;
}

/// Counts how often the waits start over.
class CountedWaits : public LimitedFibonacciGenerator
{
public:
    explicit CountedWaits(int& resets)
        : LimitedFibonacciGenerator(55, {1, 1}, nullptr)
        , m_resets(resets)
    {
    }
    void reset() override { ++m_resets; }

private:
    int& m_resets;
};

} // namespace

Q_DECLARE_METATYPE(std::chrono::milliseconds)

class ReconnectorTest : public QObject
{
    Q_OBJECT

public Q_SLOTS:
    void deleteSender() { delete sender(); }

private Q_SLOTS:
    void theFirstAttemptIsAtOnce();
    void laterAttemptsAreWaitedFor();
    void countsDown();
    void triesAtOnceWhenAsked();
    void aWaitThatIsUnderWayGoesOn();
    void onlyAConnectionThatHeldStartsTheWaitsOver_data();
    void onlyAConnectionThatHeldStartsTheWaitsOver();
    void triesWhenTheMachineWakes_data();
    void triesWhenTheMachineWakes();
    void triesWhenTheNetworkIsBack_data();
    void triesWhenTheNetworkIsBack();
    void stopEndsTheWaitAndBeginsAnew();
    void neverGivesUp();
    void waitsDifferByChance();
    void anAnswerInTheSlotCounts();
    void tellsOnlyOfChanges();
    void asksForNoAttemptThatASlotHasCalledOff();
    void mayBeDeletedInAnySlot_data();
    void mayBeDeletedInAnySlot();
};

void ReconnectorTest::theFirstAttemptIsAtOnce()
{
    Reconnector reconnector(plainWaits());
    QSignalSpy attempts(&reconnector, &Reconnector::attempt);
    QCOMPARE(reconnector.state(), State::Idle);
    reconnector.reportConnected();
    QCOMPARE(reconnector.state(), State::Connected);
    reconnector.reportLost();
    QCOMPARE(reconnector.state(), State::Waiting);
    QCOMPARE(attempts.count(), 0);
    QVERIFY(attempts.wait());
    QCOMPARE(reconnector.state(), State::Trying);
}

void ReconnectorTest::laterAttemptsAreWaitedFor()
{
    Reconnector reconnector(plainWaits());
    QSignalSpy attempts(&reconnector, &Reconnector::attempt);
    reconnector.reportLost();
    QVERIFY(attempts.wait());
    QElapsedTimer waited;
    waited.start();
    reconnector.reportLost();
    QCOMPARE(reconnector.remaining(), 1);
    QVERIFY(attempts.wait());
    QVERIFY(waited.elapsed() > 900);
}

void ReconnectorTest::countsDown()
{
    auto waits = plainWaits();
    waits->reset();
    QCOMPARE(waits->getNext(), 1U);
    Reconnector reconnector(std::move(waits));
    QList<int> shown;
    connect(&reconnector, &Reconnector::remainingChanged, this, [&] { shown << reconnector.remaining(); });
    reconnector.reportLost();
    QTRY_COMPARE_WITH_TIMEOUT(reconnector.state(), State::Trying, 60'000);
    QCOMPARE(shown, QList<int>({2, 1, 0}));
}

void ReconnectorTest::triesAtOnceWhenAsked()
{
    auto waits = plainWaits();
    waits->reset();
    Reconnector reconnector(std::move(waits));
    QSignalSpy attempts(&reconnector, &Reconnector::attempt);
    reconnector.tryNow();
    QCOMPARE(attempts.count(), 0);
    reconnector.reportLost();
    reconnector.tryNow();
    QCOMPARE(attempts.count(), 1);
    QCOMPARE(reconnector.remaining(), 0);
    reconnector.tryNow();
    QCOMPARE(attempts.count(), 1);
    QVERIFY(!attempts.wait(1500));
}

void ReconnectorTest::aWaitThatIsUnderWayGoesOn()
{
    int resets = 0;
    Reconnector reconnector(std::make_unique<CountedWaits>(resets));
    QSignalSpy attempts(&reconnector, &Reconnector::attempt);
    reconnector.reportLost();
    reconnector.reportLost();
    QVERIFY(attempts.wait());
    reconnector.reportLost();
    // The second number of the sequence, not the third.
    QCOMPARE(reconnector.remaining(), 1);
}

void ReconnectorTest::onlyAConnectionThatHeldStartsTheWaitsOver_data()
{
    QTest::addColumn<std::chrono::milliseconds>("length");
    QTest::addColumn<int>("resets");
    QTest::newRow("lost at once") << std::chrono::milliseconds(0) << 0;
    QTest::newRow("lost a little too early") << std::chrono::milliseconds(25s) << 0;
    QTest::newRow("held") << std::chrono::milliseconds(30s) << 1;
}

void ReconnectorTest::onlyAConnectionThatHeldStartsTheWaitsOver()
{
    QFETCH(std::chrono::milliseconds, length);
    QFETCH(int, resets);
    if (!SleepingMachine::isPossible && length > 0ms) {
        QSKIP("needs a clock that a test can move");
    }
    int counted = 0;
    Reconnector reconnector(std::make_unique<CountedWaits>(counted));
    reconnector.reportConnected();
    SleepingMachine::sleepFor(length);
    reconnector.reportLost();
    QCOMPARE(counted, resets);
    reconnector.reportConnected();
    QCOMPARE(reconnector.state(), State::Connected);
    QCOMPARE(reconnector.remaining(), 0);
}

void ReconnectorTest::triesWhenTheMachineWakes_data()
{
    QTest::addColumn<std::chrono::milliseconds>("before");
    QTest::addColumn<std::chrono::milliseconds>("meanwhile");
    QTest::addColumn<bool>("tries");
    QTest::newRow("no sleep") << 0ms << 0ms << false;
    QTest::newRow("a doze") << 0ms << 500ms << false;
    QTest::newRow("a sleep shorter than the wait") << 0ms << std::chrono::milliseconds(10s) << true;
    QTest::newRow("a sleep longer than the wait") << 0ms << std::chrono::milliseconds(10h) << true;
    QTest::newRow("a sleep before") << std::chrono::milliseconds(10h) << 0ms << false;
}

/// Noticed by the countdown, within a second.
void ReconnectorTest::triesWhenTheMachineWakes()
{
    QFETCH(std::chrono::milliseconds, before);
    QFETCH(std::chrono::milliseconds, meanwhile);
    QFETCH(bool, tries);
    if (!SleepingMachine::isPossible) {
        QSKIP("needs a clock that a test can move");
    }
    Reconnector reconnector(longWaits());
    QSignalSpy attempts(&reconnector, &Reconnector::attempt);
    SleepingMachine::sleepFor(before);
    reconnector.reportLost();
    QVERIFY(reconnector.remaining() >= 300);
    SleepingMachine::sleepFor(meanwhile);
    QSignalSpy seconds(&reconnector, &Reconnector::remainingChanged);
    QVERIFY(seconds.wait(60'000));
    QCOMPARE(reconnector.state(), tries ? State::Trying : State::Waiting);
    QCOMPARE(attempts.count(), tries ? 1 : 0);
    QCOMPARE(reconnector.remaining() > 0, !tries);
}

void ReconnectorTest::triesWhenTheNetworkIsBack_data()
{
    using Reachability = QNetworkInformation::Reachability;
    QTest::addColumn<Reachability>("reachability");
    QTest::addColumn<bool>("tries");
    QTest::newRow("unknown") << Reachability::Unknown << false;
    QTest::newRow("gone") << Reachability::Disconnected << false;
    QTest::newRow("this machine") << Reachability::Local << false;
    QTest::newRow("this site") << Reachability::Site << false;
    QTest::newRow("the world") << Reachability::Online << true;
}

void ReconnectorTest::triesWhenTheNetworkIsBack()
{
    QFETCH(QNetworkInformation::Reachability, reachability);
    QFETCH(bool, tries);
    Reconnector reconnector(longWaits());
    auto* const information = QNetworkInformation::instance();
    if (information == nullptr) {
        QSKIP("nothing here tells of the network");
    }
    QSignalSpy attempts(&reconnector, &Reconnector::attempt);
    Q_EMIT information->reachabilityChanged(reachability);
    QCOMPARE(reconnector.state(), State::Idle);
    reconnector.reportLost();
    Q_EMIT information->reachabilityChanged(reachability);
    QCOMPARE(attempts.count(), tries ? 1 : 0);
    QCOMPARE(reconnector.state(), tries ? State::Trying : State::Waiting);
    reconnector.reportConnected();
    Q_EMIT information->reachabilityChanged(reachability);
    QCOMPARE(reconnector.state(), State::Connected);
    QCOMPARE(attempts.count(), tries ? 1 : 0);
}

void ReconnectorTest::stopEndsTheWaitAndBeginsAnew()
{
    int resets = 0;
    Reconnector reconnector(std::make_unique<CountedWaits>(resets));
    QSignalSpy attempts(&reconnector, &Reconnector::attempt);
    reconnector.reportLost();
    reconnector.stop();
    QCOMPARE(reconnector.state(), State::Idle);
    QCOMPARE(resets, 1);
    QVERIFY(!attempts.wait(200));
}

void ReconnectorTest::neverGivesUp()
{
    Reconnector reconnector(plainWaits());
    QSignalSpy attempts(&reconnector, &Reconnector::attempt);
    int longest = 0;
    for (int i = 1; i <= 20; ++i) {
        reconnector.reportLost();
        longest = std::max(longest, reconnector.remaining());
        reconnector.tryNow();
        QCOMPARE(attempts.count(), i);
    }
    QCOMPARE(longest, 55);
}

void ReconnectorTest::waitsDifferByChance()
{
    // Each first wait is one of 0 to 3 s; that forty are the same happens once in 10^23 runs.
    QSet<int> waits;
    for (int i = 0; i < 40; ++i) {
        Reconnector reconnector;
        reconnector.reportLost();
        waits << reconnector.remaining();
    }
    QVERIFY(waits.size() > 1);
    QVERIFY(*std::max_element(waits.begin(), waits.end()) <= 3);
}

void ReconnectorTest::anAnswerInTheSlotCounts()
{
    Reconnector reconnector(plainWaits());
    connect(&reconnector, &Reconnector::attempt, &reconnector, &Reconnector::reportConnected);
    reconnector.reportLost();
    QTRY_COMPARE(reconnector.state(), State::Connected);
    QCOMPARE(reconnector.remaining(), 0);
}

void ReconnectorTest::tellsOnlyOfChanges()
{
    Reconnector reconnector(longWaits());
    QSignalSpy const changes(&reconnector, &Reconnector::stateChanged);
    reconnector.stop();
    QCOMPARE(changes.count(), 0);
    reconnector.reportConnected();
    reconnector.reportConnected();
    QCOMPARE(changes.count(), 1);
}

void ReconnectorTest::asksForNoAttemptThatASlotHasCalledOff()
{
    Reconnector reconnector(longWaits());
    QSignalSpy const attempts(&reconnector, &Reconnector::attempt);
    connect(&reconnector, &Reconnector::stateChanged, &reconnector, [&reconnector] {
        if (reconnector.state() == State::Trying) {
            reconnector.stop();
        }
    });
    reconnector.reportLost();
    reconnector.tryNow();
    QCOMPARE(reconnector.state(), State::Idle);
    QCOMPARE(attempts.count(), 0);
}

void ReconnectorTest::mayBeDeletedInAnySlot_data()
{
    QTest::addColumn<QByteArray>("signal");
    for (char const* const signal : {SIGNAL(attempt()), SIGNAL(stateChanged()), SIGNAL(remainingChanged())}) {
        QTest::newRow(signal + 1) << QByteArray(signal);
    }
}

void ReconnectorTest::mayBeDeletedInAnySlot()
{
    QFETCH(QByteArray, signal);
    auto waits = plainWaits();
    waits->reset();
    QPointer<Reconnector> const reconnector = new Reconnector(std::move(waits));
    reconnector->reportLost();
    connect(reconnector, signal.constData(), this, SLOT(deleteSender()));
    reconnector->tryNow();
    QVERIFY(reconnector.isNull());
}

int main(int argc, char** argv)
{
    return runTest<ReconnectorTest>(argc, argv);
}

#include "ReconnectorTest.moc"
