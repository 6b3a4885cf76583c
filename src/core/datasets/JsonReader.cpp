#include "JsonReader_p.h"

#include "DataSets_p.h"
#include "MultiTypeKinds_p.h"

#include <utility>

using namespace DataSets::Impl;

// Whoever adds a kind of value decides in store(), and in JsonQuickReader.cpp, whether JSON is read into it.
static_assert(MultiTypeKinds::count == 7);

void JsonReader::read(QJsonObject const& object, DataSetImpl& target)
{
    fill(object, target);
    fillNested();
}

void JsonReader::read(QJsonArray const& array, DataSetImpl& target)
{
    fill(array, target);
    fillNested();
}

void JsonReader::read(QString const& name, QJsonValue const& value, DataSetImpl& target)
{
    if (std::optional<Key> key = keyFor(target, name)) {
        store(*std::move(key), value, target);
        fillNested();
    }
}

void JsonReader::fill(QJsonObject const& object, DataSetImpl& target)
{
    for (auto member = object.begin(); member != object.end(); ++member) {
        if (std::optional<Key> key = keyFor(target, member.key())) {
            store(*std::move(key), member.value(), target);
        }
    }
}

void JsonReader::fill(QJsonArray const& array, DataSetImpl& target)
{
    int index = 0;
    for (auto element = array.begin(); element != array.end(); ++element, ++index) {
        store(target.isArray ? Key(index) : Key(QString::number(index)), *element, target);
    }
}

void JsonReader::store(Key key, QJsonValue const& value, DataSetImpl& target)
{
    switch (value.type()) {
    case QJsonValue::Bool:
        target.entries.insert_or_assign(std::move(key), value.toBool());
        break;
    case QJsonValue::Double:
        // A number that is no int becomes 0, as it always has.
        target.entries.insert_or_assign(std::move(key), value.toInt());
        break;
    case QJsonValue::String:
        target.entries.insert_or_assign(std::move(key), value.toString());
        break;
    case QJsonValue::Array:
    case QJsonValue::Object: {
        std::shared_ptr<DataSetImpl> const record = createDS(value.isArray());
        target.entries.insert_or_assign(std::move(key), record);
        // Filled later, so that deep nesting costs no stack. The list shares the record: a later member that
        // means the same index may replace this one.
        m_nested.push_back({value, record});
        break;
    }
    case QJsonValue::Null:
    case QJsonValue::Undefined:
        break;
    }
}

void JsonReader::fillNested()
{
    while (!m_nested.empty()) {
        Nested const nested = std::move(m_nested.back());
        m_nested.pop_back();
        if (nested.target->isArray) {
            fill(nested.content.toArray(), *nested.target);
        } else {
            fill(nested.content.toObject(), *nested.target);
        }
    }
}
