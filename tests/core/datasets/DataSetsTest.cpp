#include <datasets/DataSets.h>

#include <QDebug>
#include <QSet>
#include <QVariant>
#include <RunTest.h>
#include <SmallStack.h>
#include <limits>
#include <map>
#include <memory>
#include <type_traits>
#include <unordered_set>
#include <vector>

using DataSets::DataIterator;
using DataSets::DataObject;
using DataSets::DataSet;
using namespace DataSets::Impl;

static_assert(std::is_convertible_v<decltype(*std::declval<DataSet const&>().begin()), DataObject const&>);
static_assert(std::is_base_of_v<DataObject, DataIterator>);
static_assert(std::is_same_v<Entries, std::map<Key, MultiType, KeyOrder>>);
static_assert(!std::is_final_v<DataSet> && !std::is_final_v<DataObject> && !std::is_final_v<DataIterator>);

namespace {

constexpr int farTooDeep = 100'000;

QString text(char const* latin1)
{
    return QString::fromLatin1(latin1);
}

QStringList keysOf(DataSet const& set)
{
    QStringList keys;
    DataIterator entries(set);
    while (DataObject const* entry = entries.next()) {
        keys << entry->key;
    }
    return keys;
}

DataSet objectWith(QStringList const& keys)
{
    DataSet set = DataSet::createObject();
    int value = 0;
    for (QString const& key : keys) {
        set.setValue(key, ++value);
    }
    return set;
}

DataSet arrayWith(QStringList const& keys)
{
    DataSet set = DataSet::createArray();
    int value = 0;
    for (QString const& key : keys) {
        set.setValue(key, ++value);
    }
    return set;
}

/// One entry of every kind, each under the name of its kind.
DataSet oneOfEach()
{
    DataSet set = DataSet::createObject();
    set.setValue(text("record"), createDS(true));
    set.setValue(text("bool"), true);
    set.setValue(text("uint"), 4294967295U);
    set.setValue(text("int"), -5);
    set.setValue(text("int64"), 1LL << 40);
    set.setValue(text("string"), text("text"));
    set.setValue(text("bytes"), QByteArray("a\0b", 3));
    set.setValue(text("utf8"), "\xc3\xa8");
    setValueImpl(*set.data, text("none"), MultiType());
    return set;
}

DataSet nestedTo(int depth)
{
    DataSet set = DataSet::createObject();
    for (int i = 0; i < depth; ++i) {
        DataSet outer(createDS(i % 2 == 0));
        outer.setValue(text("7"), set.data);
        set = outer;
    }
    return set;
}

/// Records that each hold a value and the next record, the last one the first. Only they own each other.
class Ring
{
public:
    explicit Ring(QString const& values)
    {
        std::vector<DataSet> sets;
        for (QChar const value : values) {
            sets.push_back(DataSet::createObject());
            sets.back().setValue(text("value"), QString(value));
            m_records.push_back(sets.back().data.get());
        }
        for (std::size_t i = 0; i < sets.size(); ++i) {
            sets[i].setValue(text("next"), sets[(i + 1) % sets.size()].data);
        }
    }
    ~Ring() { handle(0).clear(); }
    Ring(Ring const&) = delete;
    Ring& operator=(Ring const&) = delete;

    DataSetImpl const* record(std::size_t place) const { return m_records[place]; }

    DataSet handle(std::size_t place) const
    {
        DataSet handle;
        getDataValue(m_records[(place + m_records.size() - 1) % m_records.size()], text("next"), handle.data);
        return handle;
    }

private:
    std::vector<DataSetImpl const*> m_records;
};

} // namespace

class DataSetsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void walksInKeyOrder_data();
    void walksInKeyOrder();
    void walksWithRangeFor();
    void readsIndicesAsQStringDoes_data();
    void readsIndicesAsQStringDoes();
    void takesAnyTextInAnObject();
    void stepsWithTheFreeFunction();
    void endsOnAnEmptyKey();
    void restartsWhenTheKeyIsEmptied();
    void stopsWhenItsEntryIsRemoved();
    void walksWithAnIterator();
    void meetsEntriesAddedAheadUntilTheEnd();
    void isWalkedWhileItGrows_data();
    void isWalkedWhileItGrows();
    void isWalkedWhileItShrinks();
    void isWalkedWhileItsEntriesAreWritten();
    void walksOnInAnotherRecord();
    void findsAndGoesOn();
    void followsAChangedKey();
    void readsTheValueOfAnEntry();
    void readsAndWritesTheEntriesThemselves();
    void findsEntriesByEveryKindOfKey();
    void sortsTextsBeforeIndices();
    void keepsValuesInPlace();
    void reportsTypes_data();
    void reportsTypes();
    void readsOnlyTheExactKind();
    void overwritesWithAnotherKind();
    void emplacesACopy();
    void movesOutAndLosesMismatches();
    void removesWithTheReversedAnswer();
    void clearsAndKeepsTheKind();
    void comparesContent_data();
    void comparesContent();
    void sharesRecords();
    void copiesOneEntryOfAnyKind();
    void copiesNoEntryBetweenKinds();
    void setsDataOfFiveKinds_data();
    void setsDataOfFiveKinds();
    void setsDataIntoAnArray();
    void copiesDataSets();
    void answersForANullHandle();
    void answersForANullRecord();
    void survivesDeepNesting();
    void comparesRecordsThatContainThemselves();
    void comparesRings_data();
    void comparesRings();
    void comparesPlacesOfOneRing();
    void comparesRecordsThatAreSharedManyTimes();
    void hashesAndPrints();
};

void DataSetsTest::walksInKeyOrder_data()
{
    QTest::addColumn<bool>("isArray");
    QTest::addColumn<QStringList>("set");
    QTest::addColumn<QStringList>("walked");
    QTest::newRow("no entries") << false << QStringList() << QStringList();
    QTest::newRow("texts by code unit, capitals first")
        << false << QStringList({text("b"), text("a"), text("B")})
        << QStringList({text("B"), text("a"), text("b")});
    QTest::newRow("surrogates before the private use area")
        << false << QStringList({QString(QChar(0xe000)), QString::fromUcs4(U"\U0001f600", 1)})
        << QStringList({QString::fromUcs4(U"\U0001f600", 1), QString(QChar(0xe000))});
    QTest::newRow("digits as text") << false << QStringList({text("2"), text("10")})
                                    << QStringList({text("10"), text("2")});
    QTest::newRow("indices as numbers")
        << true << QStringList({text("10"), text("2")}) << QStringList({text("2"), text("10")});
    QTest::newRow("negative indices first")
        << true << QStringList({text("0"), text("-1"), text("2147483647"), text("-2147483648")})
        << QStringList({text("-2147483648"), text("-1"), text("0"), text("2147483647")});
    QTest::newRow("no index, nothing stored") << true << QStringList({text("x")}) << QStringList();
    QTest::newRow("one index twice") << true << QStringList({text("3"), text("03")})
                                     << QStringList({text("3")});
}

void DataSetsTest::walksInKeyOrder()
{
    QFETCH(bool, isArray);
    QFETCH(QStringList, set);
    QFETCH(QStringList, walked);
    QCOMPARE(keysOf(isArray ? arrayWith(set) : objectWith(set)), walked);
}

void DataSetsTest::walksWithRangeFor()
{
    DataSet const set = arrayWith({text("10"), text("2"), text("7")});
    QStringList keys;
    QList<int> values;
    for (DataObject const& entry : set) {
        keys << entry.key;
        int value = 0;
        entry.value()->get(value);
        values << value;
        QCOMPARE(entry.data, set.data);
    }
    QCOMPARE(keys, QStringList({text("2"), text("7"), text("10")}));
    QCOMPARE(values, QList<int>({2, 3, 1}));
    for (DataObject const& entry : DataSet()) {
        QFAIL(qPrintable(entry.key));
    }
}

void DataSetsTest::readsIndicesAsQStringDoes_data()
{
    QTest::addColumn<QString>("key");
    char const* const keys[] = {"",
                                "0",
                                "3",
                                "03",
                                "+3",
                                " 3",
                                "3 ",
                                "\t3\n",
                                "-3",
                                "- 3",
                                "--3",
                                "+-3",
                                "x",
                                "3x",
                                "0x3",
                                "1e2",
                                "1.0",
                                "1,000",
                                "999999999",
                                "0000000003",
                                "000000000000000000000000000003",
                                "2147483647",
                                "2147483648",
                                "-2147483648",
                                "-2147483649",
                                "99999999999999999999"};
    for (char const* key : keys) {
        QTest::addRow("\"%s\"", key) << text(key);
    }
    QTest::newRow("Arabic digit") << QString(QChar(0x0663));
    QTest::newRow("full-width digit") << QString(QChar(0xff13));
    QTest::newRow("no-break space") << QString(QChar(0xa0)) + text("3");
    QTest::newRow("embedded zero") << text("3") + QChar(0) + text("4");
}

void DataSetsTest::readsIndicesAsQStringDoes()
{
    QFETCH(QString, key);
    bool isIndex = false;
    int const index = key.toInt(&isIndex);
    DataSet set = DataSet::createArray();
    QCOMPARE(isValidKey(*set.data, key), isIndex);
    set.setValue(key, 1);
    QCOMPARE(set.count(), isIndex ? 1 : 0);
    QCOMPARE(set.contains(key), isIndex);
    QCOMPARE(keysOf(set), isIndex ? QStringList(QString::number(index)) : QStringList());
    QCOMPARE(extractValueImpl(*set.data, key) == MultiType(1), isIndex);
    QVERIFY(set.isEmpty());
}

void DataSetsTest::takesAnyTextInAnObject()
{
    DataSet const set = DataSet::createObject();
    for (QString const& key : {QString(), text("x"), text("3"), QString(QChar(0xd800)), QString(QChar(0))}) {
        QVERIFY(isValidKey(*set.data, key));
        QVERIFY(!set.contains(key));
    }
}

void DataSetsTest::stepsWithTheFreeFunction()
{
    DataSet const set = objectWith({text("b"), text("a")});
    QString key;
    QVERIFY(*getNextValueImpl(set.data.get(), key) == MultiType(2));
    QCOMPARE(key, text("a"));
    QVERIFY(*getNextValueImpl(set.data.get(), key) == MultiType(1));
    QCOMPARE(key, text("b"));
    QVERIFY(getNextValueImpl(set.data.get(), key) == nullptr);
    QCOMPARE(key, text("b"));

    QString missing = text("aa");
    QVERIFY(getNextValueImpl(set.data.get(), missing) == nullptr);
    QCOMPARE(missing, text("aa"));
    QString start;
    QVERIFY(getNextValueImpl(nullptr, start) == nullptr);
    QVERIFY(getNextValueImpl(DataSet::createArray().data.get(), start) == nullptr);

    DataSet const array = arrayWith({text("10"), text("2")});
    key = text("02");
    QVERIFY(*getNextValueImpl(array.data.get(), key) == MultiType(1));
    QCOMPARE(key, text("10"));

    // The empty key is the place before the first entry, so it comes round again.
    DataSet const withEmpty = objectWith({QString()});
    QString empty;
    QVERIFY(getNextValueImpl(withEmpty.data.get(), empty) != nullptr);
    QVERIFY(getNextValueImpl(withEmpty.data.get(), empty) != nullptr);
}

void DataSetsTest::endsOnAnEmptyKey()
{
    DataSet const set = objectWith({text(""), text("a")});
    QCOMPARE(keysOf(set), QStringList({text(""), text("a")}));
    QCOMPARE(keysOf(objectWith({QString()})), QStringList({QString()}));

    DataIterator entries(set);
    entries.next();
    // Also when its place is lost, because another entry was removed.
    deleteValueImpl(*set.data, text("a"));
    QVERIFY(entries.next() == nullptr);
    QVERIFY(entries.atEnd);

    DataSet const walked = objectWith({text(""), text("a")});
    int met = 0;
    for (DataObject const& entry : walked) {
        QCOMPARE(entry.key, QString());
        deleteValueImpl(*walked.data, text("a"));
        ++met;
    }
    QCOMPARE(met, 1);

    DataIterator found(set);
    QVERIFY(found.find(QString()) != nullptr);
    QVERIFY(found.next() == nullptr);
}

void DataSetsTest::restartsWhenTheKeyIsEmptied()
{
    DataSet const set = objectWith({text("a"), text("b")});
    DataIterator entries(set);
    entries.next();
    entries.next();
    entries.key.clear();
    QCOMPARE(entries.next(), static_cast<DataObject*>(&entries));
    QCOMPARE(entries.key, text("a"));

    DataSet const withEmpty = objectWith({text(""), text("a")});
    DataIterator others(withEmpty);
    others.next();
    others.next();
    others.key.clear();
    QVERIFY(others.next() != nullptr);
    QCOMPARE(others.key, QString());
    QVERIFY(*others.value() == MultiType(1));
}

void DataSetsTest::stopsWhenItsEntryIsRemoved()
{
    DataSet set = objectWith({text("a"), text("b"), text("c")});
    DataIterator entries(set);
    entries.next();
    set.deleteValue(text("a"));
    QVERIFY(entries.value() == nullptr);
    QVERIFY(entries.next() == nullptr);
    QVERIFY(entries.atEnd);
    QCOMPARE(entries.key, text("a"));

    DataIterator others(set);
    others.next();
    set.deleteValue(text("c"));
    QVERIFY(*others.value() == MultiType(2));
    QVERIFY(others.next() == nullptr);

    DataIterator cleared(set);
    cleared.next();
    set.clear();
    QVERIFY(cleared.next() == nullptr);

    DataSet array = arrayWith({text("1"), text("2")});
    DataIterator elements(array);
    elements.next();
    extractValueImpl(*array.data, text("1"));
    array.setValue(text("1"), 9);
    QVERIFY(*elements.value() == MultiType(9));
    QVERIFY(elements.next() != nullptr);
    QCOMPARE(elements.key, text("2"));
}

void DataSetsTest::walksWithAnIterator()
{
    auto entry = objectWith({text("a"), text("b")}).begin();
    QCOMPARE(entry->key, text("a"));
    entry++;
    QCOMPARE((*entry).key, text("b"));
    QVERIFY(entry != std::default_sentinel);
    ++entry;
    QVERIFY(entry == std::default_sentinel);
}

void DataSetsTest::meetsEntriesAddedAheadUntilTheEnd()
{
    DataSet set = objectWith({text("a"), text("d")});
    DataIterator entries(set);
    entries.next();
    set.setValue(text("b"), 0);
    entries.next();
    QCOMPARE(entries.key, text("b"));

    while (entries.next() != nullptr) {
    }
    set.setValue(text("e"), 0);
    QVERIFY(entries.next() == nullptr);
    QCOMPARE(entries.key, text("d"));
}

void DataSetsTest::isWalkedWhileItGrows_data()
{
    QTest::addColumn<bool>("isArray");
    QTest::newRow("texts") << false;
    QTest::newRow("indices") << true;
}

void DataSetsTest::isWalkedWhileItGrows()
{
    QFETCH(bool const, isArray);
    // Each tenth number is there at first; the walk adds the one before it, which it has passed, and the one
    // after it, which it meets.
    auto const name = [](int number) { return QString::number(10'000 + number); };
    DataSet set(createDS(isArray));
    QList<int> expected;
    for (int number = 10; number < 1'000; number += 10) {
        set.setValue(name(number), number);
        expected << number << number + 1;
    }
    QList<int> met;
    DataIterator entries(set);
    while (DataObject const* entry = entries.next()) {
        int number = 0;
        entry->value()->get(number);
        met << number;
        if (number % 10 == 0) {
            set.setValue(name(number - 1), number - 1);
            set.setValue(name(number + 1), number + 1);
        }
    }
    QCOMPARE(met, expected);
    QCOMPARE(set.count(), 3 * 99);
}

void DataSetsTest::isWalkedWhileItShrinks()
{
    DataSet set = DataSet::createArray();
    for (int number = 0; number < 1'000; ++number) {
        set.setValue(QString::number(number), number);
    }
    QList<int> met;
    for (DataObject const& entry : set) {
        int const number = entry.key.toInt();
        met << number;
        for (int const offset : {-1, 1, 2}) {
            extractValueImpl(*set.data, QString::number(number + offset));
        }
        QVERIFY(*entry.value() == MultiType(number));
    }
    QCOMPARE(met.size(), 334);
    QCOMPARE(met.at(100), 300);
    QCOMPARE(set.count(), 334);
}

void DataSetsTest::isWalkedWhileItsEntriesAreWritten()
{
    DataSet const set = objectWith({text("a"), text("d")});
    DataIterator entries(set);
    entries.next();
    set.data->entries[text("a")] = 7;
    set.data->entries.emplace(text("b"), 8);
    QVERIFY(*entries.value() == MultiType(7));
    entries.next();
    QCOMPARE(entries.key, text("b"));
    QVERIFY(*entries.value() == MultiType(8));
}

void DataSetsTest::walksOnInAnotherRecord()
{
    // The record that is walked goes, and others come where it was.
    DataIterator entries{objectWith({text("a"), text("b")})};
    entries.next();
    for (int i = 0; i < 10; ++i) {
        entries.data.reset();
        QVERIFY(entries.value() == nullptr);
        entries.data = objectWith({text("a"), text("c")}).data;
        QVERIFY(*entries.value() == MultiType(1));
    }
    entries.next();
    QCOMPARE(entries.key, text("c"));
}

void DataSetsTest::findsAndGoesOn()
{
    DataSet const set = arrayWith({text("1"), text("3"), text("5")});
    DataIterator entries(set);
    QCOMPARE(entries.find(text("03")), static_cast<DataObject*>(&entries));
    QCOMPARE(entries.key, text("03"));
    QVERIFY(*entries.value() == MultiType(2));
    QVERIFY(entries.find(text("4")) == nullptr);
    QVERIFY(entries.find(text("x")) == nullptr);
    QCOMPARE(entries.key, text("03"));
    entries.next();
    QCOMPARE(entries.key, text("5"));
    QVERIFY(entries.next() == nullptr);
    QVERIFY(entries.next() == nullptr);
    QVERIFY(entries.find(text("1")) != nullptr);
    QVERIFY(!entries.atEnd);
    entries.next();
    QCOMPARE(entries.key, text("3"));
    DataIterator ofNothing{DataSet()};
    QVERIFY(ofNothing.find(QString()) == nullptr);
}

void DataSetsTest::followsAChangedKey()
{
    DataSet const set = objectWith({text("a"), text("b"), text("c")});
    DataIterator entries(set);
    entries.next();
    entries.key = text("b");
    QVERIFY(*entries.value() == MultiType(2));
    entries.next();
    QCOMPARE(entries.key, text("c"));

    DataSet const array = arrayWith({text("1"), text("2"), text("3")});
    DataIterator elements(array);
    elements.next();
    elements.key[0] = QLatin1Char('2');
    QVERIFY(*elements.value() == MultiType(2));
    elements.next();
    QCOMPARE(elements.key, text("3"));
    elements.data = set.data;
    QVERIFY(elements.value() == nullptr);
    elements.data.reset();
    QVERIFY(elements.value() == nullptr);
}

void DataSetsTest::readsTheValueOfAnEntry()
{
    DataSet const set = objectWith({text("a")});
    QVERIFY(*DataObject(set.data, text("a")).value() == MultiType(1));
    QVERIFY(DataObject(set.data, text("b")).value() == nullptr);
    QVERIFY(DataObject().value() == nullptr);
    QVERIFY(DataIterator(set).value() == nullptr);
}

void DataSetsTest::readsAndWritesTheEntriesThemselves()
{
    DataSet const set = objectWith({text("a")});
    Entries& entries = set.data->entries;
    entries[text("c")] = text("third");
    entries.emplace(text("b"), 2U);
    entries.try_emplace(text("d"), QByteArray("fourth"));
    QVERIFY(!entries.try_emplace(text("d"), 5).second);
    QCOMPARE(set.count(), 4);
    QCOMPARE(set.value<QString>(text("c")), text("third"));
    QCOMPARE(set.value<unsigned int>(text("b")), 2U);
    QCOMPARE(set.value<QByteArray>(text("d")), QByteArray("fourth"));

    QStringList backwards;
    for (auto entry = entries.rbegin(); entry != entries.rend(); ++entry) {
        backwards << std::get<QString>(entry->first);
    }
    QCOMPARE(backwards, QStringList({text("d"), text("c"), text("b"), text("a")}));
    QCOMPARE(entries.erase(text("c")), std::size_t(1));
    QVERIFY(!set.contains(text("c")));
    entries.clear();
    QVERIFY(set.isEmpty());
}

void DataSetsTest::findsEntriesByEveryKindOfKey()
{
    DataSet const object = objectWith({text("name"), QString()});
    Entries const& entries = object.data->entries;
    QCOMPARE(entries.find(QStringView(u"name"))->second, MultiType(1));
    QCOMPARE(entries.find(text("name"))->second, MultiType(1));
    QCOMPARE(entries.find(QLatin1String("name"))->second, MultiType(1));
    QCOMPARE(entries.find(Key(text("name")))->second, MultiType(1));
    QCOMPARE(entries.find(text(""))->second, MultiType(2));
    QCOMPARE(entries.lower_bound(text("a"))->second, MultiType(1));
    QVERIFY(entries.upper_bound(text("name")) == entries.end());
    QVERIFY(!entries.contains(text("nam")));
    QVERIFY(!entries.contains(0));

    DataSet const array = arrayWith({text("-1"), text("2")});
    QCOMPARE(array.data->entries.find(2)->second, MultiType(2));
    QCOMPARE(array.data->entries.find(Key(2))->second, MultiType(2));
    QCOMPARE(array.data->entries.lower_bound(0)->second, MultiType(2));
    QVERIFY(!array.data->entries.contains(text("2")));
}

void DataSetsTest::sortsTextsBeforeIndices()
{
    DataSet const set = DataSet::createObject();
    for (Key const& key : {Key(5), Key(text("b")), Key(-5), Key(QString()), Key(text("5"))}) {
        set.data->entries[key] = 1;
    }
    std::vector<Key> keys;
    for (auto const& [key, value] : set.data->entries) {
        keys.push_back(key);
    }
    QVERIFY(keys == std::vector<Key>({QString(), text("5"), text("b"), -5, 5}));
    QVERIFY(set.data->entries.contains(5));
    QVERIFY(set.data->entries.contains(text("5")));
}

void DataSetsTest::keepsValuesInPlace()
{
    DataSet set = objectWith({text("m")});
    MultiType const* const value = getValueImpl(set.data.get(), text("m"));
    for (int number = 0; number < 1'000; ++number) {
        set.setValue(QString::number(number), number);
    }
    set.setValue(text("m"), text("new"));
    extractValueImpl(*set.data, text("500"));
    QCOMPARE(getValueImpl(set.data.get(), text("m")), value);
    QVERIFY(*value == MultiType("new"));
}

void DataSetsTest::reportsTypes_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<int>("type");
    QTest::newRow("missing") << text("missing") << 0;
    QTest::newRow("nothing") << text("none") << 0;
    QTest::newRow("record") << text("record") << 1;
    QTest::newRow("unsigned") << text("uint") << 2;
    QTest::newRow("signed") << text("int") << 3;
    QTest::newRow("truth") << text("bool") << 4;
    QTest::newRow("text") << text("string") << 5;
    QTest::newRow("UTF-8 text") << text("utf8") << 5;
    QTest::newRow("bytes") << text("bytes") << 6;
    QTest::newRow("long long") << text("int64") << 7;
}

void DataSetsTest::reportsTypes()
{
    QFETCH(QString, key);
    DataSet const set = oneOfEach();
    QTEST(set.type(key), "type");
    QTEST(getDataType(set.data.get(), key), "type");
    QCOMPARE(set.count(), 9);
}

void DataSetsTest::readsOnlyTheExactKind()
{
    DataSet const set = oneOfEach();
    for (QString const& key : keysOf(set)) {
        int const type = set.type(key);
        QCOMPARE(set.value<std::shared_ptr<DataSetImpl>>(key).has_value(), type == MultiType::DataSet);
        QCOMPARE(set.value<bool>(key).has_value(), type == MultiType::Bool);
        QCOMPARE(set.value<unsigned int>(key).has_value(), type == MultiType::UInt);
        QCOMPARE(set.value<int>(key).has_value(), type == MultiType::Int);
        QCOMPARE(set.value<long long>(key).has_value(), type == MultiType::Int64);
        QCOMPARE(set.value<QString>(key).has_value(), type == MultiType::String);
        QCOMPARE(set.value<QByteArray>(key).has_value(), type == MultiType::ByteArray);
    }
    QCOMPARE(set.value<bool>(text("bool")), true);
    QCOMPARE(set.value<unsigned int>(text("uint")), 4294967295U);
    QCOMPARE(set.value<int>(text("int")), -5);
    QCOMPARE(set.value<long long>(text("int64")), 1LL << 40);
    QCOMPARE(set.value<QString>(text("string")), text("text"));
    QCOMPARE(set.value<QString>(text("utf8")), QString(QChar(0xe8)));
    QCOMPARE(set.value<QByteArray>(text("bytes")), QByteArray("a\0b", 3));

    int untouched = 77;
    QVERIFY(!set.getValue(text("uint"), untouched));
    QVERIFY(!set.getValue(text("missing"), untouched));
    QCOMPARE(untouched, 77);
}

void DataSetsTest::overwritesWithAnotherKind()
{
    DataSet set = objectWith({text("k")});
    set.setValue(text("k"), text("now a text"));
    QCOMPARE(set.count(), 1);
    QCOMPARE(set.value<QString>(text("k")), text("now a text"));
    // A value that lies in the entry that is overwritten.
    setValueImpl(*set.data, text("k"), *getValueImpl(set.data.get(), text("k")));
    QCOMPARE(set.value<QString>(text("k")), text("now a text"));
}

void DataSetsTest::emplacesACopy()
{
    DataSet const set = DataSet::createObject();
    QString string = text("kept");
    QByteArray bytes = "kept";
    std::shared_ptr<DataSetImpl> record = createDS(false);
    bool truth = true;
    unsigned int number = 1;
    int signedNumber = -1;
    long long longNumber = -2;
    emplaceDataValue(*set.data, text("string"), string);
    emplaceDataValue(*set.data, text("bytes"), bytes);
    emplaceDataValue(*set.data, text("record"), record);
    emplaceDataValue(*set.data, text("bool"), truth);
    emplaceDataValue(*set.data, text("uint"), number);
    emplaceDataValue(*set.data, text("int"), signedNumber);
    emplaceDataValue(*set.data, text("int64"), longNumber);
    QCOMPARE(string, text("kept"));
    QCOMPARE(bytes, QByteArray("kept"));
    QVERIFY(record != nullptr);
    QCOMPARE(set.value<QString>(text("string")), string);
    QCOMPARE(set.value<QByteArray>(text("bytes")), bytes);
    QCOMPARE(set.value<std::shared_ptr<DataSetImpl>>(text("record")), record);
    QCOMPARE(set.value<bool>(text("bool")), true);
    QCOMPARE(set.value<unsigned int>(text("uint")), 1U);
    QCOMPARE(set.value<int>(text("int")), -1);
    QCOMPARE(set.value<long long>(text("int64")), -2LL);
}

void DataSetsTest::movesOutAndLosesMismatches()
{
    DataSet set = oneOfEach();
    int number = 77;
    QVERIFY(!set.moveValue(text("string"), number));
    QVERIFY(!set.contains(text("string")));
    QVERIFY(!set.moveValue(text("string"), number));
    QCOMPARE(number, 77);

    std::shared_ptr<DataSetImpl> record;
    bool truth = false;
    unsigned int unsignedNumber = 0;
    long long longNumber = 0;
    QString string;
    QByteArray bytes;
    QVERIFY(set.moveValue(text("record"), record));
    QVERIFY(set.moveValue(text("bool"), truth));
    QVERIFY(set.moveValue(text("uint"), unsignedNumber));
    QVERIFY(set.moveValue(text("int"), number));
    QVERIFY(set.moveValue(text("int64"), longNumber));
    QVERIFY(set.moveValue(text("utf8"), string));
    QVERIFY(set.moveValue(text("bytes"), bytes));
    QVERIFY(record && record->isArray && record.use_count() == 1);
    QVERIFY(truth);
    QCOMPARE(unsignedNumber, 4294967295U);
    QCOMPARE(number, -5);
    QCOMPARE(longNumber, 1LL << 40);
    QCOMPARE(string, QString(QChar(0xe8)));
    QCOMPARE(bytes, QByteArray("a\0b", 3));
    QCOMPARE(keysOf(set), QStringList({text("none")}));

    DataSet array = arrayWith({text("3")});
    QVERIFY(array.moveValue(text("03"), number));
    QVERIFY(array.isEmpty());
}

void DataSetsTest::removesWithTheReversedAnswer()
{
    DataSet set = objectWith({text("a"), text("b")});
    QCOMPARE(deleteDataValue(*set.data, text("missing")), true);
    QCOMPARE(deleteDataValue(*set.data, text("a")), false);
    QCOMPARE(deleteDataValue(*set.data, text("a")), true);
    QCOMPARE(set.deleteValue(text("b")), false);
    QVERIFY(set.isEmpty());

    DataSet array = arrayWith({text("3")});
    QCOMPARE(deleteDataValue(*array.data, text("3")), true);
    QCOMPARE(deleteValueImpl(*array.data, text("3")), true);
    QCOMPARE(array.deleteValue(text("3")), true);
    QCOMPARE(array.count(), 1);
}

void DataSetsTest::clearsAndKeepsTheKind()
{
    DataSet array = arrayWith({text("3")});
    array.clear();
    QVERIFY(array.isEmpty());
    QVERIFY(array.isArray());
    DataSet const object = objectWith({text("a")});
    clearDataObjects(*object.data);
    QVERIFY(object.isEmpty());
    QVERIFY(!object.isArray());
}

void DataSetsTest::comparesContent_data()
{
    QTest::addColumn<DataSet>("left");
    QTest::addColumn<DataSet>("right");
    QTest::addColumn<bool>("equal");
    auto const nested = [](DataSet const& inner) {
        DataSet outer = DataSet::createObject();
        outer.setValue(text("inner"), inner.data);
        return outer;
    };
    DataSet otherValue = objectWith({text("a")});
    otherValue.setValue(text("a"), 2);
    DataSet otherKind = objectWith({text("a")});
    otherKind.setValue(text("a"), 1U);
    QTest::newRow("two null handles") << DataSet() << DataSet() << true;
    QTest::newRow("null and empty object") << DataSet() << DataSet::createObject() << true;
    QTest::newRow("null and empty array") << DataSet() << DataSet::createArray() << true;
    QTest::newRow("null and filled") << DataSet() << objectWith({text("a")}) << false;
    QTest::newRow("empty object and empty array")
        << DataSet::createObject() << DataSet::createArray() << false;
    QTest::newRow("same entries") << objectWith({text("a"), text("b")}) << objectWith({text("a"), text("b")})
                                  << true;
    QTest::newRow("other value") << objectWith({text("a")}) << otherValue << false;
    QTest::newRow("other kind of value") << objectWith({text("a")}) << otherKind << false;
    QTest::newRow("other key") << objectWith({text("a")}) << objectWith({text("A")}) << false;
    QTest::newRow("one entry more") << objectWith({text("a")}) << objectWith({text("a"), text("b")}) << false;
    QTest::newRow("text key and index") << objectWith({text("3")}) << arrayWith({text("3")}) << false;
    QTest::newRow("same indices") << arrayWith({text("3")}) << arrayWith({text("03")}) << true;
    QTest::newRow("nested, equal") << nested(objectWith({text("a")})) << nested(objectWith({text("a")}))
                                   << true;
    QTest::newRow("nested, other") << nested(objectWith({text("a")})) << nested(otherValue) << false;
    QTest::newRow("nested null and empty") << nested(DataSet()) << nested(DataSet::createArray()) << true;
    QTest::newRow("nested empty object and array")
        << nested(DataSet::createObject()) << nested(DataSet::createArray()) << false;
    QTest::newRow("one of each") << oneOfEach() << oneOfEach() << true;
}

void DataSetsTest::comparesContent()
{
    QFETCH(DataSet, left);
    QFETCH(DataSet, right);
    QFETCH(bool, equal);
    QCOMPARE(left == right, equal);
    QCOMPARE(right == left, equal);
    QCOMPARE(left != right, !equal);
    QCOMPARE(compare(left.data.get(), right.data.get()), equal);
    QVERIFY(left == left);
    QVERIFY(!equal || qHash(left, 5) == qHash(right, 5));
}

void DataSetsTest::sharesRecords()
{
    DataSet set = DataSet::createObject();
    DataSet const copy = set;
    set.setValue(text("a"), 1);
    QCOMPARE(copy.count(), 1);
    DataSet child = DataSet::createArray();
    set.setValue(text("child"), child.data);
    child.setValue(text("0"), 5);
    auto const stored = copy.value<std::shared_ptr<DataSetImpl>>(text("child"));
    QCOMPARE(stored.value(), child.data);
    QCOMPARE(getDataCount(stored->get()), 1);
}

void DataSetsTest::copiesOneEntryOfAnyKind()
{
    DataSet const source = oneOfEach();
    DataSet target = objectWith({text("int"), text("other")});
    for (QString const& key : keysOf(source)) {
        target.copyDataFromDataSet(key, source);
        QVERIFY(*getValueImpl(target.data.get(), key) == *getValueImpl(source.data.get(), key));
    }
    QCOMPARE(target.count(), source.count() + 1);
    QCOMPARE(target.value<std::shared_ptr<DataSetImpl>>(text("record")),
             source.value<std::shared_ptr<DataSetImpl>>(text("record")));
    target.copyDataFromDataSet(text("missing"), source);
    QVERIFY(!target.contains(text("missing")));

    DataSet const array = arrayWith({text("3")});
    DataSet const other = DataSet::createArray();
    copyDataValue(other.data.get(), text("03"), array.data.get());
    QCOMPARE(keysOf(other), QStringList({text("3")}));
    copyDataValue(other.data.get(), text("3"), other.data.get());
    QVERIFY(other == array);
}

void DataSetsTest::copiesNoEntryBetweenKinds()
{
    DataSet const object = objectWith({text("3")});
    DataSet const array = DataSet::createArray();
    copyDataValue(array.data.get(), text("3"), object.data.get());
    QVERIFY(array.isEmpty());
    copyDataValue(nullptr, text("3"), object.data.get());
    copyDataValueImpl(object.data.get(), text("3"), nullptr);
    QCOMPARE(object.count(), 1);
}

void DataSetsTest::setsDataOfFiveKinds_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<bool>("copied");
    QTest::newRow("record") << text("record") << true;
    QTest::newRow("unsigned") << text("uint") << true;
    QTest::newRow("signed") << text("int") << true;
    QTest::newRow("truth") << text("bool") << true;
    QTest::newRow("text") << text("string") << true;
    QTest::newRow("bytes") << text("bytes") << false;
    QTest::newRow("long long") << text("int64") << false;
    QTest::newRow("nothing") << text("none") << false;
    QTest::newRow("missing") << text("missing") << false;
}

void DataSetsTest::setsDataOfFiveKinds()
{
    QFETCH(QString, key);
    QFETCH(bool, copied);
    DataSet const source = oneOfEach();
    DataSet target = DataSet::createObject();
    QCOMPARE(target.setData(DataObject(source.data, key)), copied);
    QCOMPARE(target.contains(key), copied);
    if (copied) {
        QVERIFY(*getValueImpl(target.data.get(), key) == *getValueImpl(source.data.get(), key));
    }
    QVERIFY(!target.setData(DataObject(nullptr, key)));
}

void DataSetsTest::setsDataIntoAnArray()
{
    DataSet const source = objectWith({text("x"), text("+3")});
    DataSet array = DataSet::createArray();
    QVERIFY(array.setData(DataObject(source.data, text("x"))));
    QVERIFY(array.isEmpty());
    QVERIFY(array.setData(DataObject(source.data, text("+3"))));
    QCOMPARE(keysOf(array), QStringList({text("3")}));
}

void DataSetsTest::copiesDataSets()
{
    DataSet target = objectWith({text("int"), text("mine")});
    target.copyDataSet(oneOfEach());
    QCOMPARE(keysOf(target), QStringList({text("bool"), text("int"), text("mine"), text("record"),
                                          text("string"), text("uint"), text("utf8")}));
    QCOMPARE(target.value<int>(text("int")), -5);
    target.copyDataSet(target);
    target.copyDataSet(DataSet());
    QCOMPARE(target.count(), 7);

    DataSet withEmpty = DataSet::createObject();
    withEmpty.copyDataSet(objectWith({QString(), text("a")}));
    QCOMPARE(withEmpty.count(), 2);
}

void DataSetsTest::answersForANullHandle()
{
    DataSet null;
    QVERIFY(null.isEmpty());
    QVERIFY(!null.isArray());
    QVERIFY(!null.contains(QString()));
    QCOMPARE(null.count(), 0);
    QCOMPARE(null.type(text("a")), 0);
    int value = 77;
    QVERIFY(!null.getValue(text("a"), value));
    QVERIFY(!null.value<int>(text("a")));
    QVERIFY(!null.moveValue(text("a"), value));
    QCOMPARE(value, 77);
    null.setValue(text("a"), 1);
    null.clear();
    null.copyDataSet(objectWith({text("a")}));
    null.copyDataFromDataSet(text("a"), objectWith({text("a")}));
    QVERIFY(!null.setData(DataObject(objectWith({text("a")}).data, text("a"))));
    QVERIFY(null.deleteValue(text("a")));
    QVERIFY(null.data == nullptr);
    QCOMPARE(keysOf(null), QStringList());
    QVERIFY(null == DataSet(nullptr));
}

void DataSetsTest::answersForANullRecord()
{
    int value = 77;
    QVERIFY(getValueImpl(nullptr, text("a")) == nullptr);
    QCOMPARE(getDataType(nullptr, text("a")), 0);
    QCOMPARE(getDataCount(nullptr), 0);
    QVERIFY(!getDataValue(nullptr, text("a"), value));
    QVERIFY(compare(nullptr, nullptr));
}

void DataSetsTest::survivesDeepNesting()
{
    bool equal = false;
    bool different = true;
    runOnSmallStack([&] {
        DataSet const first = nestedTo(farTooDeep);
        DataSet const second = nestedTo(farTooDeep);
        DataSet const deeper = nestedTo(farTooDeep + 2);
        equal = first == second;
        different = first == deeper;
        DataSet cleared = nestedTo(farTooDeep);
        cleared.clear();
        MultiType value(nestedTo(farTooDeep).data);
        value = MultiType(1);
    });
    QVERIFY(equal);
    QVERIFY(!different);
}

void DataSetsTest::comparesRecordsThatContainThemselves()
{
    DataSet first = objectWith({text("a")});
    DataSet second = objectWith({text("a")});
    first.setValue(text("self"), first.data);
    second.setValue(text("self"), second.data);
    QVERIFY(first == first);
    QVERIFY(first == second);
    second.setValue(text("a"), 2);
    QVERIFY(first != second);
    // Each contains the other, so that the levels alternate between two records.
    second.setValue(text("a"), 1);
    first.setValue(text("self"), second.data);
    second.setValue(text("self"), first.data);
    QVERIFY(first == second);
    first.clear();
    second.clear();
}

void DataSetsTest::comparesRings_data()
{
    QTest::addColumn<QString>("values");
    QTest::addColumn<QString>("otherValues");
    QTest::addColumn<bool>("equal");
    QTest::newRow("one record each") << text("a") << text("a") << true;
    QTest::newRow("one record each, different") << text("a") << text("b") << false;
    QTest::newRow("one round and two") << text("ab") << text("abab") << true;
    QTest::newRow("lengths without a common divisor") << text("aaa") << text("aaaaa") << true;
    QTest::newRow("difference at the far end") << text("aaaaaaaa") << text("aaaaaaab") << false;
    QTest::newRow("difference met in the third round") << text("aaa") << text("aaaaaaab") << false;
}

void DataSetsTest::comparesRings()
{
    QFETCH(QString, values);
    QFETCH(QString, otherValues);
    QFETCH(bool, equal);
    Ring const ring(values);
    Ring const other(otherValues);
    QCOMPARE(compare(ring.record(0), other.record(0)), equal);
    // A handle is one owner more, which must not matter.
    DataSet const handle = ring.handle(0);
    QCOMPARE(compare(handle.data.get(), other.record(0)), equal);
    QCOMPARE(handle == other.handle(0), equal);
}

void DataSetsTest::comparesPlacesOfOneRing()
{
    Ring const ring(text("abab"));
    QVERIFY(ring.handle(0) == ring.handle(2));
    QVERIFY(ring.handle(1) == ring.handle(3));
    QVERIFY(ring.handle(0) != ring.handle(1));
    QVERIFY(compare(ring.record(0), ring.record(2)));
    QVERIFY(!compare(ring.record(0), ring.record(3)));
}

void DataSetsTest::comparesRecordsThatAreSharedManyTimes()
{
    // Every level holds the next one twice: 2^60 ways lead to the innermost record.
    auto const build = [](int innermost) {
        DataSet set = DataSet::createObject();
        set.setValue(text("value"), innermost);
        for (int i = 0; i < 60; ++i) {
            DataSet outer = DataSet::createArray();
            outer.setValue(text("0"), set.data);
            outer.setValue(text("1"), set.data);
            set = outer;
        }
        return set;
    };
    QVERIFY(build(1) == build(1));
    QVERIFY(build(1) != build(2));
}

void DataSetsTest::hashesAndPrints()
{
    DataSet const set = objectWith({text("b"), text("a")});
    QSet<DataSet> const sets{set, objectWith({text("b"), text("a")}), DataSet(), DataSet::createArray(),
                             arrayWith({text("1")})};
    QCOMPARE(sets.size(), 3);
    std::unordered_set<DataSet> const standardSets(sets.begin(), sets.end());
    QVERIFY(standardSets.contains(set));
    QCOMPARE(QVariant::fromValue(set).value<DataSet>(), set);
    QCOMPARE(QDebug::toString(set), text("DataSet({\"a\": Int(2), \"b\": Int(1)})"));
    QCOMPARE(QDebug::toString(DataSet()), text("DataSet({})"));
    std::unique_ptr<char[]> const shown(toString(arrayWith({text("3")})));
    QCOMPARE(shown.get(), "DataSet([3: Int(1)])");
}

int main(int argc, char** argv)
{
    return runTest<DataSetsTest>(argc, argv);
}

#include "DataSetsTest.moc"
