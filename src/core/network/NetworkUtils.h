#pragma once

#include <softphonecore_export.h>

#include <QHttpPart>
#include <QString>
#include <functional>
#include <vector>

class QByteArray;
class QFile;

/// Blocking transfers (download, size query, upload, post) over libcurl, and the parts of multipart forms.
///
/// Every transfer runs on the caller's thread with a connection of its own, so several may run at once on
/// several threads between start() and stop(). Callbacks run on the calling thread. A transfer has no time
/// limit; one that takes an Operator can be cancelled through it. Redirects are not followed, certificates
/// are checked against the system's store. Proxies that the environment names (http_proxy, https_proxy,
/// ftp_proxy, all_proxy, no_proxy) are obeyed.
///
/// \code
/// NetworkUtils::start();
/// NetworkUtils::Operator op;
/// op.isCancelled = [&] { return dialog.wasCancelled(); };
/// bool const there = NetworkUtils::downloadFile(url, path, &op).ok;
/// \endcode
///
/// \par Addresses
/// An address that a stranger gave must be checked for http or https before it is handed to any transfer:
/// "file:///etc/passwd" is read, and an upload to a file: address writes to the disk of this computer.
///
/// \code
/// bool const isWeb = url.startsWith(QLatin1String("http://"), Qt::CaseInsensitive) ||
///                    url.startsWith(QLatin1String("https://"), Qt::CaseInsensitive);
/// \endcode
///
/// http, https, ftp, ftps and file are served; any other scheme that libcurl may know fails the transfer
/// before a connection is made, as does an address with an embedded NUL. An address without a scheme is
/// taken as libcurl takes it: by the beginning of the host's name ("ftp."), otherwise as http.
///
/// \par What an answer may cost
/// Header and trailer lines, those of interim answers included, come to at most 1 MiB, of which each takes at
/// least 64 bytes. Where a server sends a transfer coding that was not asked for, libcurl undoes it; the body
/// may then come to 100 times the bytes received plus 16 MiB, and more than one coding besides "chunked" is
/// refused. Anything beyond fails the transfer. A body as such has no limit.
///
/// \par Options of libcurl
/// After the options of the transfer itself, these are set: CURLOPT_HEADERFUNCTION and CURLOPT_HEADERDATA for
/// the limit above, CURLOPT_PROTOCOLS_STR for the schemes (CURLOPT_PROTOCOLS before libcurl 7.85), and
/// CURLOPT_QUICK_EXIT (from libcurl 7.87; from 8.20 also of the handle that runs the transfer), so that a
/// cancelled transfer does not wait for a name look-up that hangs; for uploads and posts
/// CURLOPT_WRITEFUNCTION and CURLOPT_WRITEDATA, which drop the answer's body; for downloads a
/// CURLOPT_BUFFERSIZE of 64 KiB. Everything else stays at libcurl's defaults.
class SOFTPHONECORE_EXPORT NetworkUtils
{
public:
    /// The caller's hooks into one transfer; either function may be empty. A hook that throws cancels the
    /// transfer. They are called many times a second while bytes flow, and \a isCancelled about once a second
    /// otherwise; \a progress counts the bytes that travel, before any coding is undone.
    struct SOFTPHONECORE_EXPORT Operator
    {
        bool isDownload = true; ///< which direction \a progress hears of: true received, false sent bytes
        std::function<void(long long now, long long total)> progress; ///< a \a total of 0 is not known (yet)
        std::function<bool()> isCancelled;                            ///< true ends the transfer

        /// Does for callers with a transfer of their own what the transfers here do: asks isCancelled and,
        /// unless it says so, reports \a now of \a total bytes.
        ///
        /// \return false when the transfer is to end: it was cancelled, or a hook threw
        bool progressImpl(unsigned long now, unsigned long total) const;
    };

    /// How a transfer ended.
    struct TransferResult
    {
        bool ok = false;          ///< the transfer completed
        bool remoteError = false; ///< the server is the cause, as far as the operation can tell
    };

    NetworkUtils() = delete;

    /// Prepares the transfer library; once, before the first transfer and before other threads transfer.
    static void start();

    /// Releases what start() took; once, when the last transfer has ended.
    static void stop();

    /// Returns the header line "Content-Type: application/json" for post().
    [[nodiscard]] static QString getJSONContentTypeSpec();

    /// Returns the part of a multipart form that carries \a body under \a name.
    ///
    /// A double quote, carriage return or line feed in \a name, which would end the header, is written
    /// "%22", "%0D" or "%0A" as browsers write it (HTML, "Multipart form data"); everything else stands as
    /// it is, in UTF-8.
    [[nodiscard]] static QHttpPart getHttpTextPart(QString const& name, QByteArray const& body);

    /// Returns the part of a multipart form that carries a file under \a name.
    ///
    /// \param name         name of the form's field; escaped as in getHttpTextPart()
    /// \param fileName     what the server is told the file is called; escaped likewise
    /// \param contentType  MIME type, one line
    /// \param file         opened for reading by the caller and kept alive until the request is sent
    [[nodiscard]] static QHttpPart getHttpFilePart(QString const& name, QString const& fileName,
                                                   QString const& contentType, QFile& file);

    /// Downloads \a url (GET) to the file \a path, replacing it. Blocks until the transfer ends.
    ///
    /// The file is opened first: a path that cannot be written makes no connection. Nor does one that names
    /// anything but a file (a folder, a pipe, a device, or a link to one), which is left as it is. An HTTP
    /// error page is a completed download of that page. When anything fails from then on, the disk being full
    /// included, or the transfer is cancelled, no file stays at \a path: a symbolic link goes as well, though
    /// not the file that it led to, which keeps what had come.
    ///
    /// \param op  hooks for this transfer, or null
    /// \return ok when all of it is in the file; remoteError when the transfer failed after the server had
    ///         answered with status 78, which callers tell apart
    static TransferResult downloadFile(QString const& url, QString const& path, Operator* op);

    /// Downloads \a url (GET) and appends what arrives to \a out, as downloadFile() does to a file.
    ///
    /// On failure \a out holds what had arrived until then.
    static TransferResult downloadToMemory(QString const& url, std::vector<char>& out, Operator* op);

    /// Asks the server (HEAD) for the size of what \a url names. Blocks until it has answered.
    ///
    /// \return the size in bytes from the last header line that begins exactly "Content-Length:"; 0 when
    ///         there is none, as over HTTP/2, whose header names are in lower case; -1 when the transfer
    ///         failed, or 0 when it failed after a status of 78. The HTTP status plays no other part.
    [[nodiscard]] static long long getFileSize(QString const& url);

    /// The same with hooks for the transfer, or null; a cancelled one gives -1.
    [[nodiscard]] static long long getFileSize(QString const& url, Operator* op);

    /// Uploads (PUT) the file \a path to \a url. Blocks until the server has answered; its answer is dropped.
    ///
    /// \param size  bytes to send, the size of the file. Of a longer file the first \a size bytes are sent; a
    ///              shorter one fails the transfer instead of keeping the server waiting for the rest.
    ///              Negative when not known: all there is, in chunks; a file that cannot be read to its end
    ///              fails the transfer.
    /// \param op    hooks for this transfer, or null
    /// \return ok when the server took it; remoteError when it answered with a status of 400 or more. A file
    ///         that cannot be opened makes no connection, nor does anything but a file.
    static TransferResult putFile(QString const& url, QString const& path, long long size, Operator* op);

    /// Posts \a body, in UTF-8 and up to its first U+0000, to \a url over TLS 1.2 or later (or plain HTTP).
    /// Blocks until the server has answered; its answer is dropped.
    ///
    /// \param headers  whole header lines ("Name: value"), added in this order. A carriage return, line
    ///                 feed or NUL in one of them, which the server would see as further lines or not at all,
    ///                 fails the call before a connection is made.
    /// \return whether there was an answer, whatever its status
    static bool post(QString const& url, std::vector<QString> const& headers, QString const& body);

    /// The same with hooks for the transfer, or null; false as well when it was cancelled. The body is small
    /// as a rule: with Operator::isDownload false \a op hears of it, otherwise of the answer.
    static bool post(QString const& url, std::vector<QString> const& headers, QString const& body,
                     Operator* op);

    /// Receives \a count blocks of \a size bytes for a download to a file.
    ///
    /// \param stream  the std::ofstream that takes them
    /// \return the number of bytes; 0, which fails the transfer, when the stream is not open or cannot take
    ///         them
    static unsigned long writeData(void* bytes, unsigned long size, unsigned long count, void* stream);

    /// Receives \a count blocks of \a size bytes for a download to memory.
    ///
    /// \param vector  the std::vector<char> that they are appended to
    /// \return the number of bytes; 0, which fails the transfer, when there is no memory for them
    static unsigned long writeMemoryData(void* bytes, unsigned long size, unsigned long count, void* vector);

    /// Fills \a buffer with up to \a count blocks of \a size bytes for an upload.
    ///
    /// \param stream  the std::ifstream that gives them
    /// \return the number of bytes read; 0 at its end
    static unsigned long readData(void* buffer, unsigned long size, unsigned long count, void* stream);

    /// Looks for the size in the header line of \a count blocks of \a size bytes at \a line, which is not
    /// terminated.
    ///
    /// \param fileSize  the long long that is set when the line begins exactly "Content-Length:" and a number
    ///                  follows, read as "%ld" reads it
    /// \return the number of bytes, always
    static unsigned long headerCallback(char* line, unsigned long size, unsigned long count, void* fileSize);

    /// Reports how far a transfer has come: all and present received bytes, all and present sent bytes.
    ///
    /// \param clientp  the Operator to report to, or null
    /// \return 0, or 1 when the transfer is to end
    static int staticProgress(void* clientp, unsigned long dltotal, unsigned long dlnow,
                              unsigned long ultotal, unsigned long ulnow);
};
