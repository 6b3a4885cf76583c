#include "JsonQuickReader_p.h"

#include <QJsonValue>
#include <cmath>
#include <optional>
#include <simdjson.h>
#include <string_view>
#include <utility>

using namespace DataSets::Impl;
namespace dom = simdjson::dom;

namespace {

/// So that the recursion below needs little stack.
constexpr int deepest = 64;

constexpr qsizetype shortText = 4096;

std::optional<QString> textOf(std::string_view utf8)
{
    QString text = QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size()));
    // Qt's parser keeps a byte order mark that is written as an escape, which fromUtf8() drops, and the half
    // of a surrogate pair, which UTF-8 cannot hold.
    bool const isFaithful = !utf8.starts_with("\xef\xbb\xbf") && !text.contains(QChar::ReplacementCharacter);
    return isFaithful ? std::optional<QString>(std::move(text)) : std::nullopt;
}

/// Stores \a datum and tells whether \a key was free. What programs write is mostly sorted, and needs no
/// search.
template <typename Datum>
bool add(DataSetImpl& record, Key&& key, Datum const& datum)
{
    std::size_t const before = record.entries.size();
    record.entries.try_emplace(record.entries.end(), std::move(key), datum);
    return record.entries.size() != before;
}

bool fill(DataSetImpl& record, dom::element const& container, int depth);

bool store(DataSetImpl& record, Key&& key, dom::element const& value, int depth)
{
    switch (value.type()) {
    case dom::element_type::OBJECT:
    case dom::element_type::ARRAY: {
        std::shared_ptr<DataSetImpl> const nested = createDS(value.is_array());
        return depth < deepest && fill(*nested, value, depth + 1) && add(record, std::move(key), nested);
    }
    case dom::element_type::STRING: {
        std::optional<QString> const text = textOf(std::string_view(value));
        return text && add(record, std::move(key), *text);
    }
    case dom::element_type::DOUBLE:
        // Where a number is too small for a double, Qt's parser finds that it is none.
        if (!std::isnormal(double(value))) {
            return false;
        }
        [[fallthrough]];
    case dom::element_type::INT64:
    case dom::element_type::UINT64:
        return add(record, std::move(key), QJsonValue(double(value)).toInt());
    case dom::element_type::BOOL:
        return add(record, std::move(key), bool(value));
    case dom::element_type::NULL_VALUE:
        break;
    }
    // Nothing is stored for null, but an entry of that name would have to go.
    return !record.entries.contains(key);
}

/// Fills \a record; false when the text is one for Qt's parser.
bool fill(DataSetImpl& record, dom::element const& container, int depth)
{
    if (record.isArray) {
        int index = 0;
        for (dom::element const element : dom::array(container)) {
            if (!store(record, index++, element, depth)) {
                return false;
            }
        }
        return true;
    }
    for (dom::key_value_pair const& member : dom::object(container)) {
        std::optional<QString> name = textOf(member.key);
        if (!name || !store(record, *std::move(name), member.value, depth)) {
            return false;
        }
    }
    return true;
}

} // namespace

std::shared_ptr<DataSetImpl> readJsonQuickly(QByteArray const& json)
{
    // To give a short text memory of its own would take longer than to read it.
    thread_local dom::parser parserOfShortTexts;
    dom::parser parserOfOne;
    dom::parser& parser = json.size() <= shortText ? parserOfShortTexts : parserOfOne;
    dom::element document;
    auto const error = parser.parse(json.constData(), static_cast<std::size_t>(json.size())).get(document);
    if (error != simdjson::SUCCESS || !document.is_object()) {
        return nullptr;
    }
    std::shared_ptr<DataSetImpl> record = createDS(false);
    return fill(*record, document, 1) ? record : nullptr;
}
