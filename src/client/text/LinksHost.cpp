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

bool isKnownDomain(QByteArray const& label)
{
    constexpr int type = PSL_TYPE_ICANN | PSL_TYPE_NO_STAR_RULE;
    return publicSuffixes() != nullptr &&
           psl_is_public_suffix2(publicSuffixes(), label.constData(), type) != 0;
}

bool isAscii(QStringView text)
{
    return std::ranges::all_of(text, [](QChar c) { return c.unicode() < 0x80; });
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
    for (QStringView const label : host.tokenize(u'.')) {
        if (!condition(label)) {
            return false;
        }
    }
    return true;
}

bool isIpv4(QStringView host)
{
    return host.count(u'.') == 3 && allLabels(host, isOctet);
}

} // namespace

bool isHostCharacterOfOtherScript(char32_t c)
{
    constexpr char32_t nonJoiner = 0x200c;
    constexpr char32_t joiner = 0x200d;
    return QChar::isLetterOrNumber(c) || QChar::isMark(c) || c == nonJoiner || c == joiner;
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
    constexpr QStringView outside = u".-_\u200c\u200d";
    while (end > begin && outside.contains(text[end - 1])) {
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
    if (!host.contains(u'.') || host.contains(u'_') || !isHost(host)) {
        return false;
    }
    QStringView const domain = lastLabel(host);
    return isAscii(domain) ? isKnownDomain(domain.toLatin1().toLower())
                           : isKnownDomain(QUrl::toAce(domain.toString()));
}

} // namespace Softphone::Addresses
