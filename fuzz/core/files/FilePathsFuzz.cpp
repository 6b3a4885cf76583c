// The functions that put paths together, take them apart and rewrite names, on any pair of texts. None
// touches a file that the input could name by more than looking at it.

#include <files/FilePaths.h>
#include <files/ImageUtils.h>
#include <files/UrlHelpers.h>

#include <QFileInfo>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace {

void require(bool holds)
{
    if (!holds) {
        std::abort();
    }
}

void ignoreMessage(QtMsgType, QMessageLogContext const&, QString const&) {}

QString nameOf(QString const& path)
{
    return path.mid(path.lastIndexOf(QLatin1Char('/')) + 1);
}

void prefixes(QString const& path, QString const& text)
{
    QString const url = FilePaths::prependFileProtocolToPath(path);
    require(url.startsWith(QStringLiteral("file://")) && url.endsWith(path));
    require(FilePaths::prependFileProtocolToPath(url) == url);
    require(FilePaths::isNetworkPath(path) == path.startsWith(QStringLiteral("//")));

    // Taking a prefix off undoes putting it on, as far as the name goes.
    QString const prefixed = FilePaths::prependStringToFilename(path, text);
    require(prefixed.endsWith(text + nameOf(path)));
    if (!text.contains(QLatin1Char('/'))) {
        require(nameOf(prefixed) == text + nameOf(path));
        QString const bare = FilePaths::removePrefixFromFilename(prefixed, text);
        require(nameOf(bare) == nameOf(path));
    }
    QString const without = FilePaths::removePrefixFromFilename(path, text);
    require(without == path || nameOf(path) == text + nameOf(without) || nameOf(path).startsWith(text));
}

void suffixes(QString const& path, QString const& text)
{
    QString const appended = FilePaths::appendSuffix(path, text);
    require(appended.isEmpty() == !nameOf(path).contains(QLatin1Char('.')) || appended.isEmpty());
    require(appended.isEmpty() || appended.size() == path.size() + text.size() + 1);
    require(FilePaths::getExtensionFromFileName(path) == FilePaths::getFileExtension(path));

    QString const named = FilePaths::appendToFileName(path, text, QString());
    require(named.startsWith(QFileInfo(path).baseName() + QLatin1Char('_') + text + QLatin1Char('.')));
    require(FilePaths::appendToFileName(path, text, QFileInfo(path).suffix()) == named);

    QString const changed = FilePaths::changeFileExtension(path, text);
    require(changed.isEmpty() == path.isEmpty());
    bool const plain = !text.contains(QLatin1Char('.')) && !text.contains(QLatin1Char('/'));
    if (plain && changed != path) {
        require(FilePaths::getFileExtension(changed) == text);
        require(FilePaths::changeFileExtension(path, QLatin1Char('.') + text) == changed);
    }
}

void names(QString const& path, QString const& text)
{
    require(FilePaths::getFileName(path, false) == nameOf(path));
    require(FilePaths::areSameFilePath(path, path));
    require(FilePaths::areSameFilePath(path, text) == FilePaths::areSameFilePath(text, path));
    QString const cleaned = FilePaths::cleanFromSubFolder(path, text);
    require(cleaned == path || cleaned.size() == path.size() - text.size() - 1);
    static_cast<void>(FilePaths::getFileNameFromUrl(path));
    static_cast<void>(FilePaths::getFolderNameFromFolderPath(path));
    static_cast<void>(FilePaths::buildRelativeFilePath(path, text));
    static_cast<void>(FilePaths::absoluteFilePath(path, text));
    static_cast<void>(FilePaths::getAbsolutePath(path));
    QString const handled = FilePaths::handleFileScheme(path);
    require(handled == path || handled.startsWith(QStringLiteral("file:/")));

    require(!UrlHelpers::isValidFile(path) || !UrlHelpers::getFileName(path).isEmpty());
    require(!UrlHelpers::getFileName(path).contains(QLatin1Char('/')));

    QString picture = path;
    QString backup = path;
    QString format;
    bool const built = ImageUtils::buildFilePaths(path, text, QStringLiteral("/d"), picture, backup, format);
    require(built == ImageUtils::isFormatValid(format));
    require(built || (picture == path && backup == path));
    require(!built || backup.endsWith(QStringLiteral("_bk.") + format));
}

void safeNames(QString const& name)
{
    QString const safe = FilePaths::safeFileName(name);
    require(!safe.isEmpty() && safe != QLatin1String(".") && safe != QLatin1String(".."));
    require(safe.toUtf8().size() <= 255 && QString::fromUtf8(safe.toUtf8()) == safe);
    require(FilePaths::safeFileName(safe) == safe);
    require(QFileInfo(safe).fileName() == safe && !QFileInfo(safe).isAbsolute());
    for (char const forbidden : {'\0', '\n', '/', '\\', ':', '*', '?', '"', '<', '>', '|'}) {
        require(!safe.contains(QLatin1Char(forbidden)));
    }
    require(!safe.endsWith(QLatin1Char('.')) && !safe.back().isSpace());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    static QtMessageHandler const previous = qInstallMessageHandler(ignoreMessage);
    static_cast<void>(previous);
    // Two texts, separated by a newline.
    QByteArray const bytes(reinterpret_cast<char const*>(data), static_cast<qsizetype>(size));
    qsizetype const at = bytes.indexOf('\n');
    QString const path = QString::fromUtf8(bytes.left(at));
    QString const text = at < 0 ? QString() : QString::fromUtf8(bytes.mid(at + 1));
    prefixes(path, text);
    suffixes(path, text);
    names(path, text);
    safeNames(path);
    safeNames(text.repeated(20) + path);
    return 0;
}
