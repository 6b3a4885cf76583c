/// \file
/// HTTP transfers for a client's windows. This header includes all that they need.

#pragma once

#include <client/Softphone.h>
#include <client/Transfer.h>
#include <client/TransferRequest.h>
#include <client/softphoneclient_export.h>

#include <QByteArray>
#include <QObject>
#include <memory>

class QHttpMultiPart;
class QNetworkAccessManager;

namespace Softphone {

struct TransferTask;

/// Starts HTTP transfers, keeps them in order, and owns them until they are deleted.
///
/// Everything happens in the thread that made the object and needs its event loop; files are written in a
/// thread of its own, so that a slow disk holds nobody up. Qt's application-wide proxy and TLS settings
/// apply, network() takes others. A status of 400 or more is an error.
///
/// A download to a file grows in a part file in the folder of the target ("transfer-….part") and takes the
/// target's name when it is whole. A failure or a cancel removes the part, unless TransferRequest::keepPart
/// is set; after a crash it stays. What is needed to go on lies beside it ("transfer-….part.tag"), and the
/// next download of the same address into the same folder continues it, if the server vouches with a strong
/// entity tag that the file is the same.
///
/// \code
/// Transfer* const report = transfers->download({.url = url, .path = folder + "/report.pdf"});
/// connect(report, &Transfer::finished, this, [this, report] {
///     show(report->error() == TransferError::None ? report->path() : report->errorText());
///     report->deleteLater();
/// });
/// \endcode
class SOFTPHONECLIENT_EXPORT Transfers : public QObject
{
    Q_OBJECT

public:
    explicit Transfers(QObject* parent = nullptr); ///< six transfers at once, until setParallel()

    /// Ends all transfers silently and deletes them. Waits for the disk where it is just writing.
    ~Transfers() override;

    /// GET to the file request.path, or into Transfer::body() when that is empty.
    Transfer* download(TransferRequest const& request);

    /// HEAD; Transfer::total() is the size afterwards, -1 when the server does not tell it.
    Transfer* size(TransferRequest const& request);

    /// PUT of the file request.path, as long as it is when the request begins.
    ///
    /// A server that answers before it has all and reads on, or speaks HTTP/2, is heard. Over HTTP/1.1 the
    /// answer of one that stops reading is lost with the connection: the error is then Truncated or Stalled.
    Transfer* upload(TransferRequest const& request);

    /// POST of \a body; its type is "application/octet-stream" unless request.headers has another one.
    Transfer* post(TransferRequest const& request, QByteArray const& body);

    /// POST of \a form, which this takes over.
    Transfer* postForm(TransferRequest const& request, QHttpMultiPart* form);

    /// How many requests run at once, 1 at least and 6 at first; the others wait in the order in which they
    /// came. No more than six go to one server.
    void setParallel(int count);

    /// The manager that sends the requests, for its proxy, cookies and the like. It belongs to this object.
    ///
    /// Its proxy factory keeps Qt from taking an answer in chunks that breaks off for a whole one; a proxy of
    /// the type NoProxy, or another factory that gives one, takes that away.
    [[nodiscard]] QNetworkAccessManager* network() const;

public Q_SLOTS:
    /// Cancels all that have not ended.
    void cancelAll();

private:
    struct Private;
    Transfer* start(TransferTask task);

    std::unique_ptr<Private> m_private;
};

} // namespace Softphone
