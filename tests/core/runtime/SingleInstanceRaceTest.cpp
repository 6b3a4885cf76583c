#include "GuardProcess.h"

#include <QFile>
#include <RunTest.h>

/// Many copies that start at one moment.
class SingleInstanceRaceTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { GuardPaths::nameApplication(); }
    void oneOfManyServes_data();
    void oneOfManyServes();
};

void SingleInstanceRaceTest::oneOfManyServes_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("leftOver");
    for (int round = 1; round <= 10; ++round) {
        QString const name = QStringLiteral("crowd%1").arg(round);
        QTest::addRow("round %d on a free name", round) << name << false;
        QTest::addRow("round %d on what the killed copies left", round) << name << true;
    }
}

void SingleInstanceRaceTest::oneOfManyServes()
{
    QFETCH(QString, name);
    QFETCH(bool, leftOver);
    constexpr int copies = 50;

    QCOMPARE(QFile::exists(GuardPaths(name).lock), leftOver);
    GuardProcess crowd({QStringLiteral("crowd"), name, QString::number(copies)});
    int decided = 0;
    int serving = 0;
    while (decided < copies || serving == 0) {
        QByteArray const word = crowd.next();
        QVERIFY2(!word.isEmpty(), "a copy neither gave up nor served");
        QVERIFY(word != "failed");
        decided += word == "running" || word == "launching" ? 1 : 0;
        serving += word == "serving" ? 1 : 0;
    }
    // The ones that wait for the lock try again every few hundred milliseconds.
    for (QByteArray word = crowd.next(500); !word.isEmpty(); word = crowd.next(500)) {
        serving += word == "serving" ? 1 : 0;
    }
    QCOMPARE(serving, 1);
    QCOMPARE(probeFromOutside(name), "running");
}

int main(int argc, char** argv)
{
    return runTest<SingleInstanceRaceTest>(argc, argv);
}

#include "SingleInstanceRaceTest.moc"
