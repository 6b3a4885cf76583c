#include <RunTest.h>
#include <TestFiles.h>
#include <TextGenerator.h>

#include <client/ContactDirectory.h>
#include <client/SearchFilter.h>

#include <QAbstractItemModelTester>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <limits>
#include <map>

using namespace Qt::StringLiterals;
using Softphone::ContactCard;
using Softphone::ContactDirectory;

namespace {

ContactCard person(QString const& id, QString const& name, QStringList const& numbers = {})
{
    ContactCard card;
    card.id = id;
    card.firstName = name;
    for (QString const& number : numbers) {
        card.points.append({ContactReferenceType::Work, u"work"_s, number});
    }
    return card;
}

QByteArray json(QList<ContactCard> const& cards)
{
    QJsonArray array;
    for (ContactCard const& card : cards) {
        array.append(card.toJson());
    }
    return QJsonDocument(array).toJson();
}

/// The names of all rows.
QString names(ContactDirectory const& directory)
{
    QStringList all;
    for (int row = 0; row < directory.rowCount(); ++row) {
        all.append(directory.index(row).data(ContactDirectory::NameRole).toString());
    }
    return all.join(u' ');
}

/// Writes down the signals of rows, in order.
class Recorder
{
public:
    explicit Recorder(ContactDirectory& directory)
    {
        auto const rows = [this](char const* what) {
            return [this, what](QModelIndex const&, int first, int last) {
                signal(QStringLiteral("%1 %2-%3").arg(QLatin1StringView(what)).arg(first).arg(last));
            };
        };
        QObject::connect(&directory, &ContactDirectory::rowsInserted, &directory, rows("insert"));
        QObject::connect(&directory, &ContactDirectory::rowsRemoved, &directory, rows("remove"));
        QObject::connect(&directory, &ContactDirectory::rowsMoved, &directory,
                         [this](QModelIndex const&, int first, int, QModelIndex const&, int to) {
                             signal(QStringLiteral("move %1>%2").arg(first).arg(to));
                         });
        QObject::connect(&directory, &ContactDirectory::dataChanged, &directory,
                         [this](QModelIndex const& first, QModelIndex const& last) {
                             signal(QStringLiteral("change %1-%2").arg(first.row()).arg(last.row()));
                         });
        QObject::connect(&directory, &ContactDirectory::layoutChanged, &directory,
                         [this] { signal(u"layout"_s); });
        QObject::connect(&directory, &ContactDirectory::modelReset, &directory,
                         [this] { signal(u"reset"_s); });
    }

    QString take() { return std::exchange(m_signals, {}).join(u", "); }

private:
    void signal(QString const& what) { m_signals.append(what); }

    QStringList m_signals;
};

using Change = std::function<void(ContactDirectory&)>;

} // namespace

Q_DECLARE_METATYPE(Change)

class ContactDirectoryTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QLocale::setDefault(QLocale(QLocale::Italian, QLocale::Italy)); }
    void startsEmpty();
    void roleNamesAreCompleteBeforeTheFirstRow();
    void tellsEachRole();
    void sortsAsTheLocaleDoes();
    void changesWithTheLeastSignals_data();
    void changesWithTheLeastSignals();
    void thoseApartLeaveAsOneBlock();
    void mergesById();
    void makesIdsFromTheContent();
    void filterIsOneNotification();
    void filtersByRankAndThenByName();
    void filtersAsEachCardByItself();
    void findsWhatChangedOften();
    void marksHits();
    void countsTellOfChanges();
    void anyChangeKeepsTheIndexes();
    void findsTheCaller_data();
    void findsTheCaller();
    void callerFollowsChanges();
    void staleIndexesHaveNoData();
    void slotMayDeleteIt_data();
    void slotMayDeleteIt();
    void callerIsGoneWithTheRow();
    void callerIsTheFirstOfSeveral();
    void callerOfManyCards();
    void loadsInTheBackground();
    void backgroundLoadMayOutliveTheDirectory();
};

void ContactDirectoryTest::startsEmpty()
{
    ContactDirectory directory;
    QAbstractItemModelTester const tester(&directory, QAbstractItemModelTester::FailureReportingMode::QtTest);
    QCOMPARE(directory.rowCount(), 0);
    QCOMPARE(directory.total(), 0);
    QCOMPARE(directory.row(u"1"_s), -1);
    QVERIFY(!directory.removeCard(u"1"_s));
    QVERIFY(!directory.caller(u"201"_s));
    QVERIFY(!directory.card(u"1"_s));
    QCOMPARE(directory.data(QModelIndex(), ContactDirectory::NameRole), QVariant());
}

void ContactDirectoryTest::roleNamesAreCompleteBeforeTheFirstRow()
{
    QList<QByteArray> const expected{"card",       "company",        "companyHits", "contactId",
                                     "department", "departmentHits", "emails",      "initials",
                                     "name",       "nameHits",       "numberHits",  "numbers"};
    QHash<int, QByteArray> const all = ContactDirectory().roleNames();
    QList<QByteArray> own;
    for (auto role = all.begin(); role != all.end(); ++role) {
        if (role.key() > Qt::UserRole) {
            own.append(role.value());
        }
    }
    std::ranges::sort(own);
    QCOMPARE(own, expected);
}

void ContactDirectoryTest::tellsEachRole()
{
    ContactDirectory directory;
    QAbstractItemModelTester const tester(&directory, QAbstractItemModelTester::FailureReportingMode::QtTest);
    ContactCard card = person(u"7"_s, u"Mario"_s, {u"201"_s, u"+39 06 1"_s});
    card.lastName = u"Rossi"_s;
    card.company = u"Officina"_s;
    card.department = u"Sales"_s;
    card.points.append({ContactReferenceType::Email, u"email"_s, u"m@rossi.example"_s});
    QVERIFY(directory.addOrUpdate(card));
    QModelIndex const row = directory.index(0);
    QCOMPARE(row.data(ContactDirectory::CardRole).value<ContactCard>(), card);
    QCOMPARE(row.data(ContactDirectory::IdRole).toString(), u"7"_s);
    QCOMPARE(row.data(ContactDirectory::NameRole).toString(), u"Mario Rossi"_s);
    QCOMPARE(row.data().toString(), u"Mario Rossi"_s);
    QCOMPARE(row.data(ContactDirectory::InitialsRole).toString(), u"MR"_s);
    QCOMPARE(row.data(ContactDirectory::CompanyRole).toString(), u"Officina"_s);
    QCOMPARE(row.data(ContactDirectory::DepartmentRole).toString(), u"Sales"_s);
    QCOMPARE(row.data(ContactDirectory::NumbersRole).toStringList(), QStringList({u"201"_s, u"+39 06 1"_s}));
    QCOMPARE(row.data(ContactDirectory::EmailsRole).toStringList(), QStringList(u"m@rossi.example"_s));
    QCOMPARE(row.data(ContactDirectory::NameHitsRole).toList(), QVariantList());
    QCOMPARE(row.data(Qt::DecorationRole), QVariant());
    QCOMPARE(directory.card(u"7"_s), std::optional(card));
}

void ContactDirectoryTest::sortsAsTheLocaleDoes()
{
    ContactDirectory directory;
    QAbstractItemModelTester const tester(&directory, QAbstractItemModelTester::FailureReportingMode::QtTest);
    Recorder recorder(directory);
    directory.load(json({person(u"1"_s, u"Öst"_s), person(u"2"_s, u"zoo"_s), person(u"3"_s, u"Orto"_s),
                         person(u"4"_s, u"ape"_s)}));
    QCOMPARE(names(directory), u"ape Orto Öst zoo"_s);
    QCOMPARE(recorder.take(), u"insert 0-3"_s);
    QPersistentModelIndex const last = directory.index(2);
    directory.setLocale(QLocale(QLocale::Swedish));
    QCOMPARE(names(directory), u"ape Orto zoo Öst"_s);
    QCOMPARE(recorder.take(), u"move 2>4"_s);
    QCOMPARE(last.row(), 3);
    directory.addOrUpdate(person(u"5"_s, u"Åke"_s));
    QCOMPARE(names(directory), u"ape Orto zoo Åke Öst"_s);
}

void ContactDirectoryTest::changesWithTheLeastSignals_data()
{
    QTest::addColumn<QString>("filter");
    QTest::addColumn<Change>("change");
    QTest::addColumn<QString>("signalsInOrder");
    QTest::addColumn<QString>("rowsOfBeforeNow"); ///< of the ids 1 to 4, where they are now

    auto const row = [](char const* name, char const* filter, char const* signalsInOrder, char const* rows,
                        Change const& change) {
        QTest::newRow(name) << QString::fromLatin1(filter) << change << QString::fromLatin1(signalsInOrder)
                            << QString::fromLatin1(rows);
    };
    auto const put = [](QList<ContactCard> const& cards) {
        return [cards](ContactDirectory& directory) { directory.load(json(cards)); };
    };
    auto const drop = [](QString const& id) {
        return [id](ContactDirectory& directory) { directory.removeCard(id); };
    };
    // Rows: 1 Anna, 2 Bruno, 3 Carla, 4 Dario.
    row("the same again", "", "", "0 1 2 3", put({person(u"2"_s, u"Bruno"_s)}));
    row("one more in the middle", "", "insert 2-2", "0 1 3 4", put({person(u"5"_s, u"Bzz"_s)}));
    row("two more at one place", "", "insert 2-3", "0 1 4 5",
        put({person(u"6"_s, u"Bzz"_s), person(u"5"_s, u"By"_s)}));
    row("two more at two places", "", "insert 4-5, move 4>1", "0 2 3 4",
        put({person(u"5"_s, u"Ar"_s), person(u"6"_s, u"E"_s)}));
    row("three more at three places", "", "insert 4-6, layout", "0 2 4 5",
        put({person(u"5"_s, u"Ar"_s), person(u"6"_s, u"Bz"_s), person(u"7"_s, u"E"_s)}));
    row("a change in place", "", "change 1-1", "0 1 2 3", put({person(u"2"_s, u"Bruno"_s, {u"201"_s})}));
    row("changes beside each other", "", "change 1-2", "0 1 2 3",
        put({person(u"2"_s, u"Bruna"_s), person(u"3"_s, u"Carlo"_s)}));
    row("changes apart", "", "change 0-0, change 2-2", "0 1 2 3",
        put({person(u"1"_s, u"Anno"_s), person(u"3"_s, u"Carlo"_s)}));
    row("a new name moves down", "", "move 0>3, change 2-2", "2 0 1 3", put({person(u"1"_s, u"Cz"_s)}));
    row("a new name moves up", "", "move 3>0, change 0-0", "1 2 3 0", put({person(u"4"_s, u"Aa"_s)}));
    row("all turned round", "", "layout, change 0-0, change 3-3", "3 1 2 0",
        put({person(u"1"_s, u"Z"_s), person(u"4"_s, u"A"_s)}));
    row("a removal", "", "remove 1-1", "0 -1 1 2", drop(u"2"_s));
    row("removal of what is not there", "", "", "0 1 2 3", drop(u"9"_s));
    row("one more that matches", "r", "insert 1-1", "-1 -1 -1 -1", put({person(u"5"_s, u"Rita"_s)}));
    row("one more that does not match", "b", "", "-1 0 -1 -1", put({person(u"5"_s, u"Rita"_s)}));
    row("no longer matches", "b", "remove 0-0", "-1 -1 -1 -1", put({person(u"2"_s, u"Rita"_s)}));
    row("matches from now on", "b", "insert 0-0", "-1 1 -1 -1", put({person(u"1"_s, u"Ba"_s)}));
    row("ranks higher from now on", "b", "insert 0-0", "-1 1 -1 -1", put({person(u"4"_s, u"B"_s)}));
    row("removal of one that the filter leaves out", "b", "", "-1 0 -1 -1", drop(u"1"_s));
    row("removal of one that matches", "b", "remove 0-0", "-1 -1 -1 -1", drop(u"2"_s));
}

void ContactDirectoryTest::changesWithTheLeastSignals()
{
    QFETCH(QString, filter);
    QFETCH(Change, change);
    QFETCH(QString, signalsInOrder);
    QFETCH(QString, rowsOfBeforeNow);

    ContactDirectory directory;
    directory.load(json({person(u"1"_s, u"Anna"_s), person(u"2"_s, u"Bruno"_s), person(u"3"_s, u"Carla"_s),
                         person(u"4"_s, u"Dario"_s)}));
    if (filter == u"r") {
        directory.addOrUpdate(person(u"7"_s, u"Ra"_s));
    }
    directory.setFilter(filter);
    QAbstractItemModelTester const tester(&directory, QAbstractItemModelTester::FailureReportingMode::QtTest);
    QList<QPersistentModelIndex> before;
    for (QString const& id : {u"1"_s, u"2"_s, u"3"_s, u"4"_s}) {
        before.append(directory.index(directory.row(id)));
    }
    Recorder recorder(directory);
    change(directory);
    QCOMPARE(recorder.take(), signalsInOrder);
    QStringList rows;
    for (QPersistentModelIndex const& index : before) {
        rows.append(QString::number(index.row()));
    }
    QCOMPARE(rows.join(u' '), rowsOfBeforeNow);
    for (int row = 0; row < directory.rowCount(); ++row) {
        QCOMPARE(directory.row(directory.index(row).data(ContactDirectory::IdRole).toString()), row);
    }
}

void ContactDirectoryTest::thoseApartLeaveAsOneBlock()
{
    ContactDirectory directory;
    QAbstractItemModelTester const tester(&directory, QAbstractItemModelTester::FailureReportingMode::QtTest);
    directory.load(json({person(u"1"_s, u"Ra"_s), person(u"2"_s, u"Rb"_s), person(u"3"_s, u"Rc"_s),
                         person(u"4"_s, u"Rd"_s)}));
    directory.setFilter(u"r"_s);
    QPersistentModelIndex const stays = directory.index(directory.row(u"4"_s));
    QPersistentModelIndex const goes = directory.index(directory.row(u"3"_s));
    Recorder recorder(directory);
    directory.load(json({person(u"1"_s, u"X"_s), person(u"3"_s, u"Y"_s)}));
    QCOMPARE(recorder.take(), u"layout, remove 2-3"_s);
    QCOMPARE(names(directory), u"Rb Rd"_s);
    QCOMPARE(stays.row(), 1);
    QVERIFY(!goes.isValid());
}

void ContactDirectoryTest::mergesById()
{
    ContactDirectory directory;
    QAbstractItemModelTester const tester(&directory, QAbstractItemModelTester::FailureReportingMode::QtTest);
    auto report =
        directory.load(R"([{"id": 1, "firstName": "Anna", "company": "x"}, {"id": "2", "firstName": "B"}])");
    QCOMPARE(report.added, 2);
    QCOMPARE(report.updated, 0);
    report = directory.load(R"([{"id": "1", "firstName": "Anna"}, {"id": 2, "firstName": "B"}, {"id": 3}])");
    QCOMPARE(report.added, 1);
    QCOMPARE(report.updated, 1);
    QCOMPARE(directory.total(), 3);
    QCOMPARE(directory.card(u"1"_s)->company, QString()); // as a whole
    report = directory.load(R"([{"id": 9, "firstName": "first"}, {"id": 9, "firstName": "last"}])");
    QCOMPARE(report.added, 1);
    QCOMPARE(report.updated, 1);
    QCOMPARE(directory.card(u"9"_s)->firstName, u"last"_s);
    QVERIFY(!directory.addOrUpdate(person(u"9"_s, u"last"_s)));
    QVERIFY(directory.removeCard(u"9"_s));
    QVERIFY(directory.addOrUpdate(person(u"9"_s, u"again"_s)));
    QCOMPARE(directory.total(), 4);
}

void ContactDirectoryTest::makesIdsFromTheContent()
{
    ContactDirectory directory;
    QAbstractItemModelTester const tester(&directory, QAbstractItemModelTester::FailureReportingMode::QtTest);
    QByteArray const text = R"([{"firstName": "Anna"}, {"firstName": "Bruno"}, {"firstName": "Anna"}])";
    QCOMPARE(directory.load(text).added, 2);
    QString const id = directory.index(0).data(ContactDirectory::IdRole).toString();
    QVERIFY(!id.isEmpty());
    QCOMPARE(directory.load(text).added, 0);
    QCOMPARE(directory.load(text).updated, 0);
    QCOMPARE(directory.total(), 2);
    QCOMPARE(directory.row(id), 0);
    ContactDirectory another;
    another.load(text);
    QCOMPARE(another.row(id), 0);
}

void ContactDirectoryTest::filterIsOneNotification()
{
    ContactDirectory directory;
    directory.load(json({person(u"1"_s, u"Anna"_s), person(u"2"_s, u"Bruno"_s), person(u"3"_s, u"Carla"_s)}));
    QAbstractItemModelTester const tester(&directory, QAbstractItemModelTester::FailureReportingMode::QtTest);
    QSignalSpy const filters(&directory, &ContactDirectory::filterChanged);
    Recorder recorder(directory);
    for (QString const& words : {u"b"_s, u"br"_s, u"brx"_s, u"b"_s, u""_s}) {
        directory.setFilter(words);
        QCOMPARE(recorder.take(), u"reset"_s);
        QCOMPARE(directory.filter(), words);
    }
    QCOMPARE(filters.count(), 5);
    QCOMPARE(names(directory), u"Anna Bruno Carla"_s);
    directory.setFilter(QString());
    QCOMPARE(recorder.take(), QString());
    directory.setFilter(u"carla"_s);
    QCOMPARE(directory.row(u"3"_s), 0);
    QCOMPARE(directory.row(u"1"_s), -1);
    QCOMPARE(directory.total(), 3);
}

void ContactDirectoryTest::filtersByRankAndThenByName()
{
    ContactDirectory directory;
    QAbstractItemModelTester const tester(&directory, QAbstractItemModelTester::FailureReportingMode::QtTest);
    ContactCard company = person(u"1"_s, u"Aldo"_s);
    company.company = u"Mar"_s;
    ContactCard unit = person(u"2"_s, u"Berto"_s);
    unit.department = u"Marmi"_s;
    directory.load(json({company, unit, person(u"3"_s, u"Mario"_s), person(u"4"_s, u"Marco"_s),
                         person(u"5"_s, u"Zoe Mar"_s), person(u"6"_s, u"Ada"_s)}));
    directory.setFilter(u"mar"_s);
    QCOMPARE(names(directory), u"Zoe Mar Aldo Marco Mario Berto"_s);
}

/// Filters typed letter by letter and set at once, over cards that change, against each card's own rank.
/// Enough cards for a few changes to be looked at by themselves.
void ContactDirectoryTest::filtersAsEachCardByItself()
{
    QStringList const pieces{u"ma"_s,  u"mario"_s, u" "_s,       u" "_s, u"-"_s, u"'"_s,
                             u"+39"_s, u"06"_s,    u"12"_s,      u"0"_s, u"ß"_s, u"s"_s,
                             u"(0)"_s, u"."_s,     u"u\u0308"_s, u";"_s, u":"_s, u"3m"_s};
    TextGenerator generator(29, pieces);
    ContactDirectory directory;
    QAbstractItemModelTester const tester(&directory, QAbstractItemModelTester::FailureReportingMode::QtTest);
    constexpr int mostId = 400;
    auto const anyId = [&] { return QString::number(generator.number(0, mostId)); };
    for (int round = 0; round < 120; ++round) {
        QList<ContactCard> cards;
        for (int left = round == 0 ? 500 : generator.number(0, 2); left > 0; --left) {
            ContactCard card = person(anyId(), generator.text(4), {generator.text(5), generator.text(3)});
            card.company = generator.text(3);
            card.department = generator.text(2);
            cards.append(card);
        }
        directory.load(json(cards));
        directory.removeCard(anyId());
        QString const words = generator.text(5);
        for (qsizetype length = generator.coin() ? words.size() : 0; length <= words.size(); ++length) {
            directory.setFilter(words.left(length));
            Softphone::SearchFilter const filter(words.left(length));
            int before = std::numeric_limits<int>::max();
            int matching = 0;
            for (int row = 0; row < directory.rowCount(); ++row) {
                auto const card = directory.index(row).data(ContactDirectory::CardRole).value<ContactCard>();
                int const rank = filter.rank(QStringList{card.displayName(), card.company, card.department} +
                                             card.numbers());
                QVERIFY(rank > 0 && rank <= before);
                before = rank;
            }
            for (int id = 0; id <= mostId; ++id) {
                auto const card = directory.card(QString::number(id));
                matching +=
                    card && filter.matches(QStringList{card->displayName(), card->company, card->department} +
                                           card->numbers())
                        ? 1
                        : 0;
            }
            QCOMPARE(directory.rowCount(), matching);
        }
    }
}

void ContactDirectoryTest::findsWhatChangedOften()
{
    ContactDirectory directory;
    for (QString const& name : {u"first%1"_s, u"second%1"_s, u"third%1"_s}) {
        QList<ContactCard> cards;
        for (int id = 0; id < 3000; ++id) {
            cards.append(person(QString::number(id), name.arg(id)));
        }
        directory.load(json(cards));
    }
    directory.setFilter(u"second"_s);
    QCOMPARE(directory.rowCount(), 0);
    directory.setFilter(u"third299"_s);
    QCOMPARE(names(directory), u"third299 third2990 third2991 third2992 third2993 third2994 third2995 "
                               "third2996 third2997 third2998 third2999"_s);
    directory.setFilter(QString());
    QCOMPARE(directory.rowCount(), 3000);
}

void ContactDirectoryTest::marksHits()
{
    ContactDirectory directory;
    QAbstractItemModelTester const tester(&directory, QAbstractItemModelTester::FailureReportingMode::QtTest);
    ContactCard card = person(u"1"_s, u"Jürgen"_s, {u"201"_s, u"+39 06 12"_s});
    card.company = u"Ju"_s;
    card.department = u"Sales of juice"_s;
    directory.addOrUpdate(card);
    auto const place = [](qsizetype position, qsizetype length) {
        return QVariantMap{{u"position"_s, position}, {u"length"_s, length}};
    };
    auto const role = [&](int which) { return directory.index(0).data(which).toList(); };
    directory.setFilter(u"jur ju jui 061"_s);
    QCOMPARE(role(ContactDirectory::DepartmentHitsRole), QVariantList{place(9, 3)});
    QCOMPARE(role(ContactDirectory::NameHitsRole), QVariantList{place(0, 3)});
    QCOMPARE(role(ContactDirectory::CompanyHitsRole), QVariantList{place(0, 2)});
    QVariantMap number = place(4, 4);
    number.insert(u"index"_s, 1);
    QCOMPARE(role(ContactDirectory::NumberHitsRole), QVariantList{number});
}

void ContactDirectoryTest::countsTellOfChanges()
{
    ContactDirectory directory;
    QAbstractItemModelTester const tester(&directory, QAbstractItemModelTester::FailureReportingMode::QtTest);
    QSignalSpy const totals(&directory, &ContactDirectory::totalChanged);
    QSignalSpy const counts(&directory, &ContactDirectory::countChanged);
    directory.load(json({person(u"1"_s, u"Anna"_s), person(u"2"_s, u"Bruno"_s)}));
    QCOMPARE(totals.count(), 1);
    QCOMPARE(counts.count(), 1);
    directory.setFilter(u"b"_s);
    QCOMPARE(totals.count(), 1);
    QCOMPARE(counts.count(), 2);
    directory.removeCard(u"1"_s);
    QCOMPARE(totals.count(), 2);
    QCOMPARE(counts.count(), 2);
    QCOMPARE(directory.count(), 1);
}

/// Random changes, with the rows compared to a plain search after each, and each index to the card it stood
/// for.
void ContactDirectoryTest::anyChangeKeepsTheIndexes()
{
    TextGenerator generator(14, {u"ma"_s, u"ro"_s, u"Zi"_s, u" "_s, u"é"_s, u"12"_s});
    for (QString const& filter : {u""_s, u"ma"_s, u"m 1"_s}) {
        ContactDirectory directory;
        directory.setFilter(filter);
        QAbstractItemModelTester const tester(&directory,
                                              QAbstractItemModelTester::FailureReportingMode::QtTest);
        std::map<QString, ContactCard> expected;
        for (int round = 0; round < 150; ++round) {
            std::map<QString, QPersistentModelIndex> indexes;
            for (auto const& [id, card] : expected) {
                if (int const row = directory.row(id); row >= 0) {
                    indexes[id] = directory.index(row);
                }
            }
            if (generator.number(0, 3) == 0) {
                QString const id = QString::number(generator.number(0, 15));
                QCOMPARE(directory.removeCard(id), expected.erase(id) > 0);
            } else {
                QList<ContactCard> cards;
                for (int left = generator.number(1, 6); left > 0; --left) {
                    cards.append(person(QString::number(generator.number(0, 15)), generator.text(4)));
                    expected[cards.back().id] = cards.back();
                }
                directory.load(json(cards));
            }
            Softphone::SearchFilter const search(filter);
            int matching = 0;
            for (auto const& [id, card] : expected) {
                bool const matches = search.matches({card.displayName()});
                matching += matches ? 1 : 0;
                QCOMPARE(directory.row(id) >= 0, matches);
                QCOMPARE(directory.card(id), std::optional(card));
                if (matches && indexes.contains(id)) {
                    QCOMPARE(indexes[id].row(), directory.row(id));
                }
            }
            QCOMPARE(directory.rowCount(), matching);
            QCOMPARE(directory.total(), int(expected.size()));
        }
    }
}

void ContactDirectoryTest::findsTheCaller_data()
{
    QTest::addColumn<QString>("stored");
    QTest::addColumn<QString>("calling");
    QTest::addColumn<bool>("found");

    QTest::newRow("the same") << u"+390612345678"_s << u"+390612345678"_s << true;
    QTest::newRow("written in another way") << u"+39 06 1234-5678"_s << u"0039(06)12345678"_s << true;
    QTest::newRow("national in the directory") << u"06 12345678"_s << u"+390612345678"_s << true;
    QTest::newRow("national on the line") << u"+39 06 12345678"_s << u"0612345678"_s << true;
    QTest::newRow("of another country") << u"+44 20 7946 0020"_s << u"+442079460020"_s << true;
    QTest::newRow("national form of another country") << u"020 7946 0020"_s << u"+442079460020"_s << false;
    QTest::newRow("the same end") << u"+39 06 12345678"_s << u"+39 02 12345678"_s << false;
    QTest::newRow("another country, the same end") << u"+39 333 1234567"_s << u"+41 33 1234567"_s << false;
    QTest::newRow("a mobile number") << u"333 1234567"_s << u"+393331234567"_s << true;
    QTest::newRow("a short national number") << u"06 1234"_s << u"+39061234"_s << true;
    QTest::newRow("an extension of the exchange") << u"201"_s << u"201"_s << true;
    QTest::newRow("an extension is not the end of a number") << u"201"_s << u"+390612345201"_s << false;
    QTest::newRow("nor a number the end of it") << u"+390612345201"_s << u"201"_s << false;
    QTest::newRow("another extension") << u"201"_s << u"2011"_s << false;
    QTest::newRow("an extension of two digits") << u"12"_s << u"12"_s << true;
    QTest::newRow("another of two digits") << u"12"_s << u"13"_s << false;
    QTest::newRow("of two digits and the end of a number") << u"+39061234512"_s << u"12"_s << false;
    QTest::newRow("number with extension") << u"06 12345678 int. 12"_s << u"+390612345678;12"_s << true;
    QTest::newRow("the number without the extension")
        << u"06 12345678 int. 12"_s << u"+390612345678"_s << false;
    QTest::newRow("another extension of it") << u"06 12345678 int. 12"_s << u"06 12345678 int. 13"_s << false;
    QTest::newRow("an extension that is dialled") << u"06 12345678,,12"_s << u"06 12345678 int. 12"_s << true;
    QTest::newRow("an extension after a semicolon")
        << u"06 12345678;12"_s << u"06 12345678 int. 12"_s << true;
    QTest::newRow("an extension after a number sign")
        << u"06 12345678#12"_s << u"06 12345678 int. 12"_s << true;
    QTest::newRow("an extension is called by its exchange")
        << u"06 12345678,,12"_s << u"0612345678"_s << false;
    QTest::newRow("a country code and a few digits") << u"+12"_s << u"+12"_s << false;
    QTest::newRow("emergency") << u"118"_s << u"118"_s << true;
    QTest::newRow("no number") << u"201"_s << u"anonymous"_s << false;
    QTest::newRow("nothing") << u"201"_s << u""_s << false;
    QTest::newRow("digits of another script") << u"٢٠١"_s << u"201"_s << true;
    QTest::newRow("digits outside of the first plane") << u"𝟎𝟔 12345678"_s << u"0612345678"_s << true;
}

void ContactDirectoryTest::findsTheCaller()
{
    QFETCH(QString, stored);
    QFETCH(QString, calling);
    QFETCH(bool, found);

    ContactDirectory directory;
    QAbstractItemModelTester const tester(&directory, QAbstractItemModelTester::FailureReportingMode::QtTest);
    directory.setRegion(u"IT"_s);
    directory.addOrUpdate(person(u"1"_s, u"Anna"_s, {u"+39 011 5551234"_s, stored}));
    directory.addOrUpdate(person(u"2"_s, u"Bruno"_s, {u"+39 011 5551235"_s}));
    for (int again = 0; again < 2; ++again) {
        auto const card = directory.caller(calling);
        QCOMPARE(card.has_value(), found);
        QCOMPARE(card ? card->id : u"1"_s, u"1"_s);
    }
}

void ContactDirectoryTest::callerFollowsChanges()
{
    ContactDirectory directory;
    QAbstractItemModelTester const tester(&directory, QAbstractItemModelTester::FailureReportingMode::QtTest);
    directory.addOrUpdate(person(u"1"_s, u"Anna"_s, {u"06 12345678"_s}));
    QCOMPARE(directory.caller(u"+390612345678"_s)->id, u"1"_s);
    directory.addOrUpdate(person(u"1"_s, u"Anna"_s, {u"06 87654321"_s}));
    QVERIFY(!directory.caller(u"+390612345678"_s));
    QCOMPARE(directory.caller(u"+390687654321"_s)->id, u"1"_s);
    directory.removeCard(u"1"_s);
    QVERIFY(!directory.caller(u"+390687654321"_s));
    directory.addOrUpdate(person(u"2"_s, u"London"_s, {u"020 7946 0020"_s}));
    QVERIFY(!directory.caller(u"+442079460020"_s));
    directory.setRegion(u"GB"_s);
    QCOMPARE(directory.region(), u"GB"_s);
    QCOMPARE(directory.caller(u"+442079460020"_s)->id, u"2"_s);
    ContactCard mail = person(u"3"_s, u"Mail"_s);
    mail.points.append({ContactReferenceType::Email, u"email"_s, u"204"_s});
    directory.addOrUpdate(mail);
    QVERIFY(!directory.caller(u"204"_s));
    mail.points[0].type = ContactReferenceType::Work;
    directory.addOrUpdate(mail);
    QCOMPARE(directory.caller(u"204"_s)->id, u"3"_s);
    mail.points[0].type = ContactReferenceType::Email;
    directory.addOrUpdate(mail);
    QVERIFY(!directory.caller(u"204"_s));
    directory.addOrUpdate(person(u"4"_s, u"Two"_s, {u"205"_s, u"206"_s}));
    QCOMPARE(directory.caller(u"206"_s)->id, u"4"_s);
    directory.addOrUpdate(person(u"4"_s, u"Two"_s, {u"205"_s}));
    QVERIFY(!directory.caller(u"206"_s));
}

void ContactDirectoryTest::staleIndexesHaveNoData()
{
    ContactDirectory directory;
    directory.addOrUpdate(person(u"1"_s, u"Anna"_s));
    QModelIndex const index = directory.index(0);
    QCOMPARE(directory.data(index, ContactDirectory::IdRole).toString(), u"1"_s);
    ContactDirectory another;
    another.addOrUpdate(person(u"2"_s, u"Bruno"_s));
    QVERIFY(!another.data(index, ContactDirectory::IdRole).isValid());
    QVERIFY(directory.removeCard(u"1"_s));
    QVERIFY(!directory.data(index, ContactDirectory::IdRole).isValid());
}

using Notify = void (ContactDirectory::*)();

void ContactDirectoryTest::slotMayDeleteIt_data()
{
    QTest::addColumn<Notify>("notify");
    QTest::newRow("all cards") << &ContactDirectory::totalChanged;
    QTest::newRow("shown cards") << &ContactDirectory::countChanged;
}

void ContactDirectoryTest::slotMayDeleteIt()
{
    QFETCH(Notify, notify);
    QPointer<ContactDirectory> const directory = new ContactDirectory;
    connect(directory, notify, this, [directory] { delete directory.data(); });
    directory->addOrUpdate(person(u"1"_s, u"Anna"_s));
    QVERIFY(!directory);
}

void ContactDirectoryTest::callerIsGoneWithTheRow()
{
    ContactDirectory directory;
    QAbstractItemModelTester const tester(&directory, QAbstractItemModelTester::FailureReportingMode::QtTest);
    directory.addOrUpdate(person(u"1"_s, u"Anna"_s, {u"201"_s}));
    QVERIFY(directory.caller(u"201"_s));
    bool isThere = true;
    connect(&directory, &ContactDirectory::rowsRemoved, this,
            [&] { isThere = directory.caller(u"201"_s).has_value(); });
    QVERIFY(directory.removeCard(u"1"_s));
    QVERIFY(!isThere);
}

void ContactDirectoryTest::callerIsTheFirstOfSeveral()
{
    ContactDirectory directory;
    QAbstractItemModelTester const tester(&directory, QAbstractItemModelTester::FailureReportingMode::QtTest);
    directory.addOrUpdate(person(u"1"_s, u"Bruno"_s, {u"201"_s}));
    directory.addOrUpdate(person(u"2"_s, u"Anna"_s, {u"201"_s}));
    directory.setFilter(u"bruno"_s);
    QCOMPARE(directory.caller(u"201"_s)->id, u"2"_s);
}

/// Enough for the index to be rebuilt, at once and little by little.
void ContactDirectoryTest::callerOfManyCards()
{
    ContactDirectory directory;
    QAbstractItemModelTester const tester(&directory, QAbstractItemModelTester::FailureReportingMode::QtTest);
    auto const numberOf = [](int card) { return u"06 5%1"_s.arg(card, 6, 10, QChar(u'0')); };
    QList<ContactCard> cards;
    for (int card = 0; card < 600; ++card) {
        cards.append(person(QString::number(card), u"a"_s, {numberOf(card)}));
    }
    directory.load(json(cards));
    QCOMPARE(directory.caller(u"+39065000599"_s)->id, u"599"_s);
    for (int round = 1; round < 30; ++round) {
        for (int card = 0; card < 200; ++card) {
            cards[card].points[0].value = numberOf(1000 * round + card);
        }
        directory.load(json(cards));
        QCOMPARE(directory.caller(numberOf(1000 * round + 7))->id, u"7"_s);
        QVERIFY(!directory.caller(numberOf(1000 * (round - 1) + 7)));
        QCOMPARE(directory.caller(numberOf(300))->id, u"300"_s);
    }
}

void ContactDirectoryTest::loadsInTheBackground()
{
    QTemporaryDir const folder;
    QString const path = folder.filePath(u"contacts.json"_s);
    QByteArray const json = R"([{"id": 1, "firstName": "Anna"}, 7, {"id": 2, "firstName": "Bruno"}])";
    QVERIFY(TestFiles::write(path, json));
    ContactDirectory directory;
    QAbstractItemModelTester const tester(&directory, QAbstractItemModelTester::FailureReportingMode::QtTest);
    QFuture<ContactDirectory::LoadReport> const future = directory.startLoadingFile(path);
    QCOMPARE(directory.total(), 0); // before the event loop runs
    QTRY_VERIFY(future.isFinished());
    QCOMPARE(future.result().added, 2);
    QCOMPARE(future.result().errors.size(), 1);
    QCOMPARE(names(directory), u"Anna Bruno"_s);
    QVERIFY(directory.addOrUpdate(*directory.card(u"1"_s)) == false);
    directory.setFilter(u"bru"_s);
    QCOMPARE(names(directory), u"Bruno"_s);

    // With the region and the order that were set before.
    ContactDirectory british;
    british.setRegion(u"GB"_s);
    QVERIFY(TestFiles::write(path, R"([{"id": 1, "firstName": "zoo", "contacts":
        [{"type": "work", "value": "020 7946 0020"}]}, {"id": 2, "firstName": "Öst"}])"));
    british.setLocale(QLocale(QLocale::Swedish));
    auto const third = british.startLoadingFile(path);
    QTRY_VERIFY(third.isFinished());
    QCOMPARE(names(british), u"zoo Öst"_s);
    QVERIFY(british.caller(u"+442079460020"_s));

    // The language is switched while the file is being read.
    for (bool const isEmpty : {true, false}) {
        ContactDirectory switched;
        switched.setLocale(QLocale(QLocale::German));
        if (!isEmpty) {
            switched.addOrUpdate(person(u"3"_s, u"Zebra"_s));
        }
        auto const fourth = switched.startLoadingFile(path);
        switched.setLocale(QLocale(QLocale::Swedish));
        QTRY_VERIFY(fourth.isFinished());
        QCOMPARE(names(switched), isEmpty ? u"zoo Öst"_s : u"Zebra zoo Öst"_s);
    }
    QVERIFY(TestFiles::write(path, json));

    // Among cards that are there, and in an order of their own.
    ContactDirectory merged;
    QAbstractItemModelTester const mergedTester(&merged,
                                                QAbstractItemModelTester::FailureReportingMode::QtTest);
    merged.load(R"([{"id": 3, "firstName": "Beppe"}, {"id": 2, "firstName": "Zoe"}])");
    merged.setFilter(u"b"_s);
    QFuture<ContactDirectory::LoadReport> const second = merged.startLoadingFile(path);
    QTRY_VERIFY(second.isFinished());
    QCOMPARE(second.result().added, 1);
    QCOMPARE(second.result().updated, 1);
    QCOMPARE(second.result().errors.size(), 1);
    QCOMPARE(names(merged), u"Beppe Bruno"_s);
    QCOMPARE(merged.total(), 3);

    auto const missing = directory.startLoadingFile(folder.filePath(u"missing"_s));
    QTRY_VERIFY(missing.isFinished());
    QCOMPARE(missing.result().added, 0);
    QCOMPARE(missing.result().errors.size(), 1);
    QCOMPARE(missing.result().errors.front().line, 0);
}

void ContactDirectoryTest::backgroundLoadMayOutliveTheDirectory()
{
    QFuture<ContactDirectory::LoadReport> future;
    {
        ContactDirectory directory;
        future = directory.startLoadingFile(QCoreApplication::applicationFilePath());
    }
    QTRY_VERIFY(future.isFinished());
    QVERIFY(future.isCanceled());
    QVERIFY(QThreadPool::globalInstance()->waitForDone());
}

int main(int argc, char** argv)
{
    return runTest<ContactDirectoryTest>(argc, argv);
}

#include "ContactDirectoryTest.moc"
