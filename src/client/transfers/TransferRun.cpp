#include "TransferRun_p.h"

#include "HttpFields_p.h"
#include "UploadFile_p.h"

#include <QCryptographicHash>
#include <QFileInfo>
#include <QNetworkAccessManager>
#include <QNetworkProxyFactory>
#include <QSslError>
#include <QThread>
#include <algorithm>
#include <array>
#include <ranges>
#include <utility>

namespace Softphone {

namespace {

using namespace std::chrono_literals;

constexpr auto tick = 100ms;
constexpr qint64 readBuffer = 1024 * 1024;
constexpr qint64 blockSize = 256 * 1024;
constexpr int mostBlocksAtDisk = 4;
constexpr qsizetype longestErrorBody = 64 * 1024;
constexpr qsizetype digestSize = 32;

bool isNamed(QByteArray const& name, char const* other)
{
    return name.compare(other, Qt::CaseInsensitive) == 0;
}

/// Fields that are for one server and nobody else.
bool isSecret(QByteArray const& name)
{
    return isNamed(name, "Authorization") || isNamed(name, "Cookie");
}

/// Fields that tell of the body of a request.
bool isOfBody(QByteArray const& name)
{
    constexpr QByteArrayView start = "Content-";
    return name.left(start.size()).compare(start, Qt::CaseInsensitive) == 0;
}

/// Fields that say how long the request is. One who sets them could hide a second request in the first.
bool isFraming(QByteArray const& name)
{
    return isNamed(name, "Content-Length") || isNamed(name, "Transfer-Encoding");
}

bool hasField(TransferRequest const& request, char const* name)
{
    return std::ranges::any_of(request.headers,
                               [&](auto const& header) { return isNamed(header.first, name); });
}

/// Line breaks and NUL have no business in a path, encoded or not; in a query they are somebody's text.
bool isSendable(QUrl const& url)
{
    return url.isValid() && !url.host().isEmpty() &&
           HttpFields::isFieldValue(url.path(QUrl::FullyDecoded).toUtf8()) &&
           HttpFields::isFieldValue(url.host(QUrl::FullyDecoded).toUtf8());
}

bool isAllowed(QUrl const& url, TransferLimits const& limits)
{
    bool const isHttp = url.scheme() == QLatin1String("http") || url.scheme() == QLatin1String("https");
    return isHttp && limits.schemes.contains(url.scheme(), Qt::CaseInsensitive);
}

bool isRedirect(int status)
{
    constexpr std::array statuses = {301, 302, 303, 307, 308};
    return std::ranges::find(statuses, status) != statuses.end();
}

/// The digest as bytes; nothing when it is none.
std::optional<QByteArray> digestBytes(QByteArray const& digest)
{
    if (digest.isEmpty() || digest.size() == digestSize) {
        return digest;
    }
    QByteArray const bytes = QByteArray::fromHex(digest);
    return digest.size() == 2 * digestSize && bytes.size() == digestSize ? std::optional(bytes)
                                                                         : std::nullopt;
}

/// The same for the same address; without the login, which must not be readable from a file's name.
QString partKey(QUrl const& url)
{
    QByteArray const address = url.toEncoded(QUrl::RemoveUserInfo | QUrl::RemoveFragment);
    return QString::fromLatin1(
        QCryptographicHash::hash(address, QCryptographicHash::Sha256).toHex().left(16));
}

/// \a url without a login, without what is not sent, and without the port that its scheme has anyway.
QUrl plain(QUrl const& url)
{
    QUrl address = url.adjusted(QUrl::RemoveUserInfo | QUrl::RemoveFragment);
    if (address.port() == (address.scheme() == QLatin1String("https") ? 443 : 80)) {
        address.setPort(-1);
    }
    return address;
}

/// The server of \a url, a plain() one.
QByteArray originOf(QUrl const& url)
{
    return (url.scheme() + QLatin1Char(' ') + url.host().toLower() + QLatin1Char(' ') +
            QString::number(url.port()))
        .toUtf8();
}

bool isProxy(QNetworkProxy const& way)
{
    return way.type() != QNetworkProxy::NoProxy && way.type() != QNetworkProxy::DefaultProxy;
}

/// Whether \a network reaches \a url through proxies only.
bool goesThroughProxy(QNetworkAccessManager const& network, QUrl const& url)
{
    QNetworkProxyFactory* const factory = network.proxyFactory();
    return factory == nullptr ? isProxy(network.proxy())
                              : std::ranges::all_of(factory->queryProxy(QNetworkProxyQuery(url)), isProxy);
}

} // namespace

TransferRun::TransferRun(TransferTask task, TransferServices services)
    : m_task(std::move(task))
    , m_services(services)
    , m_plan(m_task.request.retries)
    , m_clock(m_task.request.limits)
{
    constexpr std::array methods = {Method::Get, Method::Head, Method::Put, Method::Post};
    m_method = methods.at(static_cast<std::size_t>(m_task.kind));
    m_result.path = m_task.request.path;
    if (m_task.form != nullptr) {
        m_task.form->setParent(this);
    }
    takeLogin();
    setUrl(m_task.request.url);
    m_tick.setInterval(tick);
    connect(&m_tick, &QTimer::timeout, this, &TransferRun::onTick);
    m_pause.setSingleShot(true);
    // A coarse timer may end early, and a server that names a time means it.
    m_pause.setTimerType(Qt::PreciseTimer);
    connect(&m_pause, &QTimer::timeout, this, [this] { m_services.queue->enter(this); });
    if (auto const failure = problem()) {
        finish(*failure);
    } else {
        m_services.queue->enter(this);
    }
}

TransferRun::~TransferRun()
{
    dropReply();
    m_services.queue->leave(this);
    if (m_sink != nullptr) {
        m_sink->deleteLater();
    }
}

std::optional<TransferFailure> TransferRun::problem() const
{
    TransferRequest const& request = m_task.request;
    if (request.url.isValid() && !request.url.scheme().isEmpty() && !isAllowed(request.url, request.limits)) {
        return TransferFailure{
            TransferError::SchemeRefused,
            tr("%1: addresses of the kind \"%2\" are not allowed here.").arg(host(), request.url.scheme())};
    }
    if (!isSendable(request.url)) {
        return TransferFailure{TransferError::BadAddress, tr("%1 is not complete or not valid.").arg(host())};
    }
    bool const areFieldsValid = std::ranges::all_of(request.headers, [](auto const& header) {
        return HttpFields::isFieldName(header.first) && HttpFields::isFieldValue(header.second);
    });
    if (!areFieldsValid) {
        return TransferFailure{TransferError::BadAddress,
                               tr("The request to %1 has a header that cannot be sent.").arg(host())};
    }
    if (request.path.contains(QChar::Null)) {
        bool const isRead = m_task.kind == TransferTask::Kind::Upload;
        return TransferFailure{isRead ? TransferError::CannotRead : TransferError::CannotWrite,
                               tr("The transfer with %1: this is not the name of a file.").arg(host())};
    }
    if (!digestBytes(request.sha256)) {
        return TransferFailure{TransferError::WrongDigest,
                               tr("What %1 sends cannot be checked: the digest is no SHA-256.").arg(host())};
    }
    return std::nullopt;
}

void TransferRun::takeLogin()
{
    QUrl const& url = m_task.request.url;
    if (!url.userInfo().isEmpty() && !hasField(m_task.request, "Authorization")) {
        QString const login =
            url.userName(QUrl::FullyDecoded) + QLatin1Char(':') + url.password(QUrl::FullyDecoded);
        m_login = "Basic " + login.toUtf8().toBase64();
    }
}

void TransferRun::setUrl(QUrl const& url)
{
    m_url = plain(url);
    m_origin = originOf(m_url);
}

QString TransferRun::host() const
{
    return TransferErrors::hostOf(m_url);
}

void TransferRun::proceed()
{
    m_stage = Stage::Running;
    m_tick.start();
    bool const isForFile = m_task.kind == TransferTask::Kind::Download && !m_task.request.path.isEmpty();
    if (isForFile && m_sink == nullptr) {
        openFile();
    } else {
        send();
    }
}

void TransferRun::openFile()
{
    TransferRequest const& request = m_task.request;
    m_sink = new FileSink({QFileInfo(request.path).absoluteFilePath(), partKey(m_url), request.ifExists,
                           *digestBytes(request.sha256), request.keepPart});
    if (!m_services.disk->isRunning()) {
        m_services.disk->start();
    }
    m_sink->moveToThread(m_services.disk);
    connect(m_sink, &FileSink::opened, this, &TransferRun::onOpened);
    connect(m_sink, &FileSink::failed, this, &TransferRun::onFileFailed);
    connect(m_sink, &FileSink::digestDiffers, this, &TransferRun::onDigestDiffers);
    connect(m_sink, &FileSink::discarded, this, &TransferRun::deliver);
    connect(m_sink, &FileSink::written, this, [this] {
        --m_blocksAtDisk;
        pump();
    });
    connect(m_sink, &FileSink::committed, this, [this](QString const& path) {
        if (m_task.request.ifExists == IfExists::KeepBoth) {
            m_result.path = path;
        }
        finish({});
    });
    QMetaObject::invokeMethod(m_sink, &FileSink::open);
}

void TransferRun::onOpened(qint64 kept, QByteArray const& tag, qint64 length)
{
    if (m_stage != Stage::Running) {
        return;
    }
    if (kept > 0 && !hasField(m_task.request, "Range")) {
        m_kept = kept;
        m_record = ResumeRecord{tag, length};
    }
    send();
}

void TransferRun::send()
{
    m_answer = {};
    m_result.status = 0;
    m_result.headers.clear();
    m_result.body.clear();
    m_result.done = m_kept;
    m_result.total = -1;
    m_reply = startRequest(networkRequest());
    if (m_reply == nullptr) {
        return finish({TransferError::CannotRead,
                       tr("%1 cannot be read to send it to %2.").arg(m_task.request.path, host())});
    }
    listen();
    m_clock.request();
    m_pace.start(m_result.done);
}

QNetworkRequest TransferRun::networkRequest() const
{
    QNetworkRequest request(m_url);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
    // The login of one transfer is not for any other transfer.
    request.setAttribute(QNetworkRequest::AuthenticationReuseAttribute, QNetworkRequest::Manual);
    // Qt takes whatever comes over HTTP/2 into memory, however slow the disk is.
    request.setAttribute(QNetworkRequest::Http2AllowedAttribute, m_sink == nullptr);
    if (m_task.request.limits.bytes >= 0) {
        // The limit counts unpacked bytes. Without one Qt's own check finds what grows out of all proportion.
        request.setDecompressedSafetyCheckThreshold(-1);
    }
    setHeaders(request);
    return request;
}

void TransferRun::setHeaders(QNetworkRequest& request) const
{
    if (sendsBody() && m_task.form == nullptr) {
        request.setRawHeader("Content-Type", "application/octet-stream");
    }
    bool const meansTheFile = m_sink != nullptr || m_task.kind == TransferTask::Kind::Size;
    if (meansTheFile && !m_acceptsPacked) {
        request.setRawHeader("Accept-Encoding", "identity");
    }
    if (!m_login.isEmpty() && m_isFirstServer) {
        request.setRawHeader("Authorization", m_login);
    }
    QList<QByteArray> names;
    for (auto const& [name, value] : m_task.request.headers) {
        if (isFraming(name) || (isOfBody(name) && !sendsBody()) || (isSecret(name) && !m_isFirstServer)) {
            continue;
        }
        QByteArray const key = name.toLower();
        bool const isRepeated = names.contains(key);
        request.setRawHeader(name, isRepeated ? request.rawHeader(name) + ", " + value : value);
        names.append(key);
    }
    if (m_kept > 0) {
        request.setRawHeader("Range", "bytes=" + QByteArray::number(m_kept) + '-');
        request.setRawHeader("If-Range", m_record->tag);
    }
}

/// Null when there is nothing to send.
QNetworkReply* TransferRun::startRequest(QNetworkRequest const& request)
{
    QNetworkAccessManager& network = *m_services.network;
    switch (m_method) {
    case Method::Get:
        return network.get(request);
    case Method::Head:
        return network.head(request);
    case Method::Post:
        return m_task.form == nullptr ? network.post(request, m_task.body)
                                      : network.post(request, m_task.form);
    case Method::Put:
        break;
    }
    auto file = std::make_unique<UploadFile>(m_task.request.path);
    if (!file->openRegular()) {
        return nullptr;
    }
    m_file = file.get();
    QNetworkReply* const reply = network.put(request, file.get());
    file.release()->setParent(reply);
    return reply;
}

void TransferRun::listen()
{
    m_reply->setReadBufferSize(readBuffer);
    connect(m_reply, &QNetworkReply::requestSent, this, [this] {
        m_answer.wasSent = true;
        m_clock.connected();
    });
    connect(m_reply, &QNetworkReply::metaDataChanged, this, &TransferRun::onHead);
    // To hand a block on takes longer than to write a small one. What is less waits for more, or for a tick.
    connect(m_reply, &QNetworkReply::readyRead, this, [this] {
        if (m_reply->bytesAvailable() >= blockSize) {
            pump();
        }
    });
    connect(m_reply, &QNetworkReply::uploadProgress, this, &TransferRun::onSent);
    connect(m_reply, &QNetworkReply::sslErrors, this, [this](QList<QSslError> const& errors) {
        m_answer.tlsProblem = errors.constFirst().errorString();
    });
    connect(m_reply, &QNetworkReply::finished, this, [this] {
        m_answer.isWhole = true;
        onHead();
        pump();
    });
}

void TransferRun::onHead()
{
    int const status = m_reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    if (m_answer.isJudged || status < 200) {
        return;
    }
    m_answer.isJudged = true;
    m_clock.heard();
    m_result.status = status;
    m_result.headers = m_reply->rawHeaderPairs();
    QByteArray const location = field("Location");
    if (isRedirect(status) && !location.isEmpty()) {
        follow(location);
    } else if (status == 416 && m_kept > 0) {
        startOver();
    } else if (!isFailedStatus()) {
        acceptBody();
    }
}

void TransferRun::follow(QByteArray const& location)
{
    TransferLimits const& limits = m_task.request.limits;
    if (++m_redirects > limits.redirects) {
        return finish({TransferError::TooManyRedirects, tr("%1 redirects too often: more than %2 times.")
                                                            .arg(host(), QString::number(limits.redirects))});
    }
    QUrl const next = plain(m_url.resolved(QUrl::fromEncoded(location)));
    bool const isDowngrade =
        m_url.scheme() == QLatin1String("https") && next.scheme() == QLatin1String("http");
    if (next.isValid() && (isDowngrade || !isAllowed(next, limits))) {
        return finish({TransferError::SchemeRefused, tr("%1 redirects to %2, which is not allowed.")
                                                         .arg(host(), next.scheme() + QStringLiteral("://") +
                                                                          TransferErrors::hostOf(next))});
    }
    if (!isSendable(next)) {
        return finish(
            {TransferError::BadAddress, tr("%1 redirects to an address that is not valid.").arg(host())});
    }
    changeMethod();
    dropReply();
    m_services.queue->leave(this);
    m_isFirstServer = m_isFirstServer && originOf(next) == m_origin;
    setUrl(next);
    m_services.queue->enter(this, TransferQueue::Place::Front);
}

/// As browsers do (RFC 9110, 15.4): only 307 and 308 have the body sent again.
void TransferRun::changeMethod()
{
    int const status = m_result.status;
    bool const asksForPage = status == 303 || (m_method == Method::Post && (status == 301 || status == 302));
    if (asksForPage && m_method != Method::Head) {
        m_method = Method::Get;
    }
}

void TransferRun::acceptBody()
{
    bool const isPartial = m_result.status == 206;
    if (isPartial && m_kept == 0 && !hasField(m_task.request, "Range")) {
        return fail({TransferError::Protocol, tr("%1 sent a part of a file, unasked.").arg(host())});
    }
    if (!isReadable()) {
        return fail(
            {TransferError::Protocol, tr("%1 packs its answer in a way that nobody asked for.").arg(host())});
    }
    if (isPartial && m_kept > 0 && !continuesPart()) {
        return startOver();
    }
    bool const isPacked =
        !field("Content-Encoding").isEmpty() && !isNamed(field("Content-Encoding"), "identity");
    if (m_sink != nullptr && isPacked && !m_acceptsPacked) {
        // Qt unpacks what it has asked for, and only that.
        m_acceptsPacked = true;
        return startOver();
    }
    qint64 const kept = isPartial ? m_kept : 0;
    qint64 const length = isPacked ? -1 : lengthToCome().value_or(-1);
    if (!sendsBody()) {
        m_result.done = kept;
        m_result.total = length < 0 ? -1 : kept + length;
    }
    m_answer.announced = m_method == Method::Head ? -1 : length;
    qint64 const limit = m_task.request.limits.bytes;
    if (limit >= 0 && m_answer.announced > limit - kept) {
        return fail(
            {TransferError::TooLarge,
             tr("%1 sends more than the %2 bytes that are allowed.").arg(host(), QString::number(limit))});
    }
    if (m_sink != nullptr) {
        startFile(kept);
    }
}

/// Whether the answer begins where the part ends and belongs to the same file.
bool TransferRun::continuesPart() const
{
    auto const range = HttpFields::contentRange(field("Content-Range"));
    QByteArray const tag = field("ETag");
    return range && range->first == m_kept && range->last + 1 == range->total &&
           range->total == m_record->length && (tag.isEmpty() || tag == m_record->tag) &&
           announcedLength().value_or(range->total - m_kept) == range->total - m_kept;
}

/// Whether Qt takes the body out of what it is sent in; it hands on as it is what it does not know.
bool TransferRun::isReadable() const
{
    QByteArray const coding = field("Transfer-Encoding");
    return coding.isEmpty() || isNamed(coding, "chunked") || isNamed(coding, "identity");
}

/// How long the body is that is still to come; nothing when only its end tells.
std::optional<qint64> TransferRun::lengthToCome() const
{
    bool const endsWithItsHead = m_result.status == 204 || m_result.status == 304;
    if (endsWithItsHead && m_method != Method::Head) {
        return 0;
    }
    if (m_result.status == 206 && m_kept > 0) {
        return m_record->length - m_kept; // its range says so, in chunks too
    }
    return announcedLength();
}

/// How long the server says that the body is; nothing when the end of the connection or a last chunk tells.
std::optional<qint64> TransferRun::announcedLength() const
{
    if (!field("Transfer-Encoding").isEmpty()) {
        return std::nullopt;
    }
    return HttpFields::number(field("Content-Length"));
}

void TransferRun::startFile(qint64 kept)
{
    if (kept == 0) {
        m_kept = 0;
        m_record.reset();
        QByteArray const tag = field("ETag");
        bool const isWholeFile = m_result.status == 200 && field("Content-Encoding").isEmpty();
        if (isWholeFile && m_result.total > 0 && HttpFields::isStrongTag(tag) &&
            !hasField(m_task.request, "Range")) {
            m_record = ResumeRecord{tag, m_result.total};
        }
    } else {
        m_result.total = m_record->length;
    }
    QMetaObject::invokeMethod(m_sink,
                              [sink = m_sink, kept, record = m_record] { sink->begin(kept, record); });
}

bool TransferRun::isDiskBusy() const
{
    return m_blocksAtDisk >= mostBlocksAtDisk;
}

void TransferRun::pump()
{
    while (m_reply != nullptr && !isDiskBusy() && (m_answer.isJudged || m_answer.isWhole)) {
        QByteArray const block = m_reply->isOpen() ? m_reply->read(blockSize) : QByteArray();
        if (block.isEmpty()) {
            break;
        }
        m_clock.heard();
        take(block);
    }
    if (m_reply != nullptr && m_answer.isWhole && !isDiskBusy()) {
        conclude();
    }
}

void TransferRun::take(QByteArray const& block)
{
    if (isFailedStatus()) {
        return takeErrorBody(block);
    }
    qint64 const limit = m_task.request.limits.bytes;
    m_answer.received += block.size();
    if (limit >= 0 && m_answer.received + m_kept > limit) {
        return fail(
            {TransferError::TooLarge,
             tr("%1 sends more than the %2 bytes that are allowed.").arg(host(), QString::number(limit))});
    }
    if (!sendsBody()) {
        m_result.done += block.size();
    }
    if (m_sink == nullptr) {
        m_result.body += block;
        return;
    }
    ++m_blocksAtDisk;
    QMetaObject::invokeMethod(m_sink, [sink = m_sink, block] { sink->append(block); });
}

/// An error page explains the error; nobody waits for more of it than anybody reads.
void TransferRun::takeErrorBody(QByteArray const& block)
{
    m_result.body += block.left(longestErrorBody - m_result.body.size());
    if (m_result.body.size() >= longestErrorBody) {
        conclude();
    }
}

void TransferRun::onSent(qint64 sent, qint64 total)
{
    if (total <= 0) {
        return;
    }
    m_answer.wasSent = m_answer.wasSent || sent > 0;
    m_clock.heard();
    m_result.done = sent;
    m_result.total = total;
}

void TransferRun::onTick()
{
    pump();
    if (auto const limit = m_clock.look(tick, isDiskBusy())) {
        return onLimit(*limit);
    }
    if (m_file != nullptr && m_file->hasFailed()) {
        // Qt would wait for the rest.
        return conclude();
    }
    m_pace.update(m_result.done);
    if (std::exchange(m_reported, m_result.done) != m_result.done && m_result.done > 0) {
        Q_EMIT moved();
    }
}

void TransferRun::onLimit(TransferClock::Limit limit)
{
    TransferLimits const& limits = m_task.request.limits;
    switch (limit) {
    case TransferClock::Limit::Connect:
        return fail(
            {TransferError::TimedOut,
             tr("%1 could not be reached within %2.").arg(host(), TransferErrors::duration(limits.connect))});
    case TransferClock::Limit::Stalled:
        return fail({TransferError::Stalled,
                     tr("%1 was silent for %2.").arg(host(), TransferErrors::duration(limits.stalled))});
    case TransferClock::Limit::Total:
        return finish({TransferError::TimedOut, tr("The transfer with %1 took longer than %2.")
                                                    .arg(host(), TransferErrors::duration(limits.total))});
    }
}

/// The answer has ended, or enough of it has come.
void TransferRun::conclude()
{
    if (auto const failure = outcome()) {
        return fail(*failure);
    }
    if (m_sink != nullptr) {
        m_stage = Stage::Committing;
        m_clock.rest();
        dropReply();
        QMetaObject::invokeMethod(m_sink, &FileSink::commit);
        return;
    }
    QByteArray const digest = *digestBytes(m_task.request.sha256);
    bool const isChecked = m_task.kind == TransferTask::Kind::Download && !digest.isEmpty();
    if (isChecked && QCryptographicHash::hash(m_result.body, QCryptographicHash::Sha256) != digest) {
        return onDigestDiffers();
    }
    finish({});
}

std::optional<TransferFailure> TransferRun::outcome() const
{
    if (isFailedStatus()) {
        QString const reason = m_reply->attribute(QNetworkRequest::HttpReasonPhraseAttribute).toString();
        return TransferErrors::ofStatus(m_result.status, reason, host());
    }
    if (m_file != nullptr && m_file->hasFailed()) {
        return TransferFailure{
            TransferError::CannotRead,
            tr("%1 could not be read to its end to send it to %2.").arg(m_file->fileName(), host())};
    }
    if (m_reply->error() == QNetworkReply::UnknownContentError && looksLikeBomb()) {
        return TransferFailure{
            TransferError::TooLarge,
            tr("What %1 sends is damaged or grows out of all proportion when it is unpacked.").arg(host())};
    }
    if (m_reply->error() != QNetworkReply::NoError) {
        QString const detail = m_answer.tlsProblem.isEmpty() ? m_reply->errorString() : m_answer.tlsProblem;
        return TransferErrors::ofNetwork(networkError(), host(), detail, stage());
    }
    bool const hasNoFile = m_sink != nullptr && (m_result.status < 200 || m_result.status >= 300);
    if (!m_answer.isJudged || hasNoFile) {
        return TransferFailure{TransferError::Protocol,
                               tr("%1 answered without what was asked for.").arg(host())};
    }
    // Qt takes an answer for whole when its last bytes and the end of the connection are read at once.
    bool const isCounted = m_answer.announced >= 0;
    if (isCounted && m_answer.received < m_answer.announced) {
        return TransferErrors::ofNetwork(QNetworkReply::RemoteHostClosedError, host(), QString(), stage());
    }
    if (isCounted && m_answer.received > m_answer.announced) {
        return TransferErrors::ofNetwork(QNetworkReply::ProtocolFailure, host(), QString(), stage());
    }
    return std::nullopt;
}

/// What the network says of the reply. Of a proxy Qt often speaks as if it were the server.
QNetworkReply::NetworkError TransferRun::networkError() const
{
    QNetworkReply::NetworkError const error = m_reply->error();
    bool const isRefused = error == QNetworkReply::ConnectionRefusedError;
    if ((!isRefused && error != QNetworkReply::HostNotFoundError) ||
        !goesThroughProxy(*m_services.network, m_url)) {
        return error;
    }
    return isRefused ? QNetworkReply::ProxyConnectionRefusedError : QNetworkReply::ProxyNotFoundError;
}

TransferErrors::Stage TransferRun::stage() const
{
    if (m_answer.isJudged) {
        return TransferErrors::Stage::Answered;
    }
    // A total is not known before an answer, unless it is that of what is sent.
    return m_result.done < m_result.total ? TransferErrors::Stage::Sending : TransferErrors::Stage::Asking;
}

/// Whether Qt stopped unpacking because of the size; its older versions give no reason for that, nor for
/// damage.
bool TransferRun::looksLikeBomb() const
{
    QString const reason = m_reply->errorString();
    return reason.contains(QLatin1String("decompressedSafetyCheckThreshold")) ||
           reason.endsWith(QLatin1String(": "));
}

void TransferRun::onDigestDiffers()
{
    if (m_kept > 0) {
        // What the crash has left may be to blame.
        m_stage = Stage::Running;
        return startOver();
    }
    finish({TransferError::WrongDigest, tr("What %1 sent is not the file that was expected.").arg(host())});
}

void TransferRun::onFileFailed(QString const& reason)
{
    finish({TransferError::CannotWrite,
            tr("What %1 sends cannot be stored in %2: %3.").arg(host(), m_task.request.path, reason)});
}

/// Ends the attempt, and the transfer where another attempt is no use.
void TransferRun::fail(TransferFailure const& failure)
{
    bool const mayHaveArrived = m_method == Method::Post && (m_answer.wasSent || m_answer.isJudged);
    auto const wait = m_plan.next({failure.error, m_result.status, field("Retry-After"), mayHaveArrived});
    if (!wait) {
        return finish(failure);
    }
    // What the file holds by now need not come again.
    bool const goesOn = m_record && m_result.done < m_record->length;
    if (m_answer.isJudged && !isFailedStatus()) {
        m_kept = goesOn ? m_result.done : 0;
    }
    dropReply();
    m_services.queue->leave(this);
    m_stage = Stage::Waiting;
    m_pause.start(*wait);
}

/// Asks for all of the file, at once: there is something wrong with the part.
void TransferRun::startOver()
{
    m_kept = 0;
    m_record.reset();
    dropReply();
    send();
}

void TransferRun::cancel()
{
    // A file that is just getting its name will be there, whatever is said of it.
    if (m_stage == Stage::Waiting || m_stage == Stage::Running) {
        finish({TransferError::Cancelled, tr("The transfer with %1 was cancelled.").arg(host())});
    }
}

void TransferRun::finish(TransferFailure const& failure)
{
    if (m_stage == Stage::Ending || m_stage == Stage::Ended) {
        return;
    }
    bool const isFileLeft = m_sink != nullptr && failure.error != TransferError::None;
    m_stage = Stage::Ending;
    m_result.failure = failure;
    dropReply();
    m_pause.stop();
    m_tick.stop();
    m_services.queue->leave(this);
    if (isFileLeft) {
        bool const keepsPart = keepsPartAfter(failure.error);
        QMetaObject::invokeMethod(m_sink, [sink = m_sink, keepsPart] { sink->discard(keepsPart); });
    } else {
        QMetaObject::invokeMethod(this, &TransferRun::deliver, Qt::QueuedConnection);
    }
}

/// Whether the next download of the address may go on from what a file has by then.
bool TransferRun::keepsPartAfter(TransferError error) const
{
    return m_task.request.keepPart &&
           (error == TransferError::Cancelled || RetryPlan::mayPassByItself(error, m_result.status));
}

void TransferRun::deliver()
{
    m_stage = Stage::Ended;
    Q_EMIT ended();
}

void TransferRun::dropReply()
{
    m_clock.rest();
    if (m_reply != nullptr) {
        QNetworkReply* const reply = std::exchange(m_reply, nullptr);
        // Deleting ends it. abort() would do so now, and report an error that is on its way already.
        reply->disconnect(this);
        reply->deleteLater();
    }
}

QByteArray TransferRun::field(QByteArray const& name) const
{
    auto const found = std::ranges::find_if(m_result.headers, [&](auto const& header) {
        return header.first.compare(name, Qt::CaseInsensitive) == 0;
    });
    return found == m_result.headers.end() ? QByteArray() : found->second.trimmed();
}

} // namespace Softphone
