#include "JsonReader_p.h"

#include <memory>
#include <utility>

using namespace DataSets::Impl;

namespace {

/// The key that \a target stores a member called \a name under, empty when it does not take it.
std::optional<Key> keyOf(QString name, DataSetImpl const& target)
{
    if (!target.isArray) {
        return Key(std::move(name));
    }
    std::optional<int> const index = parseIndex(name);
    return index ? std::optional<Key>(*index) : std::nullopt;
}

} // namespace

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
    if (std::optional<Key> key = keyOf(name, target)) {
        store(*std::move(key), value, target);
        fillNested();
    }
}

void JsonReader::fill(QJsonObject const& object, DataSetImpl& target)
{
    for (auto member = object.begin(); member != object.end(); ++member) {
        if (std::optional<Key> key = keyOf(member.key(), target)) {
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

template <typename Value>
void JsonReader::store(Key key, Value const& value, DataSetImpl& target)
{
    switch (value.type()) {
    case QJsonValue::Bool:
        storeEntry(target, std::move(key), value.toBool());
        break;
    case QJsonValue::Double:
        storeEntry(target, std::move(key), value.toInt());
        break;
    case QJsonValue::String:
        storeEntry(target, std::move(key), value.toString());
        break;
    case QJsonValue::Array: {
        auto const record = std::make_shared<DataSetImpl>(true);
        m_nested.push_back({{}, value.toArray(), record.get()});
        storeEntry(target, std::move(key), record);
        break;
    }
    case QJsonValue::Object: {
        auto const record = std::make_shared<DataSetImpl>(false);
        m_nested.push_back({value.toObject(), {}, record.get()});
        storeEntry(target, std::move(key), record);
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
            fill(nested.array, *nested.target);
        } else {
            fill(nested.object, *nested.target);
        }
    }
}
