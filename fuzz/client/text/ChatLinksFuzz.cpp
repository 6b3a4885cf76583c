// Whatever text arrives: links lie in it, in order and apart, with schemes that the rules allow, and a
// document made of the HTML has the same ones.

#include <client/Links.h>

#include <LinksReadBack.h>
#include <QGuiApplication>
#include <cstdint>
#include <cstdlib>

namespace {

using namespace Softphone;

void require(bool holds)
{
    if (!holds) {
        std::abort();
    }
}

void checkLinks(QString const& text, LinkRules const& rules)
{
    QList<Link> const links = findLinks(text, rules);
    qsizetype end = 0;
    for (Link const& link : links) {
        require(link.position >= end && link.length > 0);
        end = link.position + link.length;
        require(end <= text.size());
        require(link.target.isValid());
        require(rules.schemes.contains(link.target.scheme(), Qt::CaseInsensitive));
    }
    LinksReadBack const read(linkedHtml(text, rules));
    require(read.hasLinks(links));
    require(read.shows(text));
}

/// A document asks the application for fonts.
bool startApplication()
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    static int count = 1;
    static char name[] = "ChatLinksFuzz";
    static char* arguments[] = {name, nullptr};
    static QGuiApplication const application(count, arguments);
    return QGuiApplication::instance() == &application;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    static bool const started = startApplication();
    require(started);
    // The first byte chooses the rules, and UTF-8 or UTF-16 with whatever surrogates there are.
    if (size < 1) {
        return 0;
    }
    QByteArray const bytes(reinterpret_cast<char const*>(data + 1), static_cast<qsizetype>(size - 1));
    QString text;
    if (data[0] % 2 == 0) {
        text = QString::fromUtf8(bytes);
    } else {
        for (qsizetype i = 0; i + 1 < bytes.size(); i += 2) {
            text += QChar(static_cast<uchar>(bytes[i]), static_cast<uchar>(bytes[i + 1]));
        }
    }
    LinkRules rules;
    if ((data[0] & 2U) != 0) {
        rules.schemes << QStringLiteral("ftp") << QStringLiteral("xmpp");
    }
    if ((data[0] & 4U) != 0) {
        rules.schemes.removeFirst();
    }
    rules.bareHosts = (data[0] & 8U) == 0;
    rules.phoneNumbers = (data[0] & 16U) == 0;
    checkLinks(text, rules);
    return 0;
}
