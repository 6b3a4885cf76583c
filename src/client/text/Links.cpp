#include "Links.h"

#include "LinksHost_p.h"
#include "LinksScanner_p.h"

#include <algorithm>
#include <client/PhoneNumber.h>
#include <utility>

namespace Softphone {

using namespace Addresses;

namespace {

/// Whether \a text has digits enough for a number. Finding out is a small part of looking for numbers, and
/// most texts have none.
bool mayHoldNumber(QStringView text)
{
    constexpr int fewestDigits = 6;
    // Some scripts have their digits outside the first plane.
    auto const mayBeDigit = [](QChar c) {
        return (c >= u'0' && c <= u'9') || (c >= u'\x80' && (c.isDigit() || c.isSurrogate()));
    };
    auto const isLetter = [](QChar c) { return isAsciiLetter(c.unicode()); };
    for (auto place = text.begin(); place != text.end();) {
        auto const first = std::find_if(place, text.end(), mayBeDigit);
        place = std::find_if(first, text.end(), isLetter);
        if (std::count_if(first, place, mayBeDigit) >= fewestDigits) {
            return true;
        }
    }
    return false;
}

/// Whether a number may stand between the places \a taken.
bool mayHoldNumber(QStringView text, QList<Place> const& taken)
{
    qsizetype free = 0;
    for (Place const& place : taken) {
        if (mayHoldNumber(text.sliced(free, place.begin - free))) {
            return true;
        }
        free = place.end;
    }
    return mayHoldNumber(text.sliced(free));
}

/// Where no telephone number can be: links and what must not become one, in their order.
QList<Place> takenPlaces(LinksScanner& scanner)
{
    QList<Place> taken = scanner.refused();
    for (FoundLink const& link : scanner.links()) {
        taken += link.place;
    }
    std::ranges::sort(taken, {}, &Place::begin);
    return taken;
}

void addNumbersBetween(QList<FoundLink>& links, QString const& text, QList<Place> const& taken,
                       QString const& region)
{
    auto place = taken.begin();
    for (FoundNumber const& found : findPhoneNumbers(text, region)) {
        qsizetype const end = found.position + found.length;
        place = std::find_if(place, taken.end(), [&found](Place const& p) { return p.end > found.position; });
        if (place == taken.end() || place->begin >= end) {
            links.push_back({{found.position, end}, LinkKind::Phone, phoneAddress(found.number)});
        }
    }
    std::ranges::sort(links, {}, [](FoundLink const& link) { return link.place.begin; });
}

} // namespace

QList<FoundLink> Addresses::searchLinks(QString const& text, LinkRules const& rules)
{
    LinksScanner scanner(text, rules);
    scanner.run();
    QList<Place> const taken = takenPlaces(scanner);
    QList<FoundLink> links = std::move(scanner.links());
    if (rules.phoneNumbers && mayHoldNumber(text, taken) && LinksScanner::isAllowed(rules, u"tel")) {
        addNumbersBetween(links, text, taken, rules.region);
    }
    return links;
}

QStringList const& usualLinkSchemes()
{
    static QStringList const schemes{QStringLiteral("http"),   QStringLiteral("https"),
                                     QStringLiteral("mailto"), QStringLiteral("tel"),
                                     QStringLiteral("sip"),    QStringLiteral("sips")};
    return schemes;
}

QList<Link> findLinks(QString const& text, LinkRules const& rules)
{
    QList<Link> links;
    for (FoundLink const& found : searchLinks(text, rules)) {
        Place const& place = found.place;
        links.push_back({place.begin, place.end - place.begin, found.kind, found.target()});
    }
    return links;
}

} // namespace Softphone
