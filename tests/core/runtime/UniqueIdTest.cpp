#include <runtime/UniqueId.h>

#include <QRegularExpression>
#include <QSet>
#include <RunTest.h>
#include <limits>
#include <mutex>
#include <thread>
#include <vector>

class UniqueIdTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void uuidIsPlainTextOfARandomUuid();
    void uuidsDiffer();
    void numberHas32Bits();
    void numbersUseEveryBit();
    void numbersDoNotCount();
    void idsAreDrawnOnSeveralThreads();
};

void UniqueIdTest::uuidIsPlainTextOfARandomUuid()
{
    static QRegularExpression const shape(
        QStringLiteral("\\A[0-9a-f]{8}-[0-9a-f]{4}-4[0-9a-f]{3}-[89ab][0-9a-f]{3}-[0-9a-f]{12}\\z"));
    for (int draw = 0; draw < 1000; ++draw) {
        QString const id = UniqueId::createUUID();
        QCOMPARE(id.size(), 36);
        QVERIFY2(shape.match(id).hasMatch(), qPrintable(id));
    }
}

void UniqueIdTest::uuidsDiffer()
{
    QSet<QString> ids;
    for (int draw = 0; draw < 10000; ++draw) {
        ids.insert(UniqueId::createUUID());
    }
    QCOMPARE(ids.size(), 10000);
}

void UniqueIdTest::numberHas32Bits()
{
    for (int draw = 0; draw < 10000; ++draw) {
        QVERIFY(UniqueId::generateNumber() <= std::numeric_limits<quint32>::max());
    }
}

void UniqueIdTest::numbersUseEveryBit()
{
    unsigned long set = 0;
    unsigned long always = std::numeric_limits<quint32>::max();
    for (int draw = 0; draw < 1000; ++draw) {
        unsigned long const number = UniqueId::generateNumber();
        set |= number;
        always &= number;
    }
    QCOMPARE(set, static_cast<unsigned long>(std::numeric_limits<quint32>::max()));
    QCOMPARE(always, 0UL);
}

void UniqueIdTest::numbersDoNotCount()
{
    QSet<unsigned long> steps;
    unsigned long last = UniqueId::generateNumber();
    for (int draw = 0; draw < 100; ++draw) {
        unsigned long const number = UniqueId::generateNumber();
        steps.insert(number - last);
        last = number;
    }
    QVERIFY(steps.size() > 90);
}

void UniqueIdTest::idsAreDrawnOnSeveralThreads()
{
    std::mutex mutex;
    QSet<QString> ids;
    std::vector<std::thread> threads;
    for (int index = 0; index < 4; ++index) {
        threads.emplace_back([&] {
            for (int draw = 0; draw < 500; ++draw) {
                QString const id = UniqueId::createUUID() + QString::number(UniqueId::generateNumber());
                std::lock_guard const lock(mutex);
                ids.insert(id);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    QCOMPARE(ids.size(), 2000);
}

int main(int argc, char** argv)
{
    return runTest<UniqueIdTest>(argc, argv);
}

#include "UniqueIdTest.moc"
