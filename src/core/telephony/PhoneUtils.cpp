#include "PhoneUtils.h"

QString PhoneUtils::getLandlineSelectedDescription(QString const& first, QString const& second)
{
    return QString(first + QLatin1Char(' ') + second).trimmed();
}

QString PhoneUtils::getSipAccountDescription(QString const& first, QString const& middle, QString const& last)
{
    QString const bracketed = middle.isEmpty() ? QString() : QLatin1Char('(') + middle + QLatin1String(") ");
    return QString(first + QLatin1Char(' ') + bracketed + last).trimmed();
}
