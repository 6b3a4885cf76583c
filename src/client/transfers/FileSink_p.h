#pragma once

#include "PartFile_p.h"
#include "ResumeRecord_p.h"

#include <client/Softphone.h>

#include <QCryptographicHash>
#include <QObject>
#include <optional>

namespace Softphone {

/// The disk's side of a download to a file. It lives in a thread where it may wait for the disk; all is
/// called there, in order, and told by signals. After failed() nothing follows but what discard() tells.
class FileSink : public QObject
{
    Q_OBJECT

public:
    struct Target
    {
        QString path;
        QString key; ///< names the part file; the same for the same address
        IfExists ifExists = IfExists::Replace;
        QByteArray sha256; ///< 32 bytes, or empty
        bool keepPart = false;
    };

    explicit FileSink(Target target);

    /// Lets go of what was not committed, which stays if the target says so.
    ~FileSink() override;

    /// Checks the target and takes a part file; opened() tells what an earlier download has left in it.
    void open();

    /// What follows is a file of which \a kept bytes are there already: all that there are, or 0. With a
    /// \a record the next download of the address can go on after a crash.
    void begin(qint64 kept, std::optional<ResumeRecord> const& record);

    void append(QByteArray const& bytes);

    /// Gives the file its name, if its digest is the right one.
    void commit();

    /// Removes the part; with \a keepsPart only where the next download could not go on from it.
    void discard(bool keepsPart);

Q_SIGNALS:
    void opened(qint64 kept, QByteArray const& tag, qint64 length);
    void written();
    void committed(QString const& path);
    void digestDiffers();
    void failed(QString const& reason);
    void discarded();

private:
    [[nodiscard]] QString problem() const;
    void failWithErrno();
    bool startDigest(qint64 kept);
    bool takeName();
    [[nodiscard]] std::optional<ResumeRecord> usableRecord() const;
    void letGo(bool keepsPart);

    Target m_target;
    QString m_path; ///< the target itself, where m_target.path is a link to it
    PartFile m_part;
    QCryptographicHash m_digest{QCryptographicHash::Sha256};
    bool m_isCommitted = false;
    bool m_hasFailed = false;
};

} // namespace Softphone
