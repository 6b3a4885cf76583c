#include "Doctor.h"

#include "Assets.h"
#include "Disk.h"
#include "Reason.h"

#include <QCoreApplication>
#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QFontDatabase>
#include <QLocale>
#include <QLockFile>
#include <QNetworkProxy>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QSslSocket>
#include <QStandardPaths>
#include <QSysInfo>
#include <QTimeZone>
#include <QVersionNumber>
#include <appdata/AssetsDatabase_p.h>
#include <array>
#include <cerrno>
#include <client/Transfers.h>
#include <clocale>
#include <csignal>
#include <langinfo.h>
#if __has_include(<xlocale.h>)
#include <xlocale.h>
#endif
#include <memory>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

using Softphone::Transfer;
using Softphone::TransferError;

constexpr qint64 littleRoom = 1'000'000'000;
constexpr qint64 noRoom = 100'000'000;
constexpr auto patience = std::chrono::seconds(5);

Finding green(QString const& name, QString const& text)
{
    return {name, Light::Green, text, QString()};
}

Finding yellow(QString const& name, QString const& text, QString const& advice)
{
    return {name, Light::Yellow, text, advice};
}

Finding red(QString const& name, QString const& text, QString const& advice)
{
    return {name, Light::Red, text, advice};
}

/// The files of the libraries that this process has loaded and that people ask for; their names hold their
/// versions. Empty where the system does not tell.
QStringList loadedLibraries()
{
    QFile maps(QStringLiteral("/proc/self/maps"));
    QStringList found;
    if (!maps.open(QIODevice::ReadOnly)) {
        return found;
    }
    static QStringList const wanted{QStringLiteral("libsoftphonecore"), QStringLiteral("libsoftphoneclient"),
                                    QStringLiteral("libphonenumber"),   QStringLiteral("libcurl"),
                                    QStringLiteral("libcrypto"),        QStringLiteral("libsimdjson"),
                                    QStringLiteral("libpsl"),           QStringLiteral("libsqlite3")};
    for (QByteArray const& line : maps.readAll().split('\n')) {
        QString const file = QFile::decodeName(line.mid(line.lastIndexOf('/') + 1));
        bool const isWanted =
            wanted.contains(file.section(QLatin1Char('.'), 0, 0).section(QLatin1Char('-'), 0, 0));
        if (isWanted && !found.contains(file)) {
            found += file;
        }
    }
    return found;
}

struct Folder
{
    QString name;
    QString path;
    bool isPrivate; ///< holds what is this user's alone
};

QString runtimeFolder()
{
    return qEnvironmentVariable("XDG_RUNTIME_DIR");
}

/// Qt gives none where TMPDIR names one that is not there.
QString temporaryFolder()
{
    QString const folder = QDir::tempPath();
    return folder.isEmpty() ? qEnvironmentVariable("TMPDIR") : folder;
}

QList<Folder> allFolders()
{
    return {{QStringLiteral("data folder"), QStandardPaths::writableLocation(QStandardPaths::AppDataLocation),
             true},
            {QStringLiteral("temporary folder"), temporaryFolder(), false},
            {QStringLiteral("runtime folder"), runtimeFolder(), true}};
}

QString ownerText(uid_t owner)
{
    if (owner == ::geteuid()) {
        return QStringLiteral("yours");
    }
    return owner == 0 ? QStringLiteral("the system's") : QStringLiteral("of user %1").arg(owner);
}

Finding missingFolder(Folder const& folder)
{
    if (folder.path.isEmpty()) {
        return yellow(
            folder.name, QStringLiteral("XDG_RUNTIME_DIR is not set"),
            QStringLiteral("start the client from a session of the desktop; copies of it meet in the "
                           "cache folder otherwise"));
    }
    if (!folder.isPrivate) {
        return red(folder.name, QStringLiteral("there is no ") + folder.path,
                   QStringLiteral("make it, or set TMPDIR to a folder that is there"));
    }
    return green(folder.name, folder.path + QStringLiteral(" is not there yet; the client makes it"));
}

Finding look(Folder const& folder)
{
    struct stat status = {};
    QByteArray const name = QFile::encodeName(folder.path);
    if (::stat(name.constData(), &status) != 0) {
        return missingFolder(folder);
    }
    QString const text =
        QStringLiteral("%1, %2, mode %3")
            .arg(folder.path, ownerText(status.st_uid), QString::number(status.st_mode & 07777, 8));
    if (!S_ISDIR(status.st_mode)) {
        return red(folder.name, text, QStringLiteral("remove it: a folder must be there"));
    }
    bool const isForeign = folder.isPrivate && status.st_uid != ::geteuid();
    if (isForeign || ::access(name.constData(), W_OK | X_OK) != 0) {
        return red(folder.name, text, QStringLiteral("chown it to the user who runs the client"));
    }
    bool const isShared = (status.st_mode & (S_IWGRP | S_IWOTH)) != 0;
    if (isShared && (folder.isPrivate || (status.st_mode & S_ISVTX) == 0)) {
        return red(
            folder.name, text + QStringLiteral(", others may write to it"),
            QStringLiteral("chmod %1 %2").arg(QLatin1String(folder.isPrivate ? "700" : "1777"), folder.path));
    }
    if (folder.isPrivate && (status.st_mode & (S_IRGRP | S_IROTH)) != 0) {
        return yellow(folder.name, text + QStringLiteral(", others may read it"),
                      QStringLiteral("chmod 700 ") + folder.path);
    }
    return green(folder.name, text);
}

Finding room(Disk const& disk)
{
    QString const name = QStringLiteral("room on ") + disk.root;
    QString const text =
        QStringLiteral("%1 of %2 are free")
            .arg(QLocale::c().formattedDataSize(disk.available, 1, QLocale::DataSizeSIFormat),
                 QLocale::c().formattedDataSize(disk.total, 1, QLocale::DataSizeSIFormat));
    if (disk.isReadOnly) {
        return red(name, text + QStringLiteral(", and it is read-only"), QStringLiteral("mount it writable"));
    }
    QString const advice =
        QStringLiteral("remove what is not needed, such as old recordings: spcore file prune");
    if (disk.available < noRoom) {
        return red(name, text, advice);
    }
    return disk.available < littleRoom ? yellow(name, text, advice) : green(name, text);
}

/// The nearest folder of \a path that is there.
QString existing(QString path)
{
    while (!path.isEmpty() && !QFileInfo::exists(path)) {
        path = QFileInfo(path).path();
    }
    return path;
}

QString assetsName()
{
    return QStringLiteral("assets database");
}

Finding fontFile(Assets::FontFile const& file)
{
    QString const name = QStringLiteral("font ") + file.name;
    return file.registered
               ? green(name, QStringLiteral("registered"))
               : yellow(name, QStringLiteral("not found, or no font"),
                        QStringLiteral("install the client again; it takes another font meanwhile"));
}

/// The character set of the locale that the environment names; nothing when the system has no such locale.
std::optional<QString> environmentCharset()
{
    locale_t const named = ::newlocale(LC_CTYPE_MASK, "", nullptr);
    if (named == nullptr) {
        return std::nullopt;
    }
    QString const charset = QString::fromLatin1(::nl_langinfo_l(CODESET, named));
    ::freelocale(named);
    return charset;
}

Finding lockFile(QFileInfo const& file)
{
    QString const name = QStringLiteral("lock ") + file.completeBaseName();
    QLockFile const lock(file.filePath());
    qint64 process = 0;
    QString host;
    QString program;
    if (!lock.getLockInfo(&process, &host, &program)) {
        return yellow(name, QStringLiteral("cannot be read"),
                      QStringLiteral("remove %1").arg(file.filePath()));
    }
    bool const isAlive = ::kill(static_cast<pid_t>(process), 0) == 0 || errno == EPERM;
    return isAlive
               ? green(name,
                       QStringLiteral("a copy runs (%1, process %2)").arg(program, QString::number(process)))
               : yellow(name, QStringLiteral("left by a copy that was killed"),
                        QStringLiteral("nothing, the next copy takes it over; if none starts, remove %1")
                            .arg(file.filePath()));
}

/// \a address as a web server's: a WebSocket begins as a request to one.
QUrl webAddress(QUrl address)
{
    if (address.scheme() == QStringLiteral("wss")) {
        address.setScheme(QStringLiteral("https"));
    } else if (address.scheme() == QStringLiteral("ws")) {
        address.setScheme(QStringLiteral("http"));
    }
    return address;
}

/// \a address without what follows the server, and without a login.
QString serverOf(QUrl const& address)
{
    return address.toDisplayString(QUrl::RemoveUserInfo | QUrl::RemovePath | QUrl::RemoveQuery |
                                   QUrl::RemoveFragment);
}

Finding answerOf(QString const& name, QUrl const& address, Transfer const& transfer)
{
    QString const server = serverOf(address);
    bool const isReached = transfer.error() == TransferError::None || transfer.status() > 0;
    if (isReached) {
        return green(name, QStringLiteral("%1 answers (%2)").arg(server, QString::number(transfer.status())));
    }
    QString const advice = transfer.error() == TransferError::Tls
                               ? QStringLiteral("look at the clock of this machine and at its certificates")
                               : QStringLiteral("look at the network, the proxy and the firewall");
    return red(name, server + QStringLiteral(": ") + transfer.errorText(), advice);
}

} // namespace

QString nameOf(Light light)
{
    constexpr std::array names = {"green", "yellow", "red"};
    return QLatin1String(names.at(static_cast<std::size_t>(light)));
}

namespace Doctor {

Findings versions()
{
    QString const running = QLatin1String(qVersion());
    QString const built = QStringLiteral(QT_VERSION_STR);
    QString const toolkit = QStringLiteral("%1, built with %2").arg(running, built);
    bool const isOlder = QVersionNumber::fromString(running) < QVersionNumber::fromString(built);
    Findings findings{
        green(QStringLiteral("spcore"), QCoreApplication::applicationVersion()),
        isOlder ? red(QStringLiteral("Qt"), toolkit, QStringLiteral("install Qt %1 or newer").arg(built))
                : green(QStringLiteral("Qt"), toolkit),
        green(QStringLiteral("system"),
              QStringLiteral("%1, %2 %3, %4")
                  .arg(QSysInfo::prettyProductName(), QSysInfo::kernelType(), QSysInfo::kernelVersion(),
                       QSysInfo::currentCpuArchitecture())),
        QSslSocket::supportsSsl()
            ? green(QStringLiteral("TLS"), QSslSocket::sslLibraryVersionString())
            : red(QStringLiteral("TLS"), QStringLiteral("Qt finds no TLS library"),
                  QStringLiteral("install OpenSSL %1").arg(QSslSocket::sslLibraryBuildVersionString())),
        QSqlDatabase::isDriverAvailable(QStringLiteral("QSQLITE"))
            ? green(QStringLiteral("SQLite"), QStringLiteral("Qt has its driver"))
            : red(QStringLiteral("SQLite"), QStringLiteral("Qt lacks its driver"),
                  QStringLiteral("install Qt's SQL driver for SQLite (Debian: libqt6sql6-sqlite)"))};
    if (QStringList const libraries = loadedLibraries(); !libraries.isEmpty()) {
        findings += green(QStringLiteral("libraries"), libraries.join(QLatin1Char(' ')));
    }
    return findings;
}

Findings folders()
{
    Findings findings;
    for (Folder const& folder : allFolders()) {
        findings += look(folder);
    }
    return findings;
}

Findings space()
{
    Findings findings;
    QStringList seen;
    for (Folder const& folder : allFolders()) {
        std::optional<Disk> const disk = Disk::of(existing(folder.path));
        // A runtime folder holds sockets only and is small everywhere.
        bool const isSmall = folder.path == runtimeFolder();
        if (disk && !isSmall && !seen.contains(disk->root)) {
            seen += disk->root;
            findings += room(*disk);
        }
    }
    return findings;
}

Findings database(QString const& resources, Assets const& assets)
{
    QString const file = Assets::fileIn(resources);
    QString const name = assetsName();
    if (!QFileInfo::exists(file)) {
        return {yellow(name, QStringLiteral("there is no ") + file,
                       QStringLiteral("name the client's resource folder: spcore doctor --resources DIR"))};
    }
    if (QString const reason = Reason::notReadable(file); !reason.isEmpty()) {
        return {red(name, file + QStringLiteral(": ") + reason, QStringLiteral("let the user read it"))};
    }
    QString const again = QStringLiteral("install the client again");
    QString const verdict = AssetsDatabase::readFrom(file, [](QSqlDatabase const& opened) {
        return AssetsDatabase::firstValue(opened, QStringLiteral("PRAGMA quick_check")).toString();
    });
    if (verdict != QStringLiteral("ok")) {
        return {red(name,
                    file + QStringLiteral(" is damaged: ") +
                        (verdict.isEmpty() ? QStringLiteral("no database") : verdict),
                    again)};
    }
    if (QStringList const missing = assets.shortcomings(); !missing.isEmpty()) {
        return {red(name, file + QStringLiteral(" lacks ") + missing.join(QStringLiteral(", ")), again)};
    }
    Findings findings{
        green(name, file + QStringLiteral(", of ") +
                        assets.record.value<QString>(AssetsDatabase::nameKey()).value_or(QString()))};
    for (Assets::FontFile const& font : assets.fontFiles) {
        findings += fontFile(font);
    }
    return findings;
}

Findings fonts()
{
    QString const name = QStringLiteral("fonts");
    qsizetype const count = QFontDatabase::families().size();
    return {count > 0 ? green(name, QStringLiteral("%1 families").arg(count))
                      : red(name, QStringLiteral("none is installed"),
                            QStringLiteral("install a font (Debian: fonts-dejavu-core)"))};
}

Findings locale()
{
    QString const name = QStringLiteral("locale");
    std::optional<QString> const charset = environmentCharset();
    QString const text =
        QStringLiteral("%1, %2, time zone %3")
            .arg(QLocale::system().name(), charset.value_or(QStringLiteral("no character set")),
                 QString::fromLatin1(QTimeZone::systemTimeZoneId()));
    QString const advice = QStringLiteral("set LANG to a locale of UTF-8 that \"locale -a\" lists");
    if (!charset) {
        return {yellow(name, text + QStringLiteral("; LANG or LC_ALL names a locale that is not installed"),
                       advice)};
    }
    return {*charset == QStringLiteral("UTF-8") ? green(name, text) : yellow(name, text, advice)};
}

Findings proxy()
{
    Findings findings;
    for (char const* const variable : {"http_proxy", "https_proxy", "all_proxy"}) {
        QByteArray const value = qEnvironmentVariableIsEmpty(variable)
                                     ? qgetenv(QByteArray(variable).toUpper())
                                     : qgetenv(variable);
        if (value.isEmpty()) {
            continue;
        }
        QUrl const url(QString::fromLocal8Bit(value));
        QString const name = QStringLiteral("proxy (%1)").arg(QLatin1String(variable));
        findings += url.host().isEmpty() ? yellow(name, QStringLiteral("is no address"),
                                                  QStringLiteral("write it as http://HOST:PORT"))
                                         : green(name, serverOf(url));
    }
    return findings.isEmpty() ? Findings{green(QStringLiteral("proxy"), QStringLiteral("none"))} : findings;
}

Findings copies()
{
    // The folder that FilePaths::buildTempPath() would make.
    QDir folder(QDir::tempPath());
    for (QString const& level : {QCoreApplication::organizationName(), QCoreApplication::applicationName()}) {
        folder.setPath(level.isEmpty() ? folder.path() : folder.filePath(level));
    }
    Findings findings;
    for (QFileInfo const& file : folder.entryInfoList({QStringLiteral("*.qlf")}, QDir::Files, QDir::Name)) {
        findings += lockFile(file);
    }
    QStringList const deaf =
        QDir(runtimeFolder()).entryList({QStringLiteral("softphone-*.deaf")}, QDir::Files);
    if (!runtimeFolder().isEmpty() && !deaf.isEmpty()) {
        findings += yellow(QStringLiteral("messages to a copy"), QStringLiteral("a copy did not take one"),
                           QStringLiteral("end the copy that hangs; the next one takes its place"));
    }
    return findings.isEmpty() ? Findings{green(QStringLiteral("other copies"), QStringLiteral("none runs"))}
                              : findings;
}

Findings endpoints(QList<std::pair<QString, QUrl>> const& addresses)
{
    Softphone::Transfers transfers;
    std::vector<Transfer*> running;
    QEventLoop loop;
    std::size_t left = 0;
    for (auto const& [name, address] : addresses) {
        Softphone::TransferRequest request;
        request.url = webAddress(address);
        request.limits.connect = patience;
        request.limits.total = patience;
        request.limits.redirects = 0;
        ++left;
        running.push_back(transfers.size(request));
        QObject::connect(running.back(), &Transfer::finished, &loop, [&loop, &left] {
            if (--left == 0) {
                loop.quit();
            }
        });
    }
    if (left > 0) {
        loop.exec();
    }
    Findings findings;
    for (std::size_t i = 0; i < running.size(); ++i) {
        auto const& [name, address] = addresses[static_cast<qsizetype>(i)];
        findings += answerOf(name, address, *running[i]);
    }
    return findings;
}

} // namespace Doctor
