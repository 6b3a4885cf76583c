#pragma once

#include <QHashFunctions>
#include <QList>
#include <QMetaType>
#include <QString>
#include <QStringList>
#include <client/softphoneclient_export.h>
#include <contacts/PBXContactInfo.h>
#include <datasets/DataSets.h>

class QJsonObject;

namespace Softphone {

/// One way to reach a contact: a number or an address, with what the PBX calls it.
struct SOFTPHONECLIENT_EXPORT ContactPoint
{
    Q_GADGET
    Q_PROPERTY(int type READ typeNumber)
    Q_PROPERTY(QString label MEMBER label)
    Q_PROPERTY(QString value MEMBER value)

public:
    ContactReferenceType type = ContactReferenceType::Other; ///< what the label stands for
    QString label; ///< as the PBX sent it: "work_mobile", "switchboard"
    QString value; ///< as it was written

    /// The type as the number that it has.
    [[nodiscard]] int typeNumber() const { return static_cast<int>(type); }

    /// Whether \a other has the same type, label and value.
    bool operator==(ContactPoint const& other) const = default;
};

/// One entry of the directory, with all that the PBX sent: its id, the labels, the e-mail addresses and the
/// order of the points, which the core's PBXContactInfo drops.
///
/// A value; any number of threads may read one.
///
/// \code
/// ContactCard const card = ContactCard::fromJson(QJsonDocument::fromJson(text).object());
/// card.displayName(); // "Mario Rossi"
/// card.numbers();     // "201", "+39 06 1234567"
/// \endcode
class SOFTPHONECLIENT_EXPORT ContactCard
{
    Q_GADGET
    Q_PROPERTY(QString id MEMBER id)
    Q_PROPERTY(QString firstName MEMBER firstName)
    Q_PROPERTY(QString lastName MEMBER lastName)
    Q_PROPERTY(QString company MEMBER company)
    Q_PROPERTY(QString department MEMBER department)
    Q_PROPERTY(QList<Softphone::ContactPoint> points MEMBER points)
    Q_PROPERTY(QString displayName READ displayName STORED false)
    Q_PROPERTY(QString initials READ initials STORED false)
    Q_PROPERTY(QStringList numbers READ numbers STORED false)
    Q_PROPERTY(QStringList emails READ emails STORED false)

public:
    QString id;                 ///< empty when the PBX gave none
    QString firstName;          ///< empty when the PBX gave none
    QString lastName;           ///< empty when the PBX gave none
    QString company;            ///< empty when the PBX gave none
    QString department;         ///< the "unit" of the PBX
    QList<ContactPoint> points; ///< in the order of the PBX

    /// The card of the directory's JSON \a object: the strings "firstName", "lastName", "company" and "unit"
    /// (the department), "id", a string or a whole number that fits 64 bits, and the array "contacts" of
    /// objects with "type" and "value".
    ///
    /// What is missing or of another kind is empty; an entry of "contacts" without "type" or without "value"
    /// is left out, as the core leaves it out.
    [[nodiscard]] static ContactCard fromJson(QJsonObject const& object);
    /// The object that fromJson() reads, "id" only if there is one.
    [[nodiscard]] QJsonObject toJson() const;

    /// The card of a \a record that toDataSet() or PBXContactInfo::serialize() made: one without points of
    /// its own gets its numbers as points of the type Other. A record that is none of the two gives what it
    /// holds under the same keys.
    [[nodiscard]] static ContactCard fromDataSet(DataSets::DataSet const& record);
    /// A new record under the keys that PBXContactInfo reads ("firstName", "lastName", "number", "company",
    /// "department"), and "id" and "contacts", an array of records with "type" (the label) and "value".
    ///
    /// A card without numbers is a whole record too.
    [[nodiscard]] DataSets::DataSet toDataSet() const;

    /// What a list shows: first and last name, or else the company, or else the first number or e-mail
    /// address. Blanks at the ends and between words are cleaned.
    [[nodiscard]] QString displayName() const;
    /// Up to three initials of displayName(), as the core abbreviates names.
    [[nodiscard]] QString initials() const;
    /// The values of all points that are no e-mail addresses, each once, in order, without empty ones.
    [[nodiscard]] QStringList numbers() const;
    /// The values of the points of type Email, each once, in order, without empty ones.
    [[nodiscard]] QStringList emails() const;
    /// The card as the core knows it: equal to PBXContactInfo made of the same JSON.
    [[nodiscard]] PBXContactInfo info() const;

    /// Whether all of \a other is the same, letter case and order of the points included.
    bool operator==(ContactCard const& other) const = default;
};

/// The hash of \a card under \a seed, for Qt's hashed containers.
[[nodiscard]] SOFTPHONECLIENT_EXPORT std::size_t qHash(ContactCard const& card,
                                                       std::size_t seed = 0) noexcept;

/// What QTest shows of \a card when a comparison fails; the caller frees it with delete[].
[[nodiscard]] SOFTPHONECLIENT_EXPORT char* toString(ContactCard const& card);

} // namespace Softphone

Q_DECLARE_METATYPE(Softphone::ContactPoint)
Q_DECLARE_METATYPE(Softphone::ContactCard)
