#include <datasets/DataSets.h>

#include <RunTest.h>
#include <ScarceMemory.h>
#include <algorithm>
#include <iterator>
#include <map>
#include <numeric>
#include <random>
#include <vector>

using DataSets::DataIterator;
using DataSets::DataObject;
using DataSets::DataSet;
using namespace DataSets::Impl;

using Order = std::vector<int> (*)(int count);

Q_DECLARE_METATYPE(Order)

static_assert(std::forward_iterator<Entries::iterator>);
static_assert(std::forward_iterator<Entries::const_iterator>);
static_assert(std::is_convertible_v<Entries::iterator, Entries::const_iterator>);
static_assert(!std::is_convertible_v<Entries::const_iterator, Entries::iterator>);

namespace {

/// So many that a record's tree is three levels deep.
constexpr int many = 12'000;

std::vector<int> ascending(int count)
{
    std::vector<int> numbers(static_cast<std::size_t>(count));
    std::iota(numbers.begin(), numbers.end(), 0);
    return numbers;
}

std::vector<int> descending(int count)
{
    std::vector<int> numbers = ascending(count);
    std::reverse(numbers.begin(), numbers.end());
    return numbers;
}

std::vector<int> shuffled(int count)
{
    std::vector<int> numbers = ascending(count);
    std::shuffle(numbers.begin(), numbers.end(), std::mt19937(4711));
    return numbers;
}

/// From the middle to both ends by turns.
std::vector<int> outwards(int count)
{
    std::vector<int> numbers;
    for (int i = 0; i < count; ++i) {
        numbers.push_back(count / 2 + (i % 2 == 0 ? i / 2 : -(i + 1) / 2));
    }
    return numbers;
}

std::vector<int> everySecondThenTheRest(int count)
{
    std::vector<int> numbers;
    for (int const first : {0, 1}) {
        for (int number = first; number < count; number += 2) {
            numbers.push_back(number);
        }
    }
    return numbers;
}

Key keyOf(DataSet const& set, QString const& name)
{
    return set.isArray() ? Key(name.toInt()) : Key(name);
}

/// A record, and a standard map that should hold the same, with where each value lies.
struct Pair
{
    DataSet set;
    std::map<Key, std::pair<int, MultiType const*>> model;

    void store(int number, int value)
    {
        QString const name = QString::number(number);
        set.setValue(name, value);
        MultiType const* const stored = getValueImpl(set.data.get(), name);
        auto const [place, isNew] = model.try_emplace(keyOf(set, name), value, stored);
        place->second.first = value;
        QVERIFY(stored == place->second.second);
    }

    void remove(int number)
    {
        QString const name = QString::number(number);
        auto const found = model.find(keyOf(set, name));
        int removed = -1;
        QCOMPARE(set.moveValue(name, removed), found != model.end());
        if (found != model.end()) {
            QCOMPARE(removed, found->second.first);
            model.erase(found);
        }
        QVERIFY(!set.contains(name));
    }

    void compare() const
    {
        Entries const& entries = set.data->entries;
        QCOMPARE(entries.size(), model.size());
        QCOMPARE(entries.empty(), model.empty());
        QCOMPARE(std::distance(entries.begin(), entries.end()), std::ssize(model));
        auto entry = entries.begin();
        for (auto const& [key, expected] : model) {
            QVERIFY(entry->first == key);
            QVERIFY(entry->second == MultiType(expected.first));
            QCOMPARE(&entry->second, expected.second);
            QVERIFY(entries.find(key) == entry);
            ++entry;
        }
        QVERIFY(entry == entries.end());
    }
};

/// The numbers that a walk over \a set meets.
std::vector<int> valuesOf(DataSet const& set)
{
    std::vector<int> values;
    for (DataObject const& entry : set) {
        values.push_back(-1);
        entry.value()->get(values.back());
    }
    return values;
}

DataSet arrayOf(int count)
{
    DataSet set = DataSet::createArray();
    for (int const number : ascending(count)) {
        set.setValue(QString::number(number), number);
    }
    return set;
}

} // namespace

class EntriesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void growsAndShrinks_data();
    void growsAndShrinks();
    void doesWhatAMapDoes_data();
    void doesWhatAMapDoes();
    void findsByEveryKindOfKey();
    void stepsItsIterators();
    void sortsTextsBeforeIndices();
    void tellsItsStates();
    void isWalkedWhileItGrows_data();
    void isWalkedWhileItGrows();
    void isWalkedWhileItShrinks();
    void endsWhereAnotherLeafBegins();
    void removesWithoutMemory_data();
    void removesWithoutMemory();
    void staysWholeWithoutMemory_data();
    void staysWholeWithoutMemory();
};

void EntriesTest::growsAndShrinks_data()
{
    QTest::addColumn<bool>("isArray");
    QTest::addColumn<Order>("adding");
    QTest::addColumn<Order>("removing");

    std::vector<std::pair<char const*, Order>> const orders{
        {"ascending", ascending},
        {"descending", descending},
        {"shuffled", shuffled},
        {"outwards", outwards},
        {"every second, then the rest", everySecondThenTheRest}};
    for (auto const& [addingName, adding] : orders) {
        for (auto const& [removingName, removing] : orders) {
            QTest::addRow("indices, added %s, removed %s", addingName, removingName)
                << true << adding << removing;
        }
        QTest::addRow("texts, added and removed %s", addingName) << false << adding << adding;
    }
}

void EntriesTest::growsAndShrinks()
{
    QFETCH(bool const, isArray);
    QFETCH(Order const, adding);
    QFETCH(Order const, removing);

    constexpr int comparisons = 6;
    Pair pair{isArray ? DataSet::createArray() : DataSet::createObject(), {}};
    int steps = 0;
    auto const compareAtTimes = [&] {
        if (++steps % (many / comparisons) == 0 || pair.model.size() < 40) {
            pair.compare();
        }
        return !QTest::currentTestFailed();
    };
    for (int const number : adding(many)) {
        pair.store(number, 2 * number);
        if (!compareAtTimes()) {
            return;
        }
    }
    for (int const number : removing(many)) {
        pair.remove(number);
        if (!compareAtTimes()) {
            return;
        }
    }
    QVERIFY(pair.set.isEmpty());
    pair.store(1, 1);
    pair.compare();
}

void EntriesTest::doesWhatAMapDoes_data()
{
    QTest::addColumn<bool>("isArray");
    QTest::addColumn<int>("range");

    QTest::newRow("texts, one leaf") << false << 30;
    QTest::newRow("texts, around a split") << false << 100;
    QTest::newRow("texts, many leaves") << false << 5'000;
    QTest::newRow("indices, one leaf") << true << 30;
    QTest::newRow("indices, around a split") << true << 100;
    QTest::newRow("indices, many leaves") << true << 5'000;
}

void EntriesTest::doesWhatAMapDoes()
{
    QFETCH(bool const, isArray);
    QFETCH(int const, range);

    Pair pair{isArray ? DataSet::createArray() : DataSet::createObject(), {}};
    std::mt19937 random(815);
    std::uniform_int_distribution<int> draw(0, range - 1);
    for (int i = 0; i < 8 * range && !QTest::currentTestFailed(); ++i) {
        // What is there grows, shrinks and grows again.
        bool const grows = i / (2 * range) % 2 == 0;
        if ((draw(random) < range / 4) != grows) {
            pair.store(draw(random), i);
        } else {
            pair.remove(draw(random));
        }
        if (i % std::max(1, range / 30) == 0) {
            pair.compare();
        }
    }
    pair.set.clear();
    pair.model.clear();
    pair.compare();
}

void EntriesTest::findsByEveryKindOfKey()
{
    DataSet object = DataSet::createObject();
    object.setValue(QStringLiteral("name"), 1);
    object.setValue(QString(), 2);
    Entries& entries = object.data->entries;
    QCOMPARE(entries.find(QStringView(u"name"))->second, MultiType(1));
    QCOMPARE(entries.find(QStringLiteral("name"))->second, MultiType(1));
    QCOMPARE(entries.find(Key(QStringLiteral("name")))->second, MultiType(1));
    QCOMPARE(entries.find(QString())->second, MultiType(2));
    QCOMPARE(entries.find(QStringLiteral(""))->second, MultiType(2));
    QVERIFY(entries.contains(QStringView()));
    QVERIFY(!entries.contains(0));
    QVERIFY(!entries.contains(QStringLiteral("nam")));
    QVERIFY(entries.find(0) == entries.end());

    DataSet const array = arrayOf(3);
    QCOMPARE(array.data->entries.find(2)->second, MultiType(2));
    QCOMPARE(array.data->entries.find(Key(2))->second, MultiType(2));
    QVERIFY(!array.data->entries.contains(QStringLiteral("2")));
    QVERIFY(!array.data->entries.contains(3));
}

void EntriesTest::stepsItsIterators()
{
    DataSet const none = DataSet::createObject();
    QVERIFY(none.data->entries.begin() == none.data->entries.end());
    QVERIFY(none.data->entries.find(1) == none.data->entries.end());

    DataSet const set = arrayOf(100);
    Entries& entries = set.data->entries;
    auto place = entries.begin();
    Entries::const_iterator const first = place++;
    QCOMPARE(std::get<int>(first->first), 0);
    QCOMPARE(std::get<int>(place->first), 1);
    QCOMPARE(std::distance(first, entries.cend()), 100);
    (*place).second = MultiType(-1);
    QCOMPARE(valuesOf(set).at(1), -1);
}

void EntriesTest::sortsTextsBeforeIndices()
{
    DataSet set = arrayOf(60);
    set.data->isArray = false;
    for (int const number : shuffled(60)) {
        set.setValue(QString::number(number), 100 + number);
    }
    set.setValue(QString(), 99);

    QStringList names{QString()};
    for (int const number : ascending(60)) {
        names << QString::number(number);
    }
    std::sort(names.begin(), names.end());
    std::vector<int> expected{99};
    for (QString const& name : names.mid(1)) {
        expected.push_back(100 + name.toInt());
    }
    std::vector<int> const indices = ascending(60);
    expected.insert(expected.end(), indices.begin(), indices.end());

    std::vector<int> values;
    for (auto const& [key, value] : set.data->entries) {
        values.push_back(0);
        value.get(values.back());
    }
    QCOMPARE(values, expected);
    QVERIFY(set.data->entries.contains(59));
    QVERIFY(set.data->entries.contains(QStringLiteral("59")));
}

void EntriesTest::tellsItsStates()
{
    DataSet set = arrayOf(2);
    DataSet const other = arrayOf(2);
    Entries const& entries = set.data->entries;
    QVERIFY(entries.stamp() != other.data->entries.stamp());
    QVERIFY(entries.stamp() != Entries::Stamp());

    auto const before = entries.stamp();
    set.setValue(QStringLiteral("1"), 5);
    QVERIFY(set.contains(QStringLiteral("1")));
    QVERIFY(!set.contains(QStringLiteral("2")));
    QVERIFY(entries.stamp() == before);

    set.setValue(QStringLiteral("2"), 5);
    auto const added = entries.stamp();
    QVERIFY(added != before);
    extractValueImpl(*set.data, QStringLiteral("2"));
    auto const removed = entries.stamp();
    QVERIFY(removed != before && removed != added);
    set.clear();
    QVERIFY(entries.stamp() != removed);
}

void EntriesTest::isWalkedWhileItGrows_data()
{
    QTest::addColumn<bool>("isArray");

    QTest::newRow("texts") << false;
    QTest::newRow("indices") << true;
}

void EntriesTest::isWalkedWhileItGrows()
{
    QFETCH(bool const, isArray);

    // Each tenth number is there at first; a walk adds the one before it, which it has passed, and the one
    // behind it, which it meets.
    auto const name = [](int number) { return QString::number(100'000 + number); };
    DataSet set = isArray ? DataSet::createArray() : DataSet::createObject();
    std::vector<int> expected;
    for (int number = 10; number < 10'000; number += 10) {
        set.setValue(name(number), number);
        expected.insert(expected.end(), {number, number + 1});
    }
    std::vector<int> met;
    DataIterator entries(set);
    while (DataObject const* entry = entries.next()) {
        met.push_back(-1);
        entry->value()->get(met.back());
        if (int const number = met.back(); number % 10 == 0) {
            set.setValue(name(number - 1), number - 1);
            set.setValue(name(number + 1), number + 1);
        }
    }
    QCOMPARE(met, expected);
    QCOMPARE(set.count(), 3 * 999);
}

void EntriesTest::isWalkedWhileItShrinks()
{
    DataSet set = arrayOf(10'000);
    std::vector<int> met;
    DataIterator entries(set);
    while (DataObject const* entry = entries.next()) {
        met.push_back(-1);
        entry->value()->get(met.back());
        for (int const offset : {-1, 1, 2}) {
            extractValueImpl(*set.data, QString::number(met.back() + offset));
        }
    }
    QCOMPARE(met.size(), std::size_t(3'334));
    QCOMPARE(valuesOf(set), met);
    QCOMPARE(met.at(1'000), 3'000);
}

void EntriesTest::endsWhereAnotherLeafBegins()
{
    // Full, a leaf's list ends where its block does; the block behind it may be the list of another leaf. So
    // the last leaf is filled before others are made.
    PackedMemory const memory;
    DataSet set = DataSet::createArray();
    Entries const& entries = set.data->entries;
    for (int number = 100; number < 148; ++number) {
        set.setValue(QString::number(number), number);
        QCOMPARE(std::distance(entries.begin(), entries.end()), set.count());
    }
    for (int number = 99; number >= 0; --number) {
        set.setValue(QString::number(number), number);
        QCOMPARE(std::distance(entries.begin(), entries.end()), set.count());
    }
}

void EntriesTest::removesWithoutMemory_data()
{
    QTest::addColumn<Order>("removing");

    QTest::newRow("ascending") << Order(ascending);
    QTest::newRow("descending") << Order(descending);
    QTest::newRow("shuffled") << Order(shuffled);
}

void EntriesTest::removesWithoutMemory()
{
    QFETCH(Order const, removing);

    constexpr int count = 2'000;
    DataSet set = arrayOf(0);
    for (int const number : shuffled(count)) {
        set.setValue(QString::number(number), number);
    }
    for (int const number : removing(count)) {
        QString const name = QString::number(number);
        FailingAllocation const failure(0);
        QVERIFY(extractValueImpl(*set.data, name) == MultiType(number));
        QVERIFY(!failure.happened());
    }
    QVERIFY(set.isEmpty());
}

void EntriesTest::staysWholeWithoutMemory_data()
{
    QTest::addColumn<int>("count");

    QTest::newRow("the first entry") << 0;
    QTest::newRow("the first leaf grows") << 8;
    QTest::newRow("the first leaf splits") << 32;
    QTest::newRow("a later leaf splits") << 48;
    QTest::newRow("the first branch splits") << 16 * 33;
}

void EntriesTest::staysWholeWithoutMemory()
{
    QFETCH(int const, count);

    std::vector<int> const expected = ascending(count);
    std::vector<int> grown = ascending(count + 1);
    QString const next = QString::number(count);
    for (int nth = 0;; ++nth) {
        DataSet set = arrayOf(count);
        DataIterator walk(set);
        int met = walk.next() != nullptr ? 1 : 0;
        bool failed = false;
        {
            FailingAllocation const failure(nth);
            set.setValue(next, count);
            failed = failure.happened();
        }
        while (walk.next() != nullptr) {
            ++met;
        }
        QCOMPARE(met, failed || count == 0 ? count : count + 1);
        QCOMPARE(valuesOf(set), failed ? expected : grown);
        QCOMPARE(set.contains(next), !failed);
        set.setValue(next, count);
        QCOMPARE(valuesOf(set), grown);
        for (int const number : shuffled(count + 1)) {
            QVERIFY(extractValueImpl(*set.data, QString::number(number)) == MultiType(number));
        }
        QVERIFY(set.isEmpty());
        if (!failed) {
            QVERIFY(nth > 0);
            return;
        }
    }
}

int main(int argc, char** argv)
{
    return runTest<EntriesTest>(argc, argv);
}

#include "EntriesTest.moc"
