#include <RunTest.h>
#include <TextGenerator.h>

#include <client/ContactCard.h>
#include <datasets/JsonDataSet.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSet>
#include <QTest>
#include <memory>

using namespace Qt::StringLiterals;
using Softphone::ContactCard;
using Softphone::ContactPoint;

namespace {

ContactCard cardOf(QByteArray const& json)
{
    return ContactCard::fromJson(QJsonDocument::fromJson(json).object());
}

} // namespace

class ContactCardTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void keepsWhatThePbxSent();
    void readsIds_data();
    void readsIds();
    void leavesOutPointsThatAreNone();
    void names_data();
    void names();
    void numbersAndEmails();
    void goesThroughARecord();
    void theCoreReadsTheRecord();
    void readsOlderRecords();
    void isTheCoresContact();
    void hashesAsItCompares();
    void showsItselfAsJson();
    void isAGadget();
};

void ContactCardTest::keepsWhatThePbxSent()
{
    ContactCard const card =
        cardOf(R"({"id": "7", "firstName": "Mario", "lastName": "Rossi", "company": "Officina",
        "unit": "Sales", "contacts": [{"type": "work_mobile", "value": "+39 333 1"}, {"type": "exten", "value": "201"},
        {"type": "email", "value": "m@rossi.example"}, {"type": "switchboard", "value": ""}]})");
    QCOMPARE(card.id, u"7"_s);
    QCOMPARE(card.firstName, u"Mario"_s);
    QCOMPARE(card.lastName, u"Rossi"_s);
    QCOMPARE(card.company, u"Officina"_s);
    QCOMPARE(card.department, u"Sales"_s);
    QList<ContactPoint> const points{{ContactReferenceType::Mobile, u"work_mobile"_s, u"+39 333 1"_s},
                                     {ContactReferenceType::Extension, u"exten"_s, u"201"_s},
                                     {ContactReferenceType::Email, u"email"_s, u"m@rossi.example"_s},
                                     {ContactReferenceType::Other, u"switchboard"_s, u""_s}};
    QCOMPARE(card.points, points);
    QCOMPARE(ContactCard::fromJson(card.toJson()), card);
}

void ContactCardTest::readsIds_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QString>("id");

    QTest::newRow("text") << QByteArray(R"("a 1")") << u"a 1"_s;
    QTest::newRow("whole number") << QByteArray("42") << u"42"_s;
    QTest::newRow("negative") << QByteArray("-1") << u"-1"_s;
    QTest::newRow("zero") << QByteArray("0") << u"0"_s;
    QTest::newRow("greatest") << QByteArray("9223372036854775807") << u"9223372036854775807"_s;
    QTest::newRow("written as a real") << QByteArray("1e3") << u"1000"_s;
    QTest::newRow("fraction") << QByteArray("1.5") << QString();
    QTest::newRow("one too great") << QByteArray("9223372036854775808") << QString();
    QTest::newRow("too great") << QByteArray("1e300") << QString();
    QTest::newRow("truth value") << QByteArray("true") << QString();
    QTest::newRow("null") << QByteArray("null") << QString();
    QTest::newRow("array") << QByteArray("[1]") << QString();
}

void ContactCardTest::readsIds()
{
    QFETCH(QByteArray, json);
    QFETCH(QString, id);

    QCOMPARE(cardOf("{\"id\": " + json + '}').id, id);
}

void ContactCardTest::leavesOutPointsThatAreNone()
{
    QCOMPARE(cardOf(R"({"contacts": {"type": "exten", "value": "201"}})").points.size(), 0);
    ContactCard const card = cardOf(
        R"({"contacts": [1, {}, {"type": "exten"}, {"value": "1"}, {"type": 1, "value": 2}, {"type": "fax", "value": "3"}]})");
    QList<ContactPoint> const points{{ContactReferenceType::Other, u""_s, u""_s},
                                     {ContactReferenceType::Fax, u"fax"_s, u"3"_s}};
    QCOMPARE(card.points, points);
}

void ContactCardTest::names_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("initials");

    QTest::newRow("both names") << QByteArray(R"({"firstName": "Anna  Maria", "lastName": " Bianchi"})")
                                << u"Anna Maria Bianchi"_s << u"AMB"_s;
    QTest::newRow("last name alone") << QByteArray(R"({"lastName": "Rossi", "company": "x"})") << u"Rossi"_s
                                     << u"R"_s;
    QTest::newRow("company") << QByteArray(R"({"firstName": " ", "company": "Officina Cordaviva"})")
                             << u"Officina Cordaviva"_s << u"OC"_s;
    QTest::newRow("number")
        << QByteArray(
               R"({"contacts": [{"type": "email", "value": "a@b.example"}, {"type": "exten", "value": "201"}]})")
        << u"201"_s << u"2"_s;
    QTest::newRow("address") << QByteArray(R"({"contacts": [{"type": "email", "value": "a@b.example"}]})")
                             << u"a@b.example"_s << u"a"_s;
    QTest::newRow("nothing") << QByteArray("{}") << QString() << QString();
}

void ContactCardTest::names()
{
    QFETCH(QByteArray, json);

    QTEST(cardOf(json).displayName(), "name");
    QTEST(cardOf(json).initials(), "initials");
}

void ContactCardTest::numbersAndEmails()
{
    ContactCard const card =
        cardOf(R"({"contacts": [{"type": "work", "value": "2"}, {"type": "email", "value": "b"},
        {"type": "home", "value": "1"}, {"type": "fax", "value": "2"}, {"type": "email", "value": "a"},
        {"type": "work", "value": ""}, {"type": "email", "value": "b"}]})");
    QCOMPARE(card.numbers(), QStringList({u"2"_s, u"1"_s}));
    QCOMPARE(card.emails(), QStringList({u"b"_s, u"a"_s}));
}

void ContactCardTest::goesThroughARecord()
{
    for (QByteArray const& json :
         {QByteArray("{}"), QByteArray(R"({"id": 7, "firstName": "Mario", "unit": "Sales", "contacts": [
              {"type": "work", "value": "2;3"}, {"type": "email", "value": "m@rossi.example"},
              {"type": "work", "value": "2;3"}, {"type": "x", "value": ""}, {"type": "", "value": "1"},
              {"type": "a", "value": "1"}, {"type": "a", "value": "2"}, {"type": "a", "value": "3"},
              {"type": "a", "value": "4"}, {"type": "a", "value": "5"}, {"type": "a", "value": "6"}]})"),
          QByteArray(
              R"({"lastName": "Rossi", "contacts": [{"type": "email", "value": "m@rossi.example"}]})")}) {
        ContactCard const card = cardOf(json);
        QCOMPARE(ContactCard::fromDataSet(card.toDataSet()), card);
        // As it is stored.
        QByteArray const stored = JsonDataSet::deserializeJson(card.toDataSet());
        QCOMPARE(ContactCard::fromDataSet(JsonDataSet::serializeJson(stored)), card);
    }
}

void ContactCardTest::theCoreReadsTheRecord()
{
    ContactCard const card =
        cardOf(R"({"id": 7, "firstName": "Mario", "lastName": "Rossi", "company": "Officina",
        "unit": "Sales", "contacts": [{"type": "work", "value": "2"}, {"type": "email", "value": "m@rossi.example"},
        {"type": "home", "value": "1"}]})");
    PBXContactInfo const info(card.toDataSet());
    QCOMPARE(info, card.info());
    QCOMPARE(info.getNumber(), u"1;2"_s);
    QCOMPARE(info.getDepartment(), u"Sales"_s);
}

void ContactCardTest::readsOlderRecords()
{
    PBXContactInfo info;
    info.setFirstName(u"Mario"_s);
    info.setDepartment(u"Sales"_s);
    info.setNumbers(u"2;1"_s);
    ContactCard const card = ContactCard::fromDataSet(info.serialize());
    QCOMPARE(card.firstName, u"Mario"_s);
    QCOMPARE(card.department, u"Sales"_s);
    QList<ContactPoint> const points{{ContactReferenceType::Other, u"other"_s, u"1"_s},
                                     {ContactReferenceType::Other, u"other"_s, u"2"_s}};
    QCOMPARE(card.points, points);
    QCOMPARE(card.id, QString());
    QCOMPARE(card.info(), info);
    QCOMPARE(ContactCard::fromDataSet(DataSets::DataSet()), ContactCard());
}

void ContactCardTest::isTheCoresContact()
{
    TextGenerator generator(5, {u"1"_s, u"2"_s, u";"_s, u" "_s, u"a"_s});
    QStringList const types{u"exten"_s, u"home"_s,  u"work"_s,  u"mobile"_s, u"work_mobile"_s,
                            u"fax"_s,   u"email"_s, u"Email"_s, u""_s};
    auto const value = [&]() -> QJsonValue {
        int const kind = generator.number(0, 9);
        return kind == 0 ? QJsonValue(7) : kind == 1 ? QJsonValue() : QJsonValue(generator.text(3));
    };
    for (int round = 0; round < 1000; ++round) {
        QJsonObject object;
        for (QString const& key : {u"firstName"_s, u"lastName"_s, u"company"_s, u"unit"_s}) {
            if (generator.coin()) {
                object.insert(key, value());
            }
        }
        QJsonArray contacts;
        for (int left = generator.number(0, 4); left > 0; --left) {
            QJsonObject point;
            if (generator.number(0, 5) > 0) {
                point.insert(u"type"_s, types[generator.number(0, int(types.size()) - 1)]);
            }
            if (generator.number(0, 5) > 0) {
                point.insert(u"value"_s, value());
            }
            contacts.append(point);
        }
        object.insert(u"contacts"_s, contacts);
        QCOMPARE(ContactCard::fromJson(object).info(), PBXContactInfo(object));
    }
}

void ContactCardTest::hashesAsItCompares()
{
    ContactCard const card =
        cardOf(R"({"id": 1, "firstName": "Mario", "contacts": [{"type": "work", "value": "201"}]})");
    ContactCard other = card;
    QCOMPARE(qHash(other), qHash(card));
    other.points.clear();
    QSet<ContactCard> cards{card, other, card};
    QCOMPARE(cards.size(), 2);
    QVERIFY(cards.contains(other));
}

void ContactCardTest::showsItselfAsJson()
{
    ContactCard const card = cardOf(R"({"id": 1, "firstName": "Mario"})");
    std::unique_ptr<char[]> const shown(toString(card));
    QCOMPARE(ContactCard::fromJson(QJsonDocument::fromJson(shown.get()).object()), card);
}

void ContactCardTest::isAGadget()
{
    QVariant const card = QVariant::fromValue(cardOf(R"({"firstName": "Mario", "lastName": "Rossi"})"));
    QMetaObject const& meta = ContactCard::staticMetaObject;
    auto const read = [&](char const* name) {
        return meta.property(meta.indexOfProperty(name)).readOnGadget(card.constData());
    };
    QCOMPARE(read("displayName").toString(), u"Mario Rossi"_s);
    QCOMPARE(read("initials").toString(), u"MR"_s);
}

int main(int argc, char** argv)
{
    return runTest<ContactCardTest>(argc, argv);
}

#include "ContactCardTest.moc"
