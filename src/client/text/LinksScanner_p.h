#pragma once

// The one pass over a text that finds its addresses, all but telephone numbers without a scheme.

#include "Links.h"
#include "LinksTail_p.h"

#include <client/PhoneNumber.h>
#include <optional>

namespace Softphone::Addresses {

/// The `tel` address of \a number in its E.164 form, with its extension.
[[nodiscard]] QString phoneAddress(PhoneNumber const& number);

struct Place
{
    qsizetype begin;
    qsizetype end;
};

/// A link as it is found. Its target is made of it when somebody asks, which costs more than finding it.
struct FoundLink
{
    Place place;
    LinkKind kind;
    QLatin1String scheme; ///< with its colon, where none stands in the text
    QString address;      ///< in ASCII, as QUrl reads it; null for the scheme and what stands in the text
};

/// The links of \a text, with telephone numbers, in their order.
[[nodiscard]] QList<FoundLink> searchLinks(QString const& text, LinkRules const& rules);

/// Goes from one sign that an address has to the next: ':' after a scheme, '@', the dot of a host, or a
/// digit, and reads what stands around it. No sign, no work. What has become a link, or must not, is not
/// looked at again, and a run of characters that is no host is judged once.
class LinksScanner
{
public:
    LinksScanner(QStringView text, LinkRules const& rules);

    void run();

    QList<FoundLink>& links() { return m_links; }

    /// Whether digits enough for a telephone number stand together, perhaps with other signs between them.
    /// Finding out is a small part of looking for numbers, and most texts have none.
    bool mayHoldNumber() const { return m_mayHoldNumber; }

    /// Where addresses stand that are not allowed: no part of them may become a link.
    QList<Place> const& refused() const { return m_refused; }

    [[nodiscard]] static bool isAllowed(LinkRules const& rules, QStringView scheme);

private:
    void atColon(qsizetype colon);
    void atSign(qsizetype sign);
    void atDot(qsizetype dot);
    void atDigit(qsizetype digit);

    [[nodiscard]] QStringView schemeBefore(qsizetype colon) const;
    [[nodiscard]] std::optional<FoundLink> readScheme(QStringView scheme, Place address);
    [[nodiscard]] std::optional<FoundLink> asWritten(Place place, LinkKind kind,
                                                     QLatin1String scheme = {}) const;
    [[nodiscard]] std::optional<FoundLink> asMailbox(Place place) const;
    [[nodiscard]] std::optional<FoundLink> readWeb(Place address);
    [[nodiscard]] std::optional<FoundLink> readMail(Place address);
    [[nodiscard]] std::optional<FoundLink> readSip(Place address);
    [[nodiscard]] std::optional<FoundLink> readNumber(Place address) const;
    [[nodiscard]] std::optional<FoundLink> readOther(Place address);
    [[nodiscard]] std::optional<FoundLink> readBareHost(Place host);

    [[nodiscard]] qsizetype afterUserName(qsizetype place) const;
    [[nodiscard]] std::optional<qsizetype> hostEnd(qsizetype place) const;
    [[nodiscard]] std::optional<qsizetype> portEnd(qsizetype place) const;
    [[nodiscard]] std::optional<qsizetype> mailboxEnd(qsizetype place) const;
    [[nodiscard]] bool endsHost(qsizetype place) const;
    [[nodiscard]] bool isInMailbox(qsizetype place);
    [[nodiscard]] bool isMissingBlank(QStringView host) const;
    [[nodiscard]] bool startsAt(qsizetype place, QStringView what) const;
    [[nodiscard]] QChar at(qsizetype place) const;

    void take(FoundLink link);
    void refuse(qsizetype begin);

    QStringView m_text;
    LinkRules const& m_rules;
    LinksTail m_tail;
    QList<FoundLink> m_links;
    QList<Place> m_refused;
    qsizetype m_floor = 0;      ///< nothing before this belongs to another address
    qsizetype m_hostEnd = 0;    ///< of the host characters last judged
    qsizetype m_mailboxEnd = 0; ///< of the mailbox characters last read
    qsizetype m_digitsEnd = 0;  ///< of the digits last counted: at the next letter
    bool m_mayHoldNumber = false;
};

} // namespace Softphone::Addresses
