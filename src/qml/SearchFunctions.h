#pragma once

#include <client/SearchFilter.h>

#include <QColor>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <QtQml/qqml.h>

namespace SoftphoneQml {

/// `Search`: finding what people mean in lists of a script's own, and showing what was found.
class SearchFunctions : public QObject
{
    Q_OBJECT
    QML_NAMED_ELEMENT(Search)
    QML_SINGLETON

public:
    /// For the engine, which makes one.
    using QObject::QObject;

    /// The `searchFilter` of \a words, prepared once for many texts: `filter.matches([name, company])`.
    [[nodiscard]] Q_INVOKABLE Softphone::SearchFilter filter(QString const& words) const;

    /// What \a filter matches in \a fields: a list of objects with `field`, `position` and `length`; empty
    /// without a match.
    [[nodiscard]] Q_INVOKABLE QVariantList hits(Softphone::SearchFilter const& filter,
                                                QStringList const& fields) const;

    /// \a text as HTML with the places \a hits on the colour \a color, for a Text of the format
    /// Text.RichText.
    ///
    /// \a hits is what a hits role of ContactDirectory or hits() gives: sorted objects with `position` and
    /// `length`. What lies beyond the end of \a text, as when it was cut to fit, is not marked.
    [[nodiscard]] Q_INVOKABLE QString marked(QString const& text, QVariantList const& hits,
                                             QColor const& color) const;
};

} // namespace SoftphoneQml
