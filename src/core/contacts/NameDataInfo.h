#pragma once

#include <softphonecore_export.h>

#include <QString>
#include <cstddef>
#include <functional>

class QDebug;

/// A person's name as the client shows it: first name, last name, and the initials derived from both.
///
/// The names are kept as they were set, blanks included; the getters clean them when asked to. The initials
/// are those of the full name after every change.
///
/// A plain value; any number of threads may read one.
///
/// \code
/// NameDataInfo name;
/// name.setNameAndInitials(QStringLiteral("Anna  Maria"), QStringLiteral("Bianchi"));
/// name.getFullName(true);          // "Anna Maria Bianchi"
/// name.getFullNameReversed(false); // "Bianchi Anna  Maria"
/// name.getInitials();              // "AMB"
/// \endcode
class SOFTPHONECORE_EXPORT NameDataInfo
{
public:
    /// Makes an empty name.
    NameDataInfo();
    /// Copies \a other.
    NameDataInfo(NameDataInfo const& other);
    /// Takes over the name of \a other, which is empty afterwards.
    NameDataInfo(NameDataInfo&& other) noexcept;
    ~NameDataInfo();
    /// Copies \a other.
    NameDataInfo& operator=(NameDataInfo const& other);
    /// Exchanges the name with that of \a other.
    NameDataInfo& operator=(NameDataInfo&& other) noexcept;

    /// Sets the first name to \a firstName as it stands, and the initials.
    void setFirstName(QString const& firstName);
    /// Sets the last name to \a lastName as it stands, and the initials.
    void setLastName(QString const& lastName);
    /// Sets both names to \a firstName and \a lastName as they stand, and the initials.
    void setNameAndInitials(QString const& firstName, QString const& lastName);
    /// Empties both names and the initials.
    void resetName();

    /// The first name; without extra blanks when \a removeBlankSpaces is true, see
    /// StringUtils::removeExtraBlankSpaces().
    [[nodiscard]] QString getFirstName(bool removeBlankSpaces) const;
    /// The last name; without extra blanks when \a removeBlankSpaces is true.
    [[nodiscard]] QString getLastName(bool removeBlankSpaces) const;
    /// "First Last"; without extra blanks when \a removeBlankSpaces is true, else trimmed at both ends only.
    [[nodiscard]] QString getFullName(bool removeBlankSpaces) const;
    /// "Last First"; without extra blanks when \a removeBlankSpaces is true, else trimmed at both ends only.
    [[nodiscard]] QString getFullNameReversed(bool removeBlankSpaces) const;
    /// The initials of the full name, at most three characters.
    [[nodiscard]] QString getInitials() const;

    /// Whether both names and the initials of \a other are the same, letter case included.
    bool operator==(NameDataInfo const& other) const;

    /// \a first, one space and \a second, trimmed at both ends; blanks inside stay.
    [[nodiscard]] static QString buildCompositeName(QString const& first, QString const& second);
    /// The initials of \a firstName and \a lastName without a record; see
    /// StringUtils::getInitialsFromFullName().
    [[nodiscard]] static QString getInitialsFromFullName(QString const& firstName, QString const& lastName);
    /// Whether \a firstName or \a lastName is not empty. Blanks alone count as a name.
    [[nodiscard]] static bool isValidName(QString const& firstName, QString const& lastName);
    /// \a text without extra blanks when \a removeBlankSpaces is true, else as it stands.
    [[nodiscard]] static QString removeExtraBlankSpacesIfNeeded(QString const& text, bool removeBlankSpaces);

private:
    QString m_initials;
    QString m_firstName;
    QString m_lastName;
};

/// The hash of \a name under \a seed, for Qt's hashed containers; equal ones have equal hashes.
[[nodiscard]] SOFTPHONECORE_EXPORT std::size_t qHash(NameDataInfo const& name, std::size_t seed = 0) noexcept;

/// Writes \a name with all its fields to \a debug.
SOFTPHONECORE_EXPORT QDebug operator<<(QDebug debug, NameDataInfo const& name);

/// What QTest shows of \a name when a comparison fails; the caller frees it with delete[].
[[nodiscard]] SOFTPHONECORE_EXPORT char* toString(NameDataInfo const& name);

/// The same hash as qHash(), for the standard library's containers.
template <>
struct std::hash<NameDataInfo>
{
    /// The hash of \a name.
    std::size_t operator()(NameDataInfo const& name) const noexcept { return qHash(name); }
};
