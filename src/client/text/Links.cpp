#include "Links.h"

#include "LinksHost_p.h"
#include "LinksScanner_p.h"

#include <QStringBuilder>
#include <algorithm>
#include <client/PhoneNumber.h>
#include <utility>

namespace Softphone {

using namespace Addresses;

namespace {

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
            links.push_back({{found.position, end}, LinkKind::Phone, {}, phoneAddress(found.number)});
        }
    }
    std::ranges::sort(links, {}, [](FoundLink const& link) { return link.place.begin; });
}

} // namespace

QList<FoundLink> Addresses::searchLinks(QString const& text, LinkRules const& rules)
{
    LinksScanner scanner(text, rules);
    scanner.run();
    if (!rules.phoneNumbers || !scanner.mayHoldNumber() || !LinksScanner::isAllowed(rules, u"tel")) {
        return std::move(scanner.links());
    }
    QList<Place> const taken = takenPlaces(scanner);
    QList<FoundLink> links = std::move(scanner.links());
    addNumbersBetween(links, text, taken, rules.region);
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
        auto const [begin, end] = found.place;
        QStringView const written = QStringView(text).sliced(begin, end - begin);
        QUrl const target(found.address.isNull() ? found.scheme % written : found.address);
        links.push_back({begin, end - begin, found.kind, target});
    }
    return links;
}

} // namespace Softphone
