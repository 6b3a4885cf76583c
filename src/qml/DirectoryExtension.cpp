#include "DirectoryExtension.h"

#include <client/ContactCard.h>
#include <client/ContactDirectory.h>

#include <QFuture>
#include <QJSEngine>
#include <QQmlFile>
#include <QQmlInfo>
#include <optional>

using Softphone::ContactCard;
using Softphone::ContactDirectory;

namespace {

QVariant toScript(std::optional<ContactCard> const& card)
{
    return card ? QVariant::fromValue(*card) : QVariant();
}

QVariantMap toScript(ContactDirectory::LoadReport const& report)
{
    QVariantList errors;
    for (ContactDirectory::LoadError const& error : report.errors) {
        errors.append(QVariantMap{{QStringLiteral("line"), error.line},
                                  {QStringLiteral("column"), error.column},
                                  {QStringLiteral("text"), error.text}});
    }
    return {{QStringLiteral("added"), report.added},
            {QStringLiteral("updated"), report.updated},
            {QStringLiteral("errors"), errors}};
}

} // namespace

namespace SoftphoneQml {

DirectoryExtension::DirectoryExtension(QObject* extended)
    : QObject(extended)
    , m_directory(qobject_cast<ContactDirectory*>(extended))
{
}

DirectoryExtension* DirectoryExtension::qmlAttachedProperties(QObject* object)
{
    return qobject_cast<ContactDirectory*>(object) == nullptr ? nullptr : new DirectoryExtension(object);
}

QVariant DirectoryExtension::caller(QString const& number) const
{
    return toScript(m_directory->caller(number));
}

QVariant DirectoryExtension::card(QString const& id) const
{
    return toScript(m_directory->card(id));
}

void DirectoryExtension::load(QUrl const& file, QJSValue const& done)
{
    m_directory->startLoadingFile(QQmlFile::urlToLocalFileOrQrc(file))
        .then(this,
              [this, done](ContactDirectory::LoadReport const& loaded) { report(toScript(loaded), done); });
}

QVariant DirectoryExtension::loadJson(QString const& json)
{
    return toScript(m_directory->load(json.toUtf8()));
}

void DirectoryExtension::report(QVariantMap const& loaded, QJSValue const& done) const
{
    QJSEngine* const engine = qjsEngine(m_directory);
    if (!done.isCallable() || engine == nullptr) {
        return;
    }
    QJSValue const result = done.call({engine->toScriptValue(loaded)});
    if (result.isError()) {
        qmlWarning(m_directory) << result.toString();
    }
}

} // namespace SoftphoneQml
