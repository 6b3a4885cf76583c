#include "Commands.h"
#include "Console.h"
#include "FileName.h"
#include "InputFile.h"
#include "Reason.h"

#include <files/FileAge_p.h>
#include <files/FilePaths.h>

#include <QCommandLineParser>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <iterator>
#include <optional>
#include <string>
#include <system_error>
#include <unistd.h>
#include <vector>

namespace {

namespace fs = std::filesystem;

/// The file that \a destination stands for: with an existing folder, \a source's name in it.
QString destinationFile(QString const& source, QString const& destination)
{
    bool const isFolder = FilePaths::isDirectory(destination);
    return isFolder ? QDir(destination).filePath(QFileInfo(source).fileName()) : destination;
}

/// Why the file \a source was not put in place of \a target.
QString reasonOf(QString const& source, QString const& target)
{
    if (!QFileInfo(source).isFile()) {
        return QStringLiteral("it is no regular file");
    }
    QString const reason = Reason::notWritable(target, std::max<qint64>(QFileInfo(source).size(), 1));
    return reason.isEmpty() ? QStringLiteral("the disk, a quota or a limit on the size of files ended it")
                            : reason;
}

ExitCode report(QCommandLineParser const& parser, QString const& source, QString const& used)
{
    if (wantsJson(parser)) {
        Console::printJson({{QStringLiteral("source"), source}, {QStringLiteral("file"), used}});
    } else {
        Console::printName(used);
    }
    return ExitCode::Success;
}

/// Copies the first positional argument to where the second one wants it, and hands the copy on to \a after.
template <typename After>
ExitCode copyTo(QCommandLineParser const& parser, QString const& verb, After after)
{
    QString const source = parser.positionalArguments().at(0);
    QString const wanted = parser.positionalArguments().at(1);
    bool const hasName = !InputFile::isStandardInput(source) || !FilePaths::isDirectory(wanted);
    QString used = destinationFile(source, wanted);
    if (!hasName || !FileName::isUtf8(used)) {
        return failed(ExitCode::Usage, QStringLiteral("the %1 needs a name in UTF-8").arg(verb));
    }
    QString const problem = QStringLiteral("cannot %1 %2 to %3").arg(verb, InputFile::shown(source), wanted);
    InputFile const input(source);
    if (!input.problem().isEmpty()) {
        return failed(ExitCode::Failure, problem, input.problem());
    }
    if (!FilePaths::copyFile(input.path(), used)) {
        return failed(ExitCode::Failure, problem, reasonOf(input.path(), used));
    }
    ExitCode const code = after(source, used);
    return code == ExitCode::Success ? report(parser, source, used) : code;
}

ExitCode copy(QCommandLineParser const& parser)
{
    return copyTo(parser, QStringLiteral("copy"),
                  [](QString const&, QString const&) { return ExitCode::Success; });
}

ExitCode move(QCommandLineParser const& parser)
{
    if (InputFile::isStandardInput(parser.positionalArguments().constFirst())) {
        return failed(ExitCode::Usage, QStringLiteral("standard input can be copied and not moved"));
    }
    return copyTo(parser, QStringLiteral("move"), [](QString const& source, QString const& used) {
        bool const isRemoved = ::unlink(FileName::toNative(source).constData()) == 0;
        return isRemoved ? ExitCode::Success
                         : failed(ExitCode::Failure,
                                  QStringLiteral("%1 stays beside its copy %2").arg(source, used),
                                  Reason::ofError(errno));
    });
}

std::optional<int> daysOf(QCommandLineParser const& parser)
{
    bool ok = false;
    int const days = parser.value(QStringLiteral("days")).toInt(&ok);
    return ok && days >= 0 ? std::optional(days) : std::nullopt;
}

QString optionDryRun()
{
    return QStringLiteral("dry-run");
}

/// Why \a path is no folder whose entries can be listed; empty when it is.
QString notAFolder(QString const& path)
{
    std::error_code error;
    fs::directory_iterator const first(FileName::toNative(path).toStdString(), error);
    return error ? Reason::ofError(error.value()) : QString();
}

bool isThere(std::string const& path)
{
    struct stat status
    {
    };
    return ::lstat(path.c_str(), &status) == 0;
}

/// What pruning \a folder by \a days removes now, in order of name.
std::vector<std::string> oldFiles(QString const& folder, int days, bool recursive)
{
    std::vector<std::string> found;
    std::error_code error;
    timespec const now = FileAge::now();
    fs::recursive_directory_iterator entry(FileName::toNative(folder).toStdString(),
                                           fs::directory_options::skip_permission_denied, error);
    while (!error && entry != fs::recursive_directory_iterator()) {
        struct stat status
        {
        };
        if (::lstat(entry->path().c_str(), &status) == 0 && FileAge::isOld(status, now, days)) {
            found.push_back(entry->path().string());
        }
        if (!recursive) {
            entry.disable_recursion_pending();
        }
        entry.increment(error);
    }
    std::ranges::sort(found);
    return found;
}

QString nameOf(std::string const& name)
{
    return FileName::fromNative(QByteArray::fromStdString(name));
}

void report(QCommandLineParser const& parser, std::vector<std::string> const& removed,
            std::vector<std::string> const& left)
{
    QStringList names[2];
    std::ranges::transform(removed, std::back_inserter(names[0]), nameOf);
    std::ranges::transform(left, std::back_inserter(names[1]), nameOf);
    if (!wantsJson(parser)) {
        std::ranges::for_each(names[0], Console::printName);
        return;
    }
    Console::printJson({{QStringLiteral("removed"), QJsonArray::fromStringList(names[0])},
                        {QStringLiteral("left"), QJsonArray::fromStringList(names[1])},
                        {QStringLiteral("dryRun"), parser.isSet(optionDryRun())}});
}

ExitCode prune(QCommandLineParser const& parser)
{
    QString const folder = parser.positionalArguments().constFirst();
    std::optional<int> const days = daysOf(parser);
    if (!days) {
        Console::printError(QStringLiteral("file prune: --days takes a whole number of days, 0 or more"));
        return ExitCode::Usage;
    }
    QString const problem = QStringLiteral("cannot prune ") + folder;
    if (!FileName::isUtf8(folder)) {
        return failed(ExitCode::Failure, problem, QStringLiteral("its name is not UTF-8"));
    }
    // Pruning does not follow a link, so there is nothing to list there either.
    if (QFileInfo(QDir::cleanPath(folder)).isSymLink()) {
        return failed(ExitCode::Failure, problem, QStringLiteral("it is a link"));
    }
    if (QString const reason = notAFolder(folder); !reason.isEmpty()) {
        return failed(ExitCode::Failure, problem, reason);
    }
    bool const recursive = parser.isSet(QStringLiteral("recursive"));
    std::vector<std::string> removed = oldFiles(folder, *days, recursive);
    if (parser.isSet(optionDryRun())) {
        report(parser, removed, {});
        return ExitCode::Success;
    }
    FilePaths::removeOldFiles(folder, *days, recursive);
    std::size_t const listed = removed.size();
    std::vector<std::string> left;
    std::ranges::copy_if(removed, std::back_inserter(left), isThere);
    std::erase_if(removed, isThere);
    report(parser, removed, left);
    return left.empty()
               ? ExitCode::Success
               : failed(ExitCode::Failure,
                        QStringLiteral("%1 of %2 files could not be removed, first %3")
                            .arg(QString::number(left.size()), QString::number(listed), nameOf(left.front())),
                        Reason::notWritable(nameOf(left.front())));
}

ExitCode find(QCommandLineParser const& parser)
{
    QString const folder = parser.positionalArguments().at(0);
    QString const baseName = parser.positionalArguments().at(1);
    if (QString const reason = notAFolder(folder); !reason.isEmpty()) {
        return failed(ExitCode::Failure, QStringLiteral("cannot look in ") + folder, reason);
    }
    QString const path = FilePaths::getFileByBaseName(folder, baseName);
    if (path.isEmpty()) {
        return failed(ExitCode::Failure,
                      QStringLiteral("no file named ") + baseName + QStringLiteral(" in ") + folder);
    }
    if (wantsJson(parser)) {
        Console::printJson({{QStringLiteral("file"), path}});
    } else {
        Console::printName(path);
    }
    return ExitCode::Success;
}

} // namespace

QList<Command> fileCommands()
{
    Argument const original = {QStringLiteral("SOURCE"), QStringLiteral("File to take; - is standard input")};
    Argument const source = {QStringLiteral("SOURCE"), QStringLiteral("File to take")};
    Argument const destination = {QStringLiteral("DESTINATION"), QStringLiteral("Wanted path, or a folder")};
    Argument const folder = {QStringLiteral("FOLDER"), QStringLiteral("Folder to look in")};
    QString const moved = QStringLiteral("{source, file}: what was given, and the name that was used");
    return {
        {QStringLiteral("file copy"),
         QStringLiteral("Copies a file to the first free name and prints that"),
         {original, destination},
         {},
         copy,
         moved,
         QStringLiteral("file copy greeting.wav ~/Recordings")},
        {QStringLiteral("file move"),
         QStringLiteral("Moves a file to the first free name and prints that"),
         {source, destination},
         {},
         move,
         moved,
         QStringLiteral("file move call.wav archive/call.wav")},
        {QStringLiteral("file prune"),
         QStringLiteral("Removes files by age and prints their names"),
         {folder},
         {QCommandLineOption(QStringLiteral("days"),
                             QStringLiteral("Least age, counted in whole hours of 24 a day"),
                             QStringLiteral("N")),
          QCommandLineOption(QStringLiteral("recursive"), QStringLiteral("Prunes subfolders as well")),
          QCommandLineOption(optionDryRun(), QStringLiteral("Prints the names and removes nothing"))},
         prune,
         QStringLiteral("{removed: [file...], left: [file...], dryRun}: left are those that could not be "
                        "removed"),
         QStringLiteral("file prune --days 30 --recursive --dry-run ~/Recordings")},
        {QStringLiteral("file find"),
         QStringLiteral("Prints the newest file with a base name, all before its last dot"),
         {folder, {QStringLiteral("BASENAME"), QStringLiteral("Name without its last suffix")}},
         {},
         find,
         QStringLiteral("{file}"),
         QStringLiteral("file find ~/Recordings call-2026-11-22")},
    };
}
