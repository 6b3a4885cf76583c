#include <files/FilePaths.h>
#include <files/FileReveal_p.h>

#include <QFileInfo>
#include <QStandardPaths>
#include <QUrl>
#include <RunTest.h>
#include <TestFiles.h>

using TestFiles::read;
using TestFiles::write;

namespace {

constexpr int patienceMs = 20'000;

} // namespace

class FileRevealTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void startsTheScriptProgramWithFourArguments_data();
    void startsTheScriptProgramWithFourArguments();
    void takesTheDesktopsWayWithoutTheScriptProgram();
    void returnsBeforeTheProgramEnds();
    void aProgramThatCannotStartIsNoError();
#ifdef __linux__
    void asksTheFileManagerOverTheBus_data();
    void asksTheFileManagerOverTheBus();
    void opensTheFolderWhenNothingAnswers();
#endif

private:
    QString path(QString const& name) const
    {
        return m_dir->filePath(name);
    }

    /// Puts a program \a name into the folder of programs; it writes its arguments, each with a NUL at its
    /// end, to "<name>.out" and ends with \a exitCode.
    void makeProgram(QString const& name, int exitCode) const
    {
        QString const out = path(name + QStringLiteral(".out"));
        QString const script = QStringLiteral("#!/bin/sh\nprintf '%s\\0' \"$@\" > '") + out +
                               QStringLiteral(".new'\n/bin/mv '") + out + QStringLiteral(".new' '") + out +
                               QStringLiteral("'\nexit ") + QString::number(exitCode) + QLatin1Char('\n');
        QVERIFY(write(path(name), script.toUtf8()));
        QFile::setPermissions(path(name), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }

    /// The arguments that the program \a name was started with; none when it does not run in time.
    QStringList argumentsOf(QString const& name) const
    {
        QString const out = path(name + QStringLiteral(".out"));
        if (!QTest::qWaitFor([&] { return TestFiles::isThere(out); }, patienceMs)) {
            return {};
        }
        QStringList arguments = QString::fromUtf8(read(out)).split(QChar(QChar::Null));
        arguments.removeLast();
        return arguments;
    }

    std::unique_ptr<QTemporaryDir> m_dir;
    QByteArray m_programs;
};

void FileRevealTest::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    m_programs = qgetenv("PATH");
}

void FileRevealTest::cleanup()
{
    qputenv("PATH", m_programs);
}

void FileRevealTest::startsTheScriptProgramWithFourArguments_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("quoted");
    QTest::newRow("plain") << "/d/a.wav"
                           << "/d/a.wav";
    QTest::newRow("spaces") << "/d e/a b.wav"
                            << "/d e/a b.wav";
    QTest::newRow("non-ASCII") << "/d/\u00e8.wav"
                               << "/d/\u00e8.wav";
    QTest::newRow("placeholder") << "/d/%1.wav"
                                 << "/d/%1.wav";
    QTest::newRow("apostrophe and dollar") << "/d/a'$(x)`y`.wav"
                                           << "/d/a'$(x)`y`.wav";
    QTest::newRow("double quote") << "/d/a\" & (do shell script \"x\") & \".wav"
                                  << "/d/a\\\" & (do shell script \\\"x\\\") & \\\".wav";
    QTest::newRow("backslash") << "/d/a\\"
                               << "/d/a\\\\";
    QTest::newRow("backslash and double quote") << "/d/a\\\"b"
                                                << "/d/a\\\\\\\"b";
}

void FileRevealTest::startsTheScriptProgramWithFourArguments()
{
    QFETCH(QString, file);
    QFETCH(QString, quoted);
    makeProgram(QStringLiteral("osascript"), 0);
    FileReveal::start(FileReveal::program(file, path(QStringLiteral("osascript"))));
    QCOMPARE(argumentsOf(QStringLiteral("osascript")),
             (QStringList{QStringLiteral("-e"),
                          QStringLiteral("tell application \"Finder\" to reveal POSIX file \"") + quoted +
                              QStringLiteral("\""),
                          QStringLiteral("-e"), QStringLiteral("tell application \"Finder\" to activate")}));
}

void FileRevealTest::takesTheDesktopsWayWithoutTheScriptProgram()
{
    FileReveal::Program const program =
        FileReveal::program(QStringLiteral("/d/a.wav"), path(QStringLiteral("osascript")));
    FileReveal::Program const desktop = FileReveal::desktopProgram(QStringLiteral("/d/a.wav"));
    QCOMPARE(program.path, desktop.path);
    QCOMPARE(program.arguments, desktop.arguments);
    QVERIFY(QFileInfo(program.path).isExecutable());
}

void FileRevealTest::returnsBeforeTheProgramEnds()
{
    QVERIFY(write(path(QStringLiteral("slow")), "#!/bin/sh\nread line < pipe\n"));
    QFile::setPermissions(path(QStringLiteral("slow")), QFile::ReadOwner | QFile::ExeOwner);
    QCOMPARE(::mkfifo(QFile::encodeName(path(QStringLiteral("pipe"))).constData(), 0600), 0);
    QDir::setCurrent(m_dir->path());
    // The program waits for a line that is written only after this call has come back.
    FileReveal::start({path(QStringLiteral("slow")), {}});
    QFile pipe(path(QStringLiteral("pipe")));
    QVERIFY(pipe.open(QIODevice::WriteOnly));
    QCOMPARE(pipe.write("go\n"), 3);
    pipe.close();
    QDir::setCurrent(QDir::rootPath());
}

void FileRevealTest::aProgramThatCannotStartIsNoError()
{
    FileReveal::start({path(QStringLiteral("missing")), {}});
    FilePaths::showFileInFolder(QString());
    FilePaths::showFileInFolder(QStringLiteral("/tmp/a\0b"));
    QVERIFY(TestFiles::names(m_dir->path()).isEmpty());
}

#ifdef __linux__
void FileRevealTest::asksTheFileManagerOverTheBus_data()
{
    QTest::addColumn<QString>("program");
    QTest::newRow("one client") << "dbus-send";
    QTest::newRow("the other client") << "gdbus";
}

void FileRevealTest::asksTheFileManagerOverTheBus()
{
    QFETCH(QString, program);
    makeProgram(program, 0);
    makeProgram(QStringLiteral("xdg-open"), 0);
    qputenv("PATH", QFile::encodeName(m_dir->path()));
    QString const file = path(QStringLiteral("a, \"b\" 'c' %1 \u00e8.wav"));
    QVERIFY(write(file, "x"));
    QVERIFY(!QFileInfo::exists(QStringLiteral("/usr/bin/osascript")));
    FilePaths::showFileInFolder(file);
    QStringList const arguments = argumentsOf(program);
    QVERIFY(!arguments.isEmpty());
    QVERIFY(arguments.contains(QStringLiteral("--session")));
    QVERIFY(arguments.contains(QStringLiteral("org.freedesktop.FileManager1.ShowItems")));
    QVERIFY(arguments.contains(QStringLiteral("/org/freedesktop/FileManager1")));
    bool const first = program == QStringLiteral("dbus-send");
    QString item = arguments.at(arguments.size() - 2);
    QVERIFY(item.startsWith(first ? QStringLiteral("array:string:file:///") : QStringLiteral("['file:///")));
    // One item and nothing else, whatever stands in the file's name.
    QVERIFY(!item.contains(QLatin1Char(',')) && !item.contains(QLatin1Char('"')));
    item = first ? item.mid(13) : item.mid(2, item.size() - 4);
    QCOMPARE(QUrl(item).toLocalFile(), file);
    QTest::qWait(100);
    QVERIFY(!TestFiles::isThere(path(QStringLiteral("xdg-open.out"))));
}

void FileRevealTest::opensTheFolderWhenNothingAnswers()
{
    makeProgram(QStringLiteral("dbus-send"), 1);
    makeProgram(QStringLiteral("gdbus"), 1);
    makeProgram(QStringLiteral("xdg-open"), 0);
    qputenv("PATH", QFile::encodeName(m_dir->path()));
    FilePaths::showFileInFolder(path(QStringLiteral("a.wav")));
    QCOMPARE(argumentsOf(QStringLiteral("xdg-open")), QStringList(m_dir->path()));
}
#endif

int main(int argc, char** argv)
{
    return runTest<FileRevealTest>(argc, argv);
}

#include "FileRevealTest.moc"
