#include "FormFromScript.h"

#include "ScriptFields.h"

#include <QFile>
#include <QFileInfo>
#include <QNetworkRequest>
#include <array>

namespace {

struct FormFile
{
    QString path;
    QString name;
    QString type = QStringLiteral("application/octet-stream");
};

/// More lines would be more headers.
bool isOneLine(QString const& text)
{
    return !text.contains(QLatin1Char('\r')) && !text.contains(QLatin1Char('\n'));
}

constexpr std::array fileFields{
    SoftphoneQml::Field<FormFile>{
        QLatin1StringView("path"),
        [](auto& file, auto& value) { return SoftphoneQml::take(file.path, value); }},
    SoftphoneQml::Field<FormFile>{
        QLatin1StringView("name"),
        [](auto& file, auto& value) { return SoftphoneQml::take(file.name, value); }},
    SoftphoneQml::Field<FormFile>{
        QLatin1StringView("type"),
        [](auto& file, auto& value) { return SoftphoneQml::take(file.type, value) && isOneLine(file.type); }},
};

/// As browsers write names in a form: what would end the quotes or the line is encoded.
QString quoted(QString name)
{
    name.replace(QLatin1Char('"'), QStringLiteral("%22"));
    name.replace(QLatin1Char('\r'), QStringLiteral("%0D"));
    name.replace(QLatin1Char('\n'), QStringLiteral("%0A"));
    return QLatin1Char('"') + name + QLatin1Char('"');
}

QHttpPart part(QString const& disposition)
{
    QHttpPart part;
    part.setRawHeader("Content-Disposition", "form-data; " + disposition.toUtf8());
    return part;
}

} // namespace

namespace SoftphoneQml {

FormFromScript::FormFromScript(QVariantMap const& object)
    : m_form(std::make_unique<QHttpMultiPart>(QHttpMultiPart::FormDataType))
{
    for (auto entry = object.cbegin(); entry != object.cend() && m_problem.isEmpty(); ++entry) {
        add(entry.key(), entry.value());
    }
}

void FormFromScript::add(QString const& name, QVariant const& value)
{
    QVariantMap file;
    QString text;
    if (value.metaType() == QMetaType::fromType<QVariantMap>() && take(file, value)) {
        addFile(name, file);
    } else if (take(text, value)) {
        QHttpPart field = part(QStringLiteral("name=") + quoted(name));
        field.setBody(text.toUtf8());
        m_form->append(field);
    } else {
        m_problem = QStringLiteral("\"%1\" is of the wrong kind").arg(name);
    }
}

void FormFromScript::addFile(QString const& name, QVariantMap const& object)
{
    FormFile file;
    m_problem = fill(file, object, fileFields);
    if (!m_problem.isEmpty()) {
        return;
    }
    auto device = std::make_unique<QFile>(localPath(file.path));
    if (!QFileInfo(*device).isFile() || !device->open(QIODevice::ReadOnly)) {
        m_isUnreadable = true;
        m_problem = QStringLiteral("%1 cannot be read").arg(device->fileName());
        return;
    }
    QString const shown = file.name.isEmpty() ? QFileInfo(*device).fileName() : file.name;
    QHttpPart field = part(QStringLiteral("name=%1; filename=%2").arg(quoted(name), quoted(shown)));
    field.setHeader(QNetworkRequest::ContentTypeHeader, file.type);
    field.setBodyDevice(device.get());
    device.release()->setParent(m_form.get());
    m_form->append(field);
}

} // namespace SoftphoneQml
