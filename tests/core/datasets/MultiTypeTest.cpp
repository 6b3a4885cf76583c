#include <datasets/DataSets.h>
#include <datasets/MultiType.h>

#include <QDebug>
#include <QSet>
#include <QVariant>
#include <RunTest.h>
#include <limits>
#include <memory>
#include <type_traits>
#include <unordered_set>

using DataSets::Impl::createDS;
using DataSets::Impl::DataSetImpl;
using RecordPointer = std::shared_ptr<DataSetImpl>;

static_assert(!std::is_constructible_v<MultiType, void*>);
static_assert(!std::is_constructible_v<MultiType, QChar const*>);
static_assert(std::is_constructible_v<MultiType, char*>);
static_assert(!std::is_polymorphic_v<MultiType> && !std::is_final_v<MultiType>);

namespace {

RecordPointer recordWith(QString const& key, MultiType const& value)
{
    RecordPointer record = createDS(false);
    DataSets::Impl::setValueImpl(*record, key, value);
    return record;
}

/// Whether get() and move() of \a T leave their argument, and the value, alone.
template <typename T>
bool refuses(MultiType value, T const& before)
{
    MultiType const original = value;
    T target = before;
    value.get(target);
    bool const kept = target == before;
    value.move(target);
    return kept && target == before && value == original;
}

} // namespace

class MultiTypeTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void constructorsSetTheTag_data();
    void constructorsSetTheTag();
    void clonesEveryKind_data() { constructorsSetTheTag_data(); }
    void clonesEveryKind();
    void getsAndMovesOnlyItsOwnKind_data();
    void getsAndMovesOnlyItsOwnKind();
    void movesOnce();
    void movesIntoSharedText();
    void keepsFormerTextUntilCleaned();
    void releasesTheFormerRecordOfMove();
    void comparesByContent_data();
    void comparesByContent();
    void keepsEmbeddedZeros();
    void assignsFromItself();
    void clonesFromInsideItsOwnRecord();
    void cleansInsideItsOwnRecord();
    void copiesSlotsThatAreNotLive();
    void sharesNestedRecords();
    void printsItself_data();
    void printsItself();
    void printsDeepRecordsInPart();
    void hashesAsItCompares();
};

void MultiTypeTest::constructorsSetTheTag_data()
{
    QTest::addColumn<MultiType>("value");
    QTest::addColumn<int>("tag");
    QTest::newRow("nothing") << MultiType() << 0;
    QTest::newRow("a record") << MultiType(createDS(false)) << 1;
    QTest::newRow("a null record") << MultiType(RecordPointer()) << 1;
    QTest::newRow("unsigned") << MultiType(5U) << 2;
    QTest::newRow("signed") << MultiType(-5) << 3;
    QTest::newRow("truth") << MultiType(true) << 4;
    QTest::newRow("text") << MultiType(QStringLiteral("x")) << 5;
    QTest::newRow("C text is no truth value") << MultiType("x") << 5;
    QTest::newRow("null C text") << MultiType(static_cast<char const*>(nullptr)) << 5;
    QTest::newRow("bytes") << MultiType(QByteArray("x")) << 6;
    QTest::newRow("long long") << MultiType(5LL) << 7;
}

void MultiTypeTest::constructorsSetTheTag()
{
    QFETCH(MultiType, value);
    QTEST(value.getType(), "tag");
    MultiType copy(value);
    QVERIFY(copy == value);
    copy.clean();
    QCOMPARE(copy.getType(), static_cast<int>(MultiType::None));
    QVERIFY(copy == MultiType());
}

void MultiTypeTest::clonesEveryKind()
{
    QFETCH(MultiType, value);
    for (MultiType former : {MultiType(), MultiType(9LL), MultiType("former"), MultiType(createDS(true))}) {
        QTEST(former.clone(value), "tag");
        QVERIFY(former == value);
    }
}

void MultiTypeTest::getsAndMovesOnlyItsOwnKind_data()
{
    QTest::addColumn<MultiType>("value");
    QTest::addColumn<int>("tag");
    QTest::newRow("nothing") << MultiType() << int(MultiType::None);
    QTest::newRow("a record") << MultiType(recordWith(QStringLiteral("k"), 1)) << int(MultiType::DataSet);
    QTest::newRow("unsigned 5") << MultiType(5U) << int(MultiType::UInt);
    QTest::newRow("signed 5") << MultiType(5) << int(MultiType::Int);
    QTest::newRow("long long 5") << MultiType(5LL) << int(MultiType::Int64);
    QTest::newRow("true") << MultiType(true) << int(MultiType::Bool);
    QTest::newRow("text") << MultiType("5") << int(MultiType::String);
    QTest::newRow("bytes") << MultiType(QByteArray("5")) << int(MultiType::ByteArray);
}

void MultiTypeTest::getsAndMovesOnlyItsOwnKind()
{
    QFETCH(MultiType, value);
    QFETCH(int, tag);
    QCOMPARE(refuses(value, 77U), tag != MultiType::UInt);
    QCOMPARE(refuses(value, 77), tag != MultiType::Int);
    QCOMPARE(refuses(value, 77LL), tag != MultiType::Int64);
    QCOMPARE(refuses(value, false), tag != MultiType::Bool);
    QCOMPARE(refuses(value, QStringLiteral("before")), tag != MultiType::String);
    QCOMPARE(refuses(value, QByteArray("before")), tag != MultiType::ByteArray);
    QCOMPARE(refuses(value, RecordPointer(createDS(true))), tag != MultiType::DataSet);
}

void MultiTypeTest::movesOnce()
{
    MultiType value("text");
    QString first;
    value.move(first);
    QCOMPARE(first, QStringLiteral("text"));
    QCOMPARE(value.getType(), static_cast<int>(MultiType::None));
    QString second = QStringLiteral("untouched");
    value.move(second);
    QCOMPARE(second, QStringLiteral("untouched"));

    MultiType number(7);
    int target = 0;
    number.move(target);
    QCOMPARE(target, 7);
    QVERIFY(number == MultiType());
}

void MultiTypeTest::movesIntoSharedText()
{
    QString target = QStringLiteral("before").repeated(2);
    QString const sharing = target;
    MultiType value(QStringLiteral("after"));
    value.move(target);
    QCOMPARE(target, QStringLiteral("after"));
    QCOMPARE(sharing, QStringLiteral("beforebefore"));
}

void MultiTypeTest::keepsFormerTextUntilCleaned()
{
    QString text = QStringLiteral("former").repeated(2);
    QString const watch = text;
    MultiType value("new");
    value.move(text);
    QVERIFY(!watch.isDetached());
    value.clean();
    QVERIFY(watch.isDetached());

    QByteArray bytes = QByteArray("former").repeated(2);
    QByteArray const watchBytes = bytes;
    MultiType byteValue(QByteArray("new"));
    byteValue.move(bytes);
    QVERIFY(!watchBytes.isDetached());
    byteValue = MultiType(1);
    QVERIFY(watchBytes.isDetached());
}

void MultiTypeTest::releasesTheFormerRecordOfMove()
{
    RecordPointer former = createDS(false);
    std::weak_ptr<DataSetImpl> const watch = former;
    RecordPointer const stored = createDS(true);
    MultiType value(stored);
    value.move(former);
    QVERIFY(watch.expired());
    QCOMPARE(former, stored);

    // The value lies in the very record that the argument gives up.
    RecordPointer outer = recordWith(QStringLiteral("inner"), recordWith(QStringLiteral("k"), 5));
    std::weak_ptr<DataSetImpl> const watchOuter = outer;
    outer->entries.begin()->second.move(outer);
    QVERIFY(watchOuter.expired());
    QCOMPARE(DataSets::Impl::getDataType(outer.get(), QStringLiteral("k")), int(MultiType::Int));
}

void MultiTypeTest::comparesByContent_data()
{
    QTest::addColumn<MultiType>("left");
    QTest::addColumn<MultiType>("right");
    QTest::addColumn<bool>("equal");
    QString const key = QStringLiteral("k");
    QTest::newRow("two of nothing") << MultiType() << MultiType() << true;
    QTest::newRow("nothing and 0") << MultiType() << MultiType(0) << false;
    QTest::newRow("5 and unsigned 5") << MultiType(5) << MultiType(5U) << false;
    QTest::newRow("5 and long long 5") << MultiType(5) << MultiType(5LL) << false;
    QTest::newRow("signed") << MultiType(-1) << MultiType(-1) << true;
    QTest::newRow("signed, other") << MultiType(-1) << MultiType(1) << false;
    QTest::newRow("unsigned") << MultiType(4294967295U) << MultiType(4294967295U) << true;
    QTest::newRow("unsigned, other") << MultiType(1U) << MultiType(2U) << false;
    QTest::newRow("long long") << MultiType(1LL << 40) << MultiType(1LL << 40) << true;
    QTest::newRow("long long, other high half") << MultiType(1LL << 40) << MultiType(1LL << 41) << false;
    QTest::newRow("truth") << MultiType(true) << MultiType(true) << true;
    QTest::newRow("truth, other") << MultiType(true) << MultiType(false) << false;
    QTest::newRow("text") << MultiType("abc") << MultiType("abc") << true;
    QTest::newRow("text, other case") << MultiType("abc") << MultiType("abC") << false;
    QTest::newRow("text, prefix") << MultiType("abc") << MultiType("ab") << false;
    QTest::newRow("null and empty text") << MultiType(QString()) << MultiType("") << true;
    QTest::newRow("text and bytes") << MultiType("a") << MultiType(QByteArray("a")) << false;
    QTest::newRow("bytes") << MultiType(QByteArray("a\0b", 3)) << MultiType(QByteArray("a\0b", 3)) << true;
    QTest::newRow("bytes, other after a zero")
        << MultiType(QByteArray("a\0b", 3)) << MultiType(QByteArray("a\0c", 3)) << false;
    QTest::newRow("two empty byte arrays") << MultiType(QByteArray()) << MultiType(QByteArray("")) << true;
    QTest::newRow("different records, same entries")
        << MultiType(recordWith(key, 1)) << MultiType(recordWith(key, 1)) << true;
    QTest::newRow("different records, other entries")
        << MultiType(recordWith(key, 1)) << MultiType(recordWith(key, 2)) << false;
    QTest::newRow("null and empty record") << MultiType(RecordPointer()) << MultiType(createDS(true)) << true;
    QTest::newRow("null record and nothing") << MultiType(RecordPointer()) << MultiType() << false;
}

void MultiTypeTest::comparesByContent()
{
    QFETCH(MultiType, left);
    QFETCH(MultiType, right);
    QFETCH(bool, equal);
    QCOMPARE(left == right, equal);
    QCOMPARE(right == left, equal);
    QCOMPARE(left != right, !equal);
    QVERIFY(!equal || qHash(left, 5) == qHash(right, 5));
    QVERIFY(equal || qHash(left, 5) != qHash(right, 5));
}

void MultiTypeTest::keepsEmbeddedZeros()
{
    QString const text = QStringLiteral("a") + QChar(0) + QStringLiteral("b");
    QString target;
    MultiType(text).get(target);
    QCOMPARE(target, text);
    QVERIFY(!(MultiType(text) == MultiType("a")));
    MultiType("a\0b").get(target);
    QCOMPARE(target, QStringLiteral("a"));
    MultiType("\xc3\xa8").get(target);
    QCOMPARE(target, QString(QChar(0xe8)));
}

void MultiTypeTest::assignsFromItself()
{
    MultiType const nested(recordWith(QStringLiteral("k"), 1));
    for (MultiType value : {MultiType("text"), MultiType(5), MultiType(QByteArray("b")), nested}) {
        MultiType const before = value;
        MultiType& alias = value;
        value = alias;
        QVERIFY(value == before);
        QCOMPARE(value.clone(alias), before.getType());
        QVERIFY(value == before);
    }
}

void MultiTypeTest::clonesFromInsideItsOwnRecord()
{
    RecordPointer record = recordWith(QStringLiteral("k"), QString(QStringLiteral("inner")).repeated(3));
    std::weak_ptr<DataSetImpl> const watch = record;
    MultiType value(record);
    record.reset();
    MultiType const& inner = watch.lock()->entries.begin()->second;
    QCOMPARE(value.clone(inner), static_cast<int>(MultiType::String));
    QVERIFY(value == MultiType("innerinnerinner"));
    QVERIFY(watch.expired());

    // One level further down, a record within the record.
    record = recordWith(QStringLiteral("k"), recordWith(QStringLiteral("deep"), 9));
    value = MultiType(record);
    MultiType const& child = record->entries.begin()->second;
    record.reset();
    value = child;
    RecordPointer held;
    value.get(held);
    QCOMPARE(DataSets::Impl::getDataType(held.get(), QStringLiteral("deep")), int(MultiType::Int));
}

void MultiTypeTest::cleansInsideItsOwnRecord()
{
    RecordPointer record = createDS(false);
    DataSets::Impl::setDataValue(*record, QStringLiteral("self"), record);
    std::weak_ptr<DataSetImpl> const watch = record;
    MultiType& self = record->entries.begin()->second;
    record.reset();
    QVERIFY(!watch.expired());
    self.clean();
    QVERIFY(watch.expired());
}

void MultiTypeTest::copiesSlotsThatAreNotLive()
{
    QString text = QStringLiteral("former").repeated(2);
    QString const watch = text;
    MultiType value("new");
    value.move(text);
    MultiType copy(7);
    QCOMPARE(copy.clone(value), static_cast<int>(MultiType::None));
    value.clean();
    QVERIFY(!watch.isDetached());
    copy.clean();
    QVERIFY(watch.isDetached());
}

void MultiTypeTest::sharesNestedRecords()
{
    RecordPointer const record = createDS(false);
    MultiType const value(record);
    MultiType const copy(value);
    RecordPointer held;
    copy.get(held);
    QCOMPARE(held, record);
    QCOMPARE(record.use_count(), 4L);
}

void MultiTypeTest::printsItself_data()
{
    QTest::addColumn<MultiType>("value");
    QTest::addColumn<QString>("shown");
    auto const row = [](char const* tag, MultiType const& value, char const* shown) {
        QTest::newRow(tag) << value
                           << QStringLiteral("MultiType(") + QString::fromLatin1(shown) + QLatin1Char(')');
    };
    RecordPointer array = createDS(true);
    DataSets::Impl::setDataValue(*array, QStringLiteral("7"), true);
    DataSets::Impl::setDataValue(*array, QStringLiteral("10"), recordWith(QStringLiteral("k"), 1));
    row("nothing", MultiType(), "None");
    row("unsigned", 4294967295U, "UInt(4294967295)");
    row("signed", -5, "Int(-5)");
    row("long long", 1LL << 40, "Int64(1099511627776)");
    row("truth", true, "Bool(true)");
    row("text", "a\"b", R"(String("a\"b"))");
    row("bytes", QByteArray("a\0b", 3), R"(ByteArray("a\x00""b"))");
    row("array", array, R"([7: Bool(true), 10: {"k": Int(1)}])");
    row("null record", RecordPointer(), "{}");
}

void MultiTypeTest::printsItself()
{
    QFETCH(MultiType, value);
    QFETCH(QString, shown);
    QCOMPARE(QDebug::toString(value), shown);
    std::unique_ptr<char[]> const cText(toString(value));
    QCOMPARE(QString::fromUtf8(cText.get()), shown);
}

void MultiTypeTest::printsDeepRecordsInPart()
{
    RecordPointer const self = createDS(false);
    DataSets::Impl::setDataValue(*self, QStringLiteral("a"), self);
    QCOMPARE(QDebug::toString(MultiType(self)),
             QStringLiteral("MultiType(") + QStringLiteral("{\"a\": ").repeated(8) + QStringLiteral("{...") +
                 QString(9, QLatin1Char('}')) + QLatin1Char(')'));
    QCOMPARE(qHash(MultiType(self)), qHash(MultiType(self)));
    DataSets::Impl::clearImpl(*self);
}

void MultiTypeTest::hashesAsItCompares()
{
    QSet<MultiType> const values{MultiType(5), MultiType(5), MultiType(5U), MultiType("5"), MultiType()};
    QCOMPARE(values.size(), 4);
    std::unordered_set<MultiType> const standardValues(values.begin(), values.end());
    QVERIFY(standardValues.contains(MultiType("5")));
    QCOMPARE(QVariant::fromValue(MultiType(5)).value<MultiType>(), MultiType(5));
}

int main(int argc, char** argv)
{
    return runTest<MultiTypeTest>(argc, argv);
}

#include "MultiTypeTest.moc"
