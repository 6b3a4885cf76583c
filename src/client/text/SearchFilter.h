#pragma once

#include <QList>
#include <QMetaType>
#include <QString>
#include <QStringList>
#include <client/softphoneclient_export.h>
#include <memory>

namespace Softphone {

class FilterWords;

/// What a person types to find an entry, prepared once and tried on the fields of many.
///
/// Each word of the filter has to open a word of one of the fields. Case, marks, the spelling of a letter
/// ("ß" and "ss", "ł" and "l", "æ" and "ae", wide and ligature forms), invisible characters, punctuation and
/// apostrophes do not count: "luc bri", "jeanluc" and "o'brien" all find "Jean-Luc O'Brien". Digits of any
/// script are the same digits.
///
/// A word of digits may also stand anywhere in a telephone number, whatever separates its digits; the zero
/// in front of a national number and the country code need not be on both sides: "02079460020" finds
/// "+44 20 7946 0020", "+44 (0)20 7946 0020" and "020 7946 0020", and "+44 20 7946 0020" finds each of them
/// as well. The groups of a number count one by one or as one, whichever finds more.
///
/// Each word of a field serves one word of the filter only, and the best way to assign them counts, not the
/// first: "ma mario" finds "mario marco". A piece of a number belongs to the word in which it begins. Of a
/// longer filter the first 32 words count.
///
/// A filter without words matches everything and marks nothing. For any other, matches() is true exactly when
/// hits() is not empty and when rank() is above 0.
///
/// A value; copies share what is prepared, and any number of threads may use one. The time is at most that of
/// comparing every letter of the filter with every letter of the fields, plus, for w words of the filter and
/// n words of the fields that they may open, w * w * n.
///
/// \code
/// SearchFilter const filter(QStringLiteral("luc bri"));
/// filter.matches({QStringLiteral("Jean-Luc O'Brien"), QStringLiteral("Officina Cordaviva")}); // true
/// \endcode
class SOFTPHONECLIENT_EXPORT SearchFilter
{
    Q_GADGET

public:
    /// A piece of a field that a word of the filter matched: the beginning of a word and not its rest, in
    /// whole characters with their marks.
    struct Hit
    {
        int field;          ///< the index of the field
        qsizetype position; ///< where it begins there, in UTF-16 code units
        qsizetype length;   ///< in UTF-16 code units, at least 1

        /// Whether two hits mark the same.
        bool operator==(Hit const& other) const = default;
    };

    /// A filter without words.
    SearchFilter();
    /// The filter of \a words, which are separated by blanks.
    explicit SearchFilter(QString const& words);

    /// Whether there are no words.
    [[nodiscard]] Q_INVOKABLE bool isEmpty() const;

    /// Whether each word opens a word of the \a fields of its own.
    [[nodiscard]] Q_INVOKABLE bool matches(QStringList const& fields) const;

    /// What the words match in the \a fields, as these were given: sorted, without overlaps; empty without a
    /// match.
    [[nodiscard]] QList<Hit> hits(QStringList const& fields) const;

    /// How well the \a fields match: 0 when they do not, and more the better.
    ///
    /// Whole words come before beginnings, beginnings before the inside of a number, and then the earlier
    /// field counts; all fields from the 31st on count as one. 1 for a filter without words.
    [[nodiscard]] Q_INVOKABLE int rank(QStringList const& fields) const;

private:
    friend class FilterWords;

    std::shared_ptr<FilterWords const> m_words;
};

} // namespace Softphone

Q_DECLARE_METATYPE(Softphone::SearchFilter)
