#include "PhoneNumber.h"

#include "../CodePoints_p.h"
#include "NumberPlans_p.h"
#include "TypedNumber_p.h"

#include <phonenumbers/phonenumbermatch.h>
#include <phonenumbers/phonenumbermatcher.h>

#include <QRegularExpression>
#include <algorithm>
#include <utility>

namespace Softphone {

namespace {

constexpr qsizetype fewestDigits = 6;

/// A character of the text, as it counts in a number, and where it stands.
struct Seen
{
    char32_t character = 0; ///< 0: nobody sees it
    qsizetype units = 1;
};

Seen seenAt(QStringView text, qsizetype place)
{
    char32_t const c = codePointAt(text, place);
    bool const ascii = c >= U' ' && c < U'\x7f';
    return {ascii ? c : visibleCharacter(c), units(c)};
}

bool isDigit(char32_t c)
{
    return c >= U'0' && c <= U'9';
}

/// What may stand inside a number that people write.
bool isInsideNumber(char32_t c)
{
    return isDigit(c) || c == 0 || std::u32string_view(U" -.()/[]+").find(c) != std::u32string_view::npos;
}

/// A piece of the text that may hold numbers, as it counts, and where each of its characters stands.
struct Piece
{
    QString text;
    QList<qsizetype> places; ///< one more than the characters

    void add(char32_t c, qsizetype place)
    {
        text += QChar(static_cast<char16_t>(c));
        places += place;
    }
};

bool isGlue(char32_t c)
{
    return QChar::isLetterOrNumber(c) ||
           std::u32string_view(U"_@=&%/\\#").find(c) != std::u32string_view::npos ||
           QChar::category(c) == QChar::Symbol_Currency;
}

/// Whether the character in front of \a place belongs to what stands there: a word, an amount, an address.
bool isGluedBefore(QStringView text, qsizetype place)
{
    if (place == 0) {
        return false;
    }
    QChar const before = text[place - 1];
    bool const joint =
        QStringView(u".,-:").contains(before) && place > 1 && text[place - 2].isLetterOrNumber();
    bool const amount = before == u' ' && place > 1 && text[place - 2].category() == QChar::Symbol_Currency;
    bool const label = before == u':' && place > 1 && text[place - 2].isLetter();
    return isGlue(codePointBefore(text, place)) || (joint && !label) || amount;
}

bool isGluedAfter(QStringView text, qsizetype place)
{
    if (place >= text.size()) {
        return false;
    }
    QChar const after = text[place];
    bool const next = place + 1 < text.size();
    bool const joint = QStringView(u".,-:").contains(after) && next && text[place + 1].isLetterOrNumber();
    bool const slash = after == u'/' &&
                       !(next && (QStringView(u" +").contains(text[place + 1]) || text[place + 1].isDigit()));
    bool const amount = after == u' ' && next &&
                        (text[place + 1].category() == QChar::Symbol_Currency || text[place + 1] == u'%');
    return (after != u'/' && isGlue(codePointAt(text, place))) || joint || slash || amount;
}

/// Dates, times and addresses of the network have the digits of a number in some country.
bool isOtherThanNumber(QString const& text)
{
    static QRegularExpression const plainDate(QStringLiteral(
        R"(^(?:19|20)\d\d(?:0[1-9]|1[0-2])(?:0[1-9]|[12]\d|3[01])(?:[ -]?[0-2]\d[0-5]\d(?:[0-5]\d)?)?$)"));
    static QRegularExpression const networkAddress(QStringLiteral(R"(^(?:(?:0|[1-9]\d{0,2})(?:\.|$)){4}$)"));
    qsizetype const blank = text.indexOf(u' ');
    return isDate(blank < 0 ? text : text.first(blank)) || plainDate.match(text).hasMatch() ||
           networkAddress.match(text).hasMatch();
}

/// \a number without a bracket in front that does not close in it.
QStringView withoutOpenBracket(QStringView number)
{
    auto const isOpening = [](QChar c) { return c == u'(' || c == u'['; };
    auto const isClosing = [](QChar c) { return c == u')' || c == u']'; };
    bool const open = !number.isEmpty() && isOpening(number[0]);
    bool const closes = std::ranges::count_if(number, isOpening) <= std::ranges::count_if(number, isClosing);
    return open && !closes ? number.sliced(1) : number;
}

/// Finds the numbers of one piece.
class PieceSearch
{
public:
    PieceSearch(QStringView whole, std::string const& region, QList<FoundNumber>& found)
        : m_whole(whole)
        , m_region(region)
        , m_found(found)
    {
    }

    void search(Piece const& piece)
    {
        using namespace i18n::phonenumbers;
        // Each of a few tries is a parse; a piece is far too short for more numbers.
        constexpr int tries = 20;
        PhoneNumberMatcher matcher(plans(), piece.text.toStdString(), m_region, PhoneNumberMatcher::VALID,
                                   tries);
        PhoneNumberMatch match;
        while (matcher.HasNext() && matcher.Next(&match)) {
            take(piece, match);
        }
    }

    /// The end of the last number found, with its extension.
    [[nodiscard]] qsizetype end() const
    {
        return m_found.isEmpty() ? 0 : m_found.back().position + m_found.back().length;
    }

private:
    void take(Piece const& piece, i18n::phonenumbers::PhoneNumberMatch const& match)
    {
        // A piece is all ASCII, so that bytes are characters.
        QStringView const whole = QStringView(piece.text).sliced(match.start(), match.length());
        QStringView const matched = withoutOpenBracket(whole);
        qsizetype const start = match.start() + whole.size() - matched.size();
        qsizetype const length = firstNumberLength(matched, m_region);
        QString const text = matched.first(length).trimmed().toString();
        qsizetype const last = piece.places.at(start + text.size() - 1);
        qsizetype const from = piece.places.at(start);
        qsizetype const to = last + seenAt(m_whole, last).units;
        // "+1 (0)212 ..." is one number, whose end alone may be one elsewhere.
        bool const partOfOther = text.startsWith(QLatin1String("(0)")) && start > 0;
        if (partOfOther || std::ranges::count_if(text, isAsciiDigit) < fewestDigits ||
            isOtherThanNumber(text)) {
            return;
        }
        PhoneNumber number = NumberFields::fromPlan(match.number());
        if (length < matched.size()) {
            number = PhoneNumber::parse(text, QString::fromStdString(m_region)).value_or(number);
        }
        add({from, to - from, number});
    }

    void add(FoundNumber found)
    {
        found.length += takeExtension(found.position + found.length, found.number);
        bool const glued = isGluedBefore(m_whole, found.position) && !followsNumber(found.position);
        if (!glued && !isGluedAfter(m_whole, found.position + found.length)) {
            m_found.push_back(std::move(found));
        }
    }

    /// Whether only a slash separates \a place from the number in front: "06 1234567/333 1234567".
    [[nodiscard]] bool followsNumber(qsizetype place) const
    {
        return !m_found.isEmpty() && end() == place - 1 && m_whole[place - 1] == u'/';
    }

    /// Gives \a number the extension that follows it in the text.
    /// \return its length, with what is between the two
    qsizetype takeExtension(qsizetype place, PhoneNumber& number) const
    {
        qsizetype label = place;
        while (label < m_whole.size() && label < place + 3 && QStringView(u" ,(").contains(m_whole[label])) {
            ++label;
        }
        QStringView const rest = m_whole.sliced(label);
        qsizetype const length = extensionLength(rest);
        if (length == 0) {
            return 0;
        }
        NumberFields::setExtension(number, digitsOf(rest.first(length)));
        bool const bracket =
            label > place && m_whole[label - 1] == u'(' && rest.sliced(length).startsWith(u')');
        return label + length - place + (bracket ? 1 : 0);
    }

    QStringView m_whole;
    std::string const& m_region;
    QList<FoundNumber>& m_found;
};

/// Cuts the text into pieces that may hold numbers, and searches those that have digits enough.
class TextSearch
{
public:
    TextSearch(QStringView text, std::string const& region)
        : m_text(text)
        , m_search(text, region, m_found)
    {
    }

    QList<FoundNumber> run()
    {
        for (qsizetype place = 0; place < m_text.size();) {
            Seen const seen = seenAt(m_text, place);
            if (!isInsideNumber(seen.character)) {
                searchPiece();
            } else {
                add(seen, place);
            }
            // The digits of an extension are no part of another number.
            place = std::max(place + seen.units, m_search.end());
        }
        searchPiece();
        return m_found;
    }

private:
    void add(Seen const& seen, qsizetype place)
    {
        if (seen.character == 0) {
            return;
        }
        if (seen.character == U' ') {
            endWord();
        }
        bool const searchable = m_piece.text.size() <= longestNumberText;
        if (searchable && (!m_piece.text.isEmpty() || seen.character != U' ')) {
            m_piece.add(seen.character, place);
            m_digits += isDigit(seen.character) ? 1 : 0;
        }
    }

    /// Keeps a piece short: a new one begins at a blank, where a sentence may have ended or the piece is long
    /// enough.
    void endWord()
    {
        constexpr qsizetype enough = 60;
        bool const sentence = m_digits >= fewestDigits && m_piece.text.endsWith(u'.');
        if (sentence || m_piece.text.size() > enough) {
            searchPiece();
        }
    }

    void searchPiece()
    {
        if (m_digits >= fewestDigits && m_piece.text.size() <= longestNumberText) {
            m_search.search(m_piece);
        }
        m_piece = {};
        m_digits = 0;
    }

    QStringView m_text;
    QList<FoundNumber> m_found;
    PieceSearch m_search;
    Piece m_piece;
    qsizetype m_digits = 0;
};

} // namespace

QList<FoundNumber> findPhoneNumbers(QString const& text, QString const& region)
{
    return TextSearch(text, regionKey(region)).run();
}

} // namespace Softphone
