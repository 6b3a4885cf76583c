#include <files/FilePaths.h>
#include <runtime/AsyncCommandsContainter.h>
#include <runtime/LimitedFibonacciGenerator.h>
#include <runtime/ReconnectionManager.h>
#include <runtime/SingleInstanceGuard.h>
#include <runtime/SystemInfo.h>
#include <runtime/ThreadUtils.h>
#include <runtime/UniqueId.h>

#include <QFile>
#include <RunTest.h>
#include <ScarceMemory.h>
#include <functional>
#include <memory>

/// What is left when memory runs out at any one allocation.
class RuntimeMemoryTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void ticketsStayWhole();
    void nothingEscapes_data();
    void nothingEscapes();
    void guardLocksItsOwnFileOrNone();
    void launchWithoutAServerFails();
};

using Operation = std::function<void()>;

/// Runs \a operation with the call \a nth of operator new failing; answers whether there was such a call.
static bool failAt(int nth, Operation const& operation)
{
    FailingAllocation const failure(nth);
    operation();
    return failure.happened();
}

void RuntimeMemoryTest::ticketsStayWhole()
{
    AsyncCommandsContainter container;
    auto const object = std::make_shared<int>(1);
    QCOMPARE(allocationsThatMayFail([&] { return container.add(object).has_value(); }), 1);
    QCOMPARE(object.use_count(), 2L);
    QCOMPARE(allocationsThatMayFail([&] { return !container.getAllObjects().empty(); }), 1);
    QCOMPARE(container.getAllObjects().size(), std::size_t(1));
}

void RuntimeMemoryTest::nothingEscapes_data()
{
    QTest::addColumn<Operation>("operation");
    QTest::newRow("machine id") << Operation([] { static_cast<void>(SystemInfo::getMachineUniqueId()); });
    QTest::newRow("version") << Operation([] { static_cast<void>(SystemInfo::getOSVersion()); });
    QTest::newRow("notifications") << Operation(
        [] { static_cast<void>(SystemInfo::areNotificationsSupported()); });
    QTest::newRow("uuid") << Operation([] { static_cast<void>(UniqueId::createUUID()); });
    QTest::newRow("generator without a modifier") << Operation([] {
        LimitedFibonacciGenerator generator(nullptr);
        generator.getNext();
    });
    QTest::newRow("hand-over") << Operation([this] {
        ThreadUtils::moveExecutionToObjectThread(this, std::function<void()>(), Qt::QueuedConnection);
    });
    QTest::newRow("name of a server") << Operation([] {
        static_cast<void>(SingleInstanceGuard::getServerName(
            QStringLiteral("/Applications/A Client With A Long Name/Client"), QString(), QString()));
    });
}

void RuntimeMemoryTest::nothingEscapes()
{
    QFETCH(Operation, operation);
    int failures = 0;
    while (failAt(failures, operation)) {
        ++failures;
    }
    // Once nothing fails it is done, and has left nothing behind that fails.
    QVERIFY(!failAt(failures, operation));
}

void RuntimeMemoryTest::guardLocksItsOwnFileOrNone()
{
    QString const name = QStringLiteral("a name that takes more room than a text has in itself");
    QString const lock = FilePaths::buildTempPath() + QLatin1Char('/') +
                         SingleInstanceGuard::getServerName(name, {}, {}) + QStringLiteral(".qlf");
    SingleInstanceGuard guard;
    int failures = 0;
    int refused = 0;
    while (failAt(failures, [&] { guard.setup(name, QString(), QString()); })) {
        ++failures;
        QVERIFY(!guard.isAnotherRunning());
        bool const serving = guard.launchServer();
        QCOMPARE(QFile::exists(lock), serving);
        refused += serving ? 0 : 1;
        guard.stopServer();
    }
    QVERIFY(refused > 0);
    QVERIFY(guard.launchServer());
}

void RuntimeMemoryTest::launchWithoutAServerFails()
{
    SingleInstanceGuard guard;
    guard.setup(QStringLiteral("scarce"), QString(), QString());
    bool serving = true;
    QVERIFY(failAt(0, [&] { serving = guard.launchServer(); }));
    QVERIFY(!serving);
    QVERIFY(guard.launchServer());
}

int main(int argc, char** argv)
{
    return runTest<RuntimeMemoryTest>(argc, argv);
}

#include "RuntimeMemoryTest.moc"
