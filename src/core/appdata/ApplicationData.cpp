#include "ApplicationData.h"

#include "AssetsDatabase_p.h"

#include <QCoreApplication>
#include <files/FilePaths.h>

namespace {

void apply(DataSets::DataSet const& record, QString const& key, void (*set)(QString const& text))
{
    QString const text = record.value<QString>(key).value_or(QString());
    if (!text.isEmpty()) {
        set(text);
    }
}

} // namespace

DataSets::DataSet ApplicationData::getApplicationData()
{
    QString const file = AssetsDatabase::applicationFile();
    // Every connection stays registered, so none is made for a file that is not there.
    DataSets::DataSet const record = FilePaths::fileExists(file)
                                         ? AssetsDatabase::readFrom(file, AssetsDatabase::applicationRecord)
                                         : DataSets::DataSet();
    return record.isEmpty() ? DataSets::DataSet::createObject() : record;
}

bool ApplicationData::setField(QSqlDatabase const& database, QString const& column, DataSets::DataSet& record)
{
    QString const statement = QStringLiteral("SELECT ") + column + QStringLiteral(" FROM tbl_NAMES;");
    QString const text = AssetsDatabase::firstValue(database, statement).toString();
    if (text.isEmpty()) {
        return false;
    }
    record.setValue(column, text);
    return record.contains(column);
}

bool ApplicationData::setApplicationData(DataSets::DataSet const& record)
{
    // What the record lacks may have been set before, so the answer looks at the application itself.
    apply(record, AssetsDatabase::versionKey(), QCoreApplication::setApplicationVersion);
    apply(record, AssetsDatabase::nameKey(), QCoreApplication::setApplicationName);
    apply(record, AssetsDatabase::manufacturerKey(), QCoreApplication::setOrganizationName);
    return !QCoreApplication::applicationName().isEmpty() &&
           !QCoreApplication::organizationName().isEmpty() &&
           !QCoreApplication::applicationVersion().isEmpty();
}
