#include "Faults.h"

#include "ChildProcess.h"
#include "TestFiles.h"

#include <QDir>
#include <QFile>
#include <algorithm>
#include <csignal>
#ifdef __linux__
#include <linux/capability.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <unistd.h>
#endif

namespace {

#ifdef __linux__
/// Gives this process file systems of its own. An ordinary user may do that in a space of users of one's own,
/// and is somebody in it only once that has been written down.
bool leaveOtherProcesses()
{
    if (::unshare(CLONE_NEWNS) == 0) {
        return true;
    }
    QByteArray const user = QByteArray::number(::geteuid());
    QByteArray const group = QByteArray::number(::getegid());
    return ::unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0 &&
           TestFiles::write(QStringLiteral("/proc/self/setgroups"), "deny") &&
           TestFiles::write(QStringLiteral("/proc/self/uid_map"), user + ' ' + user + " 1") &&
           TestFiles::write(QStringLiteral("/proc/self/gid_map"), group + ' ' + group + " 1");
}

/// Gives this process file systems of its own to change, unseen by others.
bool becomeMaster()
{
    return leaveOtherProcesses() && ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
}

/// Shows \a place of the root inside \a folder too.
bool show(QFileInfo const& place, QString const& folder)
{
    QString const shown = folder + place.filePath();
    return place.isSymLink() ? QFile::link(place.symLinkTarget(), shown)
                             : QDir().mkdir(shown) && ::mount(QFile::encodeName(place.filePath()).constData(),
                                                              QFile::encodeName(shown).constData(), nullptr,
                                                              MS_BIND | MS_REC, nullptr) == 0;
}
#endif

} // namespace

bool becomeSmallDisk(QString const& folder, qint64 size)
{
#ifdef __linux__
    QByteArray const options = "size=" + QByteArray::number(size);
    return becomeMaster() &&
           ::mount("tmpfs", QFile::encodeName(folder).constData(), "tmpfs", 0, options.constData()) == 0;
#else
    Q_UNUSED(folder);
    Q_UNUSED(size);
    return false;
#endif
}

bool canBecomeSmallDisk()
{
    QTemporaryDir const folder;
    return inChildProcess([&] {
               return becomeSmallDisk(folder.path(), 65536) &&
                              TestFiles::write(folder.filePath(QStringLiteral("file")), QByteArray())
                          ? 0
                          : 1;
           }) == 0;
}

bool becomePlainRoot(QString const& folder)
{
#ifdef __linux__
    QFileInfoList const places =
        QDir::root().entryInfoList(QDir::Dirs | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    return becomeMaster() &&
           std::ranges::all_of(places, [&](QFileInfo const& place) { return show(place, folder); }) &&
           ::chroot(QFile::encodeName(folder).constData()) == 0 && ::chdir("/") == 0;
#else
    Q_UNUSED(folder);
    return false;
#endif
}

bool killDuring(std::function<void()> const& body, unsigned int microseconds)
{
    int ends[2] = {-1, -1};
    if (::pipe(ends) != 0) {
        return false;
    }
    pid_t const child = ::fork();
    if (child == 0) {
        char const begun = '!';
        ::_exit(::write(ends[1], &begun, 1) == 1 ? (body(), 0) : 1);
    }
    ::close(ends[1]);
    char begun = 0;
    bool const ran = ::read(ends[0], &begun, 1) == 1;
    ::close(ends[0]);
    ::usleep(microseconds);
    ::kill(child, SIGKILL);
    int status = 0;
    return ::waitpid(child, &status, 0) == child && ran && WIFSIGNALED(status);
}

bool obeyPermissions()
{
#ifdef __linux__
    // What root may do to every file is taken from the programs it starts from now on.
    return ::geteuid() != 0 || (::prctl(PR_CAPBSET_DROP, CAP_DAC_OVERRIDE, 0, 0, 0) == 0 &&
                                ::prctl(PR_CAPBSET_DROP, CAP_DAC_READ_SEARCH, 0, 0, 0) == 0);
#else
    return becomeOrdinaryUser();
#endif
}

FullDisk::FullDisk(rlim_t bytes)
{
    getrlimit(RLIMIT_FSIZE, &m_before);
    rlimit const scarce = {bytes, m_before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &scarce);
    m_handler = std::signal(SIGXFSZ, SIG_IGN);
}

FullDisk::~FullDisk()
{
    setrlimit(RLIMIT_FSIZE, &m_before);
    std::signal(SIGXFSZ, m_handler);
}

OrdinaryUserFolder::OrdinaryUserFolder()
    : m_dir(QStringLiteral("/tmp/spcore-test-XXXXXX"))
{
    give(QStringLiteral("."));
}

void OrdinaryUserFolder::give(QString const& name) const
{
    constexpr unsigned nobody = 65534;
    if (::geteuid() == 0 && ::chown(QFile::encodeName(filePath(name)).constData(), nobody, nobody) != 0) {
        qFatal("cannot give %s away", qPrintable(name));
    }
}
