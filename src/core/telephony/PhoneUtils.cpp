#include "PhoneUtils.h"

#include "../Boundary_p.h"

QString PhoneUtils::getLandlineSelectedDescription(QString const& first, QString const& second)
{
    return guarded([&] { return QString(first + QLatin1Char(' ') + second).trimmed(); });
}

QString PhoneUtils::getSipAccountDescription(QString const& first, QString const& middle, QString const& last)
{
    return guarded([&] {
        QString const bracketed =
            middle.isEmpty() ? QString() : QLatin1Char('(') + middle + QLatin1String(") ");
        return QString(first + QLatin1Char(' ') + bracketed + last).trimmed();
    });
}
