#include <files/FilePaths.h>

#include <MessageRecorder.h>
#include <QTemporaryDir>
#include <RunTest.h>
#include <SecondUser.h>
#include <TestFiles.h>
#include <memory>
#include <sys/stat.h>

/// Folders for temporary files and for data among users who do not trust one another.
class PrivateFolderTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void temporaryFolderIsTheUsersAlone_data();
    void temporaryFolderIsTheUsersAlone();
    void readableTemporaryFolderIsClosed();
    void avoidsWhatOthersHaveAHandIn_data();
    void avoidsWhatOthersHaveAHandIn();
    void avoidsWhatBelongsToAnotherUser_data();
    void avoidsWhatBelongsToAnotherUser();
    void avoidsAPlaceWhereFoldersCanBeSwapped();
    void fallsBackOnTheCacheFolder_data();
    void fallsBackOnTheCacheFolder();
    void givesNothingWhereNothingIsTheUsers();
    void doesNotLeaveItsPlace();
    void dataFolderIsTheUsersAlone_data();
    void dataFolderIsTheUsersAlone();
    void dataFolderThatIsThereKeepsItsMode();

private:
    /// The path of \a name in the place that the rows call so: "tmp", "run" or "home".
    [[nodiscard]] QString path(char const* name) const { return m_root->filePath(QLatin1String(name)); }

    QByteArray m_usualPlace = qgetenv("TMPDIR");
    std::unique_ptr<QTemporaryDir> m_root;
};

namespace {

constexpr mode_t allBits = 07777;

int modeOf(QString const& path)
{
    struct stat status
    {
    };
    return ::lstat(QFile::encodeName(path).constData(), &status) == 0
               ? static_cast<int>(status.st_mode & allBits)
               : -1;
}

bool makeFolder(QString const& path, mode_t mode)
{
    return QDir().mkpath(path) && ::chmod(QFile::encodeName(path).constData(), mode) == 0;
}

/// The process's mask for new files, for a while.
class Mask
{
public:
    explicit Mask(mode_t mask)
        : m_before(::umask(mask))
    {
    }
    ~Mask() { ::umask(m_before); }
    Mask(Mask const&) = delete;
    Mask& operator=(Mask const&) = delete;

private:
    mode_t m_before;
};

} // namespace

void PrivateFolderTest::init()
{
    QCoreApplication::setOrganizationName(QStringLiteral("Maker"));
    QCoreApplication::setApplicationName(QStringLiteral("Client"));
    qputenv("TMPDIR", m_usualPlace);
    m_root = std::make_unique<QTemporaryDir>();
    QVERIFY(m_root->isValid());
    QVERIFY(makeFolder(path("tmp"), 01777));
    QVERIFY(makeFolder(path("run"), 0700));
    QVERIFY(makeFolder(path("home"), 0755));
    qputenv("TMPDIR", QFile::encodeName(path("tmp")));
    qputenv("XDG_RUNTIME_DIR", QFile::encodeName(path("run")));
    qputenv("HOME", QFile::encodeName(path("home")));
}

void PrivateFolderTest::cleanup()
{
    QDir::setCurrent(QDir::rootPath());
    m_root.reset();
}

void PrivateFolderTest::temporaryFolderIsTheUsersAlone_data()
{
    QTest::addColumn<int>("mask");
    QTest::newRow("with no mask") << 0;
    QTest::newRow("with the usual mask") << 0022;
    QTest::newRow("with a strict mask") << 0077;
}

void PrivateFolderTest::temporaryFolderIsTheUsersAlone()
{
    QFETCH(int, mask);
    Mask const set(static_cast<mode_t>(mask));
    for (int round = 0; round < 2; ++round) {
        QCOMPARE(FilePaths::buildTempPath(), path("tmp/Maker/Client"));
        QCOMPARE(modeOf(path("tmp/Maker")), 0700);
        QCOMPARE(modeOf(path("tmp/Maker/Client")), 0700);
    }
    QCOMPARE(modeOf(path("tmp")), 01777);
}

void PrivateFolderTest::readableTemporaryFolderIsClosed()
{
    QVERIFY(makeFolder(path("tmp/Maker/Client"), 0755));
    QVERIFY(makeFolder(path("tmp/Maker"), 0755));
    QVERIFY(TestFiles::write(path("tmp/Maker/Client/file"), "kept"));
    QCOMPARE(FilePaths::buildTempPath(), path("tmp/Maker/Client"));
    QCOMPARE(modeOf(path("tmp/Maker")), 0700);
    QCOMPARE(modeOf(path("tmp/Maker/Client")), 0700);
    QCOMPARE(TestFiles::read(path("tmp/Maker/Client/file")), QByteArray("kept"));
}

void PrivateFolderTest::avoidsWhatOthersHaveAHandIn_data()
{
    QTest::addColumn<QString>("level");
    QTest::addColumn<int>("mode"); // -1 for a link
    for (char const* const level : {"tmp/Maker", "tmp/Maker/Client"}) {
        QTest::addRow("%s is a link", level) << QString::fromLatin1(level) << -1;
        QTest::addRow("%s may be written to by a group", level) << QString::fromLatin1(level) << 0770;
        QTest::addRow("%s may be written to by everyone", level) << QString::fromLatin1(level) << 0702;
        QTest::addRow("%s is shared like a temporary folder", level) << QString::fromLatin1(level) << 01777;
    }
}

void PrivateFolderTest::avoidsWhatOthersHaveAHandIn()
{
    QFETCH(QString, level);
    QFETCH(int, mode);
    QString const disturbed = m_root->filePath(level);
    QVERIFY(makeFolder(path("elsewhere"), 0700));
    QVERIFY(QFileInfo(level).fileName() == QLatin1String("Maker") || makeFolder(path("tmp/Maker"), 0700));
    QVERIFY(mode < 0 ? TestFiles::link(path("elsewhere"), disturbed)
                     : makeFolder(disturbed, static_cast<mode_t>(mode)));
    int const before = modeOf(disturbed);

    QCOMPARE(FilePaths::buildTempPath(), path("run/Maker/Client"));
    QCOMPARE(modeOf(path("run/Maker")), 0700);
    QCOMPARE(modeOf(path("run/Maker/Client")), 0700);
    QCOMPARE(modeOf(disturbed), before);
    QVERIFY(TestFiles::names(path("elsewhere")).isEmpty());
}

void PrivateFolderTest::avoidsWhatBelongsToAnotherUser_data()
{
    QTest::addColumn<QString>("kind");
    for (char const* const kind : {"folder", "file", "link", "link that leads nowhere"}) {
        QTest::newRow(kind) << QString::fromLatin1(kind);
    }
}

void PrivateFolderTest::avoidsWhatBelongsToAnotherUser()
{
    if (!SecondUser::isPossible()) {
        QSKIP("only root can act as a second user");
    }
    QFETCH(QString, kind);
    QString const squatted = path("tmp/Maker");
    if (kind == QLatin1String("folder")) {
        QVERIFY(makeFolder(squatted + QStringLiteral("/Client"), 0755));
    } else if (kind == QLatin1String("file")) {
        QVERIFY(TestFiles::write(squatted, "not a folder"));
    } else {
        QVERIFY(TestFiles::link(kind == QLatin1String("link") ? path("home") : path("missing"), squatted));
    }
    QVERIFY(SecondUser::give(squatted));
    QCOMPARE(FilePaths::buildTempPath(), path("run/Maker/Client"));
    QVERIFY(TestFiles::names(path("home")).isEmpty());
    QVERIFY(!TestFiles::isThere(path("missing")));
}

/// Without the sticky bit everyone may rename what is in the folder and put something else in its place.
void PrivateFolderTest::avoidsAPlaceWhereFoldersCanBeSwapped()
{
    QVERIFY(makeFolder(path("tmp"), 0777));
    QCOMPARE(FilePaths::buildTempPath(), path("run/Maker/Client"));
    QVERIFY(TestFiles::names(path("tmp")).isEmpty());
}

void PrivateFolderTest::fallsBackOnTheCacheFolder_data()
{
    QTest::addColumn<QString>("runtime");
    QTest::newRow("no runtime folder is named") << QString();
    QTest::newRow("there is no such runtime folder") << QStringLiteral("ROOT/missing");
    QTest::newRow("the runtime folder is relative") << QStringLiteral("run");
    QTest::newRow("others have a hand in the runtime folder") << QStringLiteral("ROOT/shared");
}

void PrivateFolderTest::fallsBackOnTheCacheFolder()
{
    QFETCH(QString, runtime);
    QVERIFY(makeFolder(path("shared"), 0777));
    QVERIFY(makeFolder(path("tmp/Maker"), 0777));
    QDir::setCurrent(m_root->path()); // where a relative name would lead to a folder
    qputenv("XDG_RUNTIME_DIR", QFile::encodeName(runtime.replace(QStringLiteral("ROOT"), m_root->path())));
    if (runtime.isEmpty()) {
        qunsetenv("XDG_RUNTIME_DIR");
    }
    MessageRecorder recorder;
    QCOMPARE(FilePaths::buildTempPath(), path("home/.cache/Maker/Client"));
    QCOMPARE(modeOf(path("home/.cache/Maker/Client")), 0700);
    QCOMPARE(recorder.messages(), QStringList());
}

void PrivateFolderTest::givesNothingWhereNothingIsTheUsers()
{
    for (char const* const level : {"tmp/Maker", "run/Maker", "home/.cache/Maker"}) {
        QVERIFY(makeFolder(path(level), 0777));
    }
    QCOMPARE(FilePaths::buildTempPath(), QString());
}

void PrivateFolderTest::doesNotLeaveItsPlace()
{
    QCoreApplication::setOrganizationName(QStringLiteral(".."));
    QCOMPARE(FilePaths::buildTempPath(), QString());
    QVERIFY(!TestFiles::isThere(path("Client")));
}

void PrivateFolderTest::dataFolderIsTheUsersAlone_data()
{
    QTest::addColumn<bool>("local");
    QTest::newRow("data") << false;
    QTest::newRow("data of this machine") << true;
}

void PrivateFolderTest::dataFolderIsTheUsersAlone()
{
    QFETCH(bool, local);
    Mask const none(0);
    QString const folder = local ? FilePaths::buildLocalDataDir() : FilePaths::buildDataDir();
    QCOMPARE(folder, path("home/.local/share/Maker/Client"));
    QCOMPARE(modeOf(folder), 0700);
}

void PrivateFolderTest::dataFolderThatIsThereKeepsItsMode()
{
    QString const folder = path("home/.local/share/Maker/Client");
    QVERIFY(makeFolder(folder, 0750));
    QCOMPARE(FilePaths::buildDataDir(), folder);
    QCOMPARE(modeOf(folder), 0750);
}

int main(int argc, char** argv)
{
    return runTest<PrivateFolderTest>(argc, argv);
}

#include "PrivateFolderTest.moc"
