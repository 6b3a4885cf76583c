#pragma once

#include "ISerializable.h"

#include <softphonecore_export.h>

#include <QString>
#include <cstddef>
#include <datasets/DataSets.h>
#include <functional>
#include <set>

class QDebug;
class QJsonObject;

/// What a contact entry of the PBX's directory is for. The numbers are fixed; those left out were never in
/// use.
enum class ContactReferenceType : unsigned int {
    Extension = 0, ///< "exten"
    Work = 2,      ///< "work"
    Mobile = 3,    ///< "mobile", "work_mobile"
    Home = 4,      ///< "home"
    Fax = 6,       ///< "fax"
    Other = 7,     ///< every other label
    Email = 9,     ///< "email"
};

/// One entry of the PBX's shared directory: names, company, department and phone numbers.
///
/// The PBX sends it as a JSON object with the strings "firstName", "lastName", "company" and "unit" (the
/// department) and an array "contacts" of objects with the strings "type" and "value". The client stores it
/// as a record with the texts "firstName", "lastName", "company", "department" and "number".
///
/// A plain value; any number of threads may read one.
///
/// \code
/// PBXContactInfo const contact(QJsonDocument::fromJson(text).object());
/// contact.getNumber(); // "101;3331234567"
/// \endcode
class SOFTPHONECORE_EXPORT PBXContactInfo : public ISerializable
{
public:
    /// Makes an empty contact.
    PBXContactInfo();
    /// Makes an empty contact and fills it with deserialize() of \a dataSet.
    explicit PBXContactInfo(DataSets::DataSet const& dataSet);
    /// Makes a contact of the directory's JSON object \a json.
    explicit PBXContactInfo(QJsonObject const& json);
    /// Copies \a other.
    PBXContactInfo(PBXContactInfo const& other);
    /// Takes over the fields of \a other, which is empty afterwards. Constant time.
    PBXContactInfo(PBXContactInfo&& other) noexcept;
    ~PBXContactInfo() override;
    /// Copies \a other.
    PBXContactInfo& operator=(PBXContactInfo const& other);
    /// Takes over the fields of \a other, which may be assigned to or destroyed afterwards.
    PBXContactInfo& operator=(PBXContactInfo&& other) noexcept;

    /// Sets the given name to \a firstName.
    void setFirstName(QString const& firstName);
    /// Sets the family name to \a lastName.
    void setLastName(QString const& lastName);
    /// Sets the company to \a company.
    void setCompany(QString const& company);
    /// Sets the department to \a department.
    void setDepartment(QString const& department);
    /// Replaces the numbers with those in \a numbers, separated by ";"; see createNumberSetFromString().
    void setNumbers(QString const& numbers);
    /// Replaces the numbers with \a numbers.
    void setNumbers(std::set<QString> const& numbers);

    /// The given name.
    [[nodiscard]] QString getFirstName() const;
    /// The family name.
    [[nodiscard]] QString getLastName() const;
    /// The company.
    [[nodiscard]] QString getCompany() const;
    /// The department.
    [[nodiscard]] QString getDepartment() const;
    /// The phone numbers, sorted by UTF-16 code unit.
    [[nodiscard]] std::set<QString> getNumbers() const;
    /// All phone numbers in one text, sorted and separated by ";".
    [[nodiscard]] QString getNumber() const;

    /// The contact as a new record, which is empty for a contact without numbers, whatever else it holds: a
    /// directory entry without a number is not stored.
    [[nodiscard]] DataSets::DataSet serialize() const override;

    /// Sets the names, company and department that \a dataSet holds as texts, and leaves the others as they
    /// are. The numbers are always replaced: none when "number" is missing.
    void deserialize(DataSets::DataSet const& dataSet) override;

    /// Whether \a other has the same names, numbers, company and department, letter case included.
    bool operator==(PBXContactInfo const& other) const;

    /// Sets \a target to the string \a key of \a json, empty when it is missing or no string.
    static void setValueFromJson(QJsonObject const& json, QString const& key, QString& target);

    /// Replaces \a numbers with the "value" of each of the "contacts" in \a json that has a "type" other than
    /// "email". One that is no string counts as an empty string. No numbers when "contacts" is no array.
    static void setNumbersFromJson(QJsonObject const& json, std::set<QString>& numbers);

    /// The pieces of \a text between ";" that are not empty. They are not trimmed.
    [[nodiscard]] static std::set<QString> createNumberSetFromString(QString const& text);

    /// \a numbers in one text, separated by ";". Linear.
    [[nodiscard]] static QString createStringFromNumberSet(std::set<QString> const& numbers);

    /// What the directory's \a label, in its exact letter case, stands for; Other for an unknown one.
    [[nodiscard]] static ContactReferenceType contactLabel2referenceType(QString const& label);

    /// The directory's label for \a type, "other" for a value that stands for none. Not the inverse of
    /// contactLabel2referenceType(), which reads two labels as Mobile.
    [[nodiscard]] static QString referenceType2contactLabel(ContactReferenceType type);

private:
    QString m_firstName;
    QString m_lastName;
    std::set<QString> m_numbers;
    QString m_company;
    QString m_department;
};

/// The hash of \a contact under \a seed, for Qt's hashed containers; equal ones have equal hashes.
[[nodiscard]] SOFTPHONECORE_EXPORT std::size_t qHash(PBXContactInfo const& contact,
                                                     std::size_t seed = 0) noexcept;

/// Writes \a contact with all its fields to \a debug.
SOFTPHONECORE_EXPORT QDebug operator<<(QDebug debug, PBXContactInfo const& contact);

/// What QTest shows of \a contact when a comparison fails; the caller frees it with delete[].
[[nodiscard]] SOFTPHONECORE_EXPORT char* toString(PBXContactInfo const& contact);

/// The same hash as qHash(), for the standard library's containers.
template <>
struct std::hash<PBXContactInfo>
{
    /// The hash of \a contact.
    std::size_t operator()(PBXContactInfo const& contact) const noexcept { return qHash(contact); }
};
