#pragma once

#include <client/Links.h>

#include <QList>
#include <QObject>
#include <QString>
#include <QVariant>
#include <QtQml/qqml.h>
#include <optional>

namespace SoftphoneQml {

/// `ChatText`: the links in what people write.
///
/// Rules are an object with the names of LinkRules: `schemes`, `bareHosts`, `phoneNumbers` and `region`;
/// what is not there is as LinkRules has it. Another name, or a value of another kind, throws a TypeError.
class ChatTextFunctions : public QObject
{
    Q_OBJECT
    QML_NAMED_ELEMENT(ChatText)
    QML_SINGLETON

public:
    /// For the engine, which makes one.
    using QObject::QObject;

    /// \a text as HTML with its links, for a Text of the format Text.RichText.
    [[nodiscard]] Q_INVOKABLE QString linkedHtml(QString const& text, QVariantMap const& rules = {}) const;

    /// The links in \a text: a list of `link`, each with `position`, `length`, `kind` (a Softphone.LinkKind)
    /// and `target`.
    [[nodiscard]] Q_INVOKABLE QList<Softphone::Link> findLinks(QString const& text,
                                                               QVariantMap const& rules = {}) const;

private:
    [[nodiscard]] std::optional<Softphone::LinkRules> read(QVariantMap const& rules) const;
};

} // namespace SoftphoneQml
