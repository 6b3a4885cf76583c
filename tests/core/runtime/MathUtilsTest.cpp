#include <runtime/MathUtils.h>

#include <RunTest.h>
#include <limits>

class MathUtilsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void convertsDecibelsToPercent_data();
    void convertsDecibelsToPercent();
};

void MathUtilsTest::convertsDecibelsToPercent_data()
{
    QTest::addColumn<int>("dB");
    QTest::addColumn<int>("percent");
    QTest::newRow("full scale") << 0 << 100;
    QTest::newRow("about half") << -6 << 50;
    QTest::newRow("a tenth") << -20 << 10;
    QTest::newRow("about double, truncated") << 6 << 199;
    QTest::newRow("in single precision: double gives 891250") << 79 << 891251;
    QTest::newRow("too low to show") << -100 << 0;
    QTest::newRow("the lowest int") << std::numeric_limits<int>::min() << 0;
    QTest::newRow("too high for an int") << 1000 << std::numeric_limits<int>::max();
}

void MathUtilsTest::convertsDecibelsToPercent()
{
    QFETCH(int, dB);
    QTEST(MathUtils::dBToAmplitude(dB), "percent");
}

int main(int argc, char** argv)
{
    return runTest<MathUtilsTest>(argc, argv);
}

#include "MathUtilsTest.moc"
