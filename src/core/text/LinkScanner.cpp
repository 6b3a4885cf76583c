#include "LinkScanner_p.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>
#include <utility>

namespace {

using End = std::optional<qsizetype>;

constexpr qsizetype shortestPhoneNumber = 9;

enum CharacterClass : std::uint16_t {
    Letter = 1,
    Digit = 2,
    Underscore = 4,
    Hyphen = 8,
    Dot = 16,
    Plus = 32,
    Space = 64,
    Tone = 128,     // what may follow the digits of a phone number
    MailSign = 256, // what ends a run: the '@' of a mail address
    Colon = 512,    // or the colon after a scheme

    Word = Letter | Digit | Underscore,
    HostLabel = Letter | Digit | Hyphen,
    Mail = Word | Hyphen | Dot | Plus,
    Sign = Digit | Dot | MailSign | Colon,
};

constexpr std::array<std::uint16_t, 128> makeClasses()
{
    std::array<std::uint16_t, 128> classes{};
    auto const assign = [&classes](std::u16string_view characters, CharacterClass value) {
        for (char16_t const c : characters) {
            classes[c] = value;
        }
    };
    assign(u"abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ", Letter);
    assign(u"0123456789", Digit);
    assign(u"_", Underscore);
    assign(u"-", Hyphen);
    assign(u".", Dot);
    assign(u"+", Plus);
    assign(u" \t\n\v\f\r", Space);
    assign(u"#*,", Tone);
    assign(u"@", MailSign);
    assign(u":", Colon);
    return classes;
}

constexpr std::array<std::uint16_t, 128> classes = makeClasses();

unsigned classOf(QChar c)
{
    return c.unicode() < classes.size() ? classes[c.unicode()] : 0U;
}

/// The class of the character at \a position, 0 outside the text.
unsigned classAt(QStringView text, qsizetype position)
{
    return position >= 0 && position < text.size() ? classOf(text[position]) : 0U;
}

bool isAt(QStringView text, qsizetype position, char16_t c)
{
    return position < text.size() && text[position] == c;
}

/// The end of the run of characters of the classes \a wanted that starts at \a begin.
qsizetype endOfRun(QStringView text, qsizetype begin, unsigned wanted)
{
    auto const end = std::find_if(text.begin() + begin, text.end(),
                                  [wanted](QChar c) { return (classOf(c) & wanted) == 0; });
    return end - text.begin();
}

/// The next character of the classes \a wanted at or after \a begin, or the end of the text.
qsizetype nextOf(QStringView text, qsizetype begin, unsigned wanted)
{
    auto const found = std::find_if(text.begin() + begin, text.end(),
                                    [wanted](QChar c) { return (classOf(c) & wanted) != 0; });
    return found - text.begin();
}

bool isWordBoundary(QStringView text, qsizetype position)
{
    return ((classAt(text, position - 1) & Word) != 0) != ((classAt(text, position) & Word) != 0);
}

/// \a hostEnd moved past the path or port that may follow a host name.
qsizetype withPath(QStringView text, qsizetype hostEnd)
{
    bool const hasPath = isAt(text, hostEnd, u'/') || isAt(text, hostEnd, u':');
    return hasPath ? nextOf(text, hostEnd, Space) : hostEnd;
}

/// Whether no ASCII letter of \a text is a small one.
bool isUpperCase(QStringView text)
{
    return std::ranges::none_of(text, [](QChar c) { return c >= u'a' && c <= u'z'; });
}

/// The end of the longest octet, 0 to 255 without leading zeros, that starts at \a begin.
End endOfOctet(QStringView text, qsizetype begin)
{
    int value = 0;
    qsizetype end = begin;
    while (end < begin + 3 && (classAt(text, end) & Digit) != 0) {
        int const longer = value * 10 + (text[end].unicode() - u'0');
        bool const leadingZero = end > begin && value == 0;
        if (leadingZero || longer > 255) {
            break;
        }
        value = longer;
        ++end;
    }
    return end > begin ? End(end) : std::nullopt;
}

} // namespace

std::optional<LinkScanner::Link> LinkScanner::next()
{
    while (m_position < m_runEnd || findRun()) {
        if (End const end = endOfLinkAt(m_position)) {
            return Link{std::exchange(m_position, *end), *end};
        }
        ++m_position;
    }
    return std::nullopt;
}

/// Moves to the next run in which a link may start; false when there is none.
bool LinkScanner::findRun()
{
    for (qsizetype sign = nextOf(m_text, m_position, Sign); sign < m_text.size();) {
        qsizetype const after = classOf(m_text[sign]) == Digit ? endOfRun(m_text, sign, Digit) : sign + 1;
        if (announcesLink(sign, after)) {
            readRun(sign);
            if (m_position < m_runEnd) {
                return true;
            }
        }
        sign = nextOf(m_text, after, Sign);
    }
    m_position = m_text.size();
    return false;
}

/// Whether the sign, or the digits, from \a sign to \a after can be part of a link or end the run that opens
/// one.
bool LinkScanner::announcesLink(qsizetype sign, qsizetype after) const
{
    switch (classOf(m_text[sign])) {
    case Digit:
        return after - sign >= shortestPhoneNumber;
    case Dot:
        return (classAt(m_text, after) & HostLabel) != 0;
    case Colon:
        return isAt(m_text, after, u'/');
    default:
        return true;
    }
}

/// Makes the run that holds \a sign, or ends there, the one to be scanned, as far as it is not scanned yet.
void LinkScanner::readRun(qsizetype sign)
{
    qsizetype begin = sign;
    while (begin > m_position && (classOf(m_text[begin - 1]) & Mail) != 0) {
        --begin;
    }
    m_position = begin;
    m_runEnd = endOfRun(m_text, sign, Mail);
    bool const isMail = begin < m_runEnd && isAt(m_text, m_runEnd, u'@');
    m_mailHostEnd = isMail ? m_mailHosts.endOf(m_runEnd + 1) : std::nullopt;
    m_schemeEndFollows = m_text.sliced(m_runEnd).startsWith(u"://");
}

/// The alternatives of the expression in their order. The one for "www." hosts needs no code: wherever it
/// matches, the one for hosts of any name ends at the same place.
LinkScanner::End LinkScanner::endOfLinkAt(qsizetype begin)
{
    if (isWordBoundary(m_text, begin)) {
        if (End const end = endOfBoundedLinkAt(begin)) {
            return end;
        }
    }
    if ((classOf(m_text[begin]) & (Digit | Plus)) == 0) {
        return std::nullopt;
    }
    if (End const end = endOfIpAddressAt(begin)) {
        return end;
    }
    return endOfPhoneNumberAt(begin);
}

LinkScanner::End LinkScanner::endOfBoundedLinkAt(qsizetype begin)
{
    if (m_mailHostEnd) {
        return withPath(m_text, *m_mailHostEnd);
    }
    if (End const hostEnd = m_hosts.endOf(begin)) {
        return withPath(m_text, *hostEnd);
    }
    return endOfUrlAt(begin);
}

/// A scheme consists of e-mail characters and its colon does not: it takes all that is left of the run.
LinkScanner::End LinkScanner::endOfUrlAt(qsizetype begin) const
{
    if (!m_schemeEndFollows) {
        return std::nullopt;
    }
    QStringView const name = m_text.sliced(begin, m_runEnd - begin);
    // Mixed case would be right by the standard, but is not what callers link.
    auto const isName = [name](QStringView scheme) {
        return name == scheme || (name.compare(scheme, Qt::CaseInsensitive) == 0 && isUpperCase(name));
    };
    if (std::ranges::none_of(schemes, isName)) {
        return std::nullopt;
    }
    qsizetype const body = m_runEnd + 3;
    qsizetype const end = nextOf(m_text, body, Space);
    return end > body ? End(end) : std::nullopt;
}

LinkScanner::End LinkScanner::endOfIpAddressAt(qsizetype begin) const
{
    qsizetype position = begin;
    for (int octet = 0; octet < 3; ++octet) {
        End const end = endOfOctet(m_text, position);
        if (!end || !isAt(m_text, *end, u'.')) {
            return std::nullopt;
        }
        position = *end + 1;
    }
    End end = endOfOctet(m_text, position);
    if (!end) {
        return std::nullopt;
    }
    if (isAt(m_text, *end, u':')) {
        qsizetype const portEnd = endOfRun(m_text, *end + 1, Digit);
        end = portEnd > *end + 1 ? portEnd : *end;
    }
    return isAt(m_text, *end, u'/') ? nextOf(m_text, *end, Space) : *end;
}

LinkScanner::End LinkScanner::endOfPhoneNumberAt(qsizetype begin) const
{
    qsizetype const digits = isAt(m_text, begin, u'+') ? begin + 1 : begin;
    for (qsizetype i = digits; i < digits + shortestPhoneNumber; ++i) {
        if ((classAt(m_text, i) & Digit) == 0) {
            return std::nullopt;
        }
    }
    return endOfRun(m_text, digits, Digit | Tone);
}

/// Labels cannot hold dots, so the labels of a host name are given by its first position. Of the labels that
/// follow one another, the last that begins with two letters closes the name; what its letters leave over is
/// no part of it.
LinkScanner::End LinkScanner::HostReader::endOf(qsizetype begin)
{
    if (begin > m_labelEnd) {
        readLabel(begin);
    }
    bool const isLabel = m_lastLetter >= begin && isAt(m_text, m_labelEnd, u'.');
    if (!isLabel) {
        return std::nullopt;
    }
    if (m_labelEnd > m_lastDot) {
        readChain(m_labelEnd);
    }
    return m_closingBegin > m_labelEnd ? End(m_closingEnd) : std::nullopt;
}

void LinkScanner::HostReader::readLabel(qsizetype begin)
{
    m_lastLetter = -1;
    m_labelEnd = begin;
    for (; m_labelEnd < m_text.size(); ++m_labelEnd) {
        unsigned const here = classOf(m_text[m_labelEnd]);
        if ((here & HostLabel) == 0) {
            return;
        }
        if (here == Letter) {
            m_lastLetter = m_labelEnd;
        }
    }
}

void LinkScanner::HostReader::readChain(qsizetype firstDot)
{
    qsizetype dot = firstDot;
    bool goesOn = true;
    while (goesOn) {
        m_lastDot = dot;
        qsizetype const begin = dot + 1;
        qsizetype const lettersEnd = endOfRun(m_text, begin, Letter);
        if (lettersEnd - begin >= 2) {
            m_closingBegin = begin;
            m_closingEnd = lettersEnd;
        }
        dot = endOfRun(m_text, lettersEnd, HostLabel);
        auto const isLetter = [](QChar c) { return classOf(c) == Letter; };
        goesOn =
            isAt(m_text, dot, u'.') && std::any_of(m_text.begin() + begin, m_text.begin() + dot, isLetter);
    }
}
