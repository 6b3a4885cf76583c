#include <ChildProcess.h>
#include <RunTest.h>
#include <SampleDirectory.h>
#include <TestFiles.h>

#include <client/ContactDirectory.h>

#include <QAbstractItemModelTester>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>
#include <csignal>
#include <dlfcn.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using Softphone::ContactCard;
using Softphone::ContactDirectory;

namespace {

/// The ids of all cards, sorted, and the places that are wrong.
QString outcome(QByteArray const& json)
{
    ContactDirectory directory;
    QAbstractItemModelTester const tester(&directory, QAbstractItemModelTester::FailureReportingMode::QtTest);
    ContactDirectory::LoadReport const report = directory.load(json);
    QStringList ids;
    for (int row = 0; row < directory.rowCount(); ++row) {
        ids.append(directory.index(row).data(ContactDirectory::IdRole).toString());
    }
    std::ranges::sort(ids);
    QString text = ids.join(u' ');
    for (ContactDirectory::LoadError const& error : report.errors) {
        text += u" !%1:%2"_s.arg(error.line).arg(error.column);
    }
    return text.trimmed();
}

QHash<QString, ContactCard> cardsOf(ContactDirectory const& directory)
{
    QHash<QString, ContactCard> cards;
    for (int row = 0; row < directory.rowCount(); ++row) {
        auto const card = directory.index(row).data(ContactDirectory::CardRole).value<ContactCard>();
        cards.insert(card.id, card);
    }
    return cards;
}

/// Whether files keep only half of what they are given, and nobody is told.
bool isDiskLying = false;

} // namespace

// The library finds this one before the system's.
extern "C" ssize_t write(int file, void const* bytes, std::size_t size)
{
    using Function = ssize_t(int, void const*, std::size_t);
    static auto* const systems = reinterpret_cast<Function*>(dlsym(RTLD_NEXT, "write"));
    struct stat status = {};
    bool const isLost = isDiskLying && fstat(file, &status) == 0 && S_ISREG(status.st_mode);
    ssize_t const written = systems(file, bytes, isLost ? size / 2 : size);
    return isLost ? static_cast<ssize_t>(size) : written;
}

class DirectoryLoadTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void goesOnAfterErrors_data();
    void goesOnAfterErrors();
    void tellsWhatIsWrong();
    void listsTheFirstThousandErrors();
    void noticesWhatQtNotices();
    void readsWhatQtReads_data();
    void readsWhatQtReads();
    void nestingIsBounded();
    void samplesAreReadAsQtReadsThem();
    void savesWhatItLoads();
    void savesAsAWholeOrNotAtAll();
    void failsToReadWhatIsNotThere();
};

void DirectoryLoadTest::goesOnAfterErrors_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QString>("expected");

    auto const row = [](char const* name, QByteArray const& json, char const* expected) {
        QTest::newRow(name) << json << QString::fromLatin1(expected);
    };
    row("an array", R"([{"id": 1}, {"id": 2}])", "1 2");
    row("one object", R"({"id": 1})", "1");
    row("byte order mark", "\xef\xbb\xbf[{\"id\": 1}]", "1");
    row("tabs", "\t[\t{\t\"id\":\t1\t}\t]\t", "1");
    row("empty array", " [ ] ", "");
    row("nothing", "", "!1:1");
    row("blanks", "\n ", "!2:2");
    row("neither of both", "\n  7", "!2:3");
    row("an entry that is none", R"([{"id": 1}, 7, {"id": 2}])", "1 2 !1:13");
    row("a nested array", R"([[{"id": 3}], {"id": 2}])", "2 !1:2");
    row("an entry that is no value", R"([nul, {"id": 2}])", "2 !1:2");
    row("a comma too many", R"([{"id": 1},, {"id": 2}])", "1 2 !1:12");
    row("a comma at the end", R"([{"id": 1}, ])", "1 !1:13");
    row("a comma missing", R"([{"id": 1} {"id": 2}])", "1 2 !1:12");
    row("something else for a comma", R"([{"id": 1}; {"id": 2}, {"id": 3}])", "1 3 !1:11");
    row("something else for the last comma", R"([{"id": 1}; 2])", "1 !1:11");
    row("a colon missing", "[{\"id\" 1},\n{\"id\": 2}]", "2 !1:8");
    row("a value missing", "[{\"id\": },\n{\"id\": 2}]", "2 !1:9");
    row("a name without quotation marks", R"([{id: 1}, {"id": 2}])", "2 !1:3");
    row("a comma missing inside", R"([{"id": 1 "firstName": "{[\"x"}, {"id": 2}])", "2 !1:11");
    row("a comma at the end of an entry", R"([{"id": 1,}, {"id": 2}])", "2 !1:11");
    row("a comma at the end inside", R"([{"contacts": [1,]}, {"id": 2}])", "2 !1:18");
    row("wrong after something nested", R"([{"a": [[]], "b" 1}, {"id": 2}])", "2 !1:18");
    row("wrong deep inside", R"([{"contacts": [{"type" 1}, {}]}, {"id": 2}])", "2 !1:24");
    row("a text without an end", "[\n{\"id\": \"1},\n{\"id\": \"2\"},\n{\"id\": \"3\"}]", "2 3 !2:12");
    row("a brace missing", "[\n  {\"id\": \"1\",\n  {\"id\": \"2\"},\n  {\"id\": \"3\"}\n]", "2 3 !3:3");
    row("a brace missing, with tabs", "[\n\t{\"id\": \"1\",\n\t{\"id\": \"2\"}\n]", "2 !3:2");
    row("an escape that is none", R"([{"id": "\x"}, {"id": "2"}])", "2 !1:10");
    row("an escape that is none in a name", R"([{"\x": 1}, {"id": 2}])", "2 !1:4");
    row("a text without an end after what is wrong", "[\n{\"id\" 1, \"a\": \"x\n{\"id\": 2}]", "2 !2:7");
    row("a backslash before the end of a line after what is wrong",
        "[\n{\"id\" 1, \"a\": \"x\\\n{\"id\": 2}]", "2 !2:7");
    row("the text ends with a backslash after what is wrong", "[{\"id\" 1, \"a\": \"x\\", "!1:8");
    row("an escape with a letter that is no digit", R"([{"id": "\u00g0"}, {"id": "2"}])", "2 !1:10");
    row("an escape with a sign that is no digit", R"([{"id": "\u00`0"}, {"id": "2"}])", "2 !1:10");
    row("an escape of too few digits", R"([{"id": "\u12"}, {"id": "2"}])", "2 !1:10");
    row("bytes that are no UTF-8", "[{\"firstName\": \"\xc3\xa4\xff\"}, {\"id\": \"2\"}]", "2 !1:18");
    row("bytes that are no UTF-8 after an escape", "[{\"id\": \"\\n\xff\"}, {\"id\": 2}]", "2 !1:12");
    row("bytes that are no UTF-8 after long characters",
        "[{\"firstName\": \"\xf0\x9f\x98\x80\xe2\x82\xac\xff\"}, {\"id\": \"2\"}]", "2 !1:19");
    row("half of a character at the end", "[{\"firstName\": \"\xc3\"}, {\"id\": \"2\"}]", "2 !1:17");
    row("columns are characters", "[{\"\xf0\x9f\x98\x80\": \"\xc3\xa4\", 1}, {\"id\": 2}]", "2 !1:13");
    row("lines end as they do elsewhere", "[\r\n{\"id\": 1},\r\n 7,\r\n{\"id\": 2}]", "1 2 !3:2");
    row("the array does not end", R"([{"id": 1})", "1 !1:11");
    row("the array ends after a comma", R"([{"id": 1},)", "1 !1:12");
    row("the entry does not end", R"([{"id": 1}, {"id": 2)", "1 !1:21");
    row("the text ends inside a text", R"([{"id": 1}, {"id": "2)", "1 !1:22");
    row("the text ends with a bracket alone", "[", "!1:2");
    row("something after the end", R"([{"id": 1}] x)", "1 !1:13");
    row("one object that breaks off", R"({"id": tru)", "!1:8");
    row("two objects", R"({"id": 1} {"id": 2})", "1 !1:11");
    row("several", "[1,\n{\"id\": 1},\n2,\n{\"id\" 2},\n{\"id\": 3}]", "1 3 !1:2 !3:1 !4:7");
    row("a number with a zero in front", R"([{"id": 01}, {"id": 2}])", "2 !1:9");
    row("a number without digits", R"([{"id": -}, {"id": 2}])", "2 !1:9");
    row("a zero byte", QByteArray("[{\"id\": 1}, \0 {\"id\": 2}]", 24), "1 !1:13");
}

void DirectoryLoadTest::goesOnAfterErrors()
{
    QFETCH(QByteArray, json);
    QTEST(outcome(json), "expected");
}

void DirectoryLoadTest::tellsWhatIsWrong()
{
    ContactDirectory directory;
    QAbstractItemModelTester const tester(&directory, QAbstractItemModelTester::FailureReportingMode::QtTest);
    auto const report = directory.load(R"([{"id" 1}, "x"])");
    QCOMPARE(report.errors.size(), 2);
    QCOMPARE(report.errors[0], (ContactDirectory::LoadError{1, 8, u"A colon is missing here"_s}));
    QCOMPARE(report.errors[1], (ContactDirectory::LoadError{1, 12, u"This entry is no object"_s}));
}

void DirectoryLoadTest::listsTheFirstThousandErrors()
{
    ContactDirectory directory;
    QAbstractItemModelTester const tester(&directory, QAbstractItemModelTester::FailureReportingMode::QtTest);
    auto const report = directory.load('[' + QByteArray("1,").repeated(100'000) + "{\"id\": 1}]");
    QCOMPARE(report.errors.size(), 1000);
    QCOMPARE(report.added, 1);
    QCOMPARE(report.errors.back().column, 2000);
}

/// Each beginning of a text, and each text with one of its bytes exchanged. Qt lets escapes pass that are
/// none.
void DirectoryLoadTest::noticesWhatQtNotices()
{
    QByteArray const whole =
        R"([{"id": -1.5e+1, "first\u004eame": "a\n\ud83d\ude00\u00e4b", "a": {"b": [true, "c"]},
"contacts": [{"ty\u0070e": "work", "value": "201", "x": {"y": null}}]}, {"id": "\\2"}])";
    auto const check = [](QByteArray const& json) {
        bool const isWrong = !ContactDirectory().load(json).errors.isEmpty();
        QVERIFY2(isWrong || !QJsonDocument::fromJson(json).isNull(), json.constData());
    };
    for (qsizetype size = 0; size < whole.size(); ++size) {
        check(whole.first(size));
        for (char const byte : {'"', '\\', '{', ']', ',', ':', '0', 'x', '\xff'}) {
            QByteArray other = whole;
            other[size] = byte;
            check(other);
        }
    }
}

void DirectoryLoadTest::readsWhatQtReads_data()
{
    QTest::addColumn<QByteArray>("entry");

    QTest::newRow("all fields") << QByteArray(R"({"id": 5, "firstName": "a", "lastName": "b", "company": "c",
        "unit": "d", "contacts": [{"type": "email", "value": "e", "more": [1]}, {"value": "f", "type": "exten"}]})");
    QTest::newRow("names twice") << QByteArray(
        R"({"id": 1, "id": 2, "firstName": "a", "firstName": 7, "lastName": 7, "lastName": "b",
            "contacts": [{"type": "a", "value": "1"}], "contacts": [{"type": "b", "type": "c", "value": "2", "value": "3"}]})");
    QTest::newRow("escapes") << QByteArray(
        R"({"id": "\"\\\/\b\f\n\r\t\u00e4\ud83d\ude00", "first\u004eame": "x\u0000y", "lastName": "ä\u0041"})");
    QTest::newRow("every digit of an escape")
        << QByteArray(R"({"id": "\u0123\u4567\u89ab\ucdef\uABCD\uEF90"})");
    QTest::newRow("other kinds") << QByteArray(
        R"({"id": [1], "firstName": {"firstName": "a"}, "lastName": null,
        "company": true, "unit": 1.5e-3, "contacts": {"type": "a", "value": "b"}, "more": [[], {}, [{"a": [1, "x"]}], false]})");
    QTest::newRow("points of other kinds") << QByteArray(
        R"({"id": 1, "contacts": [1, null, [], {}, {"type": 1, "value": 2}, {"type": "a"}, {"value": "b"}]})");
    QTest::newRow("numbers") << QByteArray(
        R"({"id": -0, "a": [0, -1, 1.5, 1E5, 1e+5, 1e-5, 123456789012345678901]})");
    QTest::newRow("a number one too great") << QByteArray(R"({"id": 9223372036854775808})");
    QTest::newRow("a number one too small") << QByteArray(R"({"id": -9223372036854775809})");
    QTest::newRow("a whole number in another form") << QByteArray(R"({"id": 1.5e1})");
    QTest::newRow("blanks") << QByteArray("{\t\"id\"\r\n:\n1\n,\"contacts\" :[ ] } ");
    QTest::newRow("tab in a text") << QByteArray("{\"id\": \"a\tb\"}");
}

void DirectoryLoadTest::readsWhatQtReads()
{
    QFETCH(QByteArray, entry);

    QJsonParseError error{};
    ContactCard card = ContactCard::fromJson(QJsonDocument::fromJson(entry, &error).object());
    QCOMPARE(error.error, QJsonParseError::NoError);
    ContactDirectory directory;
    QAbstractItemModelTester const tester(&directory, QAbstractItemModelTester::FailureReportingMode::QtTest);
    QCOMPARE(directory.load(entry).errors.size(), 0);
    QCOMPARE(directory.rowCount(), 1);
    ContactCard const loaded = cardsOf(directory).begin().value();
    if (card.id.isEmpty()) {
        card.id = loaded.id;
    }
    QCOMPARE(loaded, card);
    // As the core reads it.
    QCOMPARE(loaded.info(), PBXContactInfo(QJsonDocument::fromJson(entry).object()));
}

void DirectoryLoadTest::nestingIsBounded()
{
    auto const nested = [](int depth) {
        return "[{\"a\": " + QByteArray("[").repeated(depth) + QByteArray("]").repeated(depth) +
               "}, {\"id\": 2}]";
    };
    QCOMPARE(outcome(nested(1000)).contains(u'!'), false);
    QCOMPARE(outcome("[{\"id\": 1, \"a\": [" + QByteArray("[{}],").repeated(5000) + "[]]}]"), u"1"_s);
    QCOMPARE(outcome(nested(100'000)), u"2 !1:1031"_s);
    QCOMPARE(outcome(QByteArray("[{\"a\":").repeated(100'000)), u"!1:3074"_s);
    QCOMPARE(outcome(QByteArray("{\"a\":").repeated(100'000)), u"!1:5121"_s);
}

void DirectoryLoadTest::samplesAreReadAsQtReadsThem()
{
    QByteArray const json = SampleDirectory().json(2000);
    ContactDirectory directory;
    QAbstractItemModelTester const tester(&directory, QAbstractItemModelTester::FailureReportingMode::QtTest);
    ContactDirectory::LoadReport const report = directory.load(json);
    QCOMPARE(report.added, 2000);
    QCOMPARE(report.errors.size(), 0);
    QJsonArray const array = QJsonDocument::fromJson(json).array();
    QHash<QString, ContactCard> const cards = cardsOf(directory);
    QCOMPARE(array.size(), 2000);
    for (QJsonValue const entry : array) {
        ContactCard const card = ContactCard::fromJson(entry.toObject());
        QCOMPARE(cards.value(card.id), card);
    }
}

void DirectoryLoadTest::savesWhatItLoads()
{
    QTemporaryDir const folder;
    QString const path = folder.filePath(u"contacts.json"_s);
    ContactDirectory directory;
    QAbstractItemModelTester const tester(&directory, QAbstractItemModelTester::FailureReportingMode::QtTest);
    QVERIFY(directory.saveFile(path));
    QCOMPARE(QJsonDocument::fromJson(TestFiles::read(path)).array().size(), 0);
    directory.load(SampleDirectory().json(50));
    directory.load(
        R"({"firstName": "half \ud800", "lastName": "\"\\\n\u0000", "contacts": [{"type": "", "value": ""}]})");
    directory.setFilter(u"officina"_s);
    QVERIFY(directory.saveFile(path));
    directory.setFilter(QString());
    ContactDirectory again;
    ContactDirectory::LoadReport const report = again.loadFile(path);
    QCOMPARE(report.errors.size(), 0);
    QCOMPARE(report.added, 51);
    QCOMPARE(cardsOf(again), cardsOf(directory));
    QCOMPARE(again.loadFile(path).updated, 0);
}

void DirectoryLoadTest::savesAsAWholeOrNotAtAll()
{
    QTemporaryDir const folder;
    QString const path = folder.filePath(u"contacts.json"_s);
    QVERIFY(TestFiles::write(path, "[]"));
    ContactDirectory directory;
    QAbstractItemModelTester const tester(&directory, QAbstractItemModelTester::FailureReportingMode::QtTest);
    directory.load(SampleDirectory().json(100));
    QVERIFY(!directory.saveFile(folder.filePath(u"missing/contacts.json"_s)));

    rlimit before{};
    QCOMPARE(::getrlimit(RLIMIT_FSIZE, &before), 0);
    auto* const handler = std::signal(SIGXFSZ, SIG_IGN);
    for (rlim_t const room : {0, 1, 1000, 16384}) {
        rlimit const full{room, before.rlim_max};
        QCOMPARE(::setrlimit(RLIMIT_FSIZE, &full), 0);
        bool const saved = directory.saveFile(path);
        ::setrlimit(RLIMIT_FSIZE, &before);
        QVERIFY(!saved);
        QCOMPARE(TestFiles::read(path), "[]");
        QCOMPARE(QDir(folder.path()).entryList(QDir::Files), QStringList(u"contacts.json"_s));
    }
    std::signal(SIGXFSZ, handler);
    isDiskLying = true;
    bool const saved = directory.saveFile(path);
    isDiskLying = false;
    QVERIFY(!saved);
    QCOMPARE(TestFiles::read(path), "[]");
    QVERIFY(directory.saveFile(path));
    QCOMPARE(QJsonDocument::fromJson(TestFiles::read(path)).array().size(), 100);
}

void DirectoryLoadTest::failsToReadWhatIsNotThere()
{
    QTemporaryDir const folder;
    ContactDirectory directory;
    QAbstractItemModelTester const tester(&directory, QAbstractItemModelTester::FailureReportingMode::QtTest);
    for (QString const& path : {folder.filePath(u"missing"_s), folder.path()}) {
        ContactDirectory::LoadReport const report = directory.loadFile(path);
        QCOMPARE(report.added, 0);
        QCOMPARE(report.errors.size(), 1);
        QCOMPARE(report.errors.front().line, 0);
        QVERIFY(!report.errors.front().text.isEmpty());
    }
}

int main(int argc, char** argv)
{
    return runTest<DirectoryLoadTest>(argc, argv);
}

#include "DirectoryLoadTest.moc"
