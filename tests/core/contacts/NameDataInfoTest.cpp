#include <contacts/NameDataInfo.h>

#include <QDebug>
#include <QSet>
#include <QVariant>
#include <RunTest.h>
#include <memory>
#include <unordered_set>
#include <utility>

namespace {

QString text(char const* utf8)
{
    return QString::fromUtf8(utf8);
}

NameDataInfo nameOf(char const* firstName, char const* lastName)
{
    NameDataInfo name;
    name.setNameAndInitials(text(firstName), text(lastName));
    return name;
}

} // namespace

class NameDataInfoTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void composesNames_data();
    void composesNames();
    void startsEmpty();
    void keepsInitialsOnEveryChange();
    void keepsNamesAsTheyWereSet();
    void resets();
    void copiesAndMoves();
    void comparesCaseSensitively();
    void validatesNames_data();
    void validatesNames();
    void buildsCompositeNames_data();
    void buildsCompositeNames();
    void removesBlanksOnlyWhenAsked();
    void hashesAndPrints();
};

void NameDataInfoTest::composesNames_data()
{
    QTest::addColumn<QString>("first");
    QTest::addColumn<QString>("last");
    QTest::addColumn<QString>("full");
    QTest::addColumn<QString>("fullClean");
    QTest::addColumn<QString>("reversed");
    QTest::addColumn<QString>("reversedClean");
    QTest::addColumn<QString>("initials");
    auto const row = [](char const* tag, std::initializer_list<char const*> texts) {
        QTestData& data = QTest::newRow(tag);
        for (char const* field : texts) {
            data << text(field);
        }
    };
    row("first and last",
        {"Mario", "Rossi", "Mario Rossi", "Mario Rossi", "Rossi Mario", "Rossi Mario", "MR"});
    row("two spaces inside", {"Anna  Maria", "Bianchi", "Anna  Maria Bianchi", "Anna Maria Bianchi",
                              "Bianchi Anna  Maria", "Bianchi Anna Maria", "AMB"});
    row("no first name", {"", "Rossi", "Rossi", "Rossi", "Rossi", "Rossi", "R"});
    row("no last name", {"Mario", "", "Mario", "Mario", "Mario", "Mario", "M"});
    row("no name", {"", "", "", "", "", "", ""});
    row("blanks alone", {" ", " \t", "", "", "", "", ""});
    row("blanks at the ends",
        {" Mario ", " Rossi ", "Mario   Rossi", "Mario Rossi", "Rossi   Mario", "Rossi Mario", "MR"});
    row("four words", {"Anna Maria", "De Luca", "Anna Maria De Luca", "Anna Maria De Luca",
                       "De Luca Anna Maria", "De Luca Anna Maria", "AMD"});
    row("lower case stays",
        {"mario", "rossi", "mario rossi", "mario rossi", "rossi mario", "rossi mario", "mr"});
    row("placeholders are text", {"%1", "%2", "%1 %2", "%1 %2", "%2 %1", "%2 %1", ""});
    row("beyond ASCII", {"\u00c9lodie", "\u00d6zil", "\u00c9lodie \u00d6zil", "\u00c9lodie \u00d6zil",
                         "\u00d6zil \u00c9lodie", "\u00d6zil \u00c9lodie", "\u00c9\u00d6"});
}

void NameDataInfoTest::composesNames()
{
    QFETCH(QString, first);
    QFETCH(QString, last);
    NameDataInfo name;
    name.setNameAndInitials(first, last);
    QTEST(name.getFullName(false), "full");
    QTEST(name.getFullName(true), "fullClean");
    QTEST(name.getFullNameReversed(false), "reversed");
    QTEST(name.getFullNameReversed(true), "reversedClean");
    QTEST(name.getInitials(), "initials");
    QTEST(NameDataInfo::getInitialsFromFullName(first, last), "initials");
}

void NameDataInfoTest::startsEmpty()
{
    NameDataInfo const name;
    QCOMPARE(name.getFirstName(false), QString());
    QCOMPARE(name.getLastName(false), QString());
    QCOMPARE(name.getInitials(), QString());
}

void NameDataInfoTest::keepsInitialsOnEveryChange()
{
    NameDataInfo name;
    name.setFirstName(text("Mario"));
    QCOMPARE(name.getInitials(), text("M"));
    name.setLastName(text("Rossi"));
    QCOMPARE(name.getFirstName(false), text("Mario"));
    QCOMPARE(name.getInitials(), text("MR"));
    name.setFirstName(text("Luigi"));
    QCOMPARE(name.getLastName(false), text("Rossi"));
    QCOMPARE(name.getInitials(), text("LR"));
    name.setLastName(QString());
    QCOMPARE(name.getInitials(), text("L"));
}

void NameDataInfoTest::keepsNamesAsTheyWereSet()
{
    NameDataInfo const name = nameOf("  Anna  Maria ", " De  Luca ");
    QCOMPARE(name.getFirstName(false), text("  Anna  Maria "));
    QCOMPARE(name.getFirstName(true), text("Anna Maria"));
    QCOMPARE(name.getLastName(false), text(" De  Luca "));
    QCOMPARE(name.getLastName(true), text("De Luca"));
}

void NameDataInfoTest::resets()
{
    NameDataInfo name = nameOf("Mario", "Rossi");
    name.resetName();
    QCOMPARE(name, NameDataInfo());
    QCOMPARE(name.getInitials(), QString());
}

void NameDataInfoTest::copiesAndMoves()
{
    NameDataInfo const mario = nameOf("Mario", "Rossi");
    NameDataInfo const anna = nameOf("Anna", "Bianchi");
    NameDataInfo copy(mario);
    QCOMPARE(copy, mario);
    NameDataInfo moved(std::move(copy));
    QCOMPARE(moved, mario);
    QCOMPARE(copy, NameDataInfo());
    copy = anna;
    QCOMPARE(copy, anna);
    // The source of a move assignment gets what was there before.
    moved = std::move(copy);
    QCOMPARE(moved, anna);
    QCOMPARE(copy, mario);
    QCOMPARE(copy.getInitials(), text("MR"));
    NameDataInfo& self = moved;
    moved = std::move(self);
    QCOMPARE(moved, anna);
    moved = self;
    QCOMPARE(moved, anna);
}

void NameDataInfoTest::comparesCaseSensitively()
{
    QVERIFY(nameOf("Mario", "Rossi") == nameOf("Mario", "Rossi"));
    QVERIFY(nameOf("Mario", "Rossi") != nameOf("mario", "Rossi"));
    // The same initials.
    QVERIFY(nameOf("Mario", "Rossi") != nameOf("MARIO", "Rossi"));
    QVERIFY(nameOf("Mario", "Rossi") != nameOf("Mario", "ROSSI"));
    QVERIFY(nameOf("Mario Rossi", "") != nameOf("Mario", "Rossi"));
    QVERIFY(nameOf("Mario", "Rossi") != nameOf("Mario ", "Rossi"));
}

void NameDataInfoTest::validatesNames_data()
{
    QTest::addColumn<QString>("first");
    QTest::addColumn<QString>("last");
    QTest::addColumn<bool>("valid");
    QTest::newRow("none") << QString() << text("") << false;
    QTest::newRow("a blank") << text(" ") << QString() << true;
    QTest::newRow("first only") << text("Mario") << QString() << true;
    QTest::newRow("last only") << QString() << text("Rossi") << true;
    QTest::newRow("both") << text("Mario") << text("Rossi") << true;
}

void NameDataInfoTest::validatesNames()
{
    QFETCH(QString, first);
    QFETCH(QString, last);
    QTEST(NameDataInfo::isValidName(first, last), "valid");
}

void NameDataInfoTest::buildsCompositeNames_data()
{
    QTest::addColumn<QString>("first");
    QTest::addColumn<QString>("second");
    QTest::addColumn<QString>("composite");
    QTest::newRow("both") << text("Mario") << text("Rossi") << text("Mario Rossi");
    QTest::newRow("no second") << text("Mario") << QString() << text("Mario");
    QTest::newRow("no first") << QString() << text("Rossi") << text("Rossi");
    QTest::newRow("blanks inside stay") << text("a  b ") << text(" c") << text("a  b   c");
    QTest::newRow("trimmed at both ends") << text("\t a") << text("b \n") << text("a b");
}

void NameDataInfoTest::buildsCompositeNames()
{
    QFETCH(QString, first);
    QFETCH(QString, second);
    QTEST(NameDataInfo::buildCompositeName(first, second), "composite");
}

void NameDataInfoTest::removesBlanksOnlyWhenAsked()
{
    QCOMPARE(NameDataInfo::removeExtraBlankSpacesIfNeeded(text(" a  b "), false), text(" a  b "));
    QCOMPARE(NameDataInfo::removeExtraBlankSpacesIfNeeded(text(" a  b "), true), text("a b"));
}

void NameDataInfoTest::hashesAndPrints()
{
    NameDataInfo const mario = nameOf("Mario", "Rossi");
    QSet<NameDataInfo> const names{mario, nameOf("Mario", "Rossi"), nameOf("mario", "Rossi")};
    QCOMPARE(names.size(), 2);
    std::unordered_set<NameDataInfo> const standardNames(names.begin(), names.end());
    QVERIFY(standardNames.contains(mario));
    QCOMPARE(QVariant::fromValue(mario).value<NameDataInfo>(), mario);
    QCOMPARE(QDebug::toString(mario), text("NameDataInfo(\"Mario\", \"Rossi\", \"MR\")"));
    std::unique_ptr<char[]> const shown(toString(mario));
    QCOMPARE(shown.get(), "NameDataInfo(\"Mario\", \"Rossi\", \"MR\")");
    QCOMPARE(QDebug::toString(nameOf(" Anna  Maria", "De  Luca ")),
             text("NameDataInfo(\" Anna  Maria\", \"De  Luca \", \"AMD\")"));
}

int main(int argc, char** argv)
{
    return runTest<NameDataInfoTest>(argc, argv);
}

#include "NameDataInfoTest.moc"
