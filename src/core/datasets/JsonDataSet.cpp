#include "JsonDataSet.h"

#include "../Boundary_p.h"
#include "../FileName_p.h"
#include "JsonFastReader_p.h"
#include "JsonReader_p.h"
#include "JsonText_p.h"
#include "JsonValues_p.h"
#include "JsonWalk_p.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>

namespace {

QByteArray compactText(DataSets::DataSet const& dataSet)
{
    JsonText text;
    text.open(false);
    if (dataSet.isArray()) {
        // The indices are names here, and sorted as such.
        DataSets::Impl::DataSetImpl named;
        for (auto const& [index, value] : dataSet.data->entries) {
            DataSets::Impl::storeEntry(named, DataSets::Impl::keyText(index), value);
        }
        JsonWalk(text).members(named, false);
    } else if (dataSet.data) {
        JsonWalk(text).members(*dataSet.data, false);
    }
    text.close();
    return text.text();
}

} // namespace

DataSets::DataSet JsonDataSet::serializeJson(QByteArray const& json)
{
    return guarded([&] {
        DataSets::DataSet quick = DataSets::DataSet::createObject();
        if (quick.data && JsonFastReader(json).read(*quick.data)) {
            return quick;
        }
        DataSets::DataSet dataSet = DataSets::DataSet::createObject();
        serializeFromJson(QJsonDocument::fromJson(json).object(), dataSet);
        return dataSet;
    });
}

template <>
DataSets::DataSet JsonDataSet::serializeJsonData(QString const& json)
{
    return serializeJson(guarded([&] { return json.toUtf8(); }));
}

template <>
DataSets::DataSet JsonDataSet::serializeJsonData(QByteArray const& json)
{
    return serializeJson(json);
}

QByteArray JsonDataSet::deserializeJson(DataSets::DataSet const& dataSet)
{
    return guarded([&] { return compactText(dataSet); });
}

template <>
QString JsonDataSet::deserializeJsonData(DataSets::DataSet const& dataSet)
{
    return guarded([&] { return QString::fromUtf8(deserializeJson(dataSet)); });
}

template <>
QByteArray JsonDataSet::deserializeJsonData(DataSets::DataSet const& dataSet)
{
    return deserializeJson(dataSet);
}

void JsonDataSet::serializeFromJson(QJsonObject const& object, DataSets::DataSet& dataSet)
{
    if (dataSet.data) {
        guarded([&] { JsonReader().read(object, *dataSet.data); });
    }
}

void JsonDataSet::serializeFromJsonArray(QJsonArray const& array, DataSets::DataSet& dataSet)
{
    if (dataSet.data) {
        guarded([&] { JsonReader().read(array, *dataSet.data); });
    }
}

void JsonDataSet::serializeFromJsonPair(QString const& key, QJsonValue const& value,
                                        DataSets::DataSet& dataSet)
{
    if (dataSet.data) {
        guarded([&] { JsonReader().read(key, value, *dataSet.data); });
    }
}

void JsonDataSet::deserializeToJson(DataSets::DataSet const& dataSet, QJsonObject& object)
{
    if (dataSet.data) {
        guarded([&] {
            JsonValues values(object);
            JsonWalk(values).members(*dataSet.data, false);
            object = values.value().toObject();
        });
    }
}

void JsonDataSet::deserializeToJsonArray(DataSets::DataSet const& dataSet, QJsonArray& array)
{
    if (dataSet.data) {
        guarded([&] {
            JsonValues values(array);
            JsonWalk(values).members(*dataSet.data, true);
            array = values.value().toArray();
        });
    }
}

QJsonValue JsonDataSet::getJsonValueFromDataObject(DataSets::DataObject const* object)
{
    MultiType const* const value = object == nullptr ? nullptr : object->value();
    if (value == nullptr) {
        return {};
    }
    return guarded([value] {
        JsonValues values{QJsonArray()};
        JsonWalk(values).value(*value);
        return values.value().toArray().first();
    });
}

void JsonDataSet::deserializeFromDataObject(DataSets::DataObject const* source, QJsonObject& target)
{
    if (source != nullptr) {
        guarded([&] { target.insert(source->key, getJsonValueFromDataObject(source)); });
    }
}

QByteArray JsonDataSet::serializeJsonFromFile(QString const& path)
{
    return guarded([&]() -> QByteArray {
        QFile file(path);
        if (!isPossibleName(path) || !file.open(QIODevice::ReadOnly | QIODevice::Text)) {
            return {};
        }
        QByteArray json = file.readAll();
        return QJsonDocument::fromJson(json).isNull() ? QByteArray() : json;
    });
}

QString JsonDataSet::buildJsonStringFromFile(QString const& path)
{
    return guarded([&] { return QString::fromUtf8(serializeJsonFromFile(path)); });
}
