#include "Commands.h"
#include "Console.h"

#include <files/FileAge_p.h>
#include <files/FilePaths.h>

#include <QCommandLineParser>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

/// The file that \a destination stands for: with an existing folder, \a source's name in it.
QString destinationFile(QString const& source, QString const& destination)
{
    bool const isFolder = FilePaths::isDirectory(destination);
    return isFolder ? QDir(destination).filePath(QFileInfo(source).fileName()) : destination;
}

/// Runs copyFile() or moveFile() with the two positional arguments and prints the name that was used.
ExitCode transfer(QCommandLineParser const& parser, bool (*operation)(QString const&, QString&),
                  QString const& verb)
{
    QString const source = parser.positionalArguments().at(0);
    QString const wanted = parser.positionalArguments().at(1);
    QString used = destinationFile(source, wanted);
    if (!operation(source, used)) {
        return failed(ExitCode::Failure, QStringLiteral("cannot ") + verb + QLatin1Char(' ') + source +
                                             QStringLiteral(" to ") + wanted);
    }
    Console::print(used);
    return ExitCode::Success;
}

ExitCode copy(QCommandLineParser const& parser)
{
    return transfer(parser, FilePaths::copyFile, QStringLiteral("copy"));
}

ExitCode move(QCommandLineParser const& parser)
{
    return transfer(parser, FilePaths::moveFile, QStringLiteral("move"));
}

std::optional<int> daysOf(QCommandLineParser const& parser)
{
    bool ok = false;
    int const days = parser.value(QStringLiteral("days")).toInt(&ok);
    return ok && days >= 0 ? std::optional(days) : std::nullopt;
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
    fs::recursive_directory_iterator entry(QFile::encodeName(folder).toStdString(),
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

void printNames(std::vector<std::string> const& names)
{
    for (std::string const& name : names) {
        Console::printBytes(QByteArray::fromStdString(name) + '\n');
    }
}

ExitCode prune(QCommandLineParser const& parser)
{
    QString const folder = parser.positionalArguments().constFirst();
    std::optional<int> const days = daysOf(parser);
    if (!days) {
        Console::printError(QStringLiteral("file prune: --days takes a whole number of days, 0 or more"));
        return ExitCode::Usage;
    }
    // Pruning does not follow a link, so there is nothing to list there either.
    if (!FilePaths::isDirectory(folder) || QFileInfo(QDir::cleanPath(folder)).isSymLink()) {
        return failed(ExitCode::Failure, folder + QStringLiteral(" is not a folder"));
    }
    bool const recursive = parser.isSet(QStringLiteral("recursive"));
    std::vector<std::string> names = oldFiles(folder, *days, recursive);
    if (parser.isSet(QStringLiteral("dry-run"))) {
        printNames(names);
        return ExitCode::Success;
    }
    FilePaths::removeOldFiles(folder, *days, recursive);
    std::size_t const listed = names.size();
    std::erase_if(names, isThere);
    printNames(names);
    std::size_t const left = listed - names.size();
    return left == 0 ? ExitCode::Success
                     : failed(ExitCode::Failure,
                              QStringLiteral("%1 of %2 files could not be removed").arg(left).arg(listed));
}

ExitCode find(QCommandLineParser const& parser)
{
    QString const folder = parser.positionalArguments().at(0);
    QString const baseName = parser.positionalArguments().at(1);
    QString const path = FilePaths::getFileByBaseName(folder, baseName);
    if (path.isEmpty()) {
        return failed(ExitCode::Failure,
                      QStringLiteral("no file named ") + baseName + QStringLiteral(" in ") + folder);
    }
    Console::print(path);
    return ExitCode::Success;
}

} // namespace

QList<Command> fileCommands()
{
    Argument const source = {QStringLiteral("SOURCE"), QStringLiteral("File to take")};
    Argument const destination = {QStringLiteral("DESTINATION"), QStringLiteral("Wanted path, or a folder")};
    Argument const folder = {QStringLiteral("FOLDER"), QStringLiteral("Folder to look in")};
    return {
        {QStringLiteral("file copy"),
         QStringLiteral("Copies a file to the first free name and prints that"),
         {source, destination},
         {},
         copy},
        {QStringLiteral("file move"),
         QStringLiteral("Moves a file to the first free name and prints that"),
         {source, destination},
         {},
         move},
        {QStringLiteral("file prune"),
         QStringLiteral("Removes files by age and prints their names"),
         {folder},
         {QCommandLineOption(QStringLiteral("days"),
                             QStringLiteral("Least age, counted in whole hours of 24 a day"),
                             QStringLiteral("N")),
          QCommandLineOption(QStringLiteral("recursive"), QStringLiteral("Prunes subfolders as well")),
          QCommandLineOption(QStringLiteral("dry-run"),
                             QStringLiteral("Prints the names and removes nothing"))},
         prune},
        {QStringLiteral("file find"),
         QStringLiteral("Prints the newest file with a base name, all before its last dot"),
         {folder, {QStringLiteral("BASENAME"), QStringLiteral("Name without its last suffix")}},
         {},
         find},
    };
}
