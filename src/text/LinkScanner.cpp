#include "LinkScanner_p.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace {

using End = std::optional<qsizetype>;

constexpr qsizetype shortestPhoneNumber = 9;

enum CharacterClass : std::uint8_t {
    Letter = 1,
    Digit = 2,
    Underscore = 4,
    Hyphen = 8,
    Dot = 16,
    Plus = 32,
    Space = 64,
    Tone = 128, // what may follow the digits of a phone number

    Word = Letter | Digit | Underscore,
    HostLabel = Letter | Digit | Hyphen,
    Mail = Word | Hyphen | Dot | Plus,
};

constexpr std::array<std::uint8_t, 128> makeClasses()
{
    std::array<std::uint8_t, 128> classes{};
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
    return classes;
}

constexpr std::array<std::uint8_t, 128> classes = makeClasses();

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

/// The next white space at or behind \a begin, or the end of the text.
qsizetype endOfNonBlanks(QStringView text, qsizetype begin)
{
    auto const end =
        std::find_if(text.begin() + begin, text.end(), [](QChar c) { return classOf(c) == Space; });
    return end - text.begin();
}

bool isWordBoundary(QStringView text, qsizetype position)
{
    return ((classAt(text, position - 1) & Word) != 0) != ((classAt(text, position) & Word) != 0);
}

/// \a hostEnd moved behind the path or port that may follow a host name.
qsizetype withPath(QStringView text, qsizetype hostEnd)
{
    bool const hasPath = isAt(text, hostEnd, u'/') || isAt(text, hostEnd, u':');
    return hasPath ? endOfNonBlanks(text, hostEnd) : hostEnd;
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
    while (m_position < m_text.size()) {
        if (m_position >= m_runEnd) {
            if ((classOf(m_text[m_position]) & Mail) == 0) {
                ++m_position;
                continue;
            }
            readRun(m_position);
        }
        if (!m_runMayHoldLink) {
            m_position = m_runEnd;
            continue;
        }
        if (End const end = endOfLinkAt(m_position)) {
            Link const link{m_position, *end};
            m_position = *end;
            return link;
        }
        ++m_position;
    }
    return std::nullopt;
}

/// Reads the run of e-mail characters at \a begin. Most runs are words of the language, in which no link can
/// start: they hold no dot and no long row of digits, and neither '@' nor "://" follows them.
void LinkScanner::readRun(qsizetype begin)
{
    unsigned seen = 0;
    qsizetype end = begin;
    for (; end < m_text.size(); ++end) {
        unsigned const here = classOf(m_text[end]);
        if ((here & Mail) == 0) {
            break;
        }
        seen |= here;
    }
    m_runEnd = end;
    bool const isMail = isAt(m_text, end, u'@');
    m_mailHostEnd = isMail ? m_mailHosts.endOf(end + 1) : std::nullopt;
    bool const mayHoldNumber = (seen & Digit) != 0 && end - begin >= shortestPhoneNumber;
    bool const mayEndInScheme = isAt(m_text, end, u':') && isAt(m_text, end + 1, u'/');
    m_runMayHoldLink = m_mailHostEnd || (seen & Dot) != 0 || mayHoldNumber || mayEndInScheme;
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

LinkScanner::End LinkScanner::endOfUrlAt(qsizetype begin) const
{
    static constexpr std::u16string_view schemes[] = {u"http://", u"https://", u"smb://",   u"ftp://",
                                                      u"file://", u"HTTP://",  u"HTTPS://", u"SMB://",
                                                      u"FTP://",  u"FILE://"};
    QStringView const rest = m_text.sliced(begin);
    for (std::u16string_view const scheme : schemes) {
        if (rest.startsWith(scheme)) {
            qsizetype const body = begin + static_cast<qsizetype>(scheme.size());
            qsizetype const end = endOfNonBlanks(m_text, body);
            return end > body ? End(end) : std::nullopt;
        }
    }
    return std::nullopt;
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
    return isAt(m_text, *end, u'/') ? endOfNonBlanks(m_text, *end) : *end;
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
