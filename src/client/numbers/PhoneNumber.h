#pragma once

#include <client/Softphone.h>
#include <client/softphoneclient_export.h>

#include <QHashFunctions>
#include <QList>
#include <QMetaType>
#include <QString>
#include <QUrl>
#include <optional>

namespace Softphone {

/// A telephone number that has been understood, with its extension.
///
/// A number is one of two: a subscriber's number of a numbering plan, which is called from everywhere, or a
/// short one, which is called in its own country or exchange only: an emergency number, a service, an
/// extension of the PBX. A short number has no country code: "118" is "118" in every form, and "+39118" is
/// another number, one that no plan has.
///
/// Regions are the two letters of ISO 3166, in any case. What is valid, and of which kind, changes with the
/// plans of the countries: keep what was typed, and ask again.
///
/// A plain value, empty if made without arguments. Any thread, several at once; nothing is written to the
/// standard output or error.
///
/// \code
/// PhoneNumber::parse("06 1234567 int. 12", "IT")->uri(); // tel:+39-06-123-4567;ext=12
/// \endcode
class SOFTPHONECLIENT_EXPORT PhoneNumber
{
    Q_GADGET
    Q_PROPERTY(QString e164 READ e164)
    Q_PROPERTY(QString international READ international)
    Q_PROPERTY(QString national READ national)
    Q_PROPERTY(QString extension READ extension)
    Q_PROPERTY(QUrl uri READ uri)
    Q_PROPERTY(QString region READ region)
    Q_PROPERTY(Softphone::NumberKind kind READ kind)
    Q_PROPERTY(bool valid READ isValid)

public:
    /// An empty number: all its texts are empty, and it is not valid.
    PhoneNumber() = default;

    /// Understands \a text as dialString() does, or a `tel:` address (RFC 3966).
    ///
    /// Invisible marks do not count, digits of any script do. The country code may stand there twice.
    /// Up to six digits without a country code that are no valid subscriber's number are a short number.
    /// An extension follows "int.", "interno", "ext.", "x", "#" or, as tones, ',' or ';'.
    ///
    /// Linear; of a text with more than 250 visible characters the first number in it is taken.
    ///
    /// \param text    the number as typed or pasted
    /// \param region  where it was typed, for numbers without a country code; may be empty or unknown
    /// \return nothing when \a text holds no number of 3 to 17 digits, a service code, or a number whose
    ///         country is unknown; of two digits only emergency numbers are understood, such as "15" in
    ///         France
    [[nodiscard]] static std::optional<PhoneNumber> parse(QString const& text, QString const& region);

    /// The form of ITU-T E.164, such as "+39061234567", without the extension; the digits of a short number.
    [[nodiscard]] QString e164() const;
    /// As people write it for another country, such as "+39 06 123 4567 ext. 12" (ITU-T E.123).
    [[nodiscard]] QString international() const;
    /// As people write it in its own country, such as "06 123 4567 ext. 12".
    [[nodiscard]] QString national() const;
    /// The digits of the extension; empty without one.
    [[nodiscard]] QString extension() const { return m_extension; }
    /// The address of RFC 3966, such as "tel:+39-06-123-4567;ext=12" or "tel:112;phone-context=+39".
    [[nodiscard]] QUrl uri() const;
    /// The region that the number belongs to, such as "SM" for "+378 0549 886377"; for a short number the one
    /// it was typed in. Empty when no plan knows the number.
    [[nodiscard]] QString region() const;
    /// What the number is for; Unknown for a short number and for one that is not valid.
    [[nodiscard]] NumberKind kind() const;
    /// Whether the plan of its country has such a number. Whether it is assigned to anybody is not known.
    [[nodiscard]] bool isValid() const;

    /// How surely \a first and \a second reach the same telephone. Short and empty numbers match exactly or
    /// not at all. San Marino's numbers, which Italy has under its own code too, match as National.
    [[nodiscard]] static NumberMatch match(PhoneNumber const& first, PhoneNumber const& second);

    /// Whether the E.164 forms and the extensions agree.
    friend bool operator==(PhoneNumber const& a, PhoneNumber const& b)
    {
        return a.hasSameNumber(b) && a.m_extension == b.m_extension;
    }
    /** Equal numbers have equal hashes. */ friend size_t qHash(PhoneNumber const& number, size_t seed = 0)
    {
        return qHashMulti(seed, number.m_national, number.m_short, number.m_extension);
    }

private:
    friend struct NumberFields;

    [[nodiscard]] bool hasSameNumber(PhoneNumber const& other) const
    {
        return m_short == other.m_short && m_national == other.m_national && m_zeros == other.m_zeros &&
               (m_country == other.m_country || !m_short.isEmpty());
    }

    quint64 m_national = 0; ///< significant digits without the zeros in front
    QString m_extension;
    QString m_short;       ///< the digits of a short number; empty for any other
    QString m_shortRegion; ///< where the short number was typed
    int m_country = 0;
    int m_zeros = 0;               ///< zeros that belong to the national number, as in Italy
    bool m_countryAssumed = false; ///< the country is that of the region, not of the text
};

/// A number in a text.
struct SOFTPHONECLIENT_EXPORT FoundNumber
{
    Q_GADGET
    Q_PROPERTY(qsizetype position MEMBER position)
    Q_PROPERTY(qsizetype length MEMBER length)
    Q_PROPERTY(Softphone::PhoneNumber number MEMBER number)

public:
    qsizetype position = 0; ///< where it begins, in UTF-16 units
    qsizetype length = 0;   ///< with its extension, in UTF-16 units
    PhoneNumber number;     ///< what was understood

    friend bool operator==(FoundNumber const& a, FoundNumber const& b) = default; ///< all agree
};

/// The numbers that running text \a text holds, in their order and without overlaps.
///
/// Only valid numbers of at least six digits count, as a reader in \a region (may be empty) understands them.
/// Dates, times, amounts, IP addresses, versions, and digits that are glued to letters or are part of an
/// address are none. Nothing of more than 250 characters without a blank is one.
///
/// Linear. Any thread.
[[nodiscard]] SOFTPHONECLIENT_EXPORT QList<FoundNumber> findPhoneNumbers(QString const& text,
                                                                         QString const& region);

/// \a typed as it looks best in the field while somebody types it in \a region.
///
/// The answer depends on \a typed alone, so that deleting and editing in the middle work: blanks, brackets,
/// dashes and dots are set afresh each time. Invisible marks go, digits become ASCII. What is no number, such
/// as a name, a service code, or anything of more than 20 digits, stays as typed; so do tones, from the first
/// ',' or ';' on.
///
/// A millisecond or so: for the text in one field, not for a list. Any thread.
[[nodiscard]] SOFTPHONECLIENT_EXPORT QString formatAsTyped(QString const& typed, QString const& region);

/// Where the cursor goes in a field whose text \a typed has become \a formatted: after the same digit as
/// before, as far as there are as many.
///
/// \param typed      what stood in the field
/// \param cursor     where the cursor was in it, in UTF-16 units; taken to the nearest end from outside
/// \param formatted  what formatAsTyped() made of \a typed
/// \return a place in \a formatted, in UTF-16 units: the end where the cursor was at the end
///
/// Linear. Any thread.
[[nodiscard]] SOFTPHONECLIENT_EXPORT qsizetype cursorInFormatted(QString const& typed, qsizetype cursor,
                                                                 QString const& formatted);

/// What to dial for \a typed, which a person in \a region typed, pasted or clicked.
///
/// - Invisible marks, blanks, brackets and punctuation go; digits of any script become ASCII.
/// - With a country code: the E.164 form. "(0)" goes where the numbers of that country lose their zero
///   abroad. Of a code that stands there twice ("+39 0039 06 ...") one stays.
/// - Without: the digits as typed. Emergency and short numbers and extensions are never completed; one of
///   \a region with a country code in front ("+39 118") loses it, as no exchange would know it.
/// - Letters of a vanity number ("800 FLOWERS") become digits; other words around a number go.
/// - An extension is sent as tones after a pause: "06 1234567 int. 12" gives "061234567,12".
/// - Service codes ("*31#", "**61*...#") and tones, from the first ',' or ';' on, stay, and so does a star
///   between the digits, a key like them.
/// - What a list has in front ("* 06 ...", "# 06 ...", "1. 06 ...", "2) 06 ...", "3 +39 06 ...") goes, and so
///   do the stars of bold text ("*06 ...*", "**06 ...**"), where the rest is a complete number.
/// - A `tel:` address is taken apart, a `sip:` or `sips:` address stays whole.
/// - Of several numbers the first one; of a text of more than 250 visible characters the first that
///   findPhoneNumbers() finds.
///
/// A number that no plan knows is cleaned and otherwise left as typed.
///
/// Linear. Any thread.
///
/// \param typed   the text
/// \param region  two letters of ISO 3166 in any case; when empty or unknown, only numbers with a country
///                code are known
/// \param plus    what becomes of the plus sign of a number with a country code
/// \return empty when \a typed holds no number; never part of one
[[nodiscard]] SOFTPHONECLIENT_EXPORT QString dialString(QString const& typed, QString const& region,
                                                        PlusSign plus = PlusSign::Keep);

} // namespace Softphone

Q_DECLARE_METATYPE(Softphone::PhoneNumber)
Q_DECLARE_METATYPE(Softphone::FoundNumber)
