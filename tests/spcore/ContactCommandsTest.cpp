#include "SpcoreProcess.h"

#include <QFile>
#include <QTemporaryDir>
#include <RunTest.h>

namespace {

QByteArray const mario = R"({"firstName":"Mario","lastName":"Rossi","company":"Officine","unit":"Vendite",
    "contacts":[{"type":"exten","value":"101"},{"type":"mobile","value":"3331234567"},
                {"type":"email","value":"mario@example.org"}]})";

QByteArray const shownMario = "Mario Rossi\n"
                              "initials    MR\n"
                              "company     Officine\n"
                              "department  Vendite\n"
                              "number      101\n"
                              "number      3331234567\n";

QByteArray const storedMario = R"({"company":"Officine","department":"Vendite","firstName":"Mario",)"
                               R"("lastName":"Rossi","number":"101;3331234567"})"
                               "\n";

QStringList contact(QStringList const& arguments)
{
    return QStringList(QStringLiteral("contact")) + arguments;
}

} // namespace

class ContactCommandsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void showsStandardInput_data();
    void showsStandardInput();
    void showsFiles();
    void fails_data();
    void fails();
    void refusesWrongOptions();
    void explainsItself();
    void finds_data();
    void finds();
    void findsInSpiteOfWrongEntries();
    void saysWhichIsWhich();
};

void ContactCommandsTest::showsStandardInput_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QByteArray>("out");
    QStringList const record{QStringLiteral("--record")};
    QTest::newRow("for a person") << QStringList() << mario << shownMario;
    QTest::newRow("named by a dash") << QStringList(QStringLiteral("-")) << mario << shownMario;
    QTest::newRow("stored record") << record << mario << storedMario;
    QTest::newRow("stored record by its other name")
        << QStringList(QStringLiteral("--json")) << mario << storedMario;
    QTest::newRow("array") << QStringList() << '[' + mario + ',' + mario + ']'
                           << shownMario + '\n' + shownMario;
    QTest::newRow("array of records") << record << '[' + mario + ",{}]" << storedMario + "{}\n";
    QTest::newRow("empty array") << QStringList() << QByteArray("[]") << QByteArray();
    QTest::newRow("nothing known") << QStringList() << QByteArray("{}")
                                   << QByteArray("(no name)\n"
                                                 "number      none, so that the contact is not stored\n");
    QTest::newRow("names with placeholders and blanks")
        << QStringList() << QByteArray(R"({"firstName":" %1  %2 ","contacts":[{"type":"","value":"%3"}]})")
        << QByteArray("%1 %2\nnumber      %3\n");
    QTest::newRow("escape sequences are taken out")
        << QStringList() << QByteArray(R"({"firstName":"a\u001b[2Jb\u009bc","company":"x\ny","contacts":[]})")
        << QByteArray("a [2Jb c\ninitials    a\ncompany     x y\n"
                      "number      none, so that the contact is not stored\n");
}

void ContactCommandsTest::showsStandardInput()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, json);
    SpcoreResult const result = runSpcore(contact(arguments), json);
    QCOMPARE(result.err, QByteArray());
    QTEST(result.out, "out");
    QCOMPARE(result.exitCode, 0);
}

void ContactCommandsTest::showsFiles()
{
    QTemporaryDir const folder;
    QStringList files;
    for (QString const& name : {QStringLiteral("one.json"), QStringLiteral("%1 two.json")}) {
        files << folder.filePath(name);
        QFile file(files.constLast());
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(mario);
    }
    SpcoreResult const result = runSpcore(contact(files));
    QCOMPARE(result.err, QByteArray());
    QCOMPARE(result.out, shownMario + '\n' + shownMario);
    QCOMPARE(result.exitCode, 0);

    files.insert(1, folder.filePath(QStringLiteral("missing %1.json")));
    SpcoreResult const failed = runSpcore(contact(files));
    QCOMPARE(failed.exitCode, 1);
    QCOMPARE(failed.out, result.out);
    QCOMPARE(failed.err, "spcore: cannot read " + files[1].toUtf8() + ": no such file or directory\n");
}

void ContactCommandsTest::fails_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QByteArray>("reason");
    QTest::newRow("nothing") << QByteArray() << QByteArray("line 1, column 1: The text is empty");
    QTest::newRow("no JSON") << QByteArray("{\"firstName\":")
                             << QByteArray("line 1, column 14: The text ends within an entry");
    QTest::newRow("text") << QByteArray("Mario Rossi")
                          << QByteArray("line 1, column 1: Neither an array nor an object begins here");
    QTest::newRow("array of numbers")
        << QByteArray("[{},\n2]") << QByteArray("line 2, column 1: This entry is no object");
    QTest::newRow("array that goes wrong")
        << '[' + mario + ",null]" << QByteArray("line 3, column 64: This entry is no object");
}

void ContactCommandsTest::fails()
{
    QFETCH(QByteArray, json);
    QFETCH(QByteArray, reason);
    SpcoreResult const result = runSpcore(contact({}), json);
    QVERIFY(result.failedWithOneLine(1));
    QCOMPARE(result.err, "spcore: standard input: " + reason + '\n');
}

void ContactCommandsTest::refusesWrongOptions()
{
    QVERIFY(runSpcore(contact({QStringLiteral("--colour")})).failedWithOneLine(2));
}

void ContactCommandsTest::explainsItself()
{
    SpcoreResult const result = runSpcore(contact({QStringLiteral("--help")}));
    QCOMPARE(result.exitCode, 0);
    QVERIFY(result.out.contains("--record") && result.out.contains("FILE"));
}

void ContactCommandsTest::finds_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("out");
    QByteArray const shown = "Mario Rossi\n"
                             "company     Officine\n"
                             "department  Vendite\n"
                             "exten       101\n"
                             "mobile      3331234567\n"
                             "email       mario@example.org\n";
    QByteArray const maria = "Maria Müller\n";
    QTest::newRow("without marks") << QStringList(QStringLiteral("muller")) << maria;
    QTest::newRow("a number with its country code")
        << QStringList(QStringLiteral("+39 333 1234567")) << shown;
    QTest::newRow("several, the best first") << QStringList(QStringLiteral("mar")) << maria + '\n' + shown;
    QTest::newRow("none") << QStringList(QStringLiteral("ario")) << QByteArray();
    QTest::newRow("JSON") << QStringList{QStringLiteral("--json"), QStringLiteral("maria")}
                          << QByteArray(R"({"company":"","contacts":[],"firstName":"Maria","id":"7",)"
                                        R"("lastName":"Müller","unit":""})"
                                        "\n");
}

void ContactCommandsTest::finds()
{
    QFETCH(QStringList, arguments);
    QByteArray const maria = R"({"id":7,"firstName":"Maria","lastName":"Müller"})";
    SpcoreResult const result =
        runSpcore(contact(QStringList(QStringLiteral("find")) + arguments), '[' + mario + ',' + maria + ']');
    QCOMPARE(result.err, QByteArray());
    QTEST(result.out, "out");
    QCOMPARE(result.exitCode, 0);
}

void ContactCommandsTest::findsInSpiteOfWrongEntries()
{
    SpcoreResult const result =
        runSpcore(contact({QStringLiteral("find"), QStringLiteral("mario")}), "[7,\n" + mario + ']');
    QCOMPARE(result.err, QByteArray("spcore: standard input: line 1, column 2: This entry is no object\n"));
    QVERIFY(result.out.startsWith("Mario Rossi\n"));
    QCOMPARE(result.exitCode, 1);
    QVERIFY(runSpcore(contact({QStringLiteral("find"), QStringLiteral("mario"), QStringLiteral("/missing")}))
                .failedWithOneLine(1));
    QVERIFY(runSpcore(contact({QStringLiteral("find")})).failedWithOneLine(2));
}

void ContactCommandsTest::saysWhichIsWhich()
{
    QByteArray const help = runSpcore({QStringLiteral("--help")}).out;
    QVERIFY(help.contains("as the core reads them"));
    QVERIFY(help.contains("as the client library does"));
}

int main(int argc, char** argv)
{
    return runTest<ContactCommandsTest>(argc, argv);
}

#include "ContactCommandsTest.moc"
