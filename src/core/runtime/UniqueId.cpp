#include "UniqueId.h"

#include <QRandomGenerator64>
#include <QUuid>

QString UniqueId::createUUID()
{
    return QUuid::createUuid().toString(QUuid::WithoutBraces);
}

unsigned long UniqueId::generateNumber()
{
    return static_cast<quint32>(QRandomGenerator64::global()->generate());
}
