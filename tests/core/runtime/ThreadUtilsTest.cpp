#include <runtime/ThreadUtils.h>

#include <QThread>
#include <RunTest.h>
#include <memory>
#include <stdexcept>
#include <thread>

namespace {

/// A thread with an event loop, and an object that lives in it.
class Worker
{
public:
    Worker()
        : m_object(std::make_unique<QObject>())
    {
        m_object->moveToThread(&m_thread);
        m_thread.start();
    }

    ~Worker()
    {
        m_thread.quit();
        m_thread.wait();
    }

    QObject* object() { return m_object.get(); }
    QThread* thread() { return &m_thread; }

private:
    QThread m_thread;
    std::unique_ptr<QObject> m_object;
};

} // namespace

class ThreadUtilsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void tellsTheMainThread();
    void tellsTheThreadOfAnObject();
    void namingAThreadChangesNothing();
    void runsInTheObjectsThread_data();
    void runsInTheObjectsThread();
    void runsAtOnceInTheObjectsOwnThread();
    void queuesInTheObjectsOwnThread();
    void runsInTheMainThread();
    void runsNothingWithoutATarget();
    void runsNothingWhenTheTargetIsGone();
    void whatIsThrownEndsThere_data();
    void whatIsThrownEndsThere();
};

void ThreadUtilsTest::tellsTheMainThread()
{
    QVERIFY(ThreadUtils::isMainThread());
    bool elsewhere = true;
    std::thread([&] { elsewhere = ThreadUtils::isMainThread(); }).join();
    QVERIFY(!elsewhere);
}

void ThreadUtilsTest::tellsTheThreadOfAnObject()
{
    Worker worker;
    QVERIFY(ThreadUtils::isObjectThread(this));
    QVERIFY(!ThreadUtils::isObjectThread(worker.object()));
    QVERIFY(!ThreadUtils::isObjectThread(nullptr));
}

void ThreadUtilsTest::namingAThreadChangesNothing()
{
    QString const before = QThread::currentThread()->objectName();
    ThreadUtils::setThreadName(QStringLiteral("audio"));
    QCOMPARE(QThread::currentThread()->objectName(), before);
}

void ThreadUtilsTest::runsInTheObjectsThread_data()
{
    QTest::addColumn<Qt::ConnectionType>("type");
    QTest::newRow("automatic") << Qt::AutoConnection;
    QTest::newRow("queued") << Qt::QueuedConnection;
    QTest::newRow("blocking") << Qt::BlockingQueuedConnection;
}

void ThreadUtilsTest::runsInTheObjectsThread()
{
    QFETCH(Qt::ConnectionType, type);
    Worker worker;
    std::atomic<QThread*> ranIn = nullptr;
    ThreadUtils::moveExecutionToObjectThread(
        worker.object(), [&] { ranIn = QThread::currentThread(); }, type);
    if (type != Qt::BlockingQueuedConnection) {
        QTRY_VERIFY(ranIn != nullptr);
    }
    QCOMPARE(ranIn.load(), worker.thread());
}

void ThreadUtilsTest::runsAtOnceInTheObjectsOwnThread()
{
    bool ran = false;
    ThreadUtils::moveExecutionToObjectThread(
        this, [&] { ran = true; }, Qt::AutoConnection);
    QVERIFY(ran);
}

void ThreadUtilsTest::queuesInTheObjectsOwnThread()
{
    bool ran = false;
    ThreadUtils::moveExecutionToObjectThread(
        this, [&] { ran = true; }, Qt::QueuedConnection);
    QVERIFY(!ran);
    QTRY_VERIFY(ran);
}

void ThreadUtilsTest::runsInTheMainThread()
{
    std::atomic<QThread*> ranIn = nullptr;
    std::thread([&] {
        ThreadUtils::moveExecutionToMainThread([&] { ranIn = QThread::currentThread(); },
                                               Qt::QueuedConnection);
    }).join();
    QVERIFY(ranIn == nullptr);
    QTRY_COMPARE(ranIn.load(), QCoreApplication::instance()->thread());
}

void ThreadUtilsTest::runsNothingWithoutATarget()
{
    bool ran = false;
    ThreadUtils::moveExecutionToObjectThread(
        nullptr, [&] { ran = true; }, Qt::DirectConnection);
    QVERIFY(!ran);
}

void ThreadUtilsTest::runsNothingWhenTheTargetIsGone()
{
    auto target = std::make_unique<QObject>();
    bool ran = false;
    ThreadUtils::moveExecutionToObjectThread(
        target.get(), [&] { ran = true; }, Qt::QueuedConnection);
    target.reset();
    QCoreApplication::processEvents();
    QVERIFY(!ran);
}

void ThreadUtilsTest::whatIsThrownEndsThere_data()
{
    QTest::addColumn<Qt::ConnectionType>("type");
    QTest::newRow("at once") << Qt::DirectConnection;
    QTest::newRow("queued") << Qt::QueuedConnection;
}

void ThreadUtilsTest::whatIsThrownEndsThere()
{
    QFETCH(Qt::ConnectionType, type);
    bool ran = false;
    auto const thrower = [&] {
        ran = true;
        throw std::runtime_error("the caller's own failure");
    };
    ThreadUtils::moveExecutionToObjectThread(this, thrower, type);
    ThreadUtils::moveExecutionToObjectThread(this, {}, type);
    QCoreApplication::processEvents();
    QVERIFY(ran);
}

int main(int argc, char** argv)
{
    // Without an application object there is no main thread to be in or to run in.
    bool ran = false;
    ThreadUtils::moveExecutionToMainThread([&] { ran = true; }, Qt::DirectConnection);
    if (ran || ThreadUtils::isMainThread()) {
        return 1;
    }
    return runTest<ThreadUtilsTest>(argc, argv);
}

#include "ThreadUtilsTest.moc"
