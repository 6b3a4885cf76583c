#include <runtime/TimeTracker.h>

#include <RunTest.h>
#include <limits>
#include <thread>

class TimeTrackerTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void startsStopped();
    void startsRunningFromAGivenTime();
    void followsASequence_data();
    void followsASequence();
    void keepsWhatWasFrozenAcrossAStop();
    void countsAcrossTheClocksWrapAround();
    void copiesEveryField();
    void copyIsIndependent();
    void isReadWhileAnotherThreadChangesIt();
};

void TimeTrackerTest::startsStopped()
{
    TimeTracker const tracker;
    QCOMPARE(tracker.getDuration(0), 0);
    QCOMPARE(tracker.getDuration(1000), 0);
    QCOMPARE(tracker.getStartTime(), -1);
}

void TimeTrackerTest::startsRunningFromAGivenTime()
{
    TimeTracker const tracker(10);
    QCOMPARE(tracker.getStartTime(), 10);
    QCOMPARE(tracker.getDuration(10), 0);
    QCOMPARE(tracker.getDuration(17), 7);
}

/// A script is one word an operation: "start 10" is +10, "pause 15" is |15, "resume 20" is >20, "stop" is x.
void TimeTrackerTest::followsASequence_data()
{
    QTest::addColumn<QString>("script");
    QTest::addColumn<int>("now");
    QTest::addColumn<int>("duration");
    QTest::addColumn<int>("startTime");

    auto row = [](char const* tag, char const* script, int now, int duration, int startTime) {
        QTest::newRow(tag) << QString::fromLatin1(script) << now << duration << startTime;
    };
    row("running", "+10", 12, 2, 10);
    row("start on a running tracker changes nothing", "+10 +20", 25, 15, 10);
    row("start, pause, resume", "+10 |15 >20", 22, 7, 15);
    row("paused keeps its duration", "+10 |15", 99, 5, 10);
    row("pause twice keeps the first frozen value", "+10 |15 |40", 50, 5, 10);
    row("resume on a running tracker changes nothing", "+10 >20", 22, 12, 10);
    row("start on a paused tracker counts from zero", "+10 |15 +20", 21, 1, 20);
    row("two pauses add up", "+10 |15 >20 |23 >30", 31, 9, 22);
    row("stopped has no duration", "+10 x", 50, 0, -1);
    row("stopped while paused has no duration", "+10 |15 x", 50, 0, -1);
    row("stop twice", "+10 x x", 50, 0, -1);
    row("start after a stop", "+10 x +30", 31, 1, 30);
    row("pause on a stopped tracker wraps to now + 1", "|15", 99, 16, -1);
    row("resume on a stopped tracker", ">15", 18, 3, 15);
    row("resume at the moment of the pause", "+10 |15 >15", 15, 5, 10);
}

void TimeTrackerTest::followsASequence()
{
    QFETCH(QString, script);
    QFETCH(int, now);

    TimeTracker tracker;
    for (QString const& step : script.split(QLatin1Char(' '))) {
        int const time = QStringView(step).mid(1).toInt();
        switch (step.at(0).unicode()) {
        case '+':
            tracker.start(time);
            break;
        case '|':
            tracker.pause(time);
            break;
        case '>':
            tracker.resume(time);
            break;
        default:
            tracker.stop();
        }
    }
    QTEST(tracker.getDuration(now), "duration");
    QTEST(tracker.getStartTime(), "startTime");
}

void TimeTrackerTest::keepsWhatWasFrozenAcrossAStop()
{
    TimeTracker tracker(10);
    tracker.pause(15);
    tracker.stop();
    tracker.resume(100);
    QCOMPARE(tracker.getDuration(102), 7);
}

void TimeTrackerTest::countsAcrossTheClocksWrapAround()
{
    constexpr int highest = std::numeric_limits<int>::max();
    constexpr int lowest = std::numeric_limits<int>::min();

    TimeTracker tracker(highest);
    QCOMPARE(tracker.getDuration(lowest), 1);
    tracker.pause(lowest + 4);
    QCOMPARE(tracker.getDuration(0), 5);
    tracker.resume(lowest);
    QCOMPARE(tracker.getStartTime(), highest - 4);

    TimeTracker const fromMinusOne(-1);
    QCOMPARE(fromMinusOne.getDuration(1), 2);
    QCOMPARE(TimeTracker(5).getDuration(3), -2);
}

void TimeTrackerTest::copiesEveryField()
{
    TimeTracker paused(10);
    paused.pause(15);
    TimeTracker copy(paused);
    QCOMPARE(copy.getDuration(99), 5);
    QCOMPARE(copy.getStartTime(), 10);
    copy.resume(20);
    QCOMPARE(copy.getDuration(22), 7);

    TimeTracker assigned(1000);
    assigned = paused;
    QCOMPARE(assigned.getDuration(99), 5);
    QCOMPARE(assigned.getStartTime(), 10);
    assigned.resume(20);
    QCOMPARE(assigned.getDuration(22), 7);

    TimeTracker const& itself = assigned;
    assigned = itself;
    QCOMPARE(assigned.getDuration(22), 7);
}

void TimeTrackerTest::copyIsIndependent()
{
    TimeTracker const original(10);
    TimeTracker copy(original);
    copy.stop();
    QCOMPARE(original.getDuration(12), 2);
    QCOMPARE(original.getStartTime(), 10);
}

void TimeTrackerTest::isReadWhileAnotherThreadChangesIt()
{
    constexpr int rounds = 20000;
    TimeTracker tracker(0);
    std::thread writer([&] {
        for (int round = 0; round < rounds; ++round) {
            tracker.pause(100);
            tracker.resume(100);
        }
    });
    bool steady = true;
    for (int round = 0; round < rounds; ++round) {
        steady = steady && tracker.getDuration(100) == 100;
    }
    writer.join();
    QVERIFY(steady);
}

int main(int argc, char** argv)
{
    return runTest<TimeTrackerTest>(argc, argv);
}

#include "TimeTrackerTest.moc"
