#include "JsonValues_p.h"

#include <utility>

JsonValues::JsonValues(QJsonValue const& outermost)
    : m_open{{outermost.isArray(), outermost.toObject(), outermost.toArray(), {}}}
{
}

void JsonValues::open(bool isArray)
{
    m_open.push_back({isArray, {}, {}, {}});
}

void JsonValues::close()
{
    Container const closed = std::move(m_open.back());
    m_open.pop_back();
    add(valueOf(closed));
}

QJsonValue JsonValues::value() const
{
    return valueOf(m_open.front());
}

QJsonValue JsonValues::valueOf(Container const& container)
{
    return container.isArray ? QJsonValue(container.array) : QJsonValue(container.object);
}

void JsonValues::add(QJsonValue const& value)
{
    Container& container = m_open.back();
    if (container.isArray) {
        container.array.append(value);
    } else {
        container.object.insert(container.name, value);
    }
}
