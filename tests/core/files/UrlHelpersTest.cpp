#include <files/UrlHelpers.h>

#include <RunTest.h>

class UrlHelpersTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsFileNames_data();
    void readsFileNames();
};

void UrlHelpersTest::readsFileNames_data()
{
    QTest::addColumn<QString>("url");
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("isFile");
    QTest::newRow("encoded space") << "file:///d/x/a%20b.png"
                                   << "a b.png" << true;
    QTest::newRow("plain space") << "file:///d/x/a b.png"
                                 << "a b.png" << true;
    QTest::newRow("folder") << "file:///d/dir/"
                            << "" << false;
    QTest::newRow("web address") << "https://host.example/p/a.png?q=1#f"
                                 << "a.png" << true;
    QTest::newRow("host alone") << "https://host.example"
                                << "" << false;
    QTest::newRow("root") << "https://host.example/"
                          << "" << false;
    QTest::newRow("plain path") << "/d/a.png"
                                << "a.png" << true;
    QTest::newRow("bare name") << "a.png"
                               << "a.png" << true;
    QTest::newRow("encoded percent") << "file:///d/100%25.png"
                                     << "100%.png" << true;
    QTest::newRow("placeholder") << "file:///d/%251.png"
                                 << "%1.png" << true;
    QTest::newRow("lone percent") << "file:///d/100%.png"
                                  << "100%.png" << true;
    QTest::newRow("encoded slash") << "file:///d/a%2Fb.png"
                                   << "b.png" << true;
    QTest::newRow("encoded non-ASCII") << "file:///d/%C3%A8.png"
                                       << "\u00e8.png" << true;
    QTest::newRow("non-ASCII") << "file:///d/\u00e8.png"
                               << "\u00e8.png" << true;
    QTest::newRow("leading dot") << "file:///d/.png"
                                 << ".png" << true;
    QTest::newRow("query alone") << "?q=a.png"
                                 << "" << false;
    QTest::newRow("nothing") << ""
                             << "" << false;
    QTest::newRow("port out of range") << "http://host.example:99999/a.png"
                                       << "a.png" << false;
    QTest::newRow("broken address") << "http://[::1/a.png"
                                    << "a.png" << false;
}

void UrlHelpersTest::readsFileNames()
{
    QFETCH(QString, url);
    QTEST(UrlHelpers::getFileName(url), "name");
    QTEST(UrlHelpers::isValidFile(url), "isFile");
}

int main(int argc, char** argv)
{
    return runTest<UrlHelpersTest>(argc, argv);
}

#include "UrlHelpersTest.moc"
