#pragma once

#include <datasets/DataSets.h>

#include <QByteArray>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>

/// The mapping between JSON and records written down plainly, through Qt's JSON classes and by recursion.
namespace JsonOracle {

inline void readValue(QString const& key, QJsonValue const& value, DataSets::DataSet& target);

inline DataSets::DataSet readObject(QJsonObject const& object)
{
    DataSets::DataSet set = DataSets::DataSet::createObject();
    // Not by name: Qt does not find a name again that begins with a byte order mark.
    for (auto member = object.begin(); member != object.end(); ++member) {
        readValue(member.key(), member.value(), set);
    }
    return set;
}

inline DataSets::DataSet readArray(QJsonArray const& array)
{
    DataSets::DataSet set = DataSets::DataSet::createArray();
    for (qsizetype i = 0; i < array.size(); ++i) {
        readValue(QString::number(i), array.at(i), set);
    }
    return set;
}

inline void readValue(QString const& key, QJsonValue const& value, DataSets::DataSet& target)
{
    if (value.isBool()) {
        target.setValue(key, value.toBool());
    } else if (value.isDouble()) {
        target.setValue(key, value.toInt());
    } else if (value.isString()) {
        target.setValue(key, value.toString());
    } else if (value.isArray()) {
        target.setValue(key, readArray(value.toArray()).data);
    } else if (value.isObject()) {
        target.setValue(key, readObject(value.toObject()).data);
    }
}

inline DataSets::DataSet read(QByteArray const& json)
{
    return readObject(QJsonDocument::fromJson(json).object());
}

inline QJsonValue writeValue(DataSets::DataSet const& set, QString const& key);

inline QJsonObject writeObject(DataSets::DataSet const& set)
{
    QJsonObject object;
    for (DataSets::DataObject const& entry : set) {
        object.insert(entry.key, writeValue(set, entry.key));
    }
    return object;
}

inline QJsonArray writeArray(DataSets::DataSet const& set)
{
    QJsonArray array;
    for (DataSets::DataObject const& entry : set) {
        array.append(writeValue(set, entry.key));
    }
    return array;
}

inline QJsonValue writeValue(DataSets::DataSet const& set, QString const& key)
{
    switch (static_cast<MultiType::Type>(set.type(key))) {
    case MultiType::DataSet: {
        DataSets::DataSet const nested(*set.value<std::shared_ptr<DataSets::Impl::DataSetImpl>>(key));
        return nested.isArray() ? QJsonValue(writeArray(nested)) : QJsonValue(writeObject(nested));
    }
    case MultiType::UInt:
        return QJsonValue(static_cast<int>(*set.value<unsigned int>(key)));
    case MultiType::Int:
        return QJsonValue(*set.value<int>(key));
    case MultiType::Bool:
        return QJsonValue(*set.value<bool>(key));
    case MultiType::String:
        return QJsonValue(*set.value<QString>(key));
    case MultiType::Int64:
        return QJsonValue(QString::number(*set.value<long long>(key)));
    case MultiType::None:
    case MultiType::ByteArray:
        break;
    }
    return QJsonValue();
}

inline QByteArray write(DataSets::DataSet const& set)
{
    return QJsonDocument(writeObject(set)).toJson(QJsonDocument::Compact);
}

} // namespace JsonOracle
