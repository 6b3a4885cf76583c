#include <contacts/PBXContactInfo.h>

#include <QDebug>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSet>
#include <QVariant>
#include <RunTest.h>
#include <datasets/JsonDataSet.h>
#include <memory>
#include <type_traits>
#include <unordered_set>
#include <utility>

using DataSets::DataSet;
using Numbers = std::set<QString>;

static_assert(std::is_base_of_v<ISerializable, PBXContactInfo> && !std::is_final_v<PBXContactInfo>);
// Lists of contacts are sorted: a copy of each set of numbers would make that many times slower.
static_assert(std::is_nothrow_move_constructible_v<PBXContactInfo> &&
              std::is_nothrow_move_assignable_v<PBXContactInfo>);
static_assert(std::has_virtual_destructor_v<ISerializable> && std::is_abstract_v<ISerializable>);
static_assert(std::is_same_v<std::underlying_type_t<ContactReferenceType>, unsigned int>);

namespace {

QString text(char const* utf8)
{
    return QString::fromUtf8(utf8);
}

PBXContactInfo fromJson(QByteArray const& json)
{
    return PBXContactInfo(QJsonDocument::fromJson(json).object());
}

PBXContactInfo sample()
{
    return fromJson(R"({"firstName":"Mario","lastName":"Rossi","company":"Officine","unit":"Vendite",
        "contacts":[{"type":"exten","value":"101"},{"type":"mobile","value":"3331234567"},
                    {"type":"email","value":"mario@example.org"}]})");
}

} // namespace

class PBXContactInfoTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void startsEmpty();
    void readsTheDirectoryObject();
    void readsStringFields_data();
    void readsStringFields();
    void readsNumbers_data();
    void readsNumbers();
    void replacesTheTargets();
    void splitsNumbers_data();
    void splitsNumbers();
    void sortsNumbersByCodeUnit();
    void setsTexts();
    void setsNumbers();
    void serializesNothingWithoutNumbers();
    void serializesEveryField();
    void deserializesWhatIsThere();
    void keepsFieldsOfAnotherKind();
    void comparesEveryField_data();
    void comparesEveryField();
    void mapsLabels_data();
    void mapsLabels();
    void mapsTypes_data();
    void mapsTypes();
    void servesThroughItsInterface();
    void movesEveryField();
    void hashesAndPrints();
};

void PBXContactInfoTest::startsEmpty()
{
    PBXContactInfo const contact;
    QCOMPARE(contact.getFirstName(), QString());
    QCOMPARE(contact.getLastName(), QString());
    QCOMPARE(contact.getCompany(), QString());
    QCOMPARE(contact.getDepartment(), QString());
    QVERIFY(contact.getNumbers().empty());
    QCOMPARE(contact.getNumber(), QString());
}

void PBXContactInfoTest::readsTheDirectoryObject()
{
    PBXContactInfo const contact = sample();
    QCOMPARE(contact.getFirstName(), text("Mario"));
    QCOMPARE(contact.getLastName(), text("Rossi"));
    QCOMPARE(contact.getCompany(), text("Officine"));
    QCOMPARE(contact.getDepartment(), text("Vendite"));
    QVERIFY(contact.getNumbers() == Numbers({text("101"), text("3331234567")}));
    QCOMPARE(contact.getNumber(), text("101;3331234567"));
}

void PBXContactInfoTest::readsStringFields_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QString>("value");
    QTest::newRow("string") << QByteArray(R"({"key":"x"})") << text("x");
    QTest::newRow("missing") << QByteArray("{}") << QString();
    QTest::newRow("null") << QByteArray(R"({"key":null})") << QString();
    QTest::newRow("number") << QByteArray(R"({"key":5})") << QString();
    QTest::newRow("truth") << QByteArray(R"({"key":true})") << QString();
    QTest::newRow("array") << QByteArray(R"({"key":["x"]})") << QString();
    QTest::newRow("object") << QByteArray(R"({"key":{"key":"x"}})") << QString();
    QTest::newRow("other case") << QByteArray(R"({"Key":"x"})") << QString();
    QTest::newRow("placeholder") << QByteArray(R"({"key":"%1"})") << text("%1");
}

void PBXContactInfoTest::readsStringFields()
{
    QFETCH(QByteArray, json);
    QString target = text("before");
    PBXContactInfo::setValueFromJson(QJsonDocument::fromJson(json).object(), text("key"), target);
    QTEST(target, "value");
}

void PBXContactInfoTest::readsNumbers_data()
{
    QTest::addColumn<QByteArray>("contacts");
    QTest::addColumn<QString>("number");
    auto const row = [](char const* tag, char const* contacts, char const* number) {
        QTest::newRow(tag) << QByteArray(contacts) << text(number);
    };
    row("every label but email", R"([{"type":"exten","value":"1"},{"type":"home","value":"2"},
        {"type":"work","value":"3"},{"type":"mobile","value":"4"},{"type":"work_mobile","value":"5"},
        {"type":"fax","value":"6"},{"type":"email","value":"7"},{"type":"pager","value":"8"},
        {"type":"","value":"9"}])",
        "1;2;3;4;5;6;8;9");
    row("the same twice", R"([{"type":"exten","value":"1"},{"type":"work","value":"1"}])", "1");
    row("email in another case", R"([{"type":"Email","value":"a@b"},{"type":"EMAIL","value":"c@d"}])",
        "a@b;c@d");
    row("no type", R"([{"value":"1"},{"type":"exten","value":"2"}])", "2");
    row("type that is no string", R"([{"type":5,"value":"1"},{"type":null,"value":"2"}])", "1;2");
    row("no value", R"([{"type":"exten"},{"type":"work","value":"2"}])", "2");
    row("value that is no string", R"([{"type":"exten","value":101},{"type":"work","value":"2"}])", ";2");
    row("elements that are no objects", R"(["x",5,null,[],{"type":"exten","value":"1"}])", "1");
    row("no elements", "[]", "");
    row("object instead of an array", R"({"type":"exten","value":"1"})", "");
    row("string instead of an array", R"("101")", "");
    row("null", "null", "");
}

void PBXContactInfoTest::readsNumbers()
{
    QFETCH(QByteArray, contacts);
    QTEST(fromJson("{\"contacts\":" + contacts + '}').getNumber(), "number");
}

void PBXContactInfoTest::replacesTheTargets()
{
    Numbers numbers{text("before")};
    PBXContactInfo::setNumbersFromJson(QJsonObject(), numbers);
    QVERIFY(numbers.empty());
    // The department comes from "unit" alone.
    QCOMPARE(fromJson(R"({"department":"x","unit":"y"})").getDepartment(), text("y"));
    QCOMPARE(fromJson(R"({"department":"x"})").getDepartment(), QString());
}

void PBXContactInfoTest::splitsNumbers_data()
{
    QTest::addColumn<QString>("joined");
    QTest::addColumn<QStringList>("numbers");
    QTest::addColumn<QString>("joinedAgain");
    QTest::newRow("empty pieces") << text(";101;;102;") << QStringList({text("101"), text("102")})
                                  << text("101;102");
    QTest::newRow("sorted") << text("102;101") << QStringList({text("101"), text("102")}) << text("101;102");
    QTest::newRow("as text") << text("20;100") << QStringList({text("100"), text("20")}) << text("100;20");
    QTest::newRow("one") << text("101") << QStringList(text("101")) << text("101");
    QTest::newRow("the same twice") << text("1;1") << QStringList(text("1")) << text("1");
    QTest::newRow("not trimmed") << text(" 101;101") << QStringList({text(" 101"), text("101")})
                                 << text(" 101;101");
    QTest::newRow("none") << QString() << QStringList() << QString();
    QTest::newRow("separators alone") << text(";;;") << QStringList() << QString();
    QTest::newRow("placeholders") << text("%2;%1") << QStringList({text("%1"), text("%2")}) << text("%1;%2");
}

void PBXContactInfoTest::splitsNumbers()
{
    QFETCH(QString, joined);
    QFETCH(QStringList, numbers);
    Numbers const set = PBXContactInfo::createNumberSetFromString(joined);
    QVERIFY(set == Numbers(numbers.begin(), numbers.end()));
    QTEST(PBXContactInfo::createStringFromNumberSet(set), "joinedAgain");
}

void PBXContactInfoTest::sortsNumbersByCodeUnit()
{
    QString const privateUse(QChar(0xe000));
    QString const emoji = QString::fromUcs4(U"\U0001f600", 1);
    QCOMPARE(PBXContactInfo::createStringFromNumberSet({privateUse, emoji, text("a"), text("B")}),
             text("B;a;") + emoji + QLatin1Char(';') + privateUse);
}

void PBXContactInfoTest::setsTexts()
{
    PBXContactInfo contact;
    contact.setFirstName(text(" f "));
    contact.setLastName(text("l"));
    contact.setCompany(text("c"));
    contact.setDepartment(text("d"));
    QCOMPARE(contact.getFirstName(), text(" f "));
    QCOMPARE(contact.getLastName(), text("l"));
    QCOMPARE(contact.getCompany(), text("c"));
    QCOMPARE(contact.getDepartment(), text("d"));
    QVERIFY(contact.getNumbers().empty());
}

void PBXContactInfoTest::setsNumbers()
{
    PBXContactInfo contact;
    contact.setNumbers(text("2;1"));
    QCOMPARE(contact.getNumber(), text("1;2"));
    contact.setNumbers(Numbers{text("3"), QString()});
    QCOMPARE(contact.getNumber(), text(";3"));
    contact.setNumbers(contact.getNumbers());
    QCOMPARE(contact.getNumber(), text(";3"));
    contact.setNumbers(QString());
    QVERIFY(contact.getNumbers().empty());
}

void PBXContactInfoTest::serializesNothingWithoutNumbers()
{
    PBXContactInfo contact;
    contact.setFirstName(text("Mario"));
    contact.setCompany(text("Officine"));
    DataSet const stored = contact.serialize();
    QVERIFY(stored.data != nullptr && stored.isEmpty() && !stored.isArray());
    QCOMPARE(PBXContactInfo(stored), PBXContactInfo());

    PBXContactInfo existing = sample();
    existing.deserialize(stored);
    QCOMPARE(existing.getFirstName(), text("Mario"));
    QCOMPARE(existing.getDepartment(), text("Vendite"));
    QVERIFY(existing.getNumbers().empty());
}

void PBXContactInfoTest::serializesEveryField()
{
    PBXContactInfo const contact = sample();
    DataSet const stored = contact.serialize();
    QCOMPARE(JsonDataSet::deserializeJson(stored),
             QByteArray(R"({"company":"Officine","department":"Vendite","firstName":"Mario",)"
                        R"("lastName":"Rossi","number":"101;3331234567"})"));
    QCOMPARE(PBXContactInfo(stored), contact);
    QVERIFY(PBXContactInfo(stored).serialize() == stored);
    // A number alone is enough, and the empty fields are stored too.
    PBXContactInfo numberOnly;
    numberOnly.setNumbers(text("101"));
    QCOMPARE(numberOnly.serialize().count(), 5);
}

void PBXContactInfoTest::deserializesWhatIsThere()
{
    PBXContactInfo contact = sample();
    DataSet change = DataSet::createObject();
    change.setValue(text("firstName"), text("Luigi"));
    change.setValue(text("company"), QString());
    change.setValue(text("number"), text("7"));
    contact.deserialize(change);
    QCOMPARE(contact.getFirstName(), text("Luigi"));
    QCOMPARE(contact.getLastName(), text("Rossi"));
    QCOMPARE(contact.getCompany(), QString());
    QCOMPARE(contact.getDepartment(), text("Vendite"));
    QCOMPARE(contact.getNumber(), text("7"));
    contact.deserialize(DataSet());
    QCOMPARE(contact.getLastName(), text("Rossi"));
    QCOMPARE(contact.getNumber(), QString());
}

void PBXContactInfoTest::keepsFieldsOfAnotherKind()
{
    PBXContactInfo contact = sample();
    DataSet change = DataSet::createObject();
    change.setValue(text("firstName"), 5);
    change.setValue(text("lastName"), QByteArray("bytes"));
    change.setValue(text("company"), true);
    change.setValue(text("department"), DataSet::createObject().data);
    change.setValue(text("number"), 101);
    contact.deserialize(change);
    PBXContactInfo expected = sample();
    expected.setNumbers(QString());
    QCOMPARE(contact, expected);
    contact.deserialize(DataSet::createArray());
    QCOMPARE(contact, expected);
}

void PBXContactInfoTest::comparesEveryField_data()
{
    QTest::addColumn<PBXContactInfo>("other");
    QTest::addColumn<bool>("equal");
    QTest::newRow("the same") << sample() << true;
    auto const row = [](char const* tag, auto change) {
        PBXContactInfo other = sample();
        change(other);
        QTest::newRow(tag) << other << false;
    };
    row("first name", [](PBXContactInfo& other) { other.setFirstName(text("mario")); });
    row("last name", [](PBXContactInfo& other) { other.setLastName(text("ROSSI")); });
    row("company", [](PBXContactInfo& other) { other.setCompany(QString()); });
    row("department", [](PBXContactInfo& other) { other.setDepartment(text("vendite")); });
    row("one number more", [](PBXContactInfo& other) { other.setNumbers(text("101;102;3331234567")); });
    row("another number", [](PBXContactInfo& other) { other.setNumbers(text("101;3331234568")); });
}

void PBXContactInfoTest::comparesEveryField()
{
    QFETCH(PBXContactInfo, other);
    QFETCH(bool, equal);
    QCOMPARE(sample() == other, equal);
    QCOMPARE(other == sample(), equal);
}

void PBXContactInfoTest::mapsLabels_data()
{
    QTest::addColumn<QString>("label");
    QTest::addColumn<unsigned int>("type");
    QTest::newRow("extension") << text("exten") << 0U;
    QTest::newRow("home") << text("home") << 4U;
    QTest::newRow("work") << text("work") << 2U;
    QTest::newRow("mobile") << text("mobile") << 3U;
    QTest::newRow("work mobile") << text("work_mobile") << 3U;
    QTest::newRow("fax") << text("fax") << 6U;
    QTest::newRow("email") << text("email") << 9U;
    QTest::newRow("other") << text("other") << 7U;
    QTest::newRow("capital") << text("Work") << 7U;
    QTest::newRow("longer") << text("work ") << 7U;
    QTest::newRow("empty") << QString() << 7U;
}

void PBXContactInfoTest::mapsLabels()
{
    QFETCH(QString, label);
    QTEST(static_cast<unsigned int>(PBXContactInfo::contactLabel2referenceType(label)), "type");
}

void PBXContactInfoTest::mapsTypes_data()
{
    QTest::addColumn<unsigned int>("type");
    QTest::addColumn<QString>("label");
    QTest::newRow("extension") << 0U << text("exten");
    QTest::newRow("one, never in use") << 1U << text("other");
    QTest::newRow("work") << 2U << text("work");
    QTest::newRow("mobile") << 3U << text("mobile");
    QTest::newRow("home") << 4U << text("home");
    QTest::newRow("five, never in use") << 5U << text("other");
    QTest::newRow("fax") << 6U << text("fax");
    QTest::newRow("other") << 7U << text("other");
    QTest::newRow("eight, never in use") << 8U << text("other");
    QTest::newRow("email") << 9U << text("email");
    QTest::newRow("above all") << 10U << text("other");
    QTest::newRow("the highest") << 4294967295U << text("other");
}

void PBXContactInfoTest::mapsTypes()
{
    QFETCH(unsigned int, type);
    QTEST(PBXContactInfo::referenceType2contactLabel(static_cast<ContactReferenceType>(type)), "label");
}

void PBXContactInfoTest::servesThroughItsInterface()
{
    PBXContactInfo const contact = sample();
    std::unique_ptr<ISerializable> const record = std::make_unique<PBXContactInfo>();
    record->deserialize(contact.serialize());
    QVERIFY(record->serialize() == contact.serialize());
    PBXContactInfo copy;
    copy = contact;
    QCOMPARE(copy, contact);
}

void PBXContactInfoTest::movesEveryField()
{
    PBXContactInfo source = sample();
    PBXContactInfo moved(std::move(source));
    QCOMPARE(moved, sample());
    QCOMPARE(source, PBXContactInfo());
    PBXContactInfo target = fromJson(R"({"firstName":"Anna","contacts":[{"type":"exten","value":"9"}]})");
    PBXContactInfo const copy = target;
    target = std::move(moved);
    QCOMPARE(target, sample());
    moved = copy;
    QCOMPARE(moved, copy);
    PBXContactInfo& self = target;
    target = std::move(self);
    target = sample();
    QCOMPARE(target, sample());
}

void PBXContactInfoTest::hashesAndPrints()
{
    PBXContactInfo const contact = sample();
    PBXContactInfo other = sample();
    other.setNumbers(text("101"));
    QSet<PBXContactInfo> const contacts{contact, sample(), other};
    QCOMPARE(contacts.size(), 2);
    std::unordered_set<PBXContactInfo> const standardContacts(contacts.begin(), contacts.end());
    QVERIFY(standardContacts.contains(contact));
    QCOMPARE(QVariant::fromValue(contact).value<PBXContactInfo>(), contact);
    QString const shown =
        text(R"(PBXContactInfo("Mario", "Rossi", "101;3331234567", "Officine", "Vendite"))");
    QCOMPARE(QDebug::toString(contact), shown);
    std::unique_ptr<char[]> const cText(toString(contact));
    QCOMPARE(QString::fromUtf8(cText.get()), shown);
}

int main(int argc, char** argv)
{
    return runTest<PBXContactInfoTest>(argc, argv);
}

#include "PBXContactInfoTest.moc"
