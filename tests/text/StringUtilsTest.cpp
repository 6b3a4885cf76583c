#include <text/StringUtils.h>

#include <RunTest.h>

class StringUtilsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void takesInitialsOfThreeWords_data();
    void takesInitialsOfThreeWords();
    void collapsesSpacesOnly_data();
    void collapsesSpacesOnly();
};

void StringUtilsTest::takesInitialsOfThreeWords_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("initials");
    QTest::newRow("empty") << QString() << QString();
    QTest::newRow("all blank") << QStringLiteral("   \t ") << QString();
    QTest::newRow("one word") << QStringLiteral("mario") << QStringLiteral("m");
    QTest::newRow("two words, case kept") << QStringLiteral("  mario rossi ") << QStringLiteral("mr");
    QTest::newRow("four words") << QStringLiteral("Anna Maria Bianchi Verdi") << QStringLiteral("AMB");
    QTest::newRow("first word opens with a bracket")
        << QStringLiteral("(Office) Desk") << QStringLiteral("D");
    QTest::newRow("first word is a dash") << QStringLiteral("- Mario") << QStringLiteral("M");
    QTest::newRow("digits count") << QStringLiteral("123 Main") << QStringLiteral("1M");
    QTest::newRow("words without initials do not use up the three")
        << QStringLiteral("a - b - c d") << QStringLiteral("abc");
    QTest::newRow("Arabic-Indic digit counts")
        << QStringLiteral("\u0661\u0662 x") << QStringLiteral("\u0661x");
    QTest::newRow("accented letter counts") << QStringLiteral("\u00E8 o") << QStringLiteral("\u00E8o");
    QTest::newRow("surrogates are no letters") << QStringLiteral("\U00010428x b") << QStringLiteral("b");
    QTest::newRow("combining mark is no letter") << QStringLiteral("\u0301a b") << QStringLiteral("b");
    QTest::newRow("tab at the end of the name goes")
        << QStringLiteral("\tmario rossi") << QStringLiteral("mr");
    QTest::newRow("tab inside opens a word that does not count")
        << QStringLiteral("mario \trossi") << QStringLiteral("m");
    QTest::newRow("tab does not separate") << QStringLiteral("mario\trossi") << QStringLiteral("m");
    QTest::newRow("no-break space does not separate")
        << QStringLiteral("mario\u00A0rossi") << QStringLiteral("m");
}

void StringUtilsTest::takesInitialsOfThreeWords()
{
    QFETCH(QString, name);
    QTEST(StringUtils::getInitialsFromFullName(name), "initials");
}

void StringUtilsTest::collapsesSpacesOnly_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("collapsed");
    QTest::newRow("empty") << QString() << QString();
    QTest::newRow("only spaces") << QStringLiteral("   ") << QString();
    QTest::newRow("nothing to do") << QStringLiteral("a b") << QStringLiteral("a b");
    QTest::newRow("runs of spaces, a tab kept") << QStringLiteral("a   b\t c") << QStringLiteral("a b\t c");
    QTest::newRow("spaces round a tab") << QStringLiteral("a  \t  b") << QStringLiteral("a \t b");
    QTest::newRow("line breaks stay") << QStringLiteral("a\n\nb") << QStringLiteral("a\n\nb");
    QTest::newRow("every kind of white space goes at the ends")
        << QStringLiteral("\u00A0\t a  b \n\u2003") << QStringLiteral("a b");
    QTest::newRow("no-break spaces stay inside")
        << QStringLiteral("a\u00A0\u00A0b") << QStringLiteral("a\u00A0\u00A0b");
}

void StringUtilsTest::collapsesSpacesOnly()
{
    QFETCH(QString, text);
    QTEST(StringUtils::removeExtraBlankSpaces(text), "collapsed");
}

int main(int argc, char** argv)
{
    return runTest<StringUtilsTest>(argc, argv);
}

#include "StringUtilsTest.moc"
