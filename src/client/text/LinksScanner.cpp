#include "LinksScanner_p.h"

#include "LinksHost_p.h"
#include "LinksSchemes_p.h"
#include "UnitSearch_p.h"

#include <QHostAddress>
#include <QStringBuilder>
#include <algorithm>
#include <array>
#include <client/PhoneNumber.h>
#include <utility>

namespace Softphone::Addresses {

namespace {

/// What a scheme is made of in running text, where a dot in front of one ends a sentence.
constexpr AsciiSet schemeCharacters = asciiAlnum | AsciiSet("+-");

/// What may stand in front of the '@' of an e-mail address, without the signs that people set around one.
constexpr AsciiSet asciiMailboxCharacters = asciiHostCharacters | AsciiSet("+&'*=%#$^~");

/// What may stand in front of the '@' of any other address.
constexpr AsciiSet asciiUserCharacters = asciiHostCharacters | AsciiSet("+&'*=%$~!,;");

constexpr AsciiSet numberCharacters = asciiAlnum | AsciiSet("+-.()*#;=,%");

/// Some scripts have their digits outside the first plane.
bool mayBeDigit(QChar c)
{
    return c.unicode() < 0x80 ? c >= u'0' && c <= u'9' : c.isDigit() || c.isSurrogate();
}

/// Where the next sign of an address stands in \a text, from \a from on.
qsizetype nextSign(QStringView text, qsizetype from)
{
    auto const sign = std::find_if(text.begin() + from, text.end(), [](QChar c) {
        return c == u'.' || c == u':' || c == u'@' || mayBeDigit(c);
    });
    return sign - text.begin();
}

bool isMailboxCharacter(char32_t c)
{
    return c < 0x80 ? asciiMailboxCharacters.contains(c) : isHostCharacterOfOtherScript(c);
}

bool isUserCharacter(char32_t c)
{
    return c < 0x80 ? asciiUserCharacters.contains(c) : isHostCharacterOfOtherScript(c);
}

LinkKind kindOf(QStringView scheme)
{
    struct SchemeKind
    {
        char const* name;
        LinkKind kind;
    };
    constexpr std::array kinds = {
        SchemeKind{"https", LinkKind::Web},    SchemeKind{"http", LinkKind::Web},
        SchemeKind{"mailto", LinkKind::Email}, SchemeKind{"tel", LinkKind::Phone},
        SchemeKind{"sip", LinkKind::Sip},      SchemeKind{"sips", LinkKind::Sip},
    };
    auto const found = std::ranges::find_if(kinds, [scheme](SchemeKind const& known) {
        return scheme.compare(QLatin1String(known.name), Qt::CaseInsensitive) == 0;
    });
    return found == kinds.end() ? LinkKind::Other : found->kind;
}

/// How many units of \a host are words of a script that sets no blanks, in front of "www.".
qsizetype gluedWords(QStringView host)
{
    auto const isGlued = [](QChar before, QChar first) {
        return before.unicode() >= 0x80 && (first == u'w' || first == u'W');
    };
    auto const glued = std::ranges::adjacent_find(host, isGlued);
    qsizetype const words = glued == host.end() ? 0 : glued + 1 - host.begin();
    return host.sliced(words).startsWith(u"www.", Qt::CaseInsensitive) ? words : 0;
}

/// Whether \a place of \a text surely holds no name of another script, neither as it is written nor in its
/// form in ASCII, which begins with "xn--".
bool isPlain(QStringView text, Place place)
{
    auto const isOther = [](Units c, Units next) {
        return (c > eightOf(0x7f)) | ((c == eightOf(u'-')) & (next == eightOf(u'-')));
    };
    return findUnit(text, place.begin, place.end, isOther) == place.end;
}

/// \a address in ASCII, since its host has been read; empty if no program opens it. What is ASCII stays as it
/// stands, so that it means the same wherever it is read again. Names of other scripts have rules of their
/// own.
QString inAscii(QString const& address)
{
    if (isPlain(address, {0, address.size()})) {
        return address;
    }
    QUrl const url(address);
    return url.isValid() && isAscii(address) ? address : url.toString(QUrl::FullyEncoded);
}

std::optional<FoundLink> asLink(Place place, LinkKind kind, QString const& address)
{
    QString const target = inAscii(address);
    return target.isEmpty() ? std::nullopt : std::optional<FoundLink>({place, kind, {}, target});
}

} // namespace

QString phoneAddress(PhoneNumber const& number)
{
    QString const extension = number.extension();
    QString const parameter = extension.isEmpty() ? QString() : QStringLiteral(";ext=") + extension;
    return QStringLiteral("tel:") + number.e164() + parameter;
}

LinksScanner::LinksScanner(QStringView text, LinkRules const& rules)
    : m_text(text)
    , m_rules(rules)
    , m_tail(text)
{
}

bool LinksScanner::isAllowed(LinkRules const& rules, QStringView scheme)
{
    return rules.schemes.contains(scheme, Qt::CaseInsensitive);
}

void LinksScanner::run()
{
    for (qsizetype place = nextSign(m_text, 0); place < m_text.size();
         place = nextSign(m_text, std::max(place + 1, m_floor))) {
        switch (m_text[place].unicode()) {
        case u':':
            atColon(place);
            break;
        case u'@':
            atSign(place);
            break;
        case u'.':
            atDot(place);
            break;
        default:
            atDigit(place);
            break;
        }
    }
}

void LinksScanner::atDigit(qsizetype digit)
{
    if (digit < m_digitsEnd) {
        return;
    }
    constexpr int fewestDigits = 6;
    auto const begin = m_text.begin() + digit;
    auto const end = std::find_if(begin, m_text.end(), isAsciiLetter);
    m_digitsEnd = end - m_text.begin();
    m_mayHoldNumber = m_mayHoldNumber || std::count_if(begin, end, mayBeDigit) >= fewestDigits;
}

QChar LinksScanner::at(qsizetype place) const
{
    return place >= 0 && place < m_text.size() ? m_text[place] : QChar(u' ');
}

bool LinksScanner::startsAt(qsizetype place, QStringView what) const
{
    return m_text.sliced(place).startsWith(what);
}

void LinksScanner::take(FoundLink link)
{
    m_floor = link.place.end;
    m_links.push_back(std::move(link));
}

/// Up to the next blank everything may belong to the address.
void LinksScanner::refuse(qsizetype begin)
{
    auto const blank =
        std::find_if(m_text.begin() + begin, m_text.end(), [](QChar c) { return c.isSpace(); });
    m_floor = blank - m_text.begin();
    m_refused += Place{begin, m_floor};
}

/// The word that a scheme may be, without list signs in front.
QStringView LinksScanner::schemeBefore(qsizetype colon) const
{
    qsizetype begin = colon;
    while (begin > m_floor && schemeCharacters.contains(m_text[begin - 1])) {
        --begin;
    }
    QStringView const word = m_text.sliced(begin, colon - begin);
    auto const letter = std::ranges::find_if(word, isAsciiLetter);
    return word.sliced(letter - word.begin());
}

void LinksScanner::atColon(qsizetype colon)
{
    QStringView const scheme = schemeBefore(colon);
    if (scheme.isEmpty() || at(colon + 1).isSpace()) {
        return;
    }
    Place const address{colon - scheme.size(), colon + 1};
    bool const slashes = startsAt(colon + 1, u"//");
    if (!isAllowed(m_rules, scheme)) {
        if (slashes || isKnownScheme(scheme)) {
            refuse(address.begin);
        }
        return;
    }
    std::optional<FoundLink> link = readScheme(scheme, address);
    if (link) {
        take(*std::move(link));
    } else if (slashes || kindOf(scheme) == LinkKind::Other) {
        refuse(address.begin);
    }
}

/// \param address  from the scheme up to and with its colon
std::optional<FoundLink> LinksScanner::readScheme(QStringView scheme, Place address)
{
    switch (kindOf(scheme)) {
    case LinkKind::Web:
        return readWeb(address);
    case LinkKind::Email:
        return readMail(address);
    case LinkKind::Phone:
        return readNumber(address);
    case LinkKind::Sip:
        return readSip(address);
    case LinkKind::Other:
        break;
    }
    return readOther(address);
}

std::optional<FoundLink> LinksScanner::asWritten(Place place, LinkKind kind, QLatin1String scheme) const
{
    QStringView const written = m_text.sliced(place.begin, place.end - place.begin);
    return isPlain(m_text, place) ? std::optional<FoundLink>({place, kind, scheme, {}})
                                  : asLink(place, kind, scheme % written);
}

std::optional<FoundLink> LinksScanner::readWeb(Place address)
{
    if (!startsAt(address.end, u"//")) {
        return std::nullopt;
    }
    std::optional<qsizetype> end = hostEnd(afterUserName(address.end + 2));
    end = end ? portEnd(*end) : end;
    if (!end || !endsHost(*end)) {
        return std::nullopt;
    }
    bool const hasTail = AsciiSet("/?#").contains(at(*end));
    address.end = hasTail ? m_tail.end(address.begin, *end) : *end;
    return asWritten(address, LinkKind::Web);
}

/// A list of mailboxes, and what the message begins with.
std::optional<FoundLink> LinksScanner::readMail(Place address)
{
    std::optional<qsizetype> mailbox = mailboxEnd(address.end);
    if (!mailbox) {
        return std::nullopt;
    }
    while (mailbox) {
        address.end = *mailbox;
        mailbox = at(address.end) == u',' ? mailboxEnd(address.end + 1) : std::nullopt;
    }
    if (at(address.end) == u'?') {
        address.end = m_tail.end(address.begin, address.end);
    }
    return asWritten(address, LinkKind::Email);
}

std::optional<FoundLink> LinksScanner::readSip(Place address)
{
    qsizetype const host = afterUserName(address.end);
    std::optional<qsizetype> end = hostEnd(host);
    end = end ? portEnd(*end) : end;
    // Without a user, a word is rather what follows the label "SIP:".
    bool const isWord =
        end && host == address.end && !m_text.sliced(host, *end - host).contains(u'.') && at(host) != u'[';
    if (!end || isWord || !endsHost(*end)) {
        return std::nullopt;
    }
    bool const hasTail = AsciiSet(";?").contains(at(*end));
    address.end = hasTail ? m_tail.end(address.begin, *end) : *end;
    return asWritten(address, LinkKind::Sip);
}

/// A number that ends with its address: "Tel:06 1234567" is a label and a number of several groups. Codes
/// that the exchange acts on are none, as a click must not set a diversion.
std::optional<FoundLink> LinksScanner::readNumber(Place address) const
{
    qsizetype end = address.end;
    qsizetype depth = 0;
    for (; numberCharacters.contains(at(end)); ++end) {
        depth += at(end) == u'(' ? 1 : at(end) == u')' ? -1 : 0;
        if (depth < 0) {
            break;
        }
    }
    QChar const next = at(end) == u' ' ? at(end + 1) : QChar();
    if (at(end) == u'@' || isHostCharacter(at(end).unicode()) || next == u'(' || next.isDigit()) {
        return std::nullopt;
    }
    while (end > address.end && AsciiSet(".,;(-").contains(at(end - 1))) {
        --end;
    }
    QString const text = m_text.sliced(address.begin, end - address.begin).toString();
    std::optional<PhoneNumber> const number = PhoneNumber::parse(text, m_rules.region);
    return number
               ? std::optional<FoundLink>({{address.begin, end}, LinkKind::Phone, {}, phoneAddress(*number)})
               : std::nullopt;
}

std::optional<FoundLink> LinksScanner::readOther(Place address)
{
    qsizetype const from = startsAt(address.end, u"//") ? address.end + 2 : address.end;
    address.end = m_tail.end(address.begin, from);
    QString const written = m_text.sliced(address.begin, address.end - address.begin).toString();
    bool const opens = address.end > from && QUrl(written).isValid();
    return opens ? asWritten(address, LinkKind::Other) : std::nullopt;
}

/// Where the host begins that a user name and '@' may stand in front of; a password may follow the name.
qsizetype LinksScanner::afterUserName(qsizetype place) const
{
    bool password = false;
    for (qsizetype i = place; i < m_text.size();) {
        char32_t const c = codePointAt(m_text, i);
        if (c == U'@') {
            return i > place ? i + 1 : place;
        }
        if (!isUserCharacter(c) && (c != U':' || std::exchange(password, true))) {
            break;
        }
        i += units(c);
    }
    return place;
}

std::optional<qsizetype> LinksScanner::hostEnd(qsizetype place) const
{
    if (at(place) == u'[') {
        constexpr qsizetype longest = 48;
        auto const isInside = [](QChar c) { return c.isDigit() || AsciiSet("abcdefABCDEF:.").contains(c); };
        QStringView const rest = m_text.sliced(place + 1).first(std::min(longest, m_text.size() - place - 1));
        qsizetype const length = std::ranges::find_if_not(rest, isInside) - rest.begin();
        bool const closed = length < rest.size() && rest[length] == u']';
        QHostAddress const ip(rest.first(length).toString());
        bool const isIpv6 = closed && ip.protocol() == QAbstractSocket::IPv6Protocol;
        return isIpv6 ? std::optional(place + length + 2) : std::nullopt;
    }
    qsizetype const run = hostRunEnd(m_text, place);
    qsizetype const end = withoutHostPunctuation(m_text, place, run);
    // The dot of a complete name, in front of its path.
    bool const complete = run == end + 1 && at(end) == u'.' && at(run) == u'/';
    return isHost(m_text.sliced(place, end - place)) ? std::optional(complete ? run : end) : std::nullopt;
}

/// The end of the port at \a place, if there is one; nothing where it is none that there can be.
std::optional<qsizetype> LinksScanner::portEnd(qsizetype place) const
{
    auto const isDigit = [](QChar c) { return c >= u'0' && c <= u'9'; };
    if (at(place) != u':' || !isDigit(at(place + 1))) {
        return place;
    }
    constexpr qsizetype mostDigits = 5;
    constexpr uint greatest = 65535;
    qsizetype end = place + 1;
    while (isDigit(at(end)) && end <= place + mostDigits) {
        ++end;
    }
    bool const isPort = m_text.sliced(place + 1, end - place - 1).toUInt() <= greatest;
    return isPort && !asciiAlnum.contains(at(end)) ? std::optional(end) : std::nullopt;
}

/// Whether a host, with its port, may end at \a place, so that it is not the half of another one.
bool LinksScanner::endsHost(qsizetype place) const
{
    if (place >= m_text.size()) {
        return true;
    }
    char32_t const next = codePointAt(m_text, place);
    bool const symbol = next >= 0x80 && QChar::isSymbol(next) && at(place + units(next)) == u'.';
    bool const port = next == U':' && at(place + 1).isDigit();
    return !symbol && !port && next != U'@' && next != U'%' && next != U'\\';
}

std::optional<qsizetype> LinksScanner::mailboxEnd(qsizetype place) const
{
    qsizetype sign = place;
    while (sign < m_text.size() && isMailboxCharacter(codePointAt(m_text, sign))) {
        sign += units(codePointAt(m_text, sign));
    }
    if (sign == place || at(sign) != u'@') {
        return std::nullopt;
    }
    std::optional<qsizetype> const end = hostEnd(sign + 1);
    return end && endsHost(*end) ? end : std::nullopt;
}

/// '%' and '#' are letters of an e-mail address, not of the URL.
std::optional<FoundLink> LinksScanner::asMailbox(Place place) const
{
    constexpr QLatin1String scheme("mailto:");
    QStringView const written = m_text.sliced(place.begin, place.end - place.begin);
    if (!written.contains(u'%') && !written.contains(u'#')) {
        return asWritten(place, LinkKind::Email, scheme);
    }
    QString address = scheme % written;
    address.replace(u'%', QLatin1String("%25")).replace(u'#', QLatin1String("%23"));
    return asLink(place, LinkKind::Email, address);
}

void LinksScanner::atSign(qsizetype sign)
{
    qsizetype begin = sign;
    while (begin > m_floor) {
        char32_t const c = codePointBefore(m_text, begin);
        if (!isMailboxCharacter(c) || (c == U'.' && at(begin) == u'.')) {
            break;
        }
        begin -= units(c);
    }
    while (begin < sign && at(begin) != u'_' && !QChar::isLetterOrNumber(codePointAt(m_text, begin))) {
        begin += units(codePointAt(m_text, begin));
    }
    bool const isUserName = at(begin - 1) == u'@' || (at(begin - 1) == u'/' && at(begin - 2) == u'/');
    if (begin >= sign || isUserName) {
        return;
    }
    qsizetype const run = hostRunEnd(m_text, sign + 1);
    qsizetype const end = withoutHostPunctuation(m_text, sign + 1, run);
    if (!isPublicHost(m_text.sliced(sign + 1, end - sign - 1)) || !endsHost(end)) {
        return;
    }
    std::optional<FoundLink> link = asMailbox({begin, end});
    if (link && isAllowed(m_rules, u"mailto")) {
        take(*std::move(link));
    }
}

void LinksScanner::atDot(qsizetype dot)
{
    if (!m_rules.bareHosts || dot < m_hostEnd || at(dot + 1).isSpace() || at(dot + 1) == u'.') {
        return;
    }
    qsizetype begin = hostRunBegin(m_text, dot, m_floor);
    m_hostEnd = hostRunEnd(m_text, dot);
    if (AsciiSet("@/\\%~").contains(at(begin - 1))) {
        return;
    }
    qsizetype const end = withoutHostPunctuation(m_text, begin, m_hostEnd);
    while (begin < end && AsciiSet("-._").contains(at(begin))) {
        ++begin;
    }
    begin += gluedWords(m_text.sliced(begin, end - begin));
    if (std::optional<FoundLink> link = readBareHost({begin, end})) {
        take(*std::move(link));
    }
}

std::optional<FoundLink> LinksScanner::readBareHost(Place place)
{
    QStringView const host = m_text.sliced(place.begin, place.end - place.begin);
    // Looking for the domain takes the longest.
    if (startsAt(place.end, u"://") || isInMailbox(place.end) || !isPublicHost(host)) {
        return std::nullopt;
    }
    std::optional<qsizetype> const end = portEnd(place.end);
    if (!end || !endsHost(*end)) {
        return std::nullopt;
    }
    place.end = AsciiSet("/?#").contains(at(*end)) ? m_tail.end(place.begin, *end) : *end;
    if (place.end == place.begin + host.size() && isMissingBlank(host)) {
        return std::nullopt;
    }
    return isAllowed(m_rules, u"https") ? asWritten(place, LinkKind::Web, QLatin1String("https://"))
                                        : std::nullopt;
}

/// "That.is" and "ok.It was": two sentences, and no blank between them.
bool LinksScanner::isMissingBlank(QStringView host) const
{
    qsizetype const dot = host.indexOf(u'.');
    bool const opensSentence = host[dot + 1].isUpper() && host.size() > dot + 2 && host[dot + 2].isLower();
    return host.lastIndexOf(u'.') == dot && (host[0].isUpper() || opensSentence);
}

/// Whether what begins at \a place goes on to the '@' of an e-mail address.
bool LinksScanner::isInMailbox(qsizetype place)
{
    m_mailboxEnd = std::max(m_mailboxEnd, place);
    while (m_mailboxEnd < m_text.size() && isMailboxCharacter(codePointAt(m_text, m_mailboxEnd))) {
        m_mailboxEnd += units(codePointAt(m_text, m_mailboxEnd));
    }
    return at(m_mailboxEnd) == u'@';
}

} // namespace Softphone::Addresses
