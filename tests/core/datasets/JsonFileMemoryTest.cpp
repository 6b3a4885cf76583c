#include <datasets/JsonDataSet.h>

#include <ChildProcess.h>
#include <QFile>
#include <QTemporaryDir>
#include <RunTest.h>

/// A file says how much memory reading it takes. The limit that this test sets would be a sanitizer's too.
class JsonFileMemoryTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsNoFileThatDoesNotFit();
};

void JsonFileMemoryTest::readsNoFileThatDoesNotFit()
{
    QTemporaryDir const folder;
    QString const path = folder.filePath(QStringLiteral("large.json"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QVERIFY(file.write("[]") == 2);
    QVERIFY(file.resize(qint64(4) << 30));
    file.close();
    int const exitCode = inChildProcess([&path] {
        constexpr rlim_t half = rlim_t(2) << 30;
        bool const isEmpty = limitResource(RLIMIT_AS, half) &&
                             JsonDataSet::serializeJsonFromFile(path).isEmpty() &&
                             JsonDataSet::buildJsonStringFromFile(path).isEmpty();
        return isEmpty ? 0 : 1;
    });
    QCOMPARE(exitCode, 0);
}

int main(int argc, char** argv)
{
    return runTest<JsonFileMemoryTest>(argc, argv);
}

#include "JsonFileMemoryTest.moc"
