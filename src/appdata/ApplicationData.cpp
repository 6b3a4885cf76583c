#include "ApplicationData.h"

#include "../Boundary_p.h"
#include "AssetsDatabase_p.h"

#include <QCoreApplication>

namespace {

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

DataSets::DataSet readRecord(QSqlDatabase const& database)
{
    DataSets::DataSet record = DataSets::DataSet::createObject();
    if (!ApplicationData::setField(database, nameKey(), record) ||
        !ApplicationData::setField(database, manufacturerKey(), record)) {
        return DataSets::DataSet();
    }
    record.setValue(versionKey(), QStringLiteral("1.5.0.1"));
    return record;
}

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
    DataSets::DataSet const record =
        guarded([] { return AssetsDatabase::readFrom(AssetsDatabase::applicationFile(), readRecord); });
    return record.isEmpty() ? DataSets::DataSet::createObject() : record;
}

bool ApplicationData::setField(QSqlDatabase const& database, QString const& column, DataSets::DataSet& record)
{
    QString const statement =
        QStringLiteral("SELECT ") + column + QStringLiteral(" FROM ") + QStringLiteral("tbl_NAMES;");
    QString const text = AssetsDatabase::firstValue(database, statement).toString();
    if (text.isEmpty()) {
        return false;
    }
    record.setValue(column, text);
    return record.contains(column);
}

bool ApplicationData::setApplicationData(DataSets::DataSet const& record)
{
    apply(record, versionKey(), QCoreApplication::setApplicationVersion);
    apply(record, nameKey(), QCoreApplication::setApplicationName);
    apply(record, manufacturerKey(), QCoreApplication::setOrganizationName);
    return !QCoreApplication::applicationName().isEmpty() &&
           !QCoreApplication::organizationName().isEmpty() &&
           !QCoreApplication::applicationVersion().isEmpty();
}
