#include "LinksHost_p.h"

#include <QUrl>
#include <algorithm>
#include <libpsl.h>

namespace Softphone::Addresses {

namespace {

constexpr qsizetype longestHost = 253;
constexpr qsizetype longestLabel = 63;

constexpr bool isAsciiDigit(QChar c)
{
    return c >= u'0' && c <= u'9';
}

psl_ctx_t const* publicSuffixes()
{
    // A build of the library without the list has that of the system.
    static psl_ctx_t const* const list = psl_builtin() != nullptr ? psl_builtin() : psl_latest(nullptr);
    return list;
}

bool isListed(QStringView label)
{
    constexpr int type = PSL_TYPE_ICANN | PSL_TYPE_NO_STAR_RULE;
    QByteArray const name = isAscii(label) ? label.toLatin1().toLower() : QUrl::toAce(label.toString());
    return publicSuffixes() != nullptr &&
           psl_is_public_suffix2(publicSuffixes(), name.constData(), type) != 0;
}

/// Whether \a label, which is not empty, is a top level domain. Looking it up takes longer than all else that
/// an address needs, and most addresses of a chat are under the same domain.
bool isTopLevelDomain(QStringView label)
{
    thread_local QString last;
    if (label == last) {
        return true;
    }
    bool const listed = isListed(label);
    if (listed) {
        last = label.toString();
    }
    return listed;
}

bool isLabel(QStringView label)
{
    return !label.isEmpty() && label.size() <= longestLabel && !label.startsWith(u'-') &&
           !label.endsWith(u'-');
}

QStringView lastLabel(QStringView host)
{
    return host.sliced(host.lastIndexOf(u'.') + 1);
}

/// Whether programs take \a label, the last one of a host, for the end of an IPv4 address.
bool isNumeric(QStringView label)
{
    return label.startsWith(u"0x", Qt::CaseInsensitive) || std::ranges::all_of(label, isAsciiDigit);
}

bool isOctet(QStringView label)
{
    bool const canonical = label.size() == 1 || !label.startsWith(u'0');
    return canonical && label.size() <= 3 && std::ranges::all_of(label, isAsciiDigit) && label.toInt() <= 255;
}

template <typename Condition>
bool allLabels(QStringView host, Condition condition)
{
    auto begin = host.begin();
    for (;;) {
        auto const end = std::find(begin, host.end(), u'.');
        if (!condition(QStringView(begin, end))) {
            return false;
        }
        if (end == host.end()) {
            return true;
        }
        begin = end + 1;
    }
}

bool isIpv4(QStringView host)
{
    return host.count(u'.') == 3 && allLabels(host, isOctet);
}

} // namespace

bool isAscii(QStringView text)
{
    return std::ranges::all_of(text, [](QChar c) { return c.unicode() < 0x80; });
}

bool isHostCharacterOfOtherScript(char32_t c)
{
    return QChar::isLetterOrNumber(c) || QChar::isMark(c) || isJoiner(c);
}

qsizetype hostRunBegin(QStringView text, qsizetype place, qsizetype floor)
{
    while (place > floor) {
        char32_t const c = codePointBefore(text, place);
        bool const twoDots = c == U'.' && place < text.size() && text[place] == u'.';
        if (!isHostCharacter(c) || twoDots || place - units(c) < floor) {
            break;
        }
        place -= units(c);
    }
    return place;
}

qsizetype hostRunEnd(QStringView text, qsizetype place)
{
    qsizetype const begin = place;
    while (place < text.size()) {
        char32_t const c = codePointAt(text, place);
        bool const twoDots = c == U'.' && place > begin && text[place - 1] == u'.';
        if (!isHostCharacter(c) || twoDots) {
            break;
        }
        place += units(c);
    }
    return place;
}

qsizetype withoutHostPunctuation(QStringView text, qsizetype begin, qsizetype end)
{
    auto const isOutside = [](QChar c) { return AsciiSet(".-_").contains(c) || isJoiner(c.unicode()); };
    while (end > begin && isOutside(text[end - 1])) {
        --end;
    }
    return end;
}

bool isHost(QStringView host)
{
    bool const shape = !host.isEmpty() && host.size() <= longestHost && allLabels(host, isLabel);
    return shape && (!isNumeric(lastLabel(host)) || isIpv4(host));
}

bool isPublicHost(QStringView host)
{
    return host.contains(u'.') && !host.contains(u'_') && isHost(host) && isTopLevelDomain(lastLabel(host));
}

} // namespace Softphone::Addresses
