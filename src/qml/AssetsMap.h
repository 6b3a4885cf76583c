#pragma once

#include <QQmlPropertyMap>
#include <QString>
#include <QVariant>

namespace SoftphoneQml {

/// A table of the assets database as live properties, which scripts read and cannot change.
class AssetsMap : public QQmlPropertyMap
{
    Q_OBJECT

public:
    /// An empty map.
    explicit AssetsMap(QObject* parent);

    /// Shows \a rows; bindings to values that are others now are evaluated again. A row that has no name, or
    /// the name of something that every such map has, is left out.
    void setRows(QVariantHash rows);

protected:
    /// Keeps \a key as it is, whatever \a input a script sets.
    QVariant updateValue(QString const& key, QVariant const& input) override;
};

} // namespace SoftphoneQml
