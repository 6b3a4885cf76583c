#include <text/HTMLHelpers.h>

#include <ChildProcess.h>
#include <RunTest.h>

/// What comes back when a text as large as the machine's memory is handed over. In a test of its own, because
/// the sanitizers need memory too.
class LinksShortOfMemoryTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void linksComeBackEmpty();
    void textWithoutAddressNeedsNoMemory();
};

void LinksShortOfMemoryTest::linksComeBackEmpty()
{
    // Larger than what the allocator may have set aside for further threads.
    QString const large = QStringLiteral("www.example.com\n").repeated(4'500'000);
    int const exitCode = inChildProcess([&] {
        if (!limitResource(RLIMIT_AS, 0)) {
            return 1;
        }
        bool const empty =
            HTMLHelpers::processLinks(large).isEmpty() && HTMLHelpers::generateParagraphs(large).isEmpty();
        return empty ? 0 : 2;
    });
    QCOMPARE(exitCode, 0);
}

void LinksShortOfMemoryTest::textWithoutAddressNeedsNoMemory()
{
    QString const large = QStringLiteral("a-").repeated(10'000'000);
    int const exitCode = inChildProcess(
        [&] { return limitResource(RLIMIT_AS, 0) && HTMLHelpers::processLinks(large) == large ? 0 : 1; });
    QCOMPARE(exitCode, 0);
}

int main(int argc, char** argv)
{
    return runTest<LinksShortOfMemoryTest>(argc, argv);
}

#include "LinksShortOfMemoryTest.moc"
