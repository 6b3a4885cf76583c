#include "SystemInfo.h"

#include <QStringList>
#include <QSysInfo>

QString SystemInfo::getMachineUniqueId()
{
    return QString::fromUtf8(QSysInfo::machineUniqueId());
}

QString SystemInfo::getOS()
{
    // The same on every system: this is the text that callers know.
    return QStringLiteral("MacOS");
}

QString SystemInfo::getOSVersion()
{
    return QSysInfo::productVersion();
}

bool SystemInfo::isWindows10OrNewer()
{
    return false;
}

bool SystemInfo::isOSFullyCompatible()
{
    return true;
}

QString SystemInfo::getSystemButtonFont()
{
    return QStringLiteral("Segoe UI");
}

QString SystemInfo::getSystemButtonGlyph(SystemButtonType type)
{
    // Places in the private area of the font that getSystemButtonFont() names.
    switch (type) {
    case SystemButtonType::Minimize:
        return QStringLiteral("\uE921");
    case SystemButtonType::Maximize:
        return QStringLiteral("\uE922");
    case SystemButtonType::Restore:
        return QStringLiteral("\uE923");
    case SystemButtonType::Close:
        return QStringLiteral("\uE8BB");
    default:
        return {};
    }
}

bool SystemInfo::areNotificationsSupported()
{
    QString const product = QSysInfo::productType();
    bool const isWindows = product == QLatin1String("winrt") || product == QLatin1String("windows");
    return isWindows && QSysInfo::productVersion().split(QLatin1Char('.')).constFirst().toInt() >= 10;
}
