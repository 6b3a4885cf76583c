#include "AssetsMap.h"

namespace SoftphoneQml {

AssetsMap::AssetsMap(QObject* parent)
    : QQmlPropertyMap(parent)
{
}

void AssetsMap::setRows(QVariantHash rows)
{
    // One of these would make the base class refuse all that come with it.
    for (char const* const name : {"", "keys", "valueChanged", "QObject", "destroyed", "deleteLater"}) {
        rows.remove(QLatin1StringView(name));
    }
    insert(rows);
}

QVariant AssetsMap::updateValue(QString const& key, QVariant const& /*input*/)
{
    return value(key);
}

} // namespace SoftphoneQml
