#include "NetworkUtils.h"

#include "../FileName_p.h"

#include <files/FilePaths.h>

#include <QByteArray>
#include <QFile>
#include <QFileInfo>
#include <QVariant>
#include <algorithm>
#include <cstdlib>
#include <curl/curl.h>
#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

using namespace std::string_view_literals;

namespace {

struct FreeHandle
{
    void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
};
using Handle = std::unique_ptr<CURL, FreeHandle>;

struct FreeMulti
{
    void operator()(CURLM* multi) const { curl_multi_cleanup(multi); }
};
using Multi = std::unique_ptr<CURLM, FreeMulti>;

struct FreeList
{
    void operator()(curl_slist* list) const { curl_slist_free_all(list); }
};
using HeaderList = std::unique_ptr<curl_slist, FreeList>;

/// A status, not a result code, that marks a failed transfer as the server's own fault.
constexpr long remoteErrorStatus = 78;

/// libcurl's own 16 KiB cost a large download noticeably more system calls.
constexpr long receiveBufferSize = 64L * 1024;

/// All that libcurl was built with is dialled otherwise, down to protocols that send what they find on
/// standard input.
#if LIBCURL_VERSION_NUM >= 0x075500
constexpr auto schemeOption = CURLOPT_PROTOCOLS_STR;
constexpr auto* schemes = "http,https,ftp,ftps,file";
#else
constexpr auto schemeOption = CURLOPT_PROTOCOLS;
constexpr long schemes = CURLPROTO_HTTP | CURLPROTO_HTTPS | CURLPROTO_FTP | CURLPROTO_FTPS | CURLPROTO_FILE;
#endif

/// What an answer may cost: lines of headers and trailers together, and a body whose transfer coding is
/// undone on the way, by the bytes that were received.
constexpr std::size_t mostHeaderBytes = std::size_t(1024) * 1024;
/// What a line counts at least: libcurl copies a line that is continued over many as often as it goes on.
constexpr std::size_t leastLineCost = 64;
constexpr curl_off_t mostExpansion = 100;
constexpr curl_off_t freeExpansion = curl_off_t(16) * 1024 * 1024;

/// Whether libcurl, which reads up to the first NUL, would see all of \a text.
bool isWhole(QString const& text)
{
    return !text.contains(QChar(QChar::Null));
}

/// Whether the server would read \a header as the one line that it is.
bool isOneLine(QString const& header)
{
    return isWhole(header) && !header.contains(QLatin1Char('\r')) && !header.contains(QLatin1Char('\n'));
}

/// Whether \a path is a file or free to become one. Opening a pipe waits for its other end, and some devices
/// for whatever they are made of.
bool isPlaceForFile(QString const& path)
{
    if (!isPossibleName(path)) {
        return false;
    }
    QFileInfo const info(path);
    return info.isFile() || !info.exists();
}

/// The file being sent, and how much of it was announced to the server.
struct UploadStream : std::ifstream
{
    UploadStream(QString const& path, long long size)
    {
        if (isPlaceForFile(path)) {
            open(QFile::encodeName(path).constData(), std::ios::binary);
        }
        if (size >= 0) {
            remaining = static_cast<std::size_t>(size);
        }
    }

    std::optional<std::size_t> remaining; ///< empty when no size was announced
};

// libcurl calls through pointers of exactly these types; a call through any other is undefined.

std::size_t writeToFile(char* bytes, std::size_t size, std::size_t count, void* stream)
{
    return NetworkUtils::writeData(bytes, size, count, stream);
}

std::size_t writeToMemory(char* bytes, std::size_t size, std::size_t count, void* vector)
{
    return NetworkUtils::writeMemoryData(bytes, size, count, vector);
}

/// Takes a body that nobody reads; libcurl writes it to standard output otherwise.
std::size_t discard(char*, std::size_t size, std::size_t count, void*)
{
    return size * count;
}

/// An answer while it arrives: where its body goes, and what it has cost so far.
struct Answer
{
    long long size = 0; ///< from the header lines; first, because it is what HEADERDATA is known to lead to
    CURL* handle = nullptr;
    NetworkUtils::Operator const* op = nullptr;
    curl_write_callback write = discard;
    void* target = nullptr;
    std::size_t headerBytes = 0;
    std::ptrdiff_t codings = 0; ///< how many codings libcurl undoes before the body gets here
    curl_off_t bodyBytes = 0;   ///< counted where there are codings
};

/// Hooks are the caller's; libcurl's C code, through which they are called, cannot pass on what they throw.
bool isCancelled(NetworkUtils::Operator const& op)
{
    try {
        return op.isCancelled && op.isCancelled();
    } catch (...) {
        return true;
    }
}

/// How many codings the header line \a line names. "chunked" is none: it only frames the body.
std::ptrdiff_t transferCodings(std::string_view line)
{
    QByteArray const lower = QByteArray(line.data(), static_cast<qsizetype>(line.size())).toLower();
    qsizetype const colon = lower.indexOf(':');
    if (lower.left(colon) != "transfer-encoding") {
        return 0;
    }
    QList<QByteArray> const codings = lower.mid(colon + 1).split(',');
    return std::ranges::count_if(codings, [](QByteArray const& coding) {
        QByteArray const trimmed = coding.trimmed();
        return !trimmed.isEmpty() && trimmed != "chunked";
    });
}

/// Ends the transfer once its header lines pass their limit, or name a second coding: what one hands to the
/// next is seen by nobody here, so that a few hundred bytes could keep libcurl busy for hours.
std::size_t receiveHeader(char* line, std::size_t size, std::size_t count, void* data)
{
    auto& answer = *static_cast<Answer*>(data);
    answer.headerBytes += std::max(size * count, leastLineCost);
    answer.codings += transferCodings({line, size * count});
    if (answer.headerBytes > mostHeaderBytes || answer.codings > 1) {
        return 0;
    }
    return NetworkUtils::headerCallback(line, size, count, &answer.size);
}

/// Whether the body may go on by \a more bytes. libcurl reports no progress while it expands what it has
/// received, so the caller is asked here as well.
bool mayExpand(Answer& answer, std::size_t more)
{
    curl_off_t received = 0;
    curl_easy_getinfo(answer.handle, CURLINFO_SIZE_DOWNLOAD_T, &received);
    answer.bodyBytes += static_cast<curl_off_t>(more);
    bool const isCheap = answer.bodyBytes <= mostExpansion * received + freeExpansion;
    return isCheap && (answer.op == nullptr || !isCancelled(*answer.op));
}

std::size_t receiveBody(char* bytes, std::size_t size, std::size_t count, void* data)
{
    auto& answer = *static_cast<Answer*>(data);
    if (answer.codings > 0 && !mayExpand(answer, size * count)) {
        return 0;
    }
    return answer.write(bytes, size, count, answer.target);
}

/// Keeps to the announced size whatever has become of the file since: bytes beyond it would be taken for
/// the next request, and a server waits for bytes that are missing. Where no size was announced, a file that
/// cannot be read on must not pass for one that ends there.
std::size_t readFromFile(char* buffer, std::size_t size, std::size_t count, void* stream)
{
    auto* const file = static_cast<std::ifstream*>(stream);
    auto& remaining = static_cast<UploadStream*>(file)->remaining;
    if (!remaining) {
        std::size_t const got = NetworkUtils::readData(buffer, size, count, stream);
        return file->bad() ? CURL_READFUNC_ABORT : got;
    }
    std::size_t const wanted = std::min(size * count, *remaining);
    std::size_t const got = NetworkUtils::readData(buffer, 1, wanted, stream);
    if (got < wanted) {
        return CURL_READFUNC_ABORT;
    }
    *remaining -= got;
    return got;
}

int reportProgress(void* op, curl_off_t dltotal, curl_off_t dlnow, curl_off_t ultotal, curl_off_t ulnow)
{
    return NetworkUtils::staticProgress(
        op, static_cast<unsigned long>(dltotal), static_cast<unsigned long>(dlnow),
        static_cast<unsigned long>(ultotal), static_cast<unsigned long>(ulnow));
}

void setProgress(CURL* handle, NetworkUtils::Operator* op)
{
    if (op == nullptr) {
        return;
    }
    curl_xferinfo_callback const report = reportProgress;
    curl_easy_setopt(handle, CURLOPT_XFERINFOFUNCTION, report);
    curl_easy_setopt(handle, CURLOPT_XFERINFODATA, op);
    curl_easy_setopt(handle, CURLOPT_NOPROGRESS, 0L);
}

void setHeaderReceiver(Answer& answer)
{
    curl_write_callback const receive = receiveHeader;
    curl_easy_setopt(answer.handle, CURLOPT_HEADERFUNCTION, receive);
    curl_easy_setopt(answer.handle, CURLOPT_HEADERDATA, &answer);
}

void setBodyReceiver(Answer& answer)
{
    curl_write_callback const receive = receiveBody;
    curl_easy_setopt(answer.handle, CURLOPT_WRITEFUNCTION, receive);
    curl_easy_setopt(answer.handle, CURLOPT_WRITEDATA, &answer);
}

/// A handle for \a url; null when there is none, or no such address.
Handle openHandle(QString const& url)
{
    Handle handle(isWhole(url) ? curl_easy_init() : nullptr);
    if (handle != nullptr &&
        curl_easy_setopt(handle.get(), CURLOPT_URL, url.toUtf8().constData()) != CURLE_OK) {
        return nullptr;
    }
    return handle;
}

/// A handle that runs transfers. A name look-up cannot be interrupted; a cancelled transfer leaves it to end
/// by itself, which newer versions take to be a matter of this handle.
Multi openMulti()
{
    Multi multi(curl_multi_init());
#if LIBCURL_VERSION_NUM >= 0x081400
    curl_multi_setopt(multi.get(), CURLMOPT_QUICK_EXIT, 1L);
#endif
    return multi;
}

/// Waits until there is more to do; false once the transfer is cancelled. Newer versions of libcurl report no
/// progress while nothing happens, as during the look-up of a name.
bool waitForMore(CURLM* multi, NetworkUtils::Operator const* op)
{
    constexpr int milliseconds = 1000;
    int ready = 0;
    return curl_multi_poll(multi, nullptr, 0, milliseconds, &ready) == CURLM_OK &&
           (ready > 0 || op == nullptr || !isCancelled(*op));
}

CURLcode run(Answer const& answer)
{
    Multi const multi = openMulti();
    if (multi == nullptr || curl_multi_add_handle(multi.get(), answer.handle) != CURLM_OK) {
        return CURLE_OUT_OF_MEMORY;
    }
    int running = 0;
    while (curl_multi_perform(multi.get(), &running) == CURLM_OK && running > 0 &&
           waitForMore(multi.get(), answer.op)) {
    }
    int left = 0;
    CURLMsg const* const end = curl_multi_info_read(multi.get(), &left);
    CURLcode const result = end != nullptr ? end->data.result : CURLE_ABORTED_BY_CALLBACK;
    curl_multi_remove_handle(multi.get(), answer.handle);
    return result;
}

/// Runs the transfer that brings \a answer. What holds for all of them is set last, after the options that
/// callers know.
CURLcode perform(Answer& answer)
{
    CURLcode const limited = curl_easy_setopt(answer.handle, schemeOption, schemes);
    if (limited != CURLE_OK) {
        return limited;
    }
#if LIBCURL_VERSION_NUM >= 0x075700
    curl_easy_setopt(answer.handle, CURLOPT_QUICK_EXIT, 1L);
#endif
    return run(answer);
}

long responseCode(CURL* handle)
{
    long code = 0;
    curl_easy_getinfo(handle, CURLINFO_RESPONSE_CODE, &code);
    return code;
}

NetworkUtils::TransferResult download(QString const& url, curl_write_callback write, void* target,
                                      NetworkUtils::Operator* op)
{
    Handle const handle = openHandle(url);
    if (handle == nullptr) {
        return {};
    }
    Answer answer = {.handle = handle.get(), .op = op, .write = write, .target = target};
    setBodyReceiver(answer);
    setProgress(handle.get(), op);
    curl_easy_setopt(handle.get(), CURLOPT_BUFFERSIZE, receiveBufferSize);
    setHeaderReceiver(answer);
    switch (perform(answer)) {
    case CURLE_OK:
        return {true, false};
    case CURLE_URL_MALFORMAT:
    case CURLE_ABORTED_BY_CALLBACK:
        return {};
    default:
        return {false, responseCode(handle.get()) == remoteErrorStatus};
    }
}

/// The list of \a headers, empty when there are none; nothing when one of them is not a line, or memory ran
/// out.
std::optional<HeaderList> buildHeaderList(std::vector<QString> const& headers)
{
    if (!std::ranges::all_of(headers, isOneLine)) {
        return std::nullopt;
    }
    HeaderList list;
    for (QString const& header : headers) {
        curl_slist* const longer = curl_slist_append(list.get(), header.toUtf8().constData());
        if (longer == nullptr) {
            return std::nullopt;
        }
        static_cast<void>(list.release());
        list.reset(longer);
    }
    return list;
}

QString escapedFormName(QString name)
{
    return name.replace(QLatin1Char('"'), QLatin1String("%22"))
        .replace(QLatin1Char('\r'), QLatin1String("%0D"))
        .replace(QLatin1Char('\n'), QLatin1String("%0A"));
}

} // namespace

void NetworkUtils::start()
{
    curl_global_init(CURL_GLOBAL_ALL);
}

void NetworkUtils::stop()
{
    curl_global_cleanup();
}

QString NetworkUtils::getJSONContentTypeSpec()
{
    return QStringLiteral("Content-Type: application/json");
}

QHttpPart NetworkUtils::getHttpTextPart(QString const& name, QByteArray const& body)
{
    QHttpPart part;
    part.setHeader(QNetworkRequest::ContentDispositionHeader,
                   QStringLiteral("form-data; name=\"%1\"").arg(escapedFormName(name)));
    part.setBody(body);
    return part;
}

QHttpPart NetworkUtils::getHttpFilePart(QString const& name, QString const& fileName,
                                        QString const& contentType, QFile& file)
{
    QHttpPart part;
    part.setHeader(QNetworkRequest::ContentTypeHeader, contentType);
    part.setHeader(QNetworkRequest::ContentDispositionHeader,
                   QStringLiteral("form-data; name=\"%1\"; filename=\"%2\"")
                       .arg(escapedFormName(name), escapedFormName(fileName)));
    part.setBodyDevice(&file);
    return part;
}

NetworkUtils::TransferResult NetworkUtils::downloadFile(QString const& url, QString const& path, Operator* op)
{
    std::ofstream file;
    if (isWhole(url) && isPlaceForFile(path)) {
        file.open(QFile::encodeName(path).constData(), std::ios::binary);
    }
    if (!file.is_open()) {
        return {};
    }
    TransferResult result = download(url, writeToFile, &file, op);
    // The last bytes reach the disk here, and a full one refuses them.
    file.close();
    result.ok = result.ok && file.good();
    if (!result.ok) {
        FilePaths::removeFile(path);
    }
    return result;
}

NetworkUtils::TransferResult NetworkUtils::downloadToMemory(QString const& url, std::vector<char>& out,
                                                            Operator* op)
{
    return download(url, writeToMemory, &out, op);
}

long long NetworkUtils::getFileSize(QString const& url)
{
    return getFileSize(url, nullptr);
}

long long NetworkUtils::getFileSize(QString const& url, Operator* op)
{
    Handle const handle = openHandle(url);
    if (handle == nullptr) {
        return -1;
    }
    Answer answer = {.handle = handle.get(), .op = op};
    curl_easy_setopt(handle.get(), CURLOPT_NOBODY, 1L);
    setHeaderReceiver(answer);
    setProgress(handle.get(), op);
    // Over FTP libcurl gives what it learns as a body, too.
    setBodyReceiver(answer);
    if (perform(answer) != CURLE_OK) {
        return responseCode(handle.get()) == remoteErrorStatus ? 0 : -1;
    }
    return answer.size;
}

NetworkUtils::TransferResult NetworkUtils::putFile(QString const& url, QString const& path, long long size,
                                                   Operator* op)
{
    UploadStream file(path, size);
    Handle const handle = file.is_open() ? openHandle(url) : nullptr;
    if (handle == nullptr) {
        return {};
    }
    Answer answer = {.handle = handle.get(), .op = op};
    curl_read_callback const read = readFromFile;
    curl_easy_setopt(handle.get(), CURLOPT_HEADER, 0L);
    curl_easy_setopt(handle.get(), CURLOPT_FAILONERROR, 1L);
    curl_easy_setopt(handle.get(), CURLOPT_READFUNCTION, read);
    curl_easy_setopt(handle.get(), CURLOPT_READDATA, static_cast<std::ifstream*>(&file));
    curl_easy_setopt(handle.get(), CURLOPT_UPLOAD, 1L);
    curl_easy_setopt(handle.get(), CURLOPT_INFILESIZE_LARGE, static_cast<curl_off_t>(size));
    setProgress(handle.get(), op);
    setBodyReceiver(answer);
    setHeaderReceiver(answer);
    CURLcode const code = perform(answer);
    return {code == CURLE_OK, code == CURLE_HTTP_RETURNED_ERROR};
}

bool NetworkUtils::post(QString const& url, std::vector<QString> const& headers, QString const& body)
{
    return post(url, headers, body, nullptr);
}

bool NetworkUtils::post(QString const& url, std::vector<QString> const& headers, QString const& body,
                        Operator* op)
{
    QByteArray const bytes = body.toUtf8();
    std::optional<HeaderList> const list = buildHeaderList(headers);
    Handle const handle(list && isWhole(url) ? curl_easy_init() : nullptr);
    if (handle == nullptr) {
        return false;
    }
    Answer answer = {.handle = handle.get(), .op = op};
    curl_easy_setopt(handle.get(), CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
    // A refused address leaves the handle without one, which fails the transfer below.
    curl_easy_setopt(handle.get(), CURLOPT_URL, url.toUtf8().constData());
    curl_easy_setopt(handle.get(), CURLOPT_CUSTOMREQUEST, "POST");
    curl_easy_setopt(handle.get(), CURLOPT_HTTPHEADER, list->get());
    curl_easy_setopt(handle.get(), CURLOPT_POSTFIELDS, bytes.constData());
    setBodyReceiver(answer);
    setProgress(handle.get(), op);
    setHeaderReceiver(answer);
    return perform(answer) == CURLE_OK;
}

unsigned long NetworkUtils::writeData(void* bytes, unsigned long size, unsigned long count, void* stream)
{
    auto& file = *static_cast<std::ofstream*>(stream);
    if (!file.is_open()) {
        return 0;
    }
    // A stream that the caller asked to throw must not do so through libcurl.
    try {
        file.write(static_cast<char const*>(bytes), static_cast<std::streamsize>(size * count));
    } catch (std::ios_base::failure const&) {
        return 0;
    }
    return file.good() ? size * count : 0;
}

unsigned long NetworkUtils::writeMemoryData(void* bytes, unsigned long size, unsigned long count,
                                            void* vector)
{
    auto& memory = *static_cast<std::vector<char>*>(vector);
    auto const* const begin = static_cast<char const*>(bytes);
    // The server decides how much this is.
    try {
        memory.insert(memory.end(), begin, begin + size * count);
    } catch (std::exception const&) {
        return 0;
    }
    return size * count;
}

unsigned long NetworkUtils::readData(void* buffer, unsigned long size, unsigned long count, void* stream)
{
    auto& file = *static_cast<std::ifstream*>(stream);
    try {
        file.read(static_cast<char*>(buffer), static_cast<std::streamsize>(size * count));
    } catch (std::ios_base::failure const&) {
        return 0;
    }
    return static_cast<unsigned long>(file.gcount());
}

unsigned long NetworkUtils::headerCallback(char* line, unsigned long size, unsigned long count,
                                           void* fileSize)
{
    constexpr auto name = "Content-Length:"sv;
    std::string_view const header(line, size * count);
    if (header.starts_with(name)) {
        std::string const value(header.substr(name.size()));
        char* end = nullptr;
        long const number = std::strtol(value.c_str(), &end, 10);
        if (end != value.c_str()) {
            *static_cast<long long*>(fileSize) = number;
        }
    }
    return size * count;
}

int NetworkUtils::staticProgress(void* clientp, unsigned long dltotal, unsigned long dlnow,
                                 unsigned long ultotal, unsigned long ulnow)
{
    auto const* const op = static_cast<Operator const*>(clientp);
    if (op == nullptr) {
        return 0;
    }
    bool const goesOn = op->isDownload ? op->progressImpl(dlnow, dltotal) : op->progressImpl(ulnow, ultotal);
    return goesOn ? 0 : 1;
}

bool NetworkUtils::Operator::progressImpl(unsigned long now, unsigned long total) const
{
    if (::isCancelled(*this)) {
        return false;
    }
    try {
        if (progress) {
            progress(static_cast<long long>(now), static_cast<long long>(total));
        }
        return true;
    } catch (...) {
        return false;
    }
}
