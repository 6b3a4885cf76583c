#pragma once

#include <client/Softphone.h>
#include <client/softphoneclient_export.h>

#include <QList>
#include <QMetaType>
#include <QString>
#include <QStringList>
#include <QUrl>

namespace Softphone {

/// An address in a text.
struct SOFTPHONECLIENT_EXPORT Link
{
    Q_GADGET
    Q_PROPERTY(qsizetype position MEMBER position)
    Q_PROPERTY(qsizetype length MEMBER length)
    Q_PROPERTY(Softphone::LinkKind kind MEMBER kind)
    Q_PROPERTY(QUrl target MEMBER target)

public:
    qsizetype position = 0;        ///< where it begins, in UTF-16 units
    qsizetype length = 0;          ///< in UTF-16 units
    LinkKind kind = LinkKind::Web; ///< what it opens
    QUrl target;                   ///< what opens it, always with a scheme

    friend bool operator==(Link const& a, Link const& b) = default; ///< all agree
};

/// The schemes that links have unless rules say otherwise: http, https, mailto, tel, sip, sips.
[[nodiscard]] SOFTPHONECLIENT_EXPORT QStringList const& usualLinkSchemes();

/// What becomes a link.
struct LinkRules
{
    /// The schemes that targets may have, in any case. What is found without a scheme needs that of its
    /// target here too: "https" for hosts, "mailto" for e-mail addresses, "tel" for numbers. One with a dot
    /// is not found, since a dot in front of a word rather ends a sentence.
    QStringList schemes = usualLinkSchemes();
    bool bareHosts = true;                 ///< hosts without a scheme, such as "www.example.com/page"
    bool phoneNumbers = true;              ///< what findPhoneNumbers() finds
    QString region = QStringLiteral("IT"); ///< where numbers without a country code are dialled
};

/// The addresses that running text \a text holds, in their order and without overlaps.
///
/// - With a scheme: what \a rules allow, in any case. `http` and `https` need a host; a `tel` address has to
///   be a number, and its target is the E.164 form; any other scheme gives LinkKind::Other.
/// - Hosts without a scheme whose last label is a top level domain get `https`. "notes.txt" is none, and
///   neither is "That.is": a capital in front of a single dot and no path, where a blank is missing.
///   "readme.md" is one, as .md is a domain. IP addresses need a scheme, since versions look like them.
/// - E-mail addresses at such hosts get `mailto`, telephone numbers `tel`.
///
/// Punctuation of the sentence stays outside, and so do quotes and brackets unless they close inside the
/// address. A host has letters of any script and is taken whole or not at all. The user name of an address is
/// part of the link, so that a reader sees it.
///
/// An address with a scheme that is not allowed is text up to the next blank; nothing in it becomes a link.
///
/// Linear; each link costs the making of its QUrl, and each number its parse. No length is limited but that
/// of host names (RFC 1035). Any thread.
[[nodiscard]] SOFTPHONECLIENT_EXPORT QList<Link> findLinks(QString const& text, LinkRules const& rules = {});

/// \a text as HTML with the links that findLinks() finds, for QLabel, QTextDocument or a browser.
///
/// Each UTF-16 unit of \a text becomes one of the document, so that places in the two are the same:
///
/// - Line breaks of every kind become `<br>`; of CR LF the first one becomes a blank at the end of the line.
/// - Blanks of every kind become a blank, or one that does not break where HTML would drop it.
/// - Control characters, halves of surrogate pairs and other units that no text has become U+FFFD.
///
/// Linear. Any thread.
///
/// \return a piece of HTML without an element around it; plain text only through escaping
///
/// Example: "see www.example.com" becomes `see <a href="https://www.example.com">www.example.com</a>`.
[[nodiscard]] SOFTPHONECLIENT_EXPORT QString linkedHtml(QString const& text, LinkRules const& rules = {});

} // namespace Softphone

Q_DECLARE_METATYPE(Softphone::Link)
