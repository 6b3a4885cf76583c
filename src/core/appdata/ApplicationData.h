#pragma once

#include <datasets/DataSets.h>

#include <softphonecore_export.h>

#include <QString>

class QSqlDatabase;

/// The application's identity as a record: its name, its maker's name and its version.
///
/// The record is an object with the String entries "Name", "Manufacturer" and "version". The names come from
/// the assets database, whose other content ApplicationDataHelpers reads; the version is this library's own.
///
/// \code
/// if (!ApplicationData::setApplicationData(ApplicationData::getApplicationData())) {
///     // the application has no name, no maker or no version
/// }
/// \endcode
class SOFTPHONECORE_EXPORT ApplicationData
{
public:
    ApplicationData() = delete;

    /// Reads the record.
    ///
    /// \return all three entries, or an empty object record when the database, its table or one of the names
    ///         is missing, a name is empty, or another program has locked the database for more than 100 ms;
    ///         never a null handle
    ///
    /// Any thread.
    [[nodiscard]] static DataSets::DataSet getApplicationData();

    /// Stores the text in the column \a column of the first row of tbl_NAMES under the column's name in \a
    /// record.
    ///
    /// \param database  an open connection
    /// \param column    the column's name, put into the statement as it stands; never text from outside
    /// \param record    takes the entry; as it was after false
    /// \return whether there was a text that is not empty, and \a record took it
    static bool setField(QSqlDatabase const& database, QString const& column, DataSets::DataSet& record);

    /// Gives the running application the version, name and organisation name that \a record holds.
    ///
    /// An entry that is missing, no String or empty leaves that setting as it was.
    /// \return whether the application has all three now, set by this call or before
    ///
    /// Not while another thread reads these settings.
    static bool setApplicationData(DataSets::DataSet const& record);
};
