// The names, argument types and results of the client library that callers are compiled against. Compiling it
// is the test.

#include <client/CallClock.h>
#include <client/ContactCard.h>
#include <client/ContactDirectory.h>
#include <client/InstanceChannel.h>
#include <client/Links.h>
#include <client/PhoneNumber.h>
#include <client/Reconnector.h>
#include <client/SearchFilter.h>
#include <client/Transfers.h>

#include <QAbstractListModel>
#include <QCoreApplication>
#include <QHttpMultiPart>
#include <QJsonObject>
#include <concepts>
#include <type_traits>

using namespace Softphone;
using namespace std::chrono_literals;

namespace {

template <auto Member, typename Wanted>
constexpr bool is = std::same_as<decltype(Member), Wanted>;

// Numbers
static_assert(int(NumberKind::Unknown) == 0 && int(NumberKind::Voicemail) == 11);
static_assert(NumberMatch::None < NumberMatch::Short && NumberMatch::Short < NumberMatch::National &&
              NumberMatch::National < NumberMatch::Exact);
static_assert(is<&PhoneNumber::parse, std::optional<PhoneNumber> (*)(QString const&, QString const&)>);
static_assert(is<&PhoneNumber::e164, QString (PhoneNumber::*)() const>);
static_assert(is<&PhoneNumber::international, QString (PhoneNumber::*)() const>);
static_assert(is<&PhoneNumber::national, QString (PhoneNumber::*)() const>);
static_assert(is<&PhoneNumber::extension, QString (PhoneNumber::*)() const>);
static_assert(is<&PhoneNumber::uri, QUrl (PhoneNumber::*)() const>);
static_assert(is<&PhoneNumber::region, QString (PhoneNumber::*)() const>);
static_assert(is<&PhoneNumber::kind, NumberKind (PhoneNumber::*)() const>);
static_assert(is<&PhoneNumber::isValid, bool (PhoneNumber::*)() const>);
static_assert(is<&PhoneNumber::match, NumberMatch (*)(PhoneNumber const&, PhoneNumber const&)>);
static_assert(std::equality_comparable<PhoneNumber> && std::copyable<PhoneNumber>);
static_assert(std::same_as<decltype(FoundNumber{qsizetype(1), qsizetype(2), std::declval<PhoneNumber>()}),
                           FoundNumber>);
static_assert(is<&findPhoneNumbers, QList<FoundNumber> (*)(QString const&, QString const&)>);
static_assert(is<&formatAsTyped, QString (*)(QString const&, QString const&)>);
static_assert(is<&dialString, QString (*)(QString const&, QString const&, PlusSign)>);

// Text
static_assert(int(LinkKind::Web) == 0 && int(LinkKind::Other) == 4);
static_assert(std::same_as<decltype(Link{qsizetype(1), qsizetype(2), LinkKind::Web, QUrl()}), Link>);
static_assert(is<&findLinks, QList<Link> (*)(QString const&, LinkRules const&)>);
static_assert(is<&linkedHtml, QString (*)(QString const&, LinkRules const&)>);
static_assert(!std::is_convertible_v<QString, SearchFilter> &&
              std::is_constructible_v<SearchFilter, QString const&>);
static_assert(is<&SearchFilter::isEmpty, bool (SearchFilter::*)() const>);
static_assert(is<&SearchFilter::matches, bool (SearchFilter::*)(QStringList const&) const>);
static_assert(is<&SearchFilter::hits, QList<SearchFilter::Hit> (SearchFilter::*)(QStringList const&) const>);
static_assert(is<&SearchFilter::rank, int (SearchFilter::*)(QStringList const&) const>);
static_assert(std::same_as<decltype(SearchFilter::Hit{1, qsizetype(2), qsizetype(3)}), SearchFilter::Hit>);

// Directory
static_assert(
    std::same_as<decltype(ContactPoint{ContactReferenceType{}, QString(), QString()}), ContactPoint>);
static_assert(is<&ContactCard::fromJson, ContactCard (*)(QJsonObject const&)>);
static_assert(is<&ContactCard::fromDataSet, ContactCard (*)(DataSets::DataSet const&)>);
static_assert(is<&ContactCard::toDataSet, DataSets::DataSet (ContactCard::*)() const>);
static_assert(is<&ContactCard::displayName, QString (ContactCard::*)() const>);
static_assert(is<&ContactCard::initials, QString (ContactCard::*)() const>);
static_assert(is<&ContactCard::numbers, QStringList (ContactCard::*)() const>);
static_assert(is<&ContactCard::emails, QStringList (ContactCard::*)() const>);
static_assert(is<&ContactCard::info, PBXContactInfo (ContactCard::*)() const>);
static_assert(is<&ContactCard::points, QList<ContactPoint> ContactCard::*>);
static_assert(std::derived_from<ContactDirectory, QAbstractListModel>);
static_assert(ContactDirectory::CardRole == Qt::UserRole + 1 &&
              ContactDirectory::NumberHitsRole == Qt::UserRole + 11);
static_assert(
    std::same_as<decltype(ContactDirectory::LoadReport::errors), QList<ContactDirectory::LoadError>>);
static_assert(
    is<&ContactDirectory::load, ContactDirectory::LoadReport (ContactDirectory::*)(QByteArray const&)>);
static_assert(
    is<&ContactDirectory::loadFile, ContactDirectory::LoadReport (ContactDirectory::*)(QString const&)>);
static_assert(is<&ContactDirectory::saveFile, bool (ContactDirectory::*)(QString const&) const>);
static_assert(is<&ContactDirectory::addOrUpdate, bool (ContactDirectory::*)(ContactCard const&)>);
static_assert(is<&ContactDirectory::removeCard, bool (ContactDirectory::*)(QString const&)>);
static_assert(is<&ContactDirectory::total, int (ContactDirectory::*)() const>);
static_assert(is<&ContactDirectory::row, int (ContactDirectory::*)(QString const&) const>);
static_assert(is<&ContactDirectory::filter, QString (ContactDirectory::*)() const>);
static_assert(is<&ContactDirectory::setFilter, void (ContactDirectory::*)(QString const&)>);
static_assert(
    is<&ContactDirectory::caller, std::optional<ContactCard> (ContactDirectory::*)(QString const&) const>);
static_assert(is<&ContactDirectory::setRegion, void (ContactDirectory::*)(QString const&)>);

// Transfers
static_assert(int(TransferError::None) == 0 && int(TransferError::Protocol) == 16);
static_assert(is<&Transfer::isFinished, bool (Transfer::*)() const>);
static_assert(is<&Transfer::error, TransferError (Transfer::*)() const>);
static_assert(is<&Transfer::errorText, QString (Transfer::*)() const>);
static_assert(is<&Transfer::status, int (Transfer::*)() const>);
static_assert(is<&Transfer::done, qint64 (Transfer::*)() const>);
static_assert(is<&Transfer::total, qint64 (Transfer::*)() const>);
static_assert(is<&Transfer::body, QByteArray (Transfer::*)() const>);
static_assert(is<&Transfer::path, QString (Transfer::*)() const>);
static_assert(is<&Transfer::header, QByteArray (Transfer::*)(QByteArray const&) const>);
static_assert(is<&Transfer::cancel, void (Transfer::*)()>);
static_assert(is<&Transfer::progress, void (Transfer::*)(qint64, qint64)>);
static_assert(is<&Transfer::finished, void (Transfer::*)()>);
static_assert(is<&Transfers::download, Transfer* (Transfers::*)(TransferRequest const&)>);
static_assert(is<&Transfers::size, Transfer* (Transfers::*)(TransferRequest const&)>);
static_assert(is<&Transfers::upload, Transfer* (Transfers::*)(TransferRequest const&)>);
static_assert(is<&Transfers::post, Transfer* (Transfers::*)(TransferRequest const&, QByteArray const&)>);
static_assert(is<&Transfers::postForm, Transfer* (Transfers::*)(TransferRequest const&, QHttpMultiPart*)>);
static_assert(is<&Transfers::setParallel, void (Transfers::*)(int)>);
static_assert(is<&Transfers::cancelAll, void (Transfers::*)()>);

// Session
static_assert(is<&InstanceChannel::open, bool (InstanceChannel::*)()>);
static_assert(is<&InstanceChannel::sendAndWait,
                 bool (InstanceChannel::*)(QStringList const&, std::chrono::milliseconds)>);
static_assert(
    is<&InstanceChannel::received, void (InstanceChannel::*)(QStringList const&, QByteArray const&)>);
static_assert(is<&CallClock::setStatus, void (CallClock::*)(LineStatus)>);
static_assert(is<&CallClock::status, LineStatus (CallClock::*)() const>);
static_assert(is<&CallClock::elapsed, std::chrono::seconds (CallClock::*)() const>);
static_assert(is<&CallClock::text, QString (CallClock::*)() const>);

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication const application(argc, argv);
    LinkRules const rules;
    TransferRequest const request{.url = QUrl(QStringLiteral("http://127.0.0.1/")),
                                  .path = {},
                                  .headers = {{"Accept", "*/*"}},
                                  .limits = {},
                                  .retries = 0,
                                  .ifExists = IfExists::Replace,
                                  .sha256 = {}};
    bool const defaultsHold = rules.bareHosts && rules.phoneNumbers && rules.region == QLatin1String("IT") &&
                              rules.schemes.size() == 6 && TransferLimits().schemes.size() == 2 &&
                              TransferLimits().connect == 15s && TransferLimits().stalled == 30s &&
                              TransferLimits().total == 0s && TransferLimits().bytes == -1 &&
                              TransferLimits().redirects == 5;
    return defaultsHold && request.retries == 0 ? 0 : 1;
}
