#include <runtime/ConstantSequenceGenerator.h>
#include <runtime/LimitedFibonacciGenerator.h>
#include <runtime/SequenceGenerator.h>

#include <QSet>
#include <RunTest.h>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <sys/resource.h>
#include <type_traits>

using Numbers = QList<unsigned int>;
using NoOp = SequenceGenerator::NoOpSequenceModifier;
using Random = SequenceGenerator::RandomSequenceModifier;

namespace {

constexpr unsigned int highest = std::numeric_limits<unsigned int>::max();

/// Adds 1000, and says when it is destroyed.
class Thousand : public SequenceGenerator::SequenceModifier
{
public:
    explicit Thousand(bool* destroyed = nullptr)
        : m_destroyed(destroyed)
    {
    }
    ~Thousand() override
    {
        if (m_destroyed != nullptr) {
            *m_destroyed = true;
        }
    }
    unsigned int modify(unsigned int value) override { return value + 1000; }

private:
    bool* m_destroyed;
};

class Thrower : public SequenceGenerator::SequenceModifier
{
public:
    unsigned int modify(unsigned int) override { throw std::runtime_error("the caller's own failure"); }
};

Numbers take(SequenceGenerator& generator, int count)
{
    Numbers numbers;
    while (numbers.size() < count) {
        numbers << generator.getNext();
    }
    return numbers;
}

} // namespace

class SequenceGeneratorTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void noOpLeavesEveryNumber();
    void randomAddsAnOffset_data();
    void randomAddsAnOffset();
    void randomReachesEveryOffset();
    void randomIsSeededAfresh();
    void randomNeedsNoDescriptor();
    void constantRepeats();
    void fibonacciFollowsItsRule_data();
    void fibonacciFollowsItsRule();
    void fibonacciTellsTheLimit_data();
    void fibonacciTellsTheLimit();
    void fibonacciWithoutLimitWrapsAround();
    void generatorsModifyWhatTheyHandOut();
    void generatorsOutliveAThrowingModifier();
    void generatorsOwnTheirModifier();
    void generatorsAreNotCopied();
};

void SequenceGeneratorTest::noOpLeavesEveryNumber()
{
    NoOp modifier;
    for (unsigned int value : {0U, 1U, 55U, 0x7FFFFFFFU, 0x80000000U, highest}) {
        QCOMPARE(modifier.modify(value), value);
    }
}

void SequenceGeneratorTest::randomAddsAnOffset_data()
{
    QTest::addColumn<unsigned int>("min");
    QTest::addColumn<unsigned int>("max");
    QTest::addColumn<unsigned int>("value");
    QTest::addColumn<unsigned int>("lowestResult");
    QTest::addColumn<unsigned int>("range");
    QTest::newRow("a range") << 5U << 10U << 7U << 12U << 5U;
    QTest::newRow("no offset") << 0U << 0U << 7U << 7U << 0U;
    QTest::newRow("one offset") << 10U << 10U << 7U << 17U << 0U;
    QTest::newRow("bounds the wrong way round") << 10U << 5U << 7U << 17U << 0U;
    QTest::newRow("wraps around") << 2U << 4U << highest << 1U << 2U;
    QTest::newRow("every offset there is") << 0U << highest << 7U << 7U << highest;
}

void SequenceGeneratorTest::randomAddsAnOffset()
{
    QFETCH(unsigned int, min);
    QFETCH(unsigned int, max);
    QFETCH(unsigned int, value);
    QFETCH(unsigned int, lowestResult);
    QFETCH(unsigned int, range);
    Random modifier(min, max);
    for (int draw = 0; draw < 1000; ++draw) {
        QVERIFY(modifier.modify(value) - lowestResult <= range);
    }
}

void SequenceGeneratorTest::randomReachesEveryOffset()
{
    Random modifier(3, 6);
    QSet<unsigned int> offsets;
    for (int draw = 0; draw < 1000; ++draw) {
        offsets.insert(modifier.modify(100));
    }
    QCOMPARE(offsets, (QSet<unsigned int>{103, 104, 105, 106}));
}

void SequenceGeneratorTest::randomIsSeededAfresh()
{
    QSet<unsigned int> firsts;
    for (int round = 0; round < 50; ++round) {
        firsts.insert(Random(0, highest).modify(0));
    }
    QVERIFY(firsts.size() > 40);
}

void SequenceGeneratorTest::randomNeedsNoDescriptor()
{
    rlimit before{};
    QCOMPARE(getrlimit(RLIMIT_NOFILE, &before), 0);
    rlimit none = before;
    none.rlim_cur = 0;
    QCOMPARE(setrlimit(RLIMIT_NOFILE, &none), 0);
    QSet<unsigned int> firsts;
    for (int round = 0; round < 50; ++round) {
        firsts.insert(Random(0, highest).modify(0));
    }
    QCOMPARE(setrlimit(RLIMIT_NOFILE, &before), 0);
    QVERIFY(firsts.size() > 40);
}

void SequenceGeneratorTest::constantRepeats()
{
    for (unsigned int value : {0U, 5U, highest}) {
        ConstantSequenceGenerator generator(value, std::make_unique<NoOp>());
        QCOMPARE(take(generator, 3), (Numbers{value, value, value}));
        generator.reset();
        QCOMPARE(take(generator, 2), (Numbers{value, value}));
    }
}

void SequenceGeneratorTest::fibonacciFollowsItsRule_data()
{
    QTest::addColumn<unsigned int>("limit");
    QTest::addColumn<unsigned int>("first");
    QTest::addColumn<unsigned int>("second");
    QTest::addColumn<Numbers>("fresh");
    QTest::addColumn<Numbers>("afterReset");
    QTest::newRow("limit 55") << 55U << 1U << 1U << Numbers{0, 1, 1, 2, 3, 5, 8, 13, 21, 34, 55, 55, 55}
                              << Numbers{1, 2, 3, 5, 8, 13, 21, 34, 55, 55, 55};
    QTest::newRow("a limit between two numbers")
        << 10U << 1U << 1U << Numbers{0, 1, 1, 2, 3, 5, 8, 10, 10} << Numbers{1, 2, 3, 5, 8, 10, 10};
    QTest::newRow("another pair") << 100U << 3U << 10U << Numbers{0, 1, 1, 2, 3, 5}
                                  << Numbers{10, 13, 23, 36, 59, 95, 100, 100};
    QTest::newRow("a pair that starts at 0")
        << 5U << 4U << 0U << Numbers{0, 1, 1, 2, 3, 5, 5} << Numbers{0, 1, 5, 5};
    QTest::newRow("a pair above the limit") << 5U << 1U << 7U << Numbers{0, 1, 1, 2} << Numbers{5, 5, 5};
    QTest::newRow("limit 1") << 1U << 1U << 1U << Numbers{0, 1, 1, 1, 1} << Numbers{1, 1, 1};
    QTest::newRow("no limit") << 0U << 1U << 1U << Numbers{0, 1, 1, 2, 3, 5, 8, 13, 21, 34, 55, 89, 144}
                              << Numbers{1, 2, 3, 5, 8, 13, 21, 34, 55, 89, 144};
    QTest::newRow("the highest limit")
        << highest << 1U << highest << Numbers{0, 1, 1, 2} << Numbers{highest, 0, 1, 0, 1, 2, 3};
}

void SequenceGeneratorTest::fibonacciFollowsItsRule()
{
    QFETCH(unsigned int, limit);
    QFETCH(unsigned int, first);
    QFETCH(unsigned int, second);
    QFETCH(Numbers, fresh);
    QFETCH(Numbers, afterReset);
    LimitedFibonacciGenerator generator(limit, {first, second}, std::make_unique<NoOp>());
    QCOMPARE(take(generator, static_cast<int>(fresh.size())), fresh);
    for (int round = 0; round < 2; ++round) {
        generator.reset();
        QCOMPARE(take(generator, static_cast<int>(afterReset.size())), afterReset);
    }
}

void SequenceGeneratorTest::fibonacciTellsTheLimit_data()
{
    QTest::addColumn<unsigned int>("limit");
    QTest::addColumn<bool>("isReset");
    QTest::addColumn<int>("calls"); // after which the limit is reached for the first time
    QTest::newRow("fresh, after 34") << 55U << false << 10;
    QTest::newRow("reset, after 34") << 55U << true << 8;
    QTest::newRow("a limit between two numbers, after 8") << 10U << false << 7;
    QTest::newRow("limit 1, fresh, after 0") << 1U << false << 1;
    QTest::newRow("limit 1, reset, at once") << 1U << true << 0;
}

void SequenceGeneratorTest::fibonacciTellsTheLimit()
{
    QFETCH(unsigned int, limit);
    QFETCH(bool, isReset);
    QFETCH(int, calls);
    LimitedFibonacciGenerator generator(limit, {1, 1}, std::make_unique<NoOp>());
    if (isReset) {
        generator.reset();
    }
    for (int call = 0; call < calls; ++call) {
        QVERIFY(!generator.isLimitReached());
        generator.getNext();
    }
    for (int call = 0; call < 5; ++call) {
        QVERIFY(generator.isLimitReached());
        generator.getNext();
    }
    generator.reset();
    QCOMPARE(generator.isLimitReached(), limit == 1);
}

void SequenceGeneratorTest::fibonacciWithoutLimitWrapsAround()
{
    LimitedFibonacciGenerator generator(std::make_unique<NoOp>());
    std::uint64_t previous = 0;
    std::uint64_t current = 1;
    QCOMPARE(generator.getNext(), 0U);
    for (int call = 0; call < 200; ++call) {
        QCOMPARE(generator.getNext(), static_cast<unsigned int>(current));
        QVERIFY(!generator.isLimitReached());
        previous = std::exchange(current, (previous + current) & highest);
    }
    generator.reset();
    QCOMPARE(take(generator, 5), (Numbers{0, 1, 1, 2, 3}));
}

void SequenceGeneratorTest::generatorsModifyWhatTheyHandOut()
{
    ConstantSequenceGenerator constant(5, std::make_unique<Thousand>());
    QCOMPARE(take(constant, 2), (Numbers{1005, 1005}));
    LimitedFibonacciGenerator limited(2, {1, 1}, std::make_unique<Thousand>());
    QCOMPARE(take(limited, 5), (Numbers{1000, 1001, 1001, 1002, 1002}));
    ConstantSequenceGenerator unmodified(5, nullptr);
    QCOMPARE(unmodified.getNext(), 5U);
}

void SequenceGeneratorTest::generatorsOutliveAThrowingModifier()
{
    ConstantSequenceGenerator constant(5, std::make_unique<Thrower>());
    QCOMPARE(take(constant, 2), (Numbers{5, 5}));
    LimitedFibonacciGenerator limited(2, {1, 1}, std::make_unique<Thrower>());
    QCOMPARE(take(limited, 6), (Numbers{0, 1, 1, 2, 2, 2}));
}

void SequenceGeneratorTest::generatorsOwnTheirModifier()
{
    bool destroyed = false;
    std::unique_ptr<SequenceGenerator> generator =
        std::make_unique<LimitedFibonacciGenerator>(std::make_unique<Thousand>(&destroyed));
    QVERIFY(!destroyed);
    generator.reset();
    QVERIFY(destroyed);
}

void SequenceGeneratorTest::generatorsAreNotCopied()
{
    QVERIFY(!std::is_copy_constructible_v<ConstantSequenceGenerator>);
    QVERIFY(!std::is_copy_constructible_v<LimitedFibonacciGenerator>);
    QVERIFY(std::is_abstract_v<SequenceGenerator>);
    QVERIFY(std::is_abstract_v<SequenceGenerator::SequenceModifier>);
}

int main(int argc, char** argv)
{
    return runTest<SequenceGeneratorTest>(argc, argv);
}

#include "SequenceGeneratorTest.moc"
