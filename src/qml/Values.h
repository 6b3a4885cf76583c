/// \file
/// The values as QML names them, in lower case like all its value types, and the lists of them.

#pragma once

#include <client/ContactCard.h>
#include <client/Links.h>
#include <client/PhoneNumber.h>
#include <client/SearchFilter.h>

#include <QList>
#include <QtQml/qqml.h>

namespace SoftphoneQml {

/// `phoneNumber`, from Numbers.parse().
struct PhoneNumberValue
{
    Q_GADGET
    QML_FOREIGN(Softphone::PhoneNumber)
    QML_VALUE_TYPE(phoneNumber)
};

/// `foundNumber`, from Numbers.find().
struct FoundNumberValue
{
    Q_GADGET
    QML_FOREIGN(Softphone::FoundNumber)
    QML_VALUE_TYPE(foundNumber)
};

/// A list of `foundNumber`.
struct FoundNumberList
{
    Q_GADGET
    QML_FOREIGN(QList<Softphone::FoundNumber>)
    QML_ANONYMOUS
    QML_SEQUENTIAL_CONTAINER(Softphone::FoundNumber)
};

/// `link`, from ChatText.findLinks().
struct LinkValue
{
    Q_GADGET
    QML_FOREIGN(Softphone::Link)
    QML_VALUE_TYPE(link)
};

/// A list of `link`.
struct LinkList
{
    Q_GADGET
    QML_FOREIGN(QList<Softphone::Link>)
    QML_ANONYMOUS
    QML_SEQUENTIAL_CONTAINER(Softphone::Link)
};

/// `contactPoint`, an element of contactCard.points.
struct ContactPointValue
{
    Q_GADGET
    QML_FOREIGN(Softphone::ContactPoint)
    QML_VALUE_TYPE(contactPoint)
};

/// A list of `contactPoint`.
struct ContactPointList
{
    Q_GADGET
    QML_FOREIGN(QList<Softphone::ContactPoint>)
    QML_ANONYMOUS
    QML_SEQUENTIAL_CONTAINER(Softphone::ContactPoint)
};

/// `contactCard`, the role "card" of ContactDirectory, and from its caller() and card().
struct ContactCardValue
{
    Q_GADGET
    QML_FOREIGN(Softphone::ContactCard)
    QML_VALUE_TYPE(contactCard)
};

/// `searchFilter`, from Search.filter().
struct SearchFilterValue
{
    Q_GADGET
    QML_FOREIGN(Softphone::SearchFilter)
    QML_VALUE_TYPE(searchFilter)
};

#if QT_VERSION < QT_VERSION_CHECK(6, 5, 0)
/// The type of counts of bytes, which tools of Qt 6.4 do not know otherwise; they compare types by name.
struct LongLongValue
{
    Q_GADGET
    QML_FOREIGN(qlonglong)
    QML_ANONYMOUS
};

/// The same for places in a text.
struct SizeValue
{
    Q_GADGET
    QML_FOREIGN(qsizetype)
    QML_ANONYMOUS
};
#endif

} // namespace SoftphoneQml
