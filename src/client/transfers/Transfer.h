/// \file
/// A transfer that Transfers has started.

#pragma once

#include <client/Softphone.h>
#include <client/softphoneclient_export.h>

#include <QByteArray>
#include <QObject>
#include <QString>
#include <memory>

namespace Softphone {

class TransferRun;

/// One transfer on its way: how far it is, and how it has ended. Transfers makes and owns it; deleting it at
/// any moment, in a slot of its own signals too, ends it silently.
class SOFTPHONECLIENT_EXPORT Transfer : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool isFinished READ isFinished NOTIFY finished)
    Q_PROPERTY(Softphone::TransferError error READ error NOTIFY finished)
    Q_PROPERTY(QString errorText READ errorText NOTIFY finished)
    Q_PROPERTY(int status READ status NOTIFY finished)
    Q_PROPERTY(QString path READ path NOTIFY finished)
    Q_PROPERTY(QByteArray body READ body NOTIFY finished)
    Q_PROPERTY(qint64 done READ done NOTIFY progress)
    Q_PROPERTY(qint64 total READ total NOTIFY progress)
    Q_PROPERTY(double bytesPerSecond READ bytesPerSecond NOTIFY progress)
    Q_PROPERTY(int remaining READ remaining NOTIFY progress)

public:
    ~Transfer() override;

    /// Whether finished() has been emitted, or is just being emitted. The results below are final from then
    /// on.
    [[nodiscard]] bool isFinished() const;

    [[nodiscard]] TransferError error() const; ///< why it ended; None after a success and until the end

    /// One sentence for the user that names the host and the cause, and never a password; empty without an
    /// error.
    [[nodiscard]] QString errorText() const;

    /// The HTTP status of the last answer; 0 when there was none.
    [[nodiscard]] int status() const;

    /// How many bytes have moved: received of a download, sent of an upload or a post.
    [[nodiscard]] qint64 done() const;

    /// How many there are; -1 when that is not known (yet).
    [[nodiscard]] qint64 total() const;

    /// What the server sent, unless it went to a file; of a status of 400 or more the first 64 KiB in any
    /// case.
    [[nodiscard]] QByteArray body() const;

    /// The file of the request; of a download that kept both, the one that was written.
    [[nodiscard]] QString path() const;

    /// The field \a name of the last answer, in any case of letters; empty when there is none.
    [[nodiscard]] QByteArray header(QByteArray const& name) const;

    /// How fast bytes move now, smoothed over a second; 0 before they do and after the end.
    [[nodiscard]] double bytesPerSecond() const;

    /// The seconds left at this pace; -1 when that cannot be told.
    [[nodiscard]] int remaining() const;

public Q_SLOTS:
    /// Ends the transfer with TransferError::Cancelled, unless it has ended already or its file is just
    /// getting its name. finished() follows through the event loop. With TransferRequest::keepPart it is a
    /// pause, which a download of the same address ends.
    void cancel();

Q_SIGNALS:
    /// The counts have changed. At most ten times a second, and once more at the end.
    void progress(qint64 done, qint64 total);

    /// The transfer has ended, well or not. Emitted once, from the event loop.
    void finished();

private:
    friend class Transfers;
    explicit Transfer(QObject* parent);
    void run(std::unique_ptr<TransferRun> run);
    void finish();

    std::unique_ptr<TransferRun> m_run;
};

} // namespace Softphone
