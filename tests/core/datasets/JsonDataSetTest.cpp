#include <datasets/JsonDataSet.h>

#include <JsonOracle.h>
#include <MessageRecorder.h>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <RunTest.h>
#include <SmallStack.h>
#include <TestFiles.h>
#include <Valgrind.h>
#include <random>

using DataSets::DataObject;
using DataSets::DataSet;

namespace {

/// The deepest nesting that Qt's parser lets through.
constexpr int deepest = 1024;
constexpr int farTooDeep = 100'000;

QString text(char const* latin1)
{
    return QString::fromLatin1(latin1);
}

DataSet objectWith(char const* key, MultiType const& value)
{
    DataSet const set = DataSet::createObject();
    DataSets::Impl::setValueImpl(*set.data, text(key), value);
    return set;
}

QByteArray nestedArrays(int levels)
{
    return "{\"a\":" + QByteArray(levels - 1, '[') + QByteArray(levels - 1, ']') + '}';
}

QByteArray nestedObjects(int levels)
{
    return QByteArray("{\"a\":").repeated(levels - 1) + "{}" + QByteArray(levels - 1, '}');
}

/// JSON and nearly JSON, put together from pieces that meet every branch of a parser.
QByteArray randomJson(std::mt19937& random)
{
    static constexpr char const* pieces[] = {"{",
                                             "}",
                                             "[",
                                             "]",
                                             ",",
                                             ":",
                                             "\"a\"",
                                             "\"b\":",
                                             "\"\":1",
                                             "{\"a\":",
                                             "true",
                                             "false",
                                             "null",
                                             "0",
                                             "-1",
                                             "1.5",
                                             "2.0",
                                             "12345678901",
                                             "\"\\u00e8\"",
                                             "\"\\\"\\n\"",
                                             "\"\xc3\xa8\"",
                                             "\"\xff\"",
                                             " ",
                                             "\n",
                                             "1e2",
                                             "\"x\":[1,2]",
                                             "\"y\":{\"z\":null}",
                                             "[{}]",
                                             "[1,",
                                             ",2]",
                                             "1e-400",
                                             "-0.0",
                                             "18446744073709551616",
                                             "\"\\ude00\"",
                                             "\"\\ufeffx\"",
                                             "\"a\":{\"b\":1}"};
    QByteArray json = "{";
    for (auto left = random() % 12; left > 0; --left) {
        json += pieces[random() % std::size(pieces)];
    }
    return json + (random() % 4 == 0 ? "" : "}");
}

} // namespace

class JsonDataSetTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsValues_data();
    void readsValues();
    void readsAsQtDoes_data();
    void readsAsQtDoes();
    void readsEveryEscapedUnitAsQtDoes();
    void readsEveryByteAsQtDoes();
    void readsEveryLengthAsQtDoes();
    void readsGeneratedTextAsQtDoes();
    void writesValues_data();
    void writesValues();
    void writesEveryUnitAsQtDoes();
    void writesAsQtDoes_data();
    void writesAsQtDoes();
    void comesBackAsItWas_data();
    void comesBackAsItWas();
    void readsBothKindsOfText();
    void writesANullHandle();
    void storesOnlyUnderValidKeys();
    void fillsRecordsOfTheOtherKind();
    void storesTheLastOfNamesThatAreOneIndex_data();
    void storesTheLastOfNamesThatAreOneIndex();
    void addsToWhatIsThere();
    void convertsSingleEntries();
    void ignoresNullArguments();
    void readsFiles_data();
    void readsFiles();
    void readsNoFileThatIsNone();
    void survivesDeepNesting();
    void writesRecordsOfAnyDepth();
    void endsOnRecordsThatContainThemselves();
};

void JsonDataSetTest::readsValues_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<MultiType>("value");
    QTest::newRow("true") << QByteArray("{\"v\":true}") << MultiType(true);
    QTest::newRow("false") << QByteArray("{\"v\":false}") << MultiType(false);
    QTest::newRow("number") << QByteArray("{\"v\":-7}") << MultiType(-7);
    QTest::newRow("highest") << QByteArray("{\"v\":2147483647}") << MultiType(2147483647);
    QTest::newRow("too high") << QByteArray("{\"v\":2147483648}") << MultiType(0);
    QTest::newRow("lowest") << QByteArray("{\"v\":-2147483648}") << MultiType(-2147483647 - 1);
    QTest::newRow("too low") << QByteArray("{\"v\":-2147483649}") << MultiType(0);
    QTest::newRow("4 thousand million") << QByteArray("{\"v\":4000000000}") << MultiType(0);
    QTest::newRow("fraction") << QByteArray("{\"v\":1.5}") << MultiType(0);
    QTest::newRow("fraction of zeros") << QByteArray("{\"v\":2.0}") << MultiType(2);
    QTest::newRow("exponent") << QByteArray("{\"v\":1e2}") << MultiType(100);
    QTest::newRow("text") << QByteArray("{\"v\":\"x\"}") << MultiType("x");
    QTest::newRow("escaped text") << QByteArray(R"({"v":"\"\\\/\b\f\n\r\t\u00e8"})")
                                  << MultiType("\"\\/\b\f\n\r\t\xc3\xa8");
    QTest::newRow("text with a zero")
        << QByteArray(R"({"v":"a\u0000b"})") << MultiType(text("a") + QChar(0) + text("b"));
    QTest::newRow("null") << QByteArray("{\"v\":null}") << MultiType();
    QTest::newRow("array") << QByteArray("{\"v\":[]}") << MultiType(DataSet::createArray().data);
    QTest::newRow("object") << QByteArray("{\"v\":{\"k\":1}}") << MultiType(objectWith("k", 1).data);
    QTest::newRow("no JSON") << QByteArray("{\"v\":tru}") << MultiType();
    QTest::newRow("nothing") << QByteArray() << MultiType();
}

void JsonDataSetTest::readsValues()
{
    QFETCH(QByteArray, json);
    QFETCH(MultiType, value);
    DataSet const set = JsonDataSet::serializeJson(json);
    QVERIFY(set.data && !set.isArray());
    bool const stored = value.getType() != MultiType::None;
    QCOMPARE(set.count(), stored ? 1 : 0);
    QVERIFY(!stored || *DataObject(set.data, text("v")).value() == value);
    QVERIFY(set == JsonOracle::read(json));
}

void JsonDataSetTest::readsAsQtDoes_data()
{
    QTest::addColumn<QByteArray>("json");
    struct Case
    {
        char const* tag;
        QByteArray json;
    };
    Case const cases[] = {
        {"array document", "[1,2,3]"},
        {"only a number", "5"},
        {"only a word", "null"},
        {"empty object", "{}"},
        {"space everywhere", " \t\r\n{ \"a\" : [ 1 , 2 ] , \"b\" : { } } \n"},
        {"other space", "{\v\"a\":1}"},
        {"nested list", R"({"l":[true,"x",{"k":1}]})"},
        {"nulls in a list", "{\"l\":[null,1,null,2]}"},
        {"names out of order", R"({"b":1,"a":2,"B":3})"},
        {"empty name", "{\"\":1}"},
        {"repeated name", R"({"a":1,"a":2})"},
        {"repeated name further in", R"({"o":{"a":1,"b":2,"a":3}})"},
        {"repeated name in a list", R"({"l":[{"a":1,"a":[2]}]})"},
        {"repeated empty name", R"({"":1,"":2})"},
        {"repeated name, null last", R"({"a":1,"a":null})"},
        {"repeated name, null first", R"({"a":null,"a":1})"},
        {"repeated name, object last", R"({"a":1,"b":2,"a":{"c":3}})"},
        {"escaped name", R"({"\u0061\n":1})"},
        {"repeated name, once escaped", R"({"\u0061":1,"a":2})"},
        {"comma at the end", R"({"a":1,})"},
        {"comma at the end of a list", R"({"a":[1,]})"},
        {"two commas", R"({"a":1,,"b":2})"},
        {"no comma", R"({"a":1 "b":2})"},
        {"no colon", R"({"a" 1})"},
        {"no name", "{1}"},
        {"wrong bracket", R"({"a":[1}})"},
        {"open list", R"({"a":[1)"},
        {"open object", R"({"a":1)"},
        {"open text", R"({"a":"x)"},
        {"open escape", R"({"a":"x\)"},
        {"open name", R"({"a)"},
        {"text after the end", "{\"a\":1} x"},
        {"second object after the end", "{\"a\":1}{}"},
        {"zero byte after the end", QByteArray("{\"a\":1}\0", 8)},
        {"byte order mark", "\xef\xbb\xbf{\"a\":1}"},
        {"byte order mark in a text", "{\"a\":\"\xef\xbb\xbfx\"}"},
        {"byte order mark after an escape", "{\"a\":\"\\n\xef\xbb\xbfx\"}"},
        {"byte order mark in a name", "{\"\xef\xbb\xbfx\":1}"},
        {"byte order mark escaped", R"({"a":"\ufeffx"})"},
        {"byte order mark escaped in a name", R"({"\ufeffx":1,"x":2})"},
        {"byte order mark alone", "\xef\xbb\xbf"},
        {"full-width text", "{\"a\":\"\xef\xbc\x93\"}"},
        {"replacement character", "{\"a\":\"\xef\xbf\xbd\"}"},
        {"four bytes", "{\"a\":\"\xf0\x9f\x98\x80\"}"},
        {"cut UTF-8", "{\"a\":\"\xc3\"}"},
        {"overlong UTF-8", "{\"a\":\"\xc0\x80\"}"},
        {"surrogate as UTF-8", "{\"a\":\"\xed\xa0\x80\"}"},
        {"four bytes beyond Unicode", "{\"a\":\"\xf4\x90\x80\x80\"}"},
        {"UTF-8 cut by the quote", "{\"a\":\"\xf0\x9f\x98\"}"},
        {"noncharacters", "{\"a\":\"\xef\xbf\xbf\xef\xbf\xbe\"}"},
        {"invalid UTF-8 between values", "{\"a\":1\xc3}"},
        {"first half of a pair", R"({"a":"\ud83dx"})"},
        {"first half of a pair and no second", R"({"a":"\ud83d\u0041"})"},
        {"second half of a pair", R"({"a":"x\ude00"})"},
        {"second half of a pair in a name", R"({"\ude00":1})"},
        {"zero escaped in a name", R"({"a\u0000b":1})"},
        {"zero byte in a text", QByteArray("{\"a\":\"x\0y\"}", 11)},
        {"pair escaped", R"({"a":"\ud83d\ude00"})"},
        {"pair escaped the wrong way round", R"({"a":"\ude00\ud83d"})"},
        {"short unit", R"({"a":"\u12"})"},
        {"odd unit", R"({"a":"\u12g4"})"},
        {"capital digits", R"({"a":"\u00E8"})"},
        {"unknown escape", R"({"a":"\x"})"},
        {"line break in a text", "{\"a\":\"x\ny\"}"},
        {"delete in a text", "{\"a\":\"x\x7fy\"}"},
        {"leading zero", R"({"a":01})"},
        {"minus zero", R"({"a":-0})"},
        {"minus alone", R"({"a":-})"},
        {"plus", R"({"a":+1})"},
        {"point alone", R"({"a":1.})"},
        {"no whole part", R"({"a":.5})"},
        {"two points", R"({"a":1.2.3})"},
        {"long fraction", R"({"a":1.00000000000000000000000000001})"},
        {"fifteen digits", R"({"a":12345.6789012345})"},
        {"long number", R"({"a":123456789012345678901234567890})"},
        {"beyond a double", R"({"a":1e400})"},
        {"too small for a double", R"({"a":1e-400})"},
        {"too small for a double, whole part", R"({"a":0.0e-999999999999})"},
        {"smallest normal double", R"({"a":2.2250738585072014e-308})"},
        {"below the normal doubles", R"({"a":5e-324})"},
        {"zero with a fraction", R"({"a":0.0})"},
        {"minus zero with a fraction", R"({"a":-0.0})"},
        {"zero with an exponent", R"({"a":0e5})"},
        {"highest 64-bit", R"({"a":9223372036854775807})"},
        {"above 64-bit", R"({"a":9223372036854775808})"},
        {"highest unsigned 64-bit", R"({"a":18446744073709551615})"},
        {"above unsigned 64-bit", R"({"a":18446744073709551616})"},
        {"below 64-bit", R"({"a":-9223372036854775809})"},
        {"int through an exponent", R"({"a":2147483647e0,"b":2147483648e0,"c":-21474836480e-1})"},
        {"just off an int", R"({"a":2147483647.0000001,"b":0.99999999999999999999})"},
        {"exponent without digits", R"({"a":1e})"},
        {"exponent with zeros", R"({"a":1e000000000000000000002})"},
        {"exponent of a fraction", R"({"a":1.5e1})"},
        {"small exponent", R"({"a":1e-2})"},
        {"letters in a number", R"({"a":12x})"},
        {"word cut", R"({"a":nul})"},
        {"word with a capital", R"({"a":True})"},
        {"word too long", R"({"a":trueish})"},
        {"comment", "{\"a\":1/**/}"},
    };
    for (Case const& row : cases) {
        QTest::newRow(row.tag) << row.json;
    }
    for (int levels : {62, 63, 64, 65, 66, deepest - 1, deepest, deepest + 1, 5000}) {
        QTest::addRow("arrays nested %d deep", levels) << nestedArrays(levels);
        QTest::addRow("objects nested %d deep", levels) << nestedObjects(levels);
    }
}

void JsonDataSetTest::readsAsQtDoes()
{
    QFETCH(QByteArray, json);
    QVERIFY(JsonDataSet::serializeJson(json) == JsonOracle::read(json));
}

void JsonDataSetTest::readsEveryEscapedUnitAsQtDoes()
{
    for (int unit = 0; unit < 0x10000; unit += underValgrind() ? 61 : 1) {
        QByteArray const json =
            "{\"a\":\"x\\u" + QByteArray::number(unit, 16).rightJustified(4, '0') + "y\"}";
        if (JsonDataSet::serializeJson(json) != JsonOracle::read(json)) {
            QFAIL(json.constData());
        }
    }
}

void JsonDataSetTest::readsEveryByteAsQtDoes()
{
    for (int byte = 0; byte < 0x100; ++byte) {
        char const c = static_cast<char>(byte);
        for (QByteArray const& json :
             {QByteArray("{\"a\":\"") + c + "\"}", QByteArray("{\"a\":\"\\") + c + "\"}",
              QByteArray("{\"a\":") + c + '}', QByteArray("{\"a\":1") + c + '}', QByteArray("{\"a\":1}") + c,
              c + QByteArray("{\"a\":1}")}) {
            if (JsonDataSet::serializeJson(json) != JsonOracle::read(json)) {
                QFAIL(json.toPercentEncoding().constData());
            }
        }
    }
}

void JsonDataSetTest::readsEveryLengthAsQtDoes()
{
    // Parsers that take many bytes at a time have ends of their own; a copy without spare room has none.
    for (int length = 0; length < 200; ++length) {
        QByteArray json = "{\"" + QByteArray(length, 'x') + "\":\"\xc3\xa8\\n\"}";
        QVERIFY(JsonDataSet::serializeJson(json) == JsonOracle::read(json));
        while (!json.isEmpty()) {
            json.chop(1 + length / 4);
            json.squeeze();
            QVERIFY(JsonDataSet::serializeJson(json) == JsonOracle::read(json));
        }
    }
}

void JsonDataSetTest::readsGeneratedTextAsQtDoes()
{
    std::mt19937 random(20'000);
    for (int i = 0; i < sizeForThisRun(20'000); ++i) {
        QByteArray const json = randomJson(random);
        DataSet const set = JsonDataSet::serializeJson(json);
        if (set != JsonOracle::read(json) || JsonDataSet::deserializeJson(set) != JsonOracle::write(set)) {
            QFAIL(json.constData());
        }
    }
}

void JsonDataSetTest::writesValues_data()
{
    QTest::addColumn<MultiType>("value");
    QTest::addColumn<QByteArray>("json");
    DataSet gaps = DataSet::createArray();
    gaps.setValue(text("0"), 1);
    gaps.setValue(text("5"), 2);
    QTest::newRow("array with gaps") << MultiType(gaps.data) << QByteArray("[1,2]");
    QTest::newRow("empty array") << MultiType(DataSet::createArray().data) << QByteArray("[]");
    QTest::newRow("object") << MultiType(objectWith("a", 1).data) << QByteArray("{\"a\":1}");
    QTest::newRow("null record") << MultiType(DataSet().data) << QByteArray("{}");
    QTest::newRow("unsigned") << MultiType(5U) << QByteArray("5");
    QTest::newRow("unsigned, highest") << MultiType(4294967295U) << QByteArray("-1");
    QTest::newRow("unsigned, above int") << MultiType(2147483648U) << QByteArray("-2147483648");
    QTest::newRow("signed") << MultiType(-2147483647 - 1) << QByteArray("-2147483648");
    QTest::newRow("true") << MultiType(true) << QByteArray("true");
    QTest::newRow("false") << MultiType(false) << QByteArray("false");
    QTest::newRow("text") << MultiType("a\"\\/\b\f\n\r\t\x1f\x7f\xc3\xa8")
                          << QByteArray("\"a\\\"\\\\/\\b\\f\\n\\r\\t\\u001f\x7f\xc3\xa8\"");
    QTest::newRow("no text") << MultiType("") << QByteArray("\"\"");
    QTest::newRow("bytes") << MultiType(QByteArray("x")) << QByteArray("null");
    QTest::newRow("long long") << MultiType(5LL) << QByteArray("\"5\"");
    QTest::newRow("long long, lowest")
        << MultiType(std::numeric_limits<long long>::min()) << QByteArray("\"-9223372036854775808\"");
    QTest::newRow("nothing") << MultiType() << QByteArray("null");
}

void JsonDataSetTest::writesValues()
{
    QFETCH(MultiType, value);
    QFETCH(QByteArray, json);
    DataSet const set = objectWith("v", value);
    QCOMPARE(JsonDataSet::deserializeJson(set), "{\"v\":" + json + '}');
    QCOMPARE(JsonDataSet::deserializeJson(set), JsonOracle::write(set));
    DataObject const entry(set.data, text("v"));
    QCOMPARE(JsonDataSet::getJsonValueFromDataObject(&entry), JsonOracle::writeValue(set, text("v")));
}

void JsonDataSetTest::writesEveryUnitAsQtDoes()
{
    for (int unit = 0; unit < 0x10000; unit += underValgrind() ? 61 : 1) {
        QChar const c(static_cast<char16_t>(unit));
        for (QString const& written : {QString(c), c + text("x"), QChar(0xd83d) + QString(c)}) {
            DataSet set = objectWith("v", written);
            set.setValue(written, 1);
            if (JsonDataSet::deserializeJson(set) != JsonOracle::write(set)) {
                QFAIL(qPrintable(QString::number(unit, 16)));
            }
        }
    }
}

void JsonDataSetTest::writesAsQtDoes_data()
{
    QTest::addColumn<DataSet>("set");
    DataSet names = DataSet::createObject();
    for (QString const& name : {QString(), text("b"), text("a"), text("B"), QString(QChar(0xe000)),
                                QString::fromUcs4(U"\U0001f600", 1), QString(QChar(0xe8)), text("\"")}) {
        names.setValue(name, 1);
    }
    QTest::newRow("names of every kind") << names;
    DataSet indices = DataSet::createArray();
    for (int index : {10, 2, -1, 0, 100, -2147483647}) {
        indices.setValue(QString::number(index), objectWith("k", index).data);
    }
    QTest::newRow("array at the top, names sorted as text") << indices;
    DataSet long_ = DataSet::createObject();
    for (qsizetype length : {1023, 1024, 1025, 2048, 5000}) {
        // Pairs lie across every block border, whatever its size.
        long_.setValue(QString::number(length), QString(QChar(0x1f)).repeated(length));
        long_.setValue(QStringLiteral("pairs ") + QString::number(length),
                       text("x") + QString::fromUcs4(U"\U0001f600", 1).repeated(length));
    }
    QTest::newRow("long texts") << long_;
    DataSet wide = DataSet::createArray();
    for (int i = 0; i < 1000; ++i) {
        wide.setValue(QString::number(i), QString::number(i * 7));
    }
    QTest::newRow("many entries") << objectWith("wide", wide.data);
    QTest::newRow("depth of the parser") << JsonOracle::read(nestedArrays(deepest));
    QTest::newRow("deeper than the parser") << [] {
        DataSet set = DataSet::createObject();
        for (int i = 0; i < 2 * deepest; ++i) {
            set = objectWith("a", set.data);
        }
        return set;
    }();
}

void JsonDataSetTest::writesAsQtDoes()
{
    QFETCH(DataSet, set);
    QCOMPARE(JsonDataSet::deserializeJson(set), JsonOracle::write(set));
}

void JsonDataSetTest::comesBackAsItWas_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QByteArray>("written");
    QTest::newRow("nested list") << QByteArray(R"({"l":[true,"x",{"k":1}]})")
                                 << QByteArray(R"({"l":[true,"x",{"k":1}]})");
    QTest::newRow("null left out") << QByteArray(R"({"a":null})") << QByteArray("{}");
    QTest::newRow("nulls close up") << QByteArray(R"({"a":[null,1]})") << QByteArray(R"({"a":[1]})");
    QTest::newRow("members sorted, compact")
        << QByteArray("{ \"b\": 1,\n \"a\": 2 }") << QByteArray(R"({"a":2,"b":1})");
    QTest::newRow("empty name") << QByteArray(R"({"":1})") << QByteArray(R"({"":1})");
    QTest::newRow("empty name and others")
        << QByteArray(R"({"":{"":[]},"a":2})") << QByteArray(R"({"":{"":[]},"a":2})");
    QTest::newRow("lossy numbers") << QByteArray(R"({"a":1.5,"b":4000000000,"c":-7})")
                                   << QByteArray(R"({"a":0,"b":0,"c":-7})");
    QTest::newRow("list document") << QByteArray("[1,2,3]") << QByteArray("{}");
}

void JsonDataSetTest::comesBackAsItWas()
{
    QFETCH(QByteArray, json);
    QTEST(JsonDataSet::deserializeJson(JsonDataSet::serializeJson(json)), "written");
}

void JsonDataSetTest::readsBothKindsOfText()
{
    QByteArray const json = "{\"a\":\"\xc3\xa8%1\"}";
    DataSet const set = JsonDataSet::serializeJson(json);
    QVERIFY(JsonDataSet::serializeJsonData<QByteArray>(json) == set);
    QVERIFY(JsonDataSet::serializeJsonData<QString>(QString::fromUtf8(json)) == set);
    QCOMPARE(JsonDataSet::deserializeJsonData<QByteArray>(set), json);
    QCOMPARE(JsonDataSet::deserializeJsonData<QString>(set), QString::fromUtf8(json));
}

void JsonDataSetTest::writesANullHandle()
{
    QCOMPARE(JsonDataSet::deserializeJson(DataSet()), QByteArray("{}"));
    QCOMPARE(JsonDataSet::deserializeJson(DataSet::createArray()), QByteArray("{}"));
}

void JsonDataSetTest::storesOnlyUnderValidKeys()
{
    DataSet array = DataSet::createArray();
    JsonDataSet::serializeFromJsonPair(text("x"), QJsonValue(1), array);
    JsonDataSet::serializeFromJsonPair(text("x"), QJsonArray{1}, array);
    JsonDataSet::serializeFromJsonPair(text("3"), QJsonValue(), array);
    JsonDataSet::serializeFromJsonPair(text("3"), QJsonValue(QJsonValue::Undefined), array);
    QVERIFY(array.isEmpty());
    JsonDataSet::serializeFromJsonPair(text("+3"), QJsonObject{{text("k"), 1}}, array);
    QCOMPARE(array.type(text("3")), static_cast<int>(MultiType::DataSet));
    JsonDataSet::serializeFromJsonPair(text("3"), QJsonValue(true), array);
    QCOMPARE(array.value<bool>(text("3")), true);
    QCOMPARE(array.count(), 1);
}

void JsonDataSetTest::fillsRecordsOfTheOtherKind()
{
    DataSet array = DataSet::createArray();
    JsonDataSet::serializeFromJson({{text("x"), 1}, {text("10"), 2}, {text("2"), text("two")}}, array);
    QCOMPARE(JsonOracle::writeArray(array), QJsonArray({text("two"), 2}));
    DataSet object = DataSet::createObject();
    JsonDataSet::serializeFromJsonArray({7, QJsonValue(), QJsonArray{8}}, object);
    QCOMPARE(JsonDataSet::deserializeJson(object), QByteArray(R"({"0":7,"2":[8]})"));
}

void JsonDataSetTest::storesTheLastOfNamesThatAreOneIndex_data()
{
    QTest::addColumn<QJsonValue>("first");
    QTest::addColumn<QJsonValue>("last");
    QJsonObject const object{{text("k"), QJsonObject{{text("deep"), QJsonArray{1, 2}}}}};
    QJsonArray const array{QJsonArray{1}, QJsonObject{{text("k"), text("v")}}};
    QTest::newRow("objects") << QJsonValue(object) << QJsonValue(QJsonObject{{text("other"), QJsonArray{}}});
    QTest::newRow("arrays") << QJsonValue(array) << QJsonValue(QJsonArray{QJsonArray{}});
    QTest::newRow("object, then array") << QJsonValue(object) << QJsonValue(array);
    QTest::newRow("array, then object") << QJsonValue(array) << QJsonValue(object);
    QTest::newRow("object, then text") << QJsonValue(object) << QJsonValue(text("x"));
    QTest::newRow("text, then array") << QJsonValue(text("x")) << QJsonValue(array);
}

void JsonDataSetTest::storesTheLastOfNamesThatAreOneIndex()
{
    QFETCH(QJsonValue, first);
    QFETCH(QJsonValue, last);
    DataSet array = DataSet::createArray();
    JsonDataSet::serializeFromJson(
        {{text(" 3"), first}, {text("+3"), first}, {text("03"), first}, {text("3"), last}}, array);
    DataSet expected = DataSet::createArray();
    JsonOracle::readValue(text("3"), last, expected);
    QVERIFY(array == expected);
}

void JsonDataSetTest::addsToWhatIsThere()
{
    DataSet set = objectWith("a", 1);
    set.setValue(text("kept"), 2);
    JsonDataSet::serializeFromJson({{text("a"), text("new")}, {text("kept"), QJsonValue()}}, set);
    QCOMPARE(JsonDataSet::deserializeJson(set), QByteArray(R"({"a":"new","kept":2})"));

    QJsonObject object{{text("a"), 0}, {text("other"), true}};
    QJsonObject const before = object;
    JsonDataSet::deserializeToJson(set, object);
    QCOMPARE(object, QJsonObject({{text("a"), text("new")}, {text("kept"), 2}, {text("other"), true}}));
    QCOMPARE(before.size(), 2);

    QJsonArray array{0};
    JsonDataSet::deserializeToJsonArray(set, array);
    QCOMPARE(array, QJsonArray({0, text("new"), 2}));
}

void JsonDataSetTest::convertsSingleEntries()
{
    DataSet const set = JsonDataSet::serializeJson(R"({"n":5,"l":[1,[2]],"o":{"k":{}}})");
    for (DataObject const& entry : set) {
        QCOMPARE(JsonDataSet::getJsonValueFromDataObject(&entry), JsonOracle::writeValue(set, entry.key));
        QJsonObject target{{text("n"), 0}};
        JsonDataSet::deserializeFromDataObject(&entry, target);
        QCOMPARE(target.value(entry.key), JsonOracle::writeValue(set, entry.key));
        QCOMPARE(target.size(), entry.key == text("n") ? 1 : 2);
    }
    DataObject const missing(set.data, text("missing"));
    QCOMPARE(JsonDataSet::getJsonValueFromDataObject(&missing), QJsonValue());
    QJsonObject target;
    JsonDataSet::deserializeFromDataObject(&missing, target);
    QCOMPARE(target, QJsonObject({{text("missing"), QJsonValue()}}));
}

void JsonDataSetTest::ignoresNullArguments()
{
    DataSet null;
    JsonDataSet::serializeFromJson({{text("a"), 1}}, null);
    JsonDataSet::serializeFromJsonArray({1}, null);
    JsonDataSet::serializeFromJsonPair(text("a"), QJsonValue(1), null);
    QVERIFY(null.data == nullptr);
    QJsonObject object{{text("kept"), 1}};
    QJsonArray array{1};
    JsonDataSet::deserializeToJson(null, object);
    JsonDataSet::deserializeToJsonArray(null, array);
    JsonDataSet::deserializeFromDataObject(nullptr, object);
    QCOMPARE(object, QJsonObject({{text("kept"), 1}}));
    QCOMPARE(array, QJsonArray{1});
    QCOMPARE(JsonDataSet::getJsonValueFromDataObject(nullptr), QJsonValue());
}

void JsonDataSetTest::readsFiles_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QByteArray>("read");
    QTest::newRow("object, as it stands")
        << QByteArray("{ \"a\" : 1.50 }\n") << QByteArray("{ \"a\" : 1.50 }\n");
    QTest::newRow("list") << QByteArray("[1]") << QByteArray("[1]");
    QTest::newRow("line ends") << QByteArray("{\r\n}") << QByteArray("{\n}");
    QTest::newRow("beyond ASCII") << QByteArray("[\"\xc3\xa8\"]") << QByteArray("[\"\xc3\xa8\"]");
    QTest::newRow("no JSON") << QByteArray("{") << QByteArray();
    QTest::newRow("empty") << QByteArray() << QByteArray();
}

void JsonDataSetTest::readsFiles()
{
    QFETCH(QByteArray, content);
    QFETCH(QByteArray, read);
    QTemporaryDir const folder;
    QString const path = folder.filePath(text("file.json"));
    QVERIFY(TestFiles::write(path, content));
    QCOMPARE(JsonDataSet::serializeJsonFromFile(path), read);
    QCOMPARE(JsonDataSet::buildJsonStringFromFile(path), QString::fromUtf8(read));
}

void JsonDataSetTest::readsNoFileThatIsNone()
{
    QTemporaryDir const folder;
    MessageRecorder recorder;
    QCOMPARE(JsonDataSet::serializeJsonFromFile(folder.path()), QByteArray());
    QCOMPARE(JsonDataSet::serializeJsonFromFile(folder.filePath(text("missing"))), QByteArray());
    QCOMPARE(JsonDataSet::buildJsonStringFromFile(QString()), QString());
    QCOMPARE(JsonDataSet::buildJsonStringFromFile(text("a") + QChar(0)), QString());
    QCOMPARE(recorder.messages(), QStringList());
    QVERIFY(!QFile::exists(folder.filePath(text("missing"))));
}

void JsonDataSetTest::survivesDeepNesting()
{
    for (QByteArray const& json : {nestedArrays(deepest), nestedObjects(deepest)}) {
        QByteArray written;
        bool equal = false;
        bool sameObject = false;
        runOnSmallStack([&] {
            DataSet const set = JsonDataSet::serializeJson(json);
            written = JsonDataSet::deserializeJson(set);
            QJsonObject object;
            JsonDataSet::deserializeToJson(set, object);
            DataSet again = DataSet::createObject();
            JsonDataSet::serializeFromJson(object, again);
            equal = again == set;
            sameObject = QJsonDocument(object).toJson(QJsonDocument::Compact) == json;
        });
        QCOMPARE(written, json);
        QVERIFY(equal);
        QVERIFY(sameObject);
    }
}

void JsonDataSetTest::writesRecordsOfAnyDepth()
{
    QByteArray written;
    int levels = 0;
    runOnSmallStack([&] {
        DataSet set = DataSet::createObject();
        for (int i = 1; i < farTooDeep; ++i) {
            set = objectWith("a", set.data);
        }
        written = JsonDataSet::deserializeJson(set);
        QJsonObject object;
        JsonDataSet::deserializeToJson(set, object);
        for (QJsonValue value = object; value.isObject(); value = value.toObject().value(text("a"))) {
            ++levels;
        }
    });
    QCOMPARE(written, nestedObjects(farTooDeep));
    QCOMPARE(levels, deepest);
}

void JsonDataSetTest::endsOnRecordsThatContainThemselves()
{
    DataSet set = objectWith("a", 1);
    DataSet inner = objectWith("outer", set.data);
    set.setValue(text("inner"), inner.data);
    set.setValue(text("self"), set.data);
    set.setValue(text("twice"), objectWith("x", 2).data);
    QByteArray const written = R"({"a":1,"inner":{"outer":null},"self":null,"twice":{"x":2}})";
    QCOMPARE(JsonDataSet::deserializeJson(set), written);
    QJsonObject object;
    JsonDataSet::deserializeToJson(set, object);
    QCOMPARE(QJsonDocument(object).toJson(QJsonDocument::Compact), written);

    // A record that is merely shared is written at each of its places.
    DataSet const shared = objectWith("x", 1);
    DataSet both = objectWith("b", shared.data);
    both.setValue(text("a"), shared.data);
    QCOMPARE(JsonDataSet::deserializeJson(both), QByteArray(R"({"a":{"x":1},"b":{"x":1}})"));
    set.clear();
    inner.clear();
}

int main(int argc, char** argv)
{
    return runTest<JsonDataSetTest>(argc, argv);
}

#include "JsonDataSetTest.moc"
