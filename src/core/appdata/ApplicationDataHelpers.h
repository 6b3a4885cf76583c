#pragma once

#include "EndpointData.h"
#include "ResourcesDefs.h"

#include <softphonecore_export.h>

#include <QList>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QString>
#include <optional>
#include <utility>

/// Read access to the assets database: the SQLite file "assets.db" in the bundle's resource folder, with the
/// application's names, colours, strings, fonts and endpoints.
///
/// The file is opened for reading only and nothing read is kept: every call reads it again. Functions that
/// take a connection expect it open and leave it open; the others open one of their own and close it. A
/// missing, damaged or foreign file, table or column gives the empty result, never a partial one. So does a
/// database that another program keeps locked: each statement waits 100 ms for it and no longer. From version
/// 6.5 on Qt has no databases without an application object: every result is empty there.
///
/// Any thread, each with connections of its own; those that set names of QCoreApplication belong where no
/// other thread reads these.
///
/// \code
/// QSqlDatabase database = ApplicationDataHelpers::getDBConnection();
/// if (database.open() && ApplicationDataHelpers::checkVersion(database)) {
///     ApplicationDataHelpers::setApplicationName(database);
///     QList<EndpointData> const endpoints = ApplicationDataHelpers::getEndpoints(database);
///     database.close();
/// }
/// \endcode
class SOFTPHONECORE_EXPORT ApplicationDataHelpers
{
public:
    ApplicationDataHelpers() = delete;

    /// A new connection to the assets database under a name of its own, not open yet.
    ///
    /// It stays registered with Qt under that name after it is closed; so do those that the other functions
    /// open.
    [[nodiscard]] static QSqlDatabase getDBConnection();

    /// Whether \a database has the schema that this library reads: the first row of tbl_VERSION holds 12.
    [[nodiscard]] static bool checkVersion(QSqlDatabase const& database);

    /// Makes the manufacturer's name in the first row of tbl_NAMES of \a database the application's
    /// organisation name.
    ///
    /// \return false, with the organisation name as it was, when there is no row or the name is empty
    static bool setManufacturer(QSqlDatabase const& database);

    /// Makes the name in the first row of tbl_NAMES of \a database the application's name.
    ///
    /// \return false, with the application's name as it was, when there is no row or the name is empty
    static bool setApplicationName(QSqlDatabase const& database);

    /// The query, prepared and not executed, for colour roles and their values on \a database: those of the
    /// light theme when \a light is true, else those of the dark one.
    [[nodiscard]] static QSqlQuery fetchPalette(QSqlDatabase const& database, bool light);

    /// Colour roles and their values, in the order of the table: those of the light theme when \a light is
    /// true, else those of the dark one. Empty on failure.
    [[nodiscard]] static QList<std::pair<QString, QString>> getColorsPalette(bool light);

    /// The query, prepared and not executed, for string identifiers and texts in \a language on \a database.
    /// Any language but Italian gives the English texts.
    [[nodiscard]] static QSqlQuery fetchStrings(QSqlDatabase const& database,
                                                ResourcesDefs::RcsLanguage language);

    /// String identifiers and their texts in \a language, in the order of the table. Any language but Italian
    /// gives the English texts. Empty on failure.
    [[nodiscard]] static QList<std::pair<QString, QString>>
    getStringsLanguage(ResourcesDefs::RcsLanguage language);

    /// Registers the application's fonts and returns the name of their family.
    ///
    /// The files that the first row of tbl_FONTS names as Light, Regular and Medium are looked up in the
    /// folder "fonts" of the assets folder, which is made when it is missing; those that are not there are
    /// passed over. Without an application object, or with one that has no GUI, nothing is registered. Every
    /// call registers the files again.
    /// \return the family, registered or not; empty when the table cannot be read or has no row
    static QString getFontFamily();

    /// The endpoint record of the current row of \a query.
    ///
    /// Columns are found by name. A NULL reads as the number 0 or as a null text; so does a type that is no
    /// number, and one that fits no 32-bit integer reads as RemoteType::None.
    /// \return empty when there is no current row or a column is missing
    [[nodiscard]] static std::optional<EndpointData> buildEndPointData(QSqlQuery const& query);

    /// The endpoint records of \a database in the order of the table.
    ///
    /// \return empty on failure, and when not exactly one record is the production one
    [[nodiscard]] static QList<EndpointData> getEndpoints(QSqlDatabase const& database);
};
