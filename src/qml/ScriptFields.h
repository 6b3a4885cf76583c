/// \file
/// Records that a script describes by an object with the names of their members.

#pragma once

#include <QString>
#include <QUrl>
#include <QVariant>
#include <algorithm>
#include <array>
#include <cstddef>

namespace SoftphoneQml {

/// A name that an object may have, and what takes its value: false when it is of another kind.
template <typename Record>
struct Field
{
    QLatin1StringView name;
    bool (*set)(Record& record, QVariant const& value);
};

/// Sets the fields of \a record that \a object names. Returns what is wrong with \a object, for
/// the script's author; empty when nothing is.
template <typename Record, std::size_t count>
QString fill(Record& record, QVariantMap const& object, std::array<Field<Record>, count> const& fields)
{
    for (auto entry = object.cbegin(); entry != object.cend(); ++entry) {
        auto const field =
            std::ranges::find_if(fields, [&](Field<Record> const& one) { return entry.key() == one.name; });
        if (field == fields.end()) {
            return QStringLiteral("There is no \"%1\"").arg(entry.key());
        }
        if (!field->set(record, entry.value())) {
            return QStringLiteral("\"%1\" is of the wrong kind").arg(entry.key());
        }
    }
    return {};
}

/// Puts \a value into \a target; false, with \a target as it was, when it is of another kind.
template <typename Value>
bool take(Value& target, QVariant const& value)
{
    QVariant converted = value;
    if (!converted.convert(QMetaType::fromType<Value>())) {
        return false;
    }
    target = converted.value<Value>();
    return true;
}

/// The file that a script names by \a text, a path or a `file:` URL.
[[nodiscard]] inline QString localPath(QString const& text)
{
    QUrl const url(text);
    return url.isLocalFile() ? url.toLocalFile() : text;
}

} // namespace SoftphoneQml
