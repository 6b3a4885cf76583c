#include "NameDataInfo.h"

#include <text/StringUtils.h>

#include <QDebug>
#include <QHashFunctions>
#include <utility>

NameDataInfo::NameDataInfo() = default;

NameDataInfo::NameDataInfo(NameDataInfo const& other) = default;

NameDataInfo::NameDataInfo(NameDataInfo&& other) noexcept = default;

NameDataInfo::~NameDataInfo() = default;

NameDataInfo& NameDataInfo::operator=(NameDataInfo const& other) = default;

NameDataInfo& NameDataInfo::operator=(NameDataInfo&& other) noexcept
{
    // Swapped, so that moving a name to itself keeps it.
    m_initials.swap(other.m_initials);
    m_firstName.swap(other.m_firstName);
    m_lastName.swap(other.m_lastName);
    return *this;
}

void NameDataInfo::setFirstName(QString const& firstName)
{
    setNameAndInitials(firstName, m_lastName);
}

void NameDataInfo::setLastName(QString const& lastName)
{
    setNameAndInitials(m_firstName, lastName);
}

void NameDataInfo::setNameAndInitials(QString const& firstName, QString const& lastName)
{
    m_initials = getInitialsFromFullName(firstName, lastName);
    m_firstName = firstName;
    m_lastName = lastName;
}

void NameDataInfo::resetName()
{
    m_initials.clear();
    m_firstName.clear();
    m_lastName.clear();
}

QString NameDataInfo::getFirstName(bool removeBlankSpaces) const
{
    return removeExtraBlankSpacesIfNeeded(m_firstName, removeBlankSpaces);
}

QString NameDataInfo::getLastName(bool removeBlankSpaces) const
{
    return removeExtraBlankSpacesIfNeeded(m_lastName, removeBlankSpaces);
}

QString NameDataInfo::getFullName(bool removeBlankSpaces) const
{
    return removeExtraBlankSpacesIfNeeded(buildCompositeName(m_firstName, m_lastName), removeBlankSpaces);
}

QString NameDataInfo::getFullNameReversed(bool removeBlankSpaces) const
{
    return removeExtraBlankSpacesIfNeeded(buildCompositeName(m_lastName, m_firstName), removeBlankSpaces);
}

QString NameDataInfo::getInitials() const
{
    return m_initials;
}

bool NameDataInfo::operator==(NameDataInfo const& other) const
{
    return m_firstName == other.m_firstName && m_lastName == other.m_lastName &&
           m_initials == other.m_initials;
}

QString NameDataInfo::buildCompositeName(QString const& first, QString const& second)
{
    return QString(first + QLatin1Char(' ') + second).trimmed();
}

QString NameDataInfo::getInitialsFromFullName(QString const& firstName, QString const& lastName)
{
    return StringUtils::getInitialsFromFullName(buildCompositeName(firstName, lastName));
}

bool NameDataInfo::isValidName(QString const& firstName, QString const& lastName)
{
    return !firstName.isEmpty() || !lastName.isEmpty();
}

QString NameDataInfo::removeExtraBlankSpacesIfNeeded(QString const& text, bool removeBlankSpaces)
{
    return removeBlankSpaces ? StringUtils::removeExtraBlankSpaces(text) : text;
}

std::size_t qHash(NameDataInfo const& name, std::size_t seed) noexcept
{
    // The initials follow from the names.
    return qHashMulti(seed, name.getFirstName(false), name.getLastName(false));
}

QDebug operator<<(QDebug debug, NameDataInfo const& name)
{
    QDebugStateSaver const saver(debug);
    debug.nospace() << "NameDataInfo(" << name.getFirstName(false) << ", " << name.getLastName(false) << ", "
                    << name.getInitials() << ')';
    return debug;
}

char* toString(NameDataInfo const& name)
{
    return qstrdup(QDebug::toString(name).toUtf8().constData());
}
