#include <runtime/ReconnectionManager.h>

#include <QMetaMethod>
#include <QMetaType>
#include <QSignalSpy>
#include <QThread>
#include <RunTest.h>
#include <atomic>
#include <chrono>
#include <limits>
#include <memory>
#include <stdexcept>
#include <thread>
#include <vector>

using namespace std::chrono_literals;

using Seconds = QList<unsigned int>;

namespace {

constexpr unsigned int aMinute = 60;

/// Hands out the numbers of a list, whatever the generator says, and then its last one for ever.
class Scripted : public SequenceGenerator::SequenceModifier
{
public:
    explicit Scripted(Seconds seconds)
        : m_seconds(std::move(seconds))
    {
    }
    unsigned int modify(unsigned int) override
    {
        return m_seconds.size() > 1 ? m_seconds.takeFirst() : m_seconds.constFirst();
    }

private:
    Seconds m_seconds;
};

/// The caller's own sequence, which fails.
class ThrowingGenerator : public LimitedFibonacciGenerator
{
public:
    ThrowingGenerator()
        : LimitedFibonacciGenerator(nullptr)
    {
    }
    unsigned int getNext() override { throw std::runtime_error("the caller's own failure"); }
};

std::unique_ptr<LimitedFibonacciGenerator> scripted(Seconds const& seconds, unsigned int limit = 55)
{
    return std::make_unique<LimitedFibonacciGenerator>(limit, std::pair(1U, 1U),
                                                       std::make_unique<Scripted>(seconds));
}

/// Counts timeouts and does nothing else.
class DeafManager : public ReconnectionManager
{
public:
    using ReconnectionManager::ReconnectionManager;
    void onTimeoutReached() override { ++timeouts; }

    int timeouts = 0;
};

/// A manager that counts what it emits and lets its timer be read. The timer shows itself as the sender of
/// the first timeout, so a test begins with a wait of 0 s.
class WatchedManager : public ReconnectionManager
{
public:
    WatchedManager()
        : ReconnectionManager()
    {
        count();
    }

    explicit WatchedManager(std::unique_ptr<LimitedFibonacciGenerator> generator)
        : ReconnectionManager(std::move(generator))
    {
        count();
    }

    void onTimeoutReached() override
    {
        if (auto* const timer = qobject_cast<QTimer*>(sender())) {
            m_timer = timer;
        }
        ++timeouts;
        ReconnectionManager::onTimeoutReached();
    }

    /// Begins a wait of 0 s and sees it through.
    bool waitAtOnce()
    {
        int const before = timeouts;
        onStartTimer();
        return QTest::qWaitFor([&] { return timeouts > before; }, 5000);
    }

    /// The wait that is under way in milliseconds, or -1.
    [[nodiscard]] int interval() const { return isActive() && m_timer != nullptr ? m_timer->interval() : -1; }

    int retries = 0;
    int ends = 0;
    int timeouts = 0;

private:
    void count()
    {
        connect(this, &ReconnectionManager::tryConnectionAgain, this, [this] { ++retries; });
        connect(this, &ReconnectionManager::connectionAttemptsExhausted, this, [this] { ++ends; });
    }

    QTimer* m_timer = nullptr;
};

} // namespace

class ReconnectionManagerTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void listsItsMethodsInOrder();
    void isMadeThroughTheMetaTypeSystem();
    void freshManagerIsIdleAndEnabled();
    void firstWaitIsImmediate();
    void waitsTheDefaultSequence();
    void waitsTheDefaultSequenceAfterAReset_data();
    void waitsTheDefaultSequenceAfterAReset();
    void waitsReallyElapse();
    void waitsInMilliseconds_data();
    void waitsInMilliseconds();
    void tellsEachWaitAndWhatIsLeftOfIt();
    void tellsTheWaitThatTheTimerTakes_data();
    void tellsTheWaitThatTheTimerTakes();
    void tellsNothingWithoutAWait();
    void waitMayBeEndedWhenItIsTold();
    void timerFiresOnceByItself();
    void timeoutIsHandledWhereTheTimerIs();
    void waitBegunTwiceEndsOnce();
    void neverGivesUpWithoutALimit();
    void resetEndsTheWait();
    void resetOnAnIdleManagerResetsTheGenerator();
    void disablingEndsTheWaitAndResets();
    void enablingStartsNothing();
    void timeoutWhileDisabledEmitsNothing();
    void initializingAgainDoublesTheTimeouts();
    void slotsAreVirtual();
    void disablingFromAnotherThread();
    void disablingAndEnablingFromAnotherThread();
    void timeoutComesBeforeWhatAnotherThreadAskedFor();
    void switchingFromManyThreads();
    void replacesAMissingGenerator();
    void survivesAThrowingGenerator();
    void survivesAThrowingReceiver();
};

void ReconnectionManagerTest::listsItsMethodsInOrder()
{
    QMetaObject const& meta = ReconnectionManager::staticMetaObject;
    QList<QByteArray> names;
    QList<QMetaMethod::MethodType> types;
    for (int index = meta.methodOffset(); index < meta.methodCount(); ++index) {
        QMetaMethod const method = meta.method(index);
        names << method.methodSignature();
        types << method.methodType();
        QCOMPARE(method.isConst(), method.methodType() == QMetaMethod::Signal);
    }
    QCOMPARE(names, (QList<QByteArray>{"tryConnectionAgain()", "connectionAttemptsExhausted()",
                                       "onResetTimer()", "onStartTimer()", "onTimeoutReached()"}));
    QCOMPARE(types,
             (QList<QMetaMethod::MethodType>{QMetaMethod::Signal, QMetaMethod::Signal, QMetaMethod::Slot,
                                             QMetaMethod::Slot, QMetaMethod::Slot}));
}

void ReconnectionManagerTest::isMadeThroughTheMetaTypeSystem()
{
    QMetaType const type = QMetaType::fromType<ReconnectionManager>();
    QVERIFY(type.isValid());
    QCOMPARE(type.name(), "ReconnectionManager");
    auto* const manager = static_cast<ReconnectionManager*>(type.create());
    QVERIFY(manager != nullptr);
    QCOMPARE(manager->metaObject(), &ReconnectionManager::staticMetaObject);
    QSignalSpy const retries(manager, &ReconnectionManager::tryConnectionAgain);
    manager->onStartTimer();
    QTRY_COMPARE(retries.size(), 1);
    type.destroy(manager);
    QCOMPARE(qRegisterMetaType<ReconnectionManager>(), type.id());
    QCOMPARE(QMetaType::fromName("ReconnectionManager"), type);
    QCOMPARE(ReconnectionManager::staticMetaObject.metaType(), type);
}

void ReconnectionManagerTest::freshManagerIsIdleAndEnabled()
{
    WatchedManager manager;
    QVERIFY(!manager.isActive());
    QVERIFY(manager.parent() == nullptr);
    manager.onStartTimer();
    QVERIFY(manager.isActive());
}

void ReconnectionManagerTest::firstWaitIsImmediate()
{
    WatchedManager manager;
    QVERIFY(manager.waitAtOnce());
    QCOMPARE(manager.retries, 1);
    QVERIFY(!manager.isActive());
}

void ReconnectionManagerTest::waitsTheDefaultSequence()
{
    WatchedManager manager;
    QVERIFY(manager.waitAtOnce());
    int retries = 1;
    for (int seconds : {1, 1, 2, 3, 5, 8, 13, 21}) {
        manager.onStartTimer();
        QCOMPARE(manager.interval(), seconds * 1000);
        QMetaObject::invokeMethod(&manager, "onTimeoutReached");
        QVERIFY(!manager.isActive());
        QCOMPARE(manager.retries, ++retries);
        QCOMPARE(manager.ends, 0);
    }
    int ends = 0;
    for (int seconds : {34, 55, 55, 55}) {
        manager.onStartTimer();
        QCOMPARE(manager.interval(), seconds * 1000);
        QMetaObject::invokeMethod(&manager, "onTimeoutReached");
        QCOMPARE(manager.retries, retries);
        QCOMPARE(manager.ends, ++ends);
    }
}

void ReconnectionManagerTest::waitsTheDefaultSequenceAfterAReset_data()
{
    QTest::addColumn<bool>("byDisabling");
    QTest::newRow("reset") << false;
    QTest::newRow("disabled and enabled") << true;
}

void ReconnectionManagerTest::waitsTheDefaultSequenceAfterAReset()
{
    QFETCH(bool, byDisabling);
    WatchedManager manager;
    QVERIFY(manager.waitAtOnce());
    if (byDisabling) {
        manager.enable(false);
        manager.enable(true);
    } else {
        manager.onResetTimer();
    }
    for (int seconds : {1, 2, 3, 5, 8, 13, 21}) {
        manager.onStartTimer();
        QCOMPARE(manager.interval(), seconds * 1000);
        QMetaObject::invokeMethod(&manager, "onTimeoutReached");
        QCOMPARE(manager.ends, 0);
    }
    manager.onStartTimer();
    QCOMPARE(manager.interval(), 34000);
    QMetaObject::invokeMethod(&manager, "onTimeoutReached");
    QCOMPARE(manager.retries, 8);
    QCOMPARE(manager.ends, 1);
}

void ReconnectionManagerTest::waitsReallyElapse()
{
    WatchedManager manager(scripted({1, 0}, 1));
    manager.onStartTimer();
    QVERIFY(manager.isActive());
    QCoreApplication::processEvents();
    QCOMPARE(manager.timeouts, 0);
    QTRY_COMPARE(manager.ends, 1);
    QVERIFY(!manager.isActive());
    QVERIFY(manager.waitAtOnce());
    QCOMPARE(manager.ends, 2);
}

void ReconnectionManagerTest::waitsInMilliseconds_data()
{
    constexpr int longest = std::numeric_limits<int>::max();
    QTest::addColumn<unsigned int>("seconds");
    QTest::addColumn<int>("milliseconds");
    QTest::newRow("at once") << 0U << 0;
    QTest::newRow("a second") << 1U << 1000;
    QTest::newRow("the last that fits a timer") << 2147483U << 2147483000;
    QTest::newRow("the first that does not") << 2147484U << longest;
    QTest::newRow("the last before the product wraps") << 4294967U << longest;
    QTest::newRow("the first whose product wraps") << 4294968U << 704;
    QTest::newRow("a product that wraps to too much") << 4294967295U << longest;
}

void ReconnectionManagerTest::waitsInMilliseconds()
{
    QFETCH(unsigned int, seconds);
    WatchedManager manager(scripted({0, seconds}));
    QVERIFY(manager.waitAtOnce());
    manager.onStartTimer();
    QTEST(manager.interval(), "milliseconds");
}

void ReconnectionManagerTest::tellsEachWaitAndWhatIsLeftOfIt()
{
    WatchedManager manager(scripted({0, aMinute, 600}));
    QList<std::chrono::milliseconds> told;
    connect(&manager, &ReconnectionManager::waitStarted, this,
            [&](std::chrono::milliseconds length) { told << length; });
    QVERIFY(manager.waitAtOnce());
    QCOMPARE(manager.remainingTime(), 0ms);
    manager.onStartTimer();
    QVERIFY(manager.remainingTime() > 50s);
    QVERIFY(manager.remainingTime() < 70s);
    manager.onStartTimer();
    QVERIFY(manager.remainingTime() > 500s);
    QVERIFY(manager.remainingTime() < 700s);
    manager.onResetTimer();
    QCOMPARE(manager.remainingTime(), 0ms);
    QCOMPARE(told, (QList<std::chrono::milliseconds>{0s, 60s, 600s}));
}

void ReconnectionManagerTest::tellsTheWaitThatTheTimerTakes_data()
{
    waitsInMilliseconds_data();
}

void ReconnectionManagerTest::tellsTheWaitThatTheTimerTakes()
{
    QFETCH(unsigned int, seconds);
    WatchedManager manager(scripted({seconds}));
    QSignalSpy const told(&manager, &ReconnectionManager::waitStarted);
    manager.onStartTimer();
    QCOMPARE(told.size(), 1);
    QTEST(static_cast<int>(told.first().first().value<std::chrono::milliseconds>().count()), "milliseconds");
}

void ReconnectionManagerTest::tellsNothingWithoutAWait()
{
    WatchedManager disabled(scripted({aMinute}));
    disabled.enable(false);
    WatchedManager failing(std::make_unique<ThrowingGenerator>());
    for (WatchedManager* const manager : {&disabled, &failing}) {
        QSignalSpy const told(manager, &ReconnectionManager::waitStarted);
        manager->onStartTimer();
        QCOMPARE(told.size(), 0);
        QCOMPARE(manager->remainingTime(), 0ms);
    }
}

void ReconnectionManagerTest::waitMayBeEndedWhenItIsTold()
{
    WatchedManager manager(scripted({aMinute}));
    connect(&manager, &ReconnectionManager::waitStarted, this, [&] { manager.onResetTimer(); });
    manager.onStartTimer();
    QVERIFY(!manager.isActive());
}

void ReconnectionManagerTest::timerFiresOnceByItself()
{
    DeafManager manager(scripted({0}));
    manager.onStartTimer();
    QTRY_COMPARE(manager.timeouts, 1);
    QVERIFY(!manager.isActive());
}

void ReconnectionManagerTest::timeoutIsHandledWhereTheTimerIs()
{
    QThread idle;
    DeafManager manager(scripted({0}));
    manager.onStartTimer();
    // The timer is no child and stays here; nothing that is posted to the manager arrives any more.
    manager.moveToThread(&idle);
    QTRY_COMPARE(manager.timeouts, 1);
}

void ReconnectionManagerTest::waitBegunTwiceEndsOnce()
{
    WatchedManager manager(scripted({aMinute, 0}));
    manager.onStartTimer();
    QVERIFY(manager.waitAtOnce());
    QCOMPARE(manager.retries, 1);
    QVERIFY(!manager.isActive());
    QCoreApplication::processEvents();
    QCOMPARE(manager.timeouts, 1);
}

void ReconnectionManagerTest::neverGivesUpWithoutALimit()
{
    WatchedManager manager(scripted({0}, 0));
    for (int round = 1; round <= 50; ++round) {
        QVERIFY(manager.waitAtOnce());
        QCOMPARE(manager.retries, round);
    }
    QCOMPARE(manager.ends, 0);
}

void ReconnectionManagerTest::resetEndsTheWait()
{
    WatchedManager manager(scripted({aMinute}));
    manager.onStartTimer();
    QVERIFY(manager.isActive());
    manager.onResetTimer();
    QVERIFY(!manager.isActive());
    QCOMPARE(manager.timeouts, 0);
}

void ReconnectionManagerTest::resetOnAnIdleManagerResetsTheGenerator()
{
    WatchedManager manager;
    QVERIFY(manager.waitAtOnce());
    for (int wait = 0; wait < 5; ++wait) {
        manager.onStartTimer();
        QMetaObject::invokeMethod(&manager, "onTimeoutReached");
    }
    QVERIFY(!manager.isActive());
    manager.onResetTimer();
    for (int seconds : {1, 2, 3}) {
        manager.onStartTimer();
        QCOMPARE(manager.interval(), seconds * 1000);
    }
}

void ReconnectionManagerTest::disablingEndsTheWaitAndResets()
{
    WatchedManager manager;
    QVERIFY(manager.waitAtOnce());
    manager.onStartTimer();
    manager.onStartTimer();
    manager.onStartTimer();
    QCOMPARE(manager.interval(), 2000);
    manager.enable(false);
    QVERIFY(!manager.isActive());
    manager.onStartTimer();
    QVERIFY(!manager.isActive());
    manager.enable(true);
    manager.onStartTimer();
    QCOMPARE(manager.interval(), 1000);
    manager.onStartTimer();
    QCOMPARE(manager.interval(), 2000);
}

void ReconnectionManagerTest::enablingStartsNothing()
{
    WatchedManager manager;
    manager.enable(true);
    QVERIFY(!manager.isActive());
    QVERIFY(manager.waitAtOnce());
    manager.onStartTimer();
    manager.enable(true);
    QCOMPARE(manager.interval(), 1000);
}

void ReconnectionManagerTest::timeoutWhileDisabledEmitsNothing()
{
    WatchedManager manager;
    manager.enable(false);
    QMetaObject::invokeMethod(&manager, "onTimeoutReached");
    QCOMPARE(manager.timeouts, 1);
    QCOMPARE(manager.retries + manager.ends, 0);
}

void ReconnectionManagerTest::initializingAgainDoublesTheTimeouts()
{
    WatchedManager manager(scripted({0}));
    manager.initializeManager();
    QVERIFY(manager.waitAtOnce());
    QCOMPARE(manager.timeouts, 2);
    QCOMPARE(manager.retries, 2);
}

void ReconnectionManagerTest::slotsAreVirtual()
{
    class Overriding : public ReconnectionManager
    {
    public:
        void onResetTimer() override { calls << "reset"; }
        void onStartTimer() override { calls << "start"; }
        void onTimeoutReached() override { calls << "timeout"; }
        QList<QByteArray> calls;
    };
    Overriding manager;
    for (char const* slot : {"onResetTimer", "onStartTimer", "onTimeoutReached"}) {
        QVERIFY(QMetaObject::invokeMethod(&manager, slot));
    }
    QCOMPARE(manager.calls, (QList<QByteArray>{"reset", "start", "timeout"}));
}

void ReconnectionManagerTest::disablingFromAnotherThread()
{
    WatchedManager manager(scripted({0, aMinute}));
    QVERIFY(manager.waitAtOnce());
    manager.onStartTimer();
    QVERIFY(manager.isActive());
    std::thread([&] { manager.enable(false); }).join();

    // The flag counts at once; the timer belongs to this thread, which has not come to it yet.
    QVERIFY(manager.isActive());
    QCoreApplication::processEvents();
    QVERIFY(!manager.isActive());
    manager.onStartTimer();
    QVERIFY(!manager.isActive());

    std::thread([&] { manager.enable(true); }).join();
    manager.onStartTimer();
    QVERIFY(manager.isActive());
    QCoreApplication::processEvents();
    QVERIFY(manager.isActive());
    QCOMPARE(manager.retries, 1);
}

void ReconnectionManagerTest::disablingAndEnablingFromAnotherThread()
{
    WatchedManager manager;
    QVERIFY(manager.waitAtOnce());
    for (int wait = 0; wait < 4; ++wait) {
        manager.onStartTimer();
    }
    QCOMPARE(manager.interval(), 3000);
    std::thread([&] {
        manager.enable(false);
        manager.enable(true);
    }).join();

    // The next wait is the first after a reset, and what was asked for earlier does not end it.
    manager.onStartTimer();
    QCOMPARE(manager.interval(), 1000);
    QCoreApplication::processEvents();
    QCOMPARE(manager.interval(), 1000);
    manager.onStartTimer();
    QCOMPARE(manager.interval(), 2000);
}

void ReconnectionManagerTest::timeoutComesBeforeWhatAnotherThreadAskedFor()
{
    WatchedManager manager(scripted({aMinute}));
    manager.onStartTimer();
    std::thread([&] {
        manager.enable(false);
        manager.enable(true);
    }).join();
    QMetaObject::invokeMethod(&manager, "onTimeoutReached");
    QCOMPARE(manager.timeouts, 1);
    QCOMPARE(manager.retries + manager.ends, 0);
    QVERIFY(!manager.isActive());
}

void ReconnectionManagerTest::switchingFromManyThreads()
{
    WatchedManager manager(scripted({0}));
    std::atomic<bool> done = false;
    std::vector<std::thread> threads;
    for (int index = 0; index < 3; ++index) {
        threads.emplace_back([&] {
            for (int round = 0; round < 300; ++round) {
                manager.enable(false);
                manager.enable(true);
            }
        });
    }
    std::thread joiner([&] {
        for (std::thread& thread : threads) {
            thread.join();
        }
        done = true;
    });
    while (!done) {
        manager.onStartTimer();
        QCoreApplication::processEvents();
    }
    joiner.join();
    QCoreApplication::processEvents();
    int const before = manager.retries + manager.ends;
    QVERIFY(manager.waitAtOnce());
    QCOMPARE(manager.retries + manager.ends, before + 1);
}

void ReconnectionManagerTest::replacesAMissingGenerator()
{
    WatchedManager manager(nullptr);
    QVERIFY(manager.waitAtOnce());
    manager.onStartTimer();
    QCOMPARE(manager.interval(), 1000);
}

void ReconnectionManagerTest::survivesAThrowingGenerator()
{
    WatchedManager manager(std::make_unique<ThrowingGenerator>());
    manager.onStartTimer();
    QVERIFY(!manager.isActive());
}

void ReconnectionManagerTest::survivesAThrowingReceiver()
{
    WatchedManager manager(scripted({0}, 0));
    connect(&manager, &ReconnectionManager::tryConnectionAgain, this,
            [] { throw std::runtime_error("the caller's own failure"); });
    connect(&manager, &ReconnectionManager::waitStarted, this,
            [] { throw std::runtime_error("the caller's own failure"); });
    QVERIFY(manager.waitAtOnce());
    QVERIFY(manager.waitAtOnce());
    QCOMPARE(manager.retries, 2);
}

int main(int argc, char** argv)
{
    return runTest<ReconnectionManagerTest>(argc, argv);
}

#include "ReconnectionManagerTest.moc"
