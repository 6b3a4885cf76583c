#pragma once

#include "DataSets.h"

#include <QByteArray>
#include <QString>
#include <softphonecore_export.h>

class QJsonArray;
class QJsonObject;
class QJsonValue;

/// Turns JSON text into records and records into JSON text.
///
/// The mapping is lossy in fixed ways that callers rely on, and reports no error.
///
/// Reading: true and false become Bool; a number becomes Int, 0 when it has a fraction or does not fit in 32
/// bits; a string becomes String; an array becomes an array record with the indices from 0 as keys; an object
/// becomes an object record; null stores nothing.
///
/// Writing: an array record becomes an array of its values in index order, so that gaps close up; an object
/// record becomes an object; Int becomes a number; UInt becomes a number through int, so that values above
/// 2147483647 come out negative; Bool becomes true or false; String becomes a string; Int64 becomes a string
/// of the number in base 10; ByteArray and nothing become null.
///
/// Any thread. Time and memory are linear in the text, the one that is read or the one that is written, at
/// any depth of nesting; text nested deeper than 1024 is no JSON to Qt's parser, and so not here. A record
/// that stands at several places is written out at each of them, so that records which share records can take
/// exponentially more text than memory. Where a record contains itself, null is written in its place.
///
/// \code
/// DataSets::DataSet const call = JsonDataSet::serializeJson(R"({"line":101,"tags":["vip"]})");
/// QByteArray const text = JsonDataSet::deserializeJson(call); // the same text
/// \endcode
class SOFTPHONECORE_EXPORT JsonDataSet
{
public:
    JsonDataSet() = delete;

    /// Reads the JSON object in \a json, UTF-8 text, into a new object record; the record is empty when the
    /// text is no JSON or its document is an array.
    [[nodiscard]] static DataSets::DataSet serializeJson(QByteArray const& json);

    /// Reads the JSON object in \a json as serializeJson() does; \a Text is QString or QByteArray (UTF-8).
    template <typename Text>
    [[nodiscard]] static DataSets::DataSet serializeJsonData(Text const& json);

    /// The JSON object for \a dataSet as compact UTF-8 text, "{}" for a null handle. An array record is
    /// written as an object with the indices as names.
    [[nodiscard]] static QByteArray deserializeJson(DataSets::DataSet const& dataSet);

    /// The JSON object for \a dataSet as deserializeJson() writes it; \a Text is QString or QByteArray.
    template <typename Text>
    [[nodiscard]] static Text deserializeJsonData(DataSets::DataSet const& dataSet);

    /// Stores the members of \a object that are not null in \a dataSet, under their names.
    static void serializeFromJson(QJsonObject const& object, DataSets::DataSet& dataSet);

    /// Stores the elements of \a array that are not null in \a dataSet, under their indices.
    static void serializeFromJsonArray(QJsonArray const& array, DataSets::DataSet& dataSet);

    /// Stores \a value under \a key in \a dataSet; does nothing when \a value is null or undefined, or when
    /// the record does not take the key (DataSets::Impl::isValidKey()).
    static void serializeFromJsonPair(QString const& key, QJsonValue const& value,
                                      DataSets::DataSet& dataSet);

    /// Inserts every entry of \a dataSet into \a object, over members of the same name.
    ///
    /// Qt's JSON classes use stack for every level of nesting: null stands for records nested deeper than
    /// 1024, here and in the three functions below. deserializeJson() has no such limit.
    static void deserializeToJson(DataSets::DataSet const& dataSet, QJsonObject& object);

    /// Appends the value of every entry of \a dataSet to \a array, in key order.
    static void deserializeToJsonArray(DataSets::DataSet const& dataSet, QJsonArray& array);

    /// The JSON value of the entry that \a object refers to; null when there is none or \a object is null.
    [[nodiscard]] static QJsonValue getJsonValueFromDataObject(DataSets::DataObject const* object);

    /// Inserts the entry that \a source refers to into \a target, under its key; does nothing when \a source
    /// is null.
    static void deserializeFromDataObject(DataSets::DataObject const* source, QJsonObject& target);

    /// The content of the file at \a path when it is a JSON document, else empty, also when it does not fit
    /// in memory. Line ends come back as "\n"; nothing else is changed. Blocks while the file is read.
    [[nodiscard]] static QByteArray serializeJsonFromFile(QString const& path);

    /// The content of the file at \a path as serializeJsonFromFile() reads it, decoded from UTF-8.
    [[nodiscard]] static QString buildJsonStringFromFile(QString const& path);
};

/// \cond
template <>
SOFTPHONECORE_EXPORT DataSets::DataSet JsonDataSet::serializeJsonData(QString const& json);
template <>
SOFTPHONECORE_EXPORT DataSets::DataSet JsonDataSet::serializeJsonData(QByteArray const& json);
template <>
SOFTPHONECORE_EXPORT QString JsonDataSet::deserializeJsonData(DataSets::DataSet const& dataSet);
template <>
SOFTPHONECORE_EXPORT QByteArray JsonDataSet::deserializeJsonData(DataSets::DataSet const& dataSet);
/// \endcond
