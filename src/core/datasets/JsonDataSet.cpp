#include "JsonDataSet.h"

#include "../FileName_p.h"
#include "JsonQuickReader_p.h"
#include "JsonReader_p.h"
#include "JsonText_p.h"
#include "JsonValues_p.h"
#include "JsonWalk_p.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>
#include <new>

namespace {

/// Writes the members of an array record with the indices as names, and sorted as such.
void writeNamed(DataSets::Impl::DataSetImpl const& array, JsonText& text)
{
    DataSets::Impl::DataSetImpl named;
    for (auto const& [index, value] : array.entries) {
        named.entries.emplace(DataSets::Impl::keyText(index), value);
    }
    JsonWalk(text).members(named, false);
}

} // namespace

DataSets::DataSet JsonDataSet::serializeJson(QByteArray const& json)
{
    if (std::shared_ptr<DataSets::Impl::DataSetImpl> record = readJsonQuickly(json)) {
        return DataSets::DataSet(std::move(record));
    }
    DataSets::DataSet dataSet = DataSets::DataSet::createObject();
    serializeFromJson(QJsonDocument::fromJson(json).object(), dataSet);
    return dataSet;
}

template <>
DataSets::DataSet JsonDataSet::serializeJsonData(QString const& json)
{
    return serializeJson(json.toUtf8());
}

template <>
DataSets::DataSet JsonDataSet::serializeJsonData(QByteArray const& json)
{
    return serializeJson(json);
}

QByteArray JsonDataSet::deserializeJson(DataSets::DataSet const& dataSet)
{
    JsonText text;
    // The outermost level is always an object: readers expect one, even for an array record.
    text.open(false);
    if (dataSet.isArray()) {
        writeNamed(*dataSet.data, text);
    } else if (dataSet.data) {
        JsonWalk(text).members(*dataSet.data, false);
    }
    text.close();
    return text.text();
}

template <>
QString JsonDataSet::deserializeJsonData(DataSets::DataSet const& dataSet)
{
    return QString::fromUtf8(deserializeJson(dataSet));
}

template <>
QByteArray JsonDataSet::deserializeJsonData(DataSets::DataSet const& dataSet)
{
    return deserializeJson(dataSet);
}

void JsonDataSet::serializeFromJson(QJsonObject const& object, DataSets::DataSet& dataSet)
{
    if (dataSet.data) {
        JsonReader().read(object, *dataSet.data);
    }
}

void JsonDataSet::serializeFromJsonArray(QJsonArray const& array, DataSets::DataSet& dataSet)
{
    if (dataSet.data) {
        JsonReader().read(array, *dataSet.data);
    }
}

void JsonDataSet::serializeFromJsonPair(QString const& key, QJsonValue const& value,
                                        DataSets::DataSet& dataSet)
{
    if (dataSet.data) {
        JsonReader().read(key, value, *dataSet.data);
    }
}

void JsonDataSet::deserializeToJson(DataSets::DataSet const& dataSet, QJsonObject& object)
{
    if (dataSet.data) {
        JsonValues values(object);
        JsonWalk(values).members(*dataSet.data, false);
        object = values.value().toObject();
    }
}

void JsonDataSet::deserializeToJsonArray(DataSets::DataSet const& dataSet, QJsonArray& array)
{
    if (dataSet.data) {
        JsonValues values(array);
        JsonWalk(values).members(*dataSet.data, true);
        array = values.value().toArray();
    }
}

QJsonValue JsonDataSet::getJsonValueFromDataObject(DataSets::DataObject const* object)
{
    MultiType const* const value = object == nullptr ? nullptr : object->value();
    if (value == nullptr) {
        return {};
    }
    JsonValues values{QJsonArray()};
    JsonWalk(values).value(*value);
    return values.value().toArray().first();
}

void JsonDataSet::deserializeFromDataObject(DataSets::DataObject const* source, QJsonObject& target)
{
    if (source != nullptr) {
        target.insert(source->key, getJsonValueFromDataObject(source));
    }
}

QByteArray JsonDataSet::serializeJsonFromFile(QString const& path)
{
    QFile file(path);
    if (!isPossibleName(path) || !file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        return {};
    }
    // How much memory is asked for is up to the file.
    try {
        QByteArray json = file.readAll();
        // Checked with Qt's parser, whose word on what JSON is holds wherever it is read later.
        return QJsonDocument::fromJson(json).isNull() ? QByteArray() : json;
    } catch (std::bad_alloc const&) {
        return {};
    }
}

QString JsonDataSet::buildJsonStringFromFile(QString const& path)
{
    return QString::fromUtf8(serializeJsonFromFile(path));
}
