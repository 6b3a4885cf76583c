#pragma once

#include <QJSValue>
#include <QObject>
#include <QString>
#include <QUrl>
#include <QVariant>
#include <QtQml/qqml.h>

namespace Softphone {
class ContactDirectory;
}

namespace SoftphoneQml {

/// What ContactDirectory can do in QML beside its own properties and functions.
///
/// `DirectoryFunctions`, attached to what was made in C++: `fromProgram.DirectoryFunctions.caller(number)`.
class DirectoryExtension : public QObject
{
    Q_OBJECT
    QML_NAMED_ELEMENT(DirectoryFunctions)
    QML_UNCREATABLE("It stands behind a ContactDirectory.")
    QML_ATTACHED(SoftphoneQml::DirectoryExtension)

public:
    /// The extension of the directory \a extended, to which it belongs.
    explicit DirectoryExtension(QObject* extended);
    /// For the engine: the functions of \a object; null when that is no ContactDirectory.
    static DirectoryExtension* qmlAttachedProperties(QObject* object);

    /// The `contactCard` whose number \a number is; undefined when there is none.
    [[nodiscard]] Q_INVOKABLE QVariant caller(QString const& number) const;

    /// The `contactCard` with the id \a id, whatever the filter; undefined when there is none.
    [[nodiscard]] Q_INVOKABLE QVariant card(QString const& id) const;

    /// Loads the local or built-in file \a file without blocking, then calls \a done, a function of one
    /// argument or undefined, with the report: an object with `added`, `updated` and `errors`, a list of
    /// objects with `line`, `column` and `text`. It is not called when the directory is deleted first.
    Q_INVOKABLE void load(QUrl const& file, QJSValue const& done = {});

    /// Loads the cards of the JSON text \a json and returns the report that load() passes on. Blocks; meant
    /// for a few cards.
    Q_INVOKABLE QVariant loadJson(QString const& json);

private:
    void report(QVariantMap const& loaded, QJSValue const& done) const;

    Softphone::ContactDirectory* m_directory;
};

} // namespace SoftphoneQml
