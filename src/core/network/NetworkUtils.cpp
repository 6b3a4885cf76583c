#include "NetworkUtils.h"

#include "../Boundary_p.h"
#include "../FileName_p.h"
#include "FreshMemory_p.h"

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
#include <utility>

using namespace std::string_view_literals;

namespace {

struct FreeHandle
{
    void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
};
using Handle = std::unique_ptr<CURL, FreeHandle>;

struct FreeList
{
    void operator()(curl_slist* list) const { curl_slist_free_all(list); }
};
using HeaderList = std::unique_ptr<curl_slist, FreeList>;

/// A status, not a result code, that marks a failed transfer as the server's own fault.
constexpr long remoteErrorStatus = 78;

/// \a path for the system's calls; nothing when no file can have that name.
QByteArray nativePath(QString const& path)
{
    return isPossibleName(path) ? QFile::encodeName(path) : QByteArray();
}

/// Whether \a path itself is neither a file nor a link to one: a privileged caller could remove a device.
bool isDevice(QString const& path)
{
    QFileInfo const info(path);
    return info.exists() && !info.isFile() && !info.isSymLink();
}

/// What a download has brought for its file, until it makes a block.
struct DownloadBlock
{
    static constexpr std::size_t size = std::size_t(64) * 1024;

    DownloadBlock() { bytes.reserve(size); }

    std::vector<char> bytes;
    char unused = 0; ///< the buffer of a stream that needs none
};

/// The file that a download goes to.
///
/// What libcurl hands over begins and ends anywhere in a page of the file. Written in whole blocks, no page
/// is filled in two steps. Everything is allocated before the file is opened and loses what it held.
class DownloadStream : private DownloadBlock, public std::ofstream
{
public:
    explicit DownloadStream(QString const& path)
    {
        rdbuf()->pubsetbuf(&unused, 1);
        open(nativePath(path).constData(), std::ios::binary);
    }

    /// Takes \a more bytes; false when there is no writing them.
    bool take(std::string_view more)
    {
        while (!more.empty()) {
            std::string_view const part = more.substr(0, size - bytes.size());
            bytes.insert(bytes.end(), part.begin(), part.end());
            more.remove_prefix(part.size());
            if (bytes.size() == size && !writeBlock()) {
                return false;
            }
        }
        return true;
    }

    /// Writes what has been taken since the last block; false on failure.
    bool writeBlock()
    {
        std::ofstream& file = *this;
        bool const written = NetworkUtils::writeData(bytes.data(), 1, bytes.size(), &file) == bytes.size();
        bytes.clear();
        return written;
    }
};

/// The file being sent, and how much of it was announced to the server.
struct UploadStream : std::ifstream
{
    UploadStream(QString const& path, long long size)
        : std::ifstream(nativePath(path).constData(), std::ios::binary)
    {
        if (size >= 0) {
            remaining = static_cast<std::size_t>(size);
        }
    }

    std::optional<std::size_t> remaining; ///< empty when no size was announced
};

/// The download that runs on this thread; libcurl hands a write callback nothing but its target.
thread_local CURL* runningDownload = nullptr;

/// Makes room in \a memory for the rest of the running download once it cannot take \a more bytes.
///
/// Growing by doubling to the end would touch twice the memory. The announced length is believed when an
/// eighth of it is there, so that no server makes this process ask for more than eight times what it has
/// sent.
void growForDownload(std::vector<char>& memory, std::size_t more)
{
    constexpr curl_off_t trust = 8;
    if (memory.capacity() - memory.size() >= more) {
        return;
    }
    curl_off_t announced = -1;
    curl_off_t received = 0;
    curl_easy_getinfo(runningDownload, CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &announced);
    curl_easy_getinfo(runningDownload, CURLINFO_SIZE_DOWNLOAD_T, &received);
    if (announced > received && announced / trust <= received) {
        guarded(
            [&] { memory.reserve(memory.size() + more + static_cast<std::size_t>(announced - received)); });
    }
}

/// Has the pages ready that the next bytes of a large download go to, of which \a more are at hand: they come
/// much dearer one by one.
void preparePagesAhead(std::vector<char>& memory, std::size_t more)
{
    constexpr std::size_t stride = std::size_t(2) * 1024 * 1024;
    std::size_t const size = memory.size();
    if (size / stride != (size + more) / stride && memory.capacity() > size) {
        preparePages({memory.data() + size, std::min(memory.capacity() - size, stride + more)});
    }
}

// libcurl calls through pointers of exactly these types; a call through any other is undefined.

std::size_t writeToFile(char* bytes, std::size_t size, std::size_t count, void* stream)
{
    auto* const file = static_cast<std::ofstream*>(stream);
    return static_cast<DownloadStream*>(file)->take({bytes, size * count}) ? size * count : 0;
}

std::size_t writeToMemory(char* bytes, std::size_t size, std::size_t count, void* vector)
{
    auto& memory = *static_cast<std::vector<char>*>(vector);
    growForDownload(memory, size * count);
    preparePagesAhead(memory, size * count);
    return NetworkUtils::writeMemoryData(bytes, size, count, vector);
}

/// Takes an answer that nobody reads; libcurl writes it to standard output otherwise.
std::size_t discard(char*, std::size_t size, std::size_t count, void*)
{
    return size * count;
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

long responseCode(CURL* handle)
{
    long code = 0;
    curl_easy_getinfo(handle, CURLINFO_RESPONSE_CODE, &code);
    return code;
}

NetworkUtils::TransferResult download(QByteArray const& url, curl_write_callback write, void* target,
                                      NetworkUtils::Operator* op)
{
    Handle const handle(curl_easy_init());
    if (handle == nullptr || curl_easy_setopt(handle.get(), CURLOPT_URL, url.constData()) != CURLE_OK) {
        return {};
    }
    curl_easy_setopt(handle.get(), CURLOPT_WRITEFUNCTION, write);
    curl_easy_setopt(handle.get(), CURLOPT_WRITEDATA, target);
    setProgress(handle.get(), op);
    // A hook may run another download in the middle of this one.
    CURL* const outer = std::exchange(runningDownload, handle.get());
    CURLcode const code = curl_easy_perform(handle.get());
    runningDownload = outer;
    switch (code) {
    case CURLE_OK:
        return {true, false};
    case CURLE_URL_MALFORMAT:
    case CURLE_ABORTED_BY_CALLBACK:
        return {};
    default:
        return {false, responseCode(handle.get()) == remoteErrorStatus};
    }
}

/// The list of \a headers, empty when there are none; nothing when memory ran out.
std::optional<HeaderList> buildHeaderList(std::vector<QString> const& headers)
{
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

/// The answer where there is no memory for a part. An empty one takes some as well, so it is kept ready; only
/// the first call of all can fail to make it.
QHttpPart const& emptyPart()
{
    static QHttpPart const part;
    return part;
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
    auto const build = [&] {
        QHttpPart part;
        part.setHeader(QNetworkRequest::ContentDispositionHeader,
                       QStringLiteral("form-data; name=\"%1\"").arg(escapedFormName(name)));
        part.setBody(body);
        return part;
    };
    return guarded(build, emptyPart());
}

QHttpPart NetworkUtils::getHttpFilePart(QString const& name, QString const& fileName,
                                        QString const& contentType, QFile& file)
{
    auto const build = [&] {
        QHttpPart part;
        part.setHeader(QNetworkRequest::ContentTypeHeader, contentType);
        part.setHeader(QNetworkRequest::ContentDispositionHeader,
                       QStringLiteral("form-data; name=\"%1\"; filename=\"%2\"")
                           .arg(escapedFormName(name), escapedFormName(fileName)));
        part.setBodyDevice(&file);
        return part;
    };
    return guarded(build, emptyPart());
}

NetworkUtils::TransferResult NetworkUtils::downloadFile(QString const& url, QString const& path, Operator* op)
{
    return guarded([&] {
        QByteArray const address = url.toUtf8();
        DownloadStream file(path);
        if (!file.is_open()) {
            return TransferResult{};
        }
        TransferResult result = download(address, writeToFile, static_cast<std::ofstream*>(&file), op);
        // The last bytes reach the disk here, and a full one refuses them.
        file.writeBlock();
        file.close();
        result.ok = result.ok && file.good();
        if (!result.ok && !isDevice(path)) {
            FilePaths::removeFile(path);
        }
        return result;
    });
}

NetworkUtils::TransferResult NetworkUtils::downloadToMemory(QString const& url, std::vector<char>& out,
                                                            Operator* op)
{
    return guarded([&] { return download(url.toUtf8(), writeToMemory, &out, op); });
}

long long NetworkUtils::getFileSize(QString const& url)
{
    return guarded(
        [&] {
            QByteArray const address = url.toUtf8();
            long long size = 0;
            Handle const handle(curl_easy_init());
            if (handle == nullptr ||
                curl_easy_setopt(handle.get(), CURLOPT_URL, address.constData()) != CURLE_OK) {
                return -1LL;
            }
            curl_write_callback const receiveHeader = headerCallback;
            curl_easy_setopt(handle.get(), CURLOPT_NOBODY, 1L);
            curl_easy_setopt(handle.get(), CURLOPT_HEADERFUNCTION, receiveHeader);
            curl_easy_setopt(handle.get(), CURLOPT_HEADERDATA, &size);
            if (curl_easy_perform(handle.get()) != CURLE_OK) {
                return responseCode(handle.get()) == remoteErrorStatus ? 0LL : -1LL;
            }
            return size;
        },
        -1LL);
}

NetworkUtils::TransferResult NetworkUtils::putFile(QString const& url, QString const& path, long long size,
                                                   Operator* op)
{
    return guarded([&] {
        QByteArray const address = url.toUtf8();
        UploadStream file(path, size);
        Handle const handle(file.is_open() ? curl_easy_init() : nullptr);
        if (handle == nullptr ||
            curl_easy_setopt(handle.get(), CURLOPT_URL, address.constData()) != CURLE_OK) {
            return TransferResult{};
        }
        curl_read_callback const read = readFromFile;
        curl_write_callback const dropAnswer = discard;
        curl_easy_setopt(handle.get(), CURLOPT_HEADER, 0L);
        curl_easy_setopt(handle.get(), CURLOPT_FAILONERROR, 1L);
        curl_easy_setopt(handle.get(), CURLOPT_READFUNCTION, read);
        curl_easy_setopt(handle.get(), CURLOPT_READDATA, static_cast<std::ifstream*>(&file));
        curl_easy_setopt(handle.get(), CURLOPT_UPLOAD, 1L);
        curl_easy_setopt(handle.get(), CURLOPT_INFILESIZE_LARGE, static_cast<curl_off_t>(size));
        setProgress(handle.get(), op);
        curl_easy_setopt(handle.get(), CURLOPT_WRITEFUNCTION, dropAnswer);
        CURLcode const code = curl_easy_perform(handle.get());
        return TransferResult{code == CURLE_OK, code == CURLE_HTTP_RETURNED_ERROR};
    });
}

bool NetworkUtils::post(QString const& url, std::vector<QString> const& headers, QString const& body)
{
    return guarded([&] {
        QByteArray const address = url.toUtf8();
        QByteArray const bytes = body.toUtf8();
        std::optional<HeaderList> const list = buildHeaderList(headers);
        Handle const handle(list ? curl_easy_init() : nullptr);
        if (handle == nullptr) {
            return false;
        }
        curl_write_callback const dropAnswer = discard;
        curl_easy_setopt(handle.get(), CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
        // A refused address leaves the handle without one, which fails the transfer below.
        curl_easy_setopt(handle.get(), CURLOPT_URL, address.constData());
        curl_easy_setopt(handle.get(), CURLOPT_CUSTOMREQUEST, "POST");
        curl_easy_setopt(handle.get(), CURLOPT_HTTPHEADER, list->get());
        curl_easy_setopt(handle.get(), CURLOPT_POSTFIELDS, bytes.constData());
        curl_easy_setopt(handle.get(), CURLOPT_WRITEFUNCTION, dropAnswer);
        return curl_easy_perform(handle.get()) == CURLE_OK;
    });
}

unsigned long NetworkUtils::writeData(void* bytes, unsigned long size, unsigned long count, void* stream)
{
    return guarded([&] {
        auto& file = *static_cast<std::ofstream*>(stream);
        if (!file.is_open()) {
            return 0UL;
        }
        file.write(static_cast<char const*>(bytes), static_cast<std::streamsize>(size * count));
        return file.good() ? size * count : 0UL;
    });
}

unsigned long NetworkUtils::writeMemoryData(void* bytes, unsigned long size, unsigned long count,
                                            void* vector)
{
    return guarded([&] {
        auto& memory = *static_cast<std::vector<char>*>(vector);
        auto const* const begin = static_cast<char const*>(bytes);
        memory.insert(memory.end(), begin, begin + size * count);
        return size * count;
    });
}

unsigned long NetworkUtils::readData(void* buffer, unsigned long size, unsigned long count, void* stream)
{
    return guarded([&] {
        auto& file = *static_cast<std::ifstream*>(stream);
        file.read(static_cast<char*>(buffer), static_cast<std::streamsize>(size * count));
        return static_cast<unsigned long>(file.gcount());
    });
}

unsigned long NetworkUtils::headerCallback(char* line, unsigned long size, unsigned long count,
                                           void* fileSize)
{
    constexpr auto name = "Content-Length:"sv;
    std::string_view const header(line, size * count);
    if (header.starts_with(name)) {
        guarded([&] {
            std::string const value(header.substr(name.size()));
            char* end = nullptr;
            long const number = std::strtol(value.c_str(), &end, 10);
            if (end != value.c_str()) {
                *static_cast<long long*>(fileSize) = number;
            }
        });
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
    return guarded([&] {
        if (isCancelled && isCancelled()) {
            return false;
        }
        if (progress) {
            progress(static_cast<long long>(now), static_cast<long long>(total));
        }
        return true;
    });
}
