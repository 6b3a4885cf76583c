#include "Settings.h"

#include <crypto/Crypto.h>
#include <files/FilePaths.h>

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>

namespace {

constexpr unsigned long long key = 0x436f726461766976;

QString path()
{
    return FilePaths::buildDataPath(QStringLiteral("settings"));
}

} // namespace

Settings::Settings(QObject* parent)
    : QObject(parent)
{
    read();
}

void Settings::keep(QString const& name, QVariant const& value)
{
    m_values.insert(name, value);
    QByteArray const text =
        QJsonDocument(QJsonObject::fromVariantMap(m_values)).toJson(QJsonDocument::Compact);
    QSaveFile file(path());
    if (file.open(QIODevice::WriteOnly)) {
        file.write(Crypto::encrypt(text, key, Crypto::ProtectionMode::Hash));
        file.commit();
    }
    read();
}

void Settings::read()
{
    QFile file(path());
    QByteArray const blob = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    QJsonDocument const document = QJsonDocument::fromJson(Crypto::decrypt(blob, key));
    m_bytes = static_cast<int>(blob.size());
    m_whole = document.isObject();
    if (m_whole) {
        m_values = document.object().toVariantMap();
    }
    Q_EMIT changed();
}
