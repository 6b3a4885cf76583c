#include "PBXContactInfo.h"

#include <QDebug>
#include <QHashFunctions>
#include <QJsonArray>
#include <QJsonObject>
#include <QJsonValue>
#include <algorithm>
#include <array>
#include <utility>

namespace {

struct ContactLabel
{
    QLatin1String label;
    ContactReferenceType type;
};

// The PBX's words, in both directions. Where two labels have the same type, the first one is what the type is
// called.
constexpr std::array contactLabels{
    ContactLabel{QLatin1String("exten"), ContactReferenceType::Extension},
    ContactLabel{QLatin1String("home"), ContactReferenceType::Home},
    ContactLabel{QLatin1String("work"), ContactReferenceType::Work},
    ContactLabel{QLatin1String("mobile"), ContactReferenceType::Mobile},
    ContactLabel{QLatin1String("work_mobile"), ContactReferenceType::Mobile},
    ContactLabel{QLatin1String("fax"), ContactReferenceType::Fax},
    ContactLabel{QLatin1String("email"), ContactReferenceType::Email},
};

constexpr QLatin1Char numberSeparator(';');

} // namespace

PBXContactInfo::PBXContactInfo() = default;

PBXContactInfo::PBXContactInfo(DataSets::DataSet const& dataSet)
{
    PBXContactInfo::deserialize(dataSet);
}

PBXContactInfo::PBXContactInfo(QJsonObject const& json)
{
    setValueFromJson(json, QStringLiteral("firstName"), m_firstName);
    setValueFromJson(json, QStringLiteral("lastName"), m_lastName);
    setValueFromJson(json, QStringLiteral("company"), m_company);
    setValueFromJson(json, QStringLiteral("unit"), m_department);
    setNumbersFromJson(json, m_numbers);
}

PBXContactInfo::PBXContactInfo(PBXContactInfo const& other) = default;

PBXContactInfo::PBXContactInfo(PBXContactInfo&& other) noexcept = default;

PBXContactInfo::~PBXContactInfo() = default;

PBXContactInfo& PBXContactInfo::operator=(PBXContactInfo const& other) = default;

PBXContactInfo& PBXContactInfo::operator=(PBXContactInfo&& other) noexcept = default;

void PBXContactInfo::setFirstName(QString const& firstName)
{
    m_firstName = firstName;
}

void PBXContactInfo::setLastName(QString const& lastName)
{
    m_lastName = lastName;
}

void PBXContactInfo::setCompany(QString const& company)
{
    m_company = company;
}

void PBXContactInfo::setDepartment(QString const& department)
{
    m_department = department;
}

void PBXContactInfo::setNumbers(QString const& numbers)
{
    m_numbers = createNumberSetFromString(numbers);
}

void PBXContactInfo::setNumbers(std::set<QString> const& numbers)
{
    m_numbers = numbers;
}

QString PBXContactInfo::getFirstName() const
{
    return m_firstName;
}

QString PBXContactInfo::getLastName() const
{
    return m_lastName;
}

QString PBXContactInfo::getCompany() const
{
    return m_company;
}

QString PBXContactInfo::getDepartment() const
{
    return m_department;
}

std::set<QString> PBXContactInfo::getNumbers() const
{
    return m_numbers;
}

QString PBXContactInfo::getNumber() const
{
    return createStringFromNumberSet(m_numbers);
}

DataSets::DataSet PBXContactInfo::serialize() const
{
    DataSets::DataSet dataSet = DataSets::DataSet::createObject();
    // A contact that cannot be called is not worth storing.
    if (m_numbers.empty()) {
        return dataSet;
    }
    dataSet.setValue(QStringLiteral("firstName"), m_firstName);
    dataSet.setValue(QStringLiteral("lastName"), m_lastName);
    dataSet.setValue(QStringLiteral("number"), createStringFromNumberSet(m_numbers));
    dataSet.setValue(QStringLiteral("company"), m_company);
    dataSet.setValue(QStringLiteral("department"), m_department);
    return dataSet;
}

void PBXContactInfo::deserialize(DataSets::DataSet const& dataSet)
{
    // Names that the record lacks stay as they are; the numbers are always replaced.
    dataSet.getValue(QStringLiteral("firstName"), m_firstName);
    dataSet.getValue(QStringLiteral("lastName"), m_lastName);
    dataSet.getValue(QStringLiteral("company"), m_company);
    dataSet.getValue(QStringLiteral("department"), m_department);
    setNumbers(dataSet.value<QString>(QStringLiteral("number")).value_or(QString()));
}

bool PBXContactInfo::operator==(PBXContactInfo const& other) const
{
    return m_firstName == other.m_firstName && m_lastName == other.m_lastName &&
           m_numbers == other.m_numbers && m_company == other.m_company && m_department == other.m_department;
}

void PBXContactInfo::setValueFromJson(QJsonObject const& json, QString const& key, QString& target)
{
    target = json.value(key).toString();
}

void PBXContactInfo::setNumbersFromJson(QJsonObject const& json, std::set<QString>& numbers)
{
    numbers.clear();
    QJsonArray const contacts = json.value(QStringLiteral("contacts")).toArray();
    for (QJsonValue const element : contacts) {
        QJsonObject const contact = element.toObject();
        QJsonValue const type = contact.value(QStringLiteral("type"));
        QJsonValue const value = contact.value(QStringLiteral("value"));
        // Everything with a type but an e-mail address can be dialled: the PBX makes up types of its own.
        if (!type.isUndefined() && type.toString() != QStringLiteral("email") && !value.isUndefined()) {
            numbers.insert(value.toString());
        }
    }
}

std::set<QString> PBXContactInfo::createNumberSetFromString(QString const& text)
{
    std::set<QString> numbers;
    for (QStringView const number : QStringView(text).split(numberSeparator, Qt::SkipEmptyParts)) {
        // Stored texts are sorted, so each number usually belongs at the end.
        numbers.insert(numbers.end(), number.toString());
    }
    return numbers;
}

QString PBXContactInfo::createStringFromNumberSet(std::set<QString> const& numbers)
{
    QString text;
    bool first = true;
    for (QString const& number : numbers) {
        if (!std::exchange(first, false)) {
            text += numberSeparator;
        }
        text += number;
    }
    return text;
}

ContactReferenceType PBXContactInfo::contactLabel2referenceType(QString const& label)
{
    auto const found = std::ranges::find(contactLabels, label, &ContactLabel::label);
    return found == contactLabels.end() ? ContactReferenceType::Other : found->type;
}

QString PBXContactInfo::referenceType2contactLabel(ContactReferenceType type)
{
    auto const found = std::ranges::find(contactLabels, type, &ContactLabel::type);
    return found == contactLabels.end() ? QStringLiteral("other") : QString(found->label);
}

std::size_t qHash(PBXContactInfo const& contact, std::size_t seed) noexcept
{
    return qHashMulti(seed, contact.getFirstName(), contact.getLastName(), contact.getNumber(),
                      contact.getCompany(), contact.getDepartment());
}

QDebug operator<<(QDebug debug, PBXContactInfo const& contact)
{
    QDebugStateSaver const saver(debug);
    debug.nospace() << "PBXContactInfo(" << contact.getFirstName() << ", " << contact.getLastName() << ", "
                    << contact.getNumber() << ", " << contact.getCompany() << ", " << contact.getDepartment()
                    << ')';
    return debug;
}

char* toString(PBXContactInfo const& contact)
{
    return qstrdup(QDebug::toString(contact).toUtf8().constData());
}
