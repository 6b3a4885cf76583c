#pragma once

#include <QList>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <datasets/DataSets.h>
#include <optional>
#include <type_traits>
#include <utility>

/// Reading an assets database at any place; the exported classes read the one in the application's bundle.
namespace AssetsDatabase {

/// The path of the application's own database, whether or not it exists.
[[nodiscard]] QString applicationFile();

/// Whether Qt lets this program use databases at all: its later versions end one without an application
/// object.
[[nodiscard]] bool areDatabasesUsable();

/// A new connection to the database \a file under a name of its own, not open yet.
///
/// It opens the file for reading only, and a missing file is not made. Nothing is made beside it either, with
/// one exception: where a write-ahead log with changes lies beside the file and the log's index does not,
/// SQLite needs that index ("-shm") to read the log, and makes it. Another program's lock is waited for for
/// 100 ms. Invalid where databases are not usable.
[[nodiscard]] QSqlDatabase addConnection(QString const& file);

/// Runs \a reader on an open connection to \a file and closes it, however \a reader ends.
///
/// \return what \a reader returns; a default value when the file cannot be opened
template <typename Reader>
auto readFrom(QString const& file, Reader&& reader) -> std::invoke_result_t<Reader, QSqlDatabase const&>
{
    struct Connection
    {
        QSqlDatabase database;
        ~Connection() { database.close(); }
    };
    if (!areDatabasesUsable()) {
        return {};
    }
    Connection connection{addConnection(file)};
    if (!connection.database.open()) {
        return {};
    }
    return std::forward<Reader>(reader)(std::as_const(connection.database));
}

/// The query \a statement prepared on \a database; one that cannot be executed when \a database is not open
/// or does not understand it.
[[nodiscard]] QSqlQuery prepare(QSqlDatabase const& database, QString const& statement);

/// Column 0 of the first row that \a statement gives, invalid when there is none.
[[nodiscard]] QVariant firstValue(QSqlDatabase const& database, QString const& statement);

/// Executes \a query and takes columns 0 and 1 of all its rows; empty when it fails, be it half-way.
[[nodiscard]] QList<std::pair<QString, QString>> textPairs(QSqlQuery query);

/// The current row of \a query, of which every column is invalid when there is none. Taken once for all its
/// columns, since it copies all their values.
[[nodiscard]] QSqlRecord currentRow(QSqlQuery const& query);

/// The keys of the application-data record; the first two are columns of the names table, too.
[[nodiscard]] QString nameKey();
[[nodiscard]] QString manufacturerKey();
[[nodiscard]] QString versionKey();

/// The application-data record of \a database; a null handle when a name is missing.
[[nodiscard]] DataSets::DataSet applicationRecord(QSqlDatabase const& database);

/// The font row: the family's name, and the names of the files of its weights.
struct Fonts
{
    QString family;
    QStringList fileNames;
};

/// The first row of the font table; empty when there is none.
[[nodiscard]] std::optional<Fonts> fonts(QSqlDatabase const& database);

/// Registers the font file \a fileName of the folder \a folder with the running application.
///
/// \return false when there is no such file or it is no font, and when the running application has no GUI
bool registerFont(QString const& folder, QString const& fileName);

} // namespace AssetsDatabase
