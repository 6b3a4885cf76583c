#include "AssetsDatabase_p.h"

#include "ApplicationData.h"

#include <QFile>
#include <QFileInfo>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QLibraryInfo>
#include <QSqlError>
#include <QUrl>
#include <QVersionNumber>
#include <files/FilePaths.h>
#include <runtime/UniqueId.h>

namespace {

/// How long another program's lock is waited for. Readers sit in the user interface's thread, and nobody
/// writes to a shipped database for longer.
constexpr int busyMilliseconds = 100;

/// Whether \a file keeps its journal as a write-ahead log. SQLite makes two files beside such a database
/// even for a reader.
bool usesWriteAheadLog(QString const& file)
{
    constexpr qsizetype headerLength = 100;
    constexpr qsizetype readVersion = 19;
    constexpr char writeAheadLog = 2;
    QFile database(file);
    if (!FilePaths::fileExists(file) || !database.open(QIODevice::ReadOnly)) {
        return false;
    }
    QByteArray const header = database.read(headerLength);
    return header.startsWith("SQLite format 3") && header.size() == headerLength &&
           header.at(readVersion) == writeAheadLog;
}

/// Whether there is something in the write-ahead log of \a file. SQLite has it beside the file itself, not
/// beside a link to it.
bool hasLoggedChanges(QString const& file)
{
    return QFileInfo(QFileInfo(file).canonicalFilePath() + QStringLiteral("-wal")).size() > 0;
}

/// The name under which SQLite reads \a file as one that cannot change, without lock or journal.
QString unchangingName(QString const& file)
{
    return QStringLiteral("file:") + QString::fromLatin1(QUrl::toPercentEncoding(file, "/")) +
           QStringLiteral("?immutable=1");
}

} // namespace

namespace AssetsDatabase {

QString applicationFile()
{
    return FilePaths::buildAbsoluteFilePath(FilePaths::getResourcePath(), QStringLiteral("assets.db"));
}

bool areDatabasesUsable()
{
    return QCoreApplication::instance() != nullptr || QLibraryInfo::version() < QVersionNumber(6, 5);
}

QSqlDatabase addConnection(QString const& file)
{
    if (!areDatabasesUsable()) {
        return {};
    }
    QSqlDatabase database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), UniqueId::createUUID());
    QString options = QStringLiteral("QSQLITE_OPEN_READONLY;QSQLITE_BUSY_TIMEOUT=%1").arg(busyMilliseconds);
    if (usesWriteAheadLog(file) && !hasLoggedChanges(file)) {
        database.setDatabaseName(unchangingName(file));
        options += QStringLiteral(";QSQLITE_OPEN_URI");
    } else {
        database.setDatabaseName(file);
    }
    database.setConnectOptions(options);
    return database;
}

QSqlQuery prepare(QSqlDatabase const& database, QString const& statement)
{
    QSqlQuery query(database);
    if (areDatabasesUsable() && database.isOpen()) {
        query.prepare(statement);
    }
    return query;
}

QVariant firstValue(QSqlDatabase const& database, QString const& statement)
{
    QSqlQuery query = prepare(database, statement);
    query.setForwardOnly(true);
    return query.exec() && query.next() ? query.value(0) : QVariant();
}

QList<std::pair<QString, QString>> textPairs(QSqlQuery query)
{
    QList<std::pair<QString, QString>> pairs;
    query.setForwardOnly(true);
    if (!query.exec()) {
        return pairs;
    }
    while (query.next()) {
        pairs.emplaceBack(query.value(0).toString(), query.value(1).toString());
    }
    if (query.lastError().isValid()) {
        pairs.clear();
    }
    return pairs;
}

QSqlRecord currentRow(QSqlQuery const& query)
{
    return query.isValid() ? query.record() : QSqlRecord();
}

QString nameKey()
{
    return QStringLiteral("Name");
}

QString manufacturerKey()
{
    return QStringLiteral("Manufacturer");
}

QString versionKey()
{
    return QStringLiteral("version");
}

DataSets::DataSet applicationRecord(QSqlDatabase const& database)
{
    DataSets::DataSet record = DataSets::DataSet::createObject();
    if (!ApplicationData::setField(database, nameKey(), record) ||
        !ApplicationData::setField(database, manufacturerKey(), record)) {
        return DataSets::DataSet();
    }
    record.setValue(versionKey(), QStringLiteral("1.5.0.1"));
    return record;
}

std::optional<Fonts> fonts(QSqlDatabase const& database)
{
    QSqlQuery query = prepare(database, QStringLiteral("SELECT * FROM tbl_FONTS LIMIT 1;"));
    if (!query.exec() || !query.next()) {
        return std::nullopt;
    }
    QSqlRecord const row = currentRow(query);
    Fonts fonts{row.value(QStringLiteral("Family")).toString(), {}};
    for (QString const& weight :
         {QStringLiteral("Light"), QStringLiteral("Regular"), QStringLiteral("Medium")}) {
        // The value of a column that does not exist is null, too.
        QVariant const fileName = row.value(weight);
        if (!fileName.isNull()) {
            fonts.fileNames.append(fileName.toString());
        }
    }
    return fonts;
}

bool registerFont(QString const& folder, QString const& fileName)
{
    // Qt's font database ends the process when there is no application with a GUI.
    bool const hasGui = qobject_cast<QGuiApplication*>(QCoreApplication::instance()) != nullptr;
    if (!hasGui || folder.isEmpty()) {
        return false;
    }
    QString const file = FilePaths::buildAbsoluteFilePath(folder, fileName);
    return FilePaths::fileExists(file) && QFontDatabase::addApplicationFont(file) >= 0;
}

} // namespace AssetsDatabase
