#pragma once

#include <softphonecore_export.h>

#include <QChar>
#include <QList>
#include <QString>
#include <QVariant>
#include <optional>

/// String operations of the client: names and initials, numbers and durations for display, validation of
/// addresses and numbers, keyboard shortcuts and version strings, HTML for display, filters and their hits.
///
/// The operations keep no state and may be called from any thread. None of them reports an error: what
/// cannot be read gives the neutral result that its comment names.
/// Every operation takes time linear in its text unless it says otherwise.
///
/// Example: getInitialsFromFullName("Anna Maria Bianchi") is "AMB".
class SOFTPHONECORE_EXPORT StringUtils
{
public:
    /// One parsed keyboard shortcut.
    struct ShortcutDefinition
    {
        unsigned int modifiers = 0;     ///< the modifier bits of the first key combination
        unsigned int key = 0x01FF'FFFF; ///< its key code, a Qt::Key; Qt::Key_unknown unless parsed
        QString keyText;                ///< the key alone, in the platform's own notation
        QString shortcut;               ///< the text that was parsed

        /// Whether a key was recognised.
        [[nodiscard]] bool isValid() const { return !keyText.isEmpty(); }

        /// Whether both are the same key with the same modifiers. The key is compared by its text without
        /// regard to case, since "a" and "A" are one key; \a other's original text plays no part.
        [[nodiscard]] bool operator==(ShortcutDefinition const& other) const
        {
            return modifiers == other.modifiers && keyText.compare(other.keyText, Qt::CaseInsensitive) == 0;
        }
    };

    StringUtils() = delete;

    /// Writes \a number in base 10, padded with \a fill to at least \a width characters: on the left, or on
    /// the right when \a width is negative. A longer number is never cut.
    ///
    /// Left padding with '0' goes between the sign and the digits.
    /// Example: stringifyNumberWithLowerBoundWidth(7, 2, u'0') is "07".
    [[nodiscard]] static QString stringifyNumberWithLowerBoundWidth(int number, int width, QChar const& fill);

    /// Returns \a text with its first UTF-16 unit in title case when that is a letter, else \a text as it is.
    ///
    /// The rest keeps its case. Title case is not upper case for the few letters that are pairs: the Croatian
    /// U+01C6 becomes U+01C5. A letter outside the basic plane is two units, neither of them a letter.
    [[nodiscard]] static QString getFistLetterUppercase(QString text);

    /// Returns \a text without white space at its ends and with each inner run of U+0020 made one.
    ///
    /// Other white space inside stays, so a tab next to a space keeps both.
    [[nodiscard]] static QString removeExtraBlankSpaces(QString const& text);

    /// Returns \a text without white space at its ends and with each inner run of white space of any kind
    /// made one U+0020. Callers rely on the words staying apart, whatever the name says.
    [[nodiscard]] static QString removeWhitespaceCharacters(QString const& text);

    /// Returns the first UTF-16 units, case unchanged, of the first three words of \a fullName.
    ///
    /// Words are separated by U+0020, after white space at both ends was removed. A word that opens with
    /// neither a letter nor a number counts as none, so "(Office) Desk" gives "D". Fewer words give fewer
    /// characters, no word the empty string.
    [[nodiscard]] static QString getInitialsFromFullName(QString const& fullName);

    /// Returns \a email without its spaces (U+0020); nothing else is touched.
    [[nodiscard]] static QString sanitizeEmail(QString email);

    /// Whether the whole of \a email is an address as the client accepts it, by the ECMAScript expression
    /// \verbatim [A-Za-z0-9._%+-]+@[A-Za-z0-9.-]+\.[A-Za-z]{2,4} \endverbatim
    ///
    /// Top-level domains of five letters or more, and anything that is not ASCII, are refused.
    [[nodiscard]] static bool validateEmail(QString const& email);

    /// Whether the whole of \a number can be dialled, by the ECMAScript expression
    /// \verbatim ((\+?[\d#*]{1,})(?:[\d#*,]*)*)(?!,) \endverbatim
    ///
    /// That is: an optional "+", at least one of 0-9, "#" and "*", then any of these and the pause ",". A
    /// pause at the end is accepted, since nothing follows it that the look-ahead could see.
    [[nodiscard]] static bool validatePhoneNumber(QString const& number);

    /// Removes from \a text, in place, every UTF-16 unit that is not printable and every unit that occurs in
    /// \a charsToRemove. Surrogates are not printable, so characters outside the basic plane go too.
    static void removeNoPrintableChars(QString& text, QString const& charsToRemove);

    /// Returns, in order, the \a devices that match the expression \a endPattern with "$" appended and
    /// contain a match of the expression \a namePattern.
    ///
    /// Both are Perl-compatible expressions as QRegularExpression takes them, without options. An invalid
    /// one matches nothing, and neither does one on a name on which the engine reaches its limit, which
    /// bounds the time that a bad expression can take.
    [[nodiscard]] static QList<QString>
    filterAudioDevices(QList<QString> const& devices, QString const& endPattern, QString const& namePattern);

    /// Returns the time of day \a seconds after midnight: "hh:mm:ss", or "mm:ss" while the hour is 0.
    ///
    /// The clock wraps at 24 hours in both directions: 86400 gives "00:00" and -1 gives "23:59:59".
    [[nodiscard]] static QString getDurationSecondsToString(int seconds);

    /// Whether \a a sorts before \a b when case is ignored; empty when they differ in case alone, so that
    /// the caller can decide by something else.
    [[nodiscard]] static std::optional<bool> isLessInsensitive(QString const& a, QString const& b);

    /// Reads \a text as a keyboard shortcut in the platform's own notation ("Ctrl+A").
    ///
    /// \return the first key combination of it; a default definition, which is not valid, when \a text is
    ///         empty or names no key
    ///
    /// Needs no application object.
    [[nodiscard]] static ShortcutDefinition parseShortcut(QString const& text);

    /// Reads \a text as parseShortcut() does and returns the modifiers and the key as two integers, the form
    /// in which QML takes a key combination; the empty list when no key is recognised.
    [[nodiscard]] static QList<QVariant> toQmlSequence(QString const& text);

    /// Whether version \a a is later than version \a b.
    ///
    /// A version is up to four base-10 integers separated by "."; what is missing or unreadable, or does not
    /// fit a signed 32-bit integer, is 0, and what follows the fourth is ignored. They are compared in order,
    /// as numbers: "1.10" is later than "1.9", and "1.2" is the same as "1.2.0.0".
    [[nodiscard]] static bool isBiggerVersionThan(QString const& a, QString const& b);

    /// Whether \a a and \a b are the same version, read as isBiggerVersionThan() does.
    [[nodiscard]] static bool isSameVersionAs(QString const& a, QString const& b);

    /// Whether version \a a is earlier than version \a b, read as isBiggerVersionThan() does.
    [[nodiscard]] static bool isLessVersionThan(QString const& a, QString const& b);

    /// Returns \a text with the characters that mean something in HTML (& < > " ') as entities.
    [[nodiscard]] static QString sanitizeHTMLCharacters(QString text);

    /// Returns plain \a text as HTML for display: escaped as sanitizeHTMLCharacters() does, then with links
    /// and line breaks as HTMLHelpers::generateParagraphs() makes them.
    [[nodiscard]] static QString htmlfy(QString const& text);

    /// Returns \a html as plain text: every piece from a "<" to the nearest ">" is removed, then the entities
    /// that sanitizeHTMLCharacters() writes are decoded.
    ///
    /// "&amp;" is decoded before the others, so that twice escaped text comes out plain. Line-break tags go
    /// like any other; other entities, and a "<" that is never closed, stay.
    [[nodiscard]] static QString deHTMLfy(QString const& html);

    /// Returns \a text escaped, with every occurrence of \a subString inside an element \a tag.
    ///
    /// The first occurrence is found whatever its case; further ones, searched for after it, only in
    /// exactly the case of \a subString. Callers rely on that difference. An empty \a subString marks
    /// nothing.
    ///
    /// The hits are marked with "%start%" and "%end%" before the escaping, and these become the tags
    /// afterwards; where \a text holds one of them itself, that becomes a tag too.
    /// Example: "Rossi & rossi" with "rossi" and "b" is `<b>Rossi</b> &amp; <b>rossi</b>`.
    [[nodiscard]] static QString wrapSubStringsInHTMLTag(QString const& text, QString const& subString,
                                                         QString const& tag);

    /// Returns \a text escaped, with the hit of each word of \a filter inside an element \a tag, as
    /// SubstringWrapper finds them; only escaped when the text does not fit the filter.
    ///
    /// Its markers are "%start%" and "%stop%"; where \a text holds one of them itself, that becomes a tag.
    [[nodiscard]] static QString wrapSubStringsInHTMLTagExtended(QString const& text, QString const& filter,
                                                                 QString const& tag, bool matchWordStart);

    /// Whether every word of \a filter finds a word of its own in \a text that opens with it
    /// (\a matchWordStart) or holds it anywhere.
    ///
    /// Words are separated by spaces (U+0020) and compared in lower case; marks on letters count. Each filter
    /// word in turn takes the first text word that fits and is still free, without regard to what later ones
    /// need: "ma mario" does not match "mario marco". A filter without words matches everything.
    ///
    /// Takes time linear in \a text for each filter word that is looked at, and reads no more of a long
    /// \a filter than could match. A short \a text with a filter in lower case costs no allocation, so that a
    /// list can be filtered at each keystroke.
    [[nodiscard]] static bool isFilterMatched(QString const& text, QString const& filter,
                                              bool matchWordStart);

    /// Returns \a text in Unicode's canonical decomposition (form D) without the UTF-16 units that are marks,
    /// so that "Citè" compares as "Cite". Letters without a decomposition stay, and so do the few marks
    /// outside the basic plane, whose units are surrogates.
    [[nodiscard]] static QString removeDiacriticalMarks(QString const& text);
};
