#include "ContactCard.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>
#include <algorithm>
#include <array>
#include <cmath>
#include <contacts/NameDataInfo.h>

namespace Softphone {

namespace {

struct TextField
{
    QLatin1StringView jsonKey;
    QLatin1StringView recordKey;
    QString ContactCard::*member;
};

constexpr std::array textFields{
    TextField{QLatin1StringView("firstName"), QLatin1StringView("firstName"), &ContactCard::firstName},
    TextField{QLatin1StringView("lastName"), QLatin1StringView("lastName"), &ContactCard::lastName},
    TextField{QLatin1StringView("company"), QLatin1StringView("company"), &ContactCard::company},
    TextField{QLatin1StringView("unit"), QLatin1StringView("department"), &ContactCard::department},
};

QString keyPoints()
{
    return QStringLiteral("contacts");
}

QString keyType()
{
    return QStringLiteral("type");
}

QString keyValue()
{
    return QStringLiteral("value");
}

QString idOf(QJsonValue const& value)
{
    if (value.isString()) {
        return value.toString();
    }
    // Two defaults tell a whole number that fits from everything else.
    qint64 const number = value.toInteger(0);
    return value.isDouble() && number == value.toInteger(1) ? QString::number(number) : QString();
}

ContactPoint pointOf(QString const& label, QString const& value)
{
    return {PBXContactInfo::contactLabel2referenceType(label), label, value};
}

QStringList valuesOf(QList<ContactPoint> const& points, bool emails)
{
    QStringList values;
    for (ContactPoint const& point : points) {
        bool const wanted = (point.type == ContactReferenceType::Email) == emails && !point.value.isEmpty();
        if (wanted && !values.contains(point.value)) {
            values.append(point.value);
        }
    }
    return values;
}

/// The record nested in \a record under \a key, a null handle when there is none.
DataSets::DataSet nested(DataSets::DataSet const& record, QString const& key)
{
    DataSets::DataSet found;
    record.getValue(key, found.data);
    return found;
}

QList<ContactPoint> pointsOfRecord(DataSets::DataSet const& points)
{
    QList<ContactPoint> found;
    for (DataSets::DataObject const& entry : points) {
        DataSets::DataSet const point = nested(points, entry.key);
        found.append(pointOf(point.value<QString>(keyType()).value_or(QString()),
                             point.value<QString>(keyValue()).value_or(QString())));
    }
    return found;
}

} // namespace

ContactCard ContactCard::fromJson(QJsonObject const& object)
{
    ContactCard card;
    card.id = idOf(object.value(QLatin1StringView("id")));
    for (TextField const& field : textFields) {
        card.*field.member = object.value(field.jsonKey).toString();
    }
    QJsonArray const points = object.value(keyPoints()).toArray();
    for (QJsonValue const entry : points) {
        QJsonObject const point = entry.toObject();
        QJsonValue const type = point.value(keyType());
        QJsonValue const value = point.value(keyValue());
        if (!type.isUndefined() && !value.isUndefined()) {
            card.points.append(pointOf(type.toString(), value.toString()));
        }
    }
    return card;
}

QJsonObject ContactCard::toJson() const
{
    QJsonObject object;
    if (!id.isEmpty()) {
        object.insert(QLatin1StringView("id"), id);
    }
    for (TextField const& field : textFields) {
        object.insert(field.jsonKey, this->*field.member);
    }
    QJsonArray array;
    for (ContactPoint const& point : points) {
        array.append(QJsonObject{{keyType(), point.label}, {keyValue(), point.value}});
    }
    object.insert(keyPoints(), array);
    return object;
}

ContactCard ContactCard::fromDataSet(DataSets::DataSet const& record)
{
    ContactCard card;
    card.id = record.value<QString>(QStringLiteral("id")).value_or(QString());
    for (TextField const& field : textFields) {
        card.*field.member = record.value<QString>(QString(field.recordKey)).value_or(QString());
    }
    if (DataSets::DataSet const points = nested(record, keyPoints()); points.isArray()) {
        card.points = pointsOfRecord(points);
        return card;
    }
    QString const label = PBXContactInfo::referenceType2contactLabel(ContactReferenceType::Other);
    for (QString const& number : PBXContactInfo(record).getNumbers()) {
        card.points.append({ContactReferenceType::Other, label, number});
    }
    return card;
}

DataSets::DataSet ContactCard::toDataSet() const
{
    DataSets::DataSet record = DataSets::DataSet::createObject();
    for (TextField const& field : textFields) {
        record.setValue(QString(field.recordKey), this->*field.member);
    }
    record.setValue(QStringLiteral("number"), info().getNumber());
    record.setValue(QStringLiteral("id"), id);
    DataSets::DataSet array = DataSets::DataSet::createArray();
    for (int index = 0; ContactPoint const& point : points) {
        DataSets::DataSet entry = DataSets::DataSet::createObject();
        entry.setValue(keyType(), point.label);
        entry.setValue(keyValue(), point.value);
        array.setValue(QString::number(index++), entry.data);
    }
    record.setValue(keyPoints(), array.data);
    return record;
}

QString ContactCard::displayName() const
{
    auto const clean = [](QString const& text) {
        return NameDataInfo::removeExtraBlankSpacesIfNeeded(text, true);
    };
    QString name = clean(NameDataInfo::buildCompositeName(firstName, lastName));
    if (name.isEmpty()) {
        name = clean(company);
    }
    if (name.isEmpty()) {
        QStringList const values = numbers() + emails();
        name = values.isEmpty() ? QString() : values.front();
    }
    return name;
}

QString ContactCard::initials() const
{
    return NameDataInfo::getInitialsFromFullName(displayName(), QString());
}

QStringList ContactCard::numbers() const
{
    return valuesOf(points, false);
}

QStringList ContactCard::emails() const
{
    return valuesOf(points, true);
}

PBXContactInfo ContactCard::info() const
{
    PBXContactInfo info;
    info.setFirstName(firstName);
    info.setLastName(lastName);
    info.setCompany(company);
    info.setDepartment(department);
    std::set<QString> numbers;
    for (ContactPoint const& point : points) {
        // By the label, and empty values too, as the core does.
        if (point.type != ContactReferenceType::Email) {
            numbers.insert(point.value);
        }
    }
    info.setNumbers(numbers);
    return info;
}

std::size_t qHash(ContactCard const& card, std::size_t seed) noexcept
{
    std::size_t hash =
        qHashMulti(seed, card.id, card.firstName, card.lastName, card.company, card.department);
    for (ContactPoint const& point : card.points) {
        hash = qHashMulti(hash, point.label, point.value);
    }
    return hash;
}

char* toString(ContactCard const& card)
{
    return qstrdup(QJsonDocument(card.toJson()).toJson(QJsonDocument::Compact).constData());
}

} // namespace Softphone
