#include "RunTest.h"
#include "SleepingMachine.h"

#include <client/CallClock.h>

#include <QElapsedTimer>
#include <QPointer>
#include <QSignalSpy>
#include <algorithm>
#include <functional>

using Softphone::CallClock;
using Softphone::callLengthText;
using namespace std::chrono_literals;
using std::chrono::nanoseconds;

class CallClockTest : public QObject
{
    Q_OBJECT

public Q_SLOTS:
    void deleteSender() { delete sender(); }

private Q_SLOTS:
    void init() { m_now = 5000h; }

    void startsWithTheConversation_data();
    void startsWithTheConversation();
    void stopsWithTheCall_data();
    void stopsWithTheCall();
    void aCallThatIsStillActiveGoesOn();
    void theNextCallStartsFromZero();
    void timeAsText_data();
    void timeAsText();
    void lengthsBeforeTheStartAreNone();
    void holdIsCountedAndToldApart();
    void onlyACallIsHeld();
    void signalsTellOfChangesOnly();
    void ticksWhenTheSecondIsFull();
    void theMachinesClockIsTheDefault();
    void theSleepOfTheMachineCounts();
    void propertiesAreTheSame();
    void mayBeDeletedInAnySlot_data();
    void mayBeDeletedInAnySlot();

private:
    /// A clock that the test moves.
    [[nodiscard]] CallClock::TimeSource time() const
    {
        return [this] { return m_now; };
    }

    nanoseconds m_now{0};
};

void CallClockTest::startsWithTheConversation_data()
{
    QTest::addColumn<LineStatus>("status");
    QTest::addColumn<bool>("runs");
    for (LineStatus::Status const status : LineStatus::getAllStatuses()) {
        QTest::newRow(LineStatus(status).toString().toUtf8())
            << LineStatus(status) << (status == LineStatus::Status::Active);
    }
}

void CallClockTest::startsWithTheConversation()
{
    QFETCH(LineStatus, status);
    QFETCH(bool, runs);
    CallClock clock(time());
    QCOMPARE(clock.status(), LineStatus());
    clock.setStatus(status);
    QCOMPARE(clock.status(), status);
    m_now += 7s;
    QCOMPARE(clock.isRunning(), runs);
    QCOMPARE(clock.elapsed(), runs ? 7s : 0s);
}

void CallClockTest::stopsWithTheCall_data()
{
    QTest::addColumn<LineStatus>("status");
    QTest::addColumn<bool>("stops");
    for (LineStatus::Status const status : LineStatus::getAllStatuses()) {
        LineStatus const line(status);
        QTest::newRow(line.toString().toUtf8())
            << line << (line.isFree() || line.isTerminated() || line.isError());
    }
}

void CallClockTest::stopsWithTheCall()
{
    QFETCH(LineStatus, status);
    QFETCH(bool, stops);
    CallClock clock(time());
    clock.setStatus(LineStatus::createActive());
    m_now += 10s;
    clock.setStatus(status);
    m_now += 5s;
    QCOMPARE(clock.isRunning(), !stops);
    QCOMPARE(clock.elapsed(), stops ? 10s : 15s);
}

void CallClockTest::aCallThatIsStillActiveGoesOn()
{
    CallClock clock(time());
    clock.setStatus(LineStatus::createActive());
    m_now += 10s;
    clock.setStatus(LineStatus::createActiveAsSessionProgress());
    m_now += 2s;
    clock.setStatus(LineStatus::createActive());
    m_now += 3s;
    QCOMPARE(clock.elapsed(), 15s);
}

void CallClockTest::theNextCallStartsFromZero()
{
    CallClock clock(time());
    clock.setStatus(LineStatus::createActive());
    clock.setOnHold(true);
    m_now += 10s;
    clock.setStatus(LineStatus::createTerminated());
    m_now += 10s;
    QSignalSpy seconds(&clock, &CallClock::elapsedChanged);
    clock.setStatus(LineStatus::createActive());
    QCOMPARE(clock.elapsed(), 0s);
    QCOMPARE(clock.held(), 0s);
    QVERIFY(!clock.isOnHold());
    QCOMPARE(seconds.count(), 1);
}

void CallClockTest::timeAsText_data()
{
    QTest::addColumn<qint64>("milliseconds");
    QTest::addColumn<QString>("text");
    QTest::newRow("nothing said") << qint64(0) << QStringLiteral("00:00");
    QTest::newRow("almost a second") << qint64(999) << QStringLiteral("00:00");
    QTest::newRow("seven seconds") << qint64(7'000) << QStringLiteral("00:07");
    QTest::newRow("the last second of an hour") << qint64(3'599'999) << QStringLiteral("59:59");
    QTest::newRow("an hour") << qint64(3'600'000) << QStringLiteral("1:00:00");
    QTest::newRow("an hour and a bit") << qint64(3'723'000) << QStringLiteral("1:02:03");
    QTest::newRow("more than a day") << qint64(26) * 3'600'000 << QStringLiteral("26:00:00");
    QTest::newRow("more seconds than 32 bits count milliseconds")
        << qint64(1'200) * 3'600'000 << QStringLiteral("1200:00:00");
    QTest::newRow("more than 32 bits count seconds")
        << qint64(1'200'000) * 3'600'000 << QStringLiteral("1200000:00:00");
}

void CallClockTest::timeAsText()
{
    QFETCH(qint64, milliseconds);
    CallClock clock(time());
    clock.setStatus(LineStatus::createActive());
    m_now += std::chrono::milliseconds(milliseconds);
    QTEST(clock.text(), "text");
    QTEST(callLengthText(clock.elapsed()), "text");
}

void CallClockTest::lengthsBeforeTheStartAreNone()
{
    QCOMPARE(callLengthText(-1s), QStringLiteral("00:00"));
    QCOMPARE(callLengthText(std::chrono::seconds::min()), QStringLiteral("00:00"));
}

void CallClockTest::holdIsCountedAndToldApart()
{
    CallClock clock(time());
    clock.setStatus(LineStatus::createActive());
    m_now += 10s;
    clock.setOnHold(true);
    clock.setOnHold(true);
    m_now += 3s;
    QCOMPARE(clock.held(), 3s);
    clock.setOnHold(false);
    m_now += 20s;
    clock.setOnHold(true);
    m_now += 2s;
    clock.setStatus(LineStatus::createTerminated());
    m_now += 100s;
    QCOMPARE(clock.elapsed(), 35s);
    QCOMPARE(clock.held(), 5s);
    QVERIFY(!clock.isOnHold());
}

void CallClockTest::onlyACallIsHeld()
{
    CallClock clock(time());
    clock.setStatus(LineStatus::createRinging());
    clock.setOnHold(true);
    QVERIFY(!clock.isOnHold());
    m_now += 5s;
    QCOMPARE(clock.held(), 0s);
}

void CallClockTest::signalsTellOfChangesOnly()
{
    CallClock clock(time());
    QSignalSpy status(&clock, &CallClock::statusChanged);
    QSignalSpy running(&clock, &CallClock::runningChanged);
    QSignalSpy hold(&clock, &CallClock::onHoldChanged);
    QSignalSpy elapsed(&clock, &CallClock::elapsedChanged);
    QSignalSpy text(&clock, &CallClock::textChanged);
    auto const counts = [&] {
        return QList<qsizetype>{status.count(), running.count(), hold.count(), elapsed.count(), text.count()};
    };
    clock.setStatus(LineStatus::createFree());
    QCOMPARE(counts(), QList<qsizetype>({0, 0, 0, 0, 0}));
    clock.setStatus(LineStatus::createActive());
    QCOMPARE(counts(), QList<qsizetype>({1, 1, 0, 0, 0}));
    clock.setStatus(LineStatus::createActive());
    clock.setOnHold(false);
    QCOMPARE(counts(), QList<qsizetype>({1, 1, 0, 0, 0}));
    clock.setOnHold(true);
    QCOMPARE(counts(), QList<qsizetype>({1, 1, 1, 0, 0}));
    m_now += 2s;
    clock.setStatus(LineStatus::createTerminatedAsBusy());
    QCOMPARE(counts(), QList<qsizetype>({2, 2, 2, 1, 1}));
}

/// A machine that is busy shows a second late, or not at all; none comes early or twice.
void CallClockTest::ticksWhenTheSecondIsFull()
{
    CallClock clock;
    QList<qint64> seconds;
    bool early = false;
    QElapsedTimer watch;
    connect(&clock, &CallClock::textChanged, this, [&] {
        seconds << clock.property("elapsed").toLongLong();
        early = early || watch.elapsed() < seconds.constLast() * 1000;
    });
    watch.start();
    clock.setStatus(LineStatus::createActive());
    QTRY_VERIFY_WITH_TIMEOUT(!seconds.isEmpty() && seconds.constLast() >= 2, 60'000);
    QVERIFY(!early);
    QVERIFY(seconds.constFirst() >= 1);
    QVERIFY(std::ranges::adjacent_find(seconds, std::ranges::greater_equal()) == seconds.cend());
}

void CallClockTest::theMachinesClockIsTheDefault()
{
    CallClock clock;
    clock.setStatus(LineStatus::createActive());
    QElapsedTimer watch;
    watch.start();
    QTest::qSleep(1100);
    QVERIFY(clock.elapsed() >= 1s);
    QVERIFY(clock.elapsed() <= std::chrono::milliseconds(watch.elapsed() + 1000));
}

void CallClockTest::theSleepOfTheMachineCounts()
{
    if (!SleepingMachine::isPossible) {
        QSKIP("needs a clock that a test can move");
    }
    CallClock clock;
    clock.setStatus(LineStatus::createActive());
    SleepingMachine::sleepFor(2h);
    QVERIFY(clock.elapsed() >= 2h);
    clock.setStatus(LineStatus::createTerminated());
    SleepingMachine::sleepFor(2h);
    QVERIFY(clock.elapsed() < 4h);
}

void CallClockTest::propertiesAreTheSame()
{
    CallClock clock(time());
    QVERIFY(clock.setProperty("status", LineStatus::createActive().serialize()));
    QVERIFY(clock.setProperty("onHold", true));
    m_now += 61s;
    QCOMPARE(clock.property("elapsed").toLongLong(), 61);
    QCOMPARE(clock.property("held").toLongLong(), 61);
    QCOMPARE(clock.property("text").toString(), QStringLiteral("01:01"));
    QCOMPARE(clock.property("running").toBool(), true);
    QCOMPARE(clock.property("status").toInt(), clock.status().serialize());
}

void CallClockTest::mayBeDeletedInAnySlot_data()
{
    QTest::addColumn<QByteArray>("signal");
    for (char const* const signal :
         {SIGNAL(statusChanged()), SIGNAL(runningChanged()), SIGNAL(onHoldChanged()),
          SIGNAL(elapsedChanged()), SIGNAL(textChanged())}) {
        QTest::newRow(signal + 1) << QByteArray(signal);
    }
}

void CallClockTest::mayBeDeletedInAnySlot()
{
    QFETCH(QByteArray, signal);
    QPointer<CallClock> const clock = new CallClock(time());
    clock->setStatus(LineStatus::createActive());
    clock->setOnHold(true);
    m_now += 2s;
    connect(clock, signal.constData(), this, SLOT(deleteSender()));
    clock->setStatus(LineStatus::createFree());
    QVERIFY(clock.isNull());
}

int main(int argc, char** argv)
{
    return runTest<CallClockTest>(argc, argv);
}

#include "CallClockTest.moc"
