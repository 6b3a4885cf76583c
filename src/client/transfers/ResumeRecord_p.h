#pragma once

#include <QByteArray>
#include <optional>

namespace Softphone {

/// What is remembered of a file of which a part has arrived: enough to ask for the rest of exactly the same
/// one. The address is not in it, as it may hold a password.
struct ResumeRecord
{
    QByteArray tag;    ///< a strong entity tag
    qint64 length = 0; ///< of the whole file

    /// The record as it lies on the disk.
    [[nodiscard]] QByteArray toBytes() const;

    /// Nothing unless \a bytes are all of a record as toBytes() wrote it.
    [[nodiscard]] static std::optional<ResumeRecord> fromBytes(QByteArray const& bytes);
};

} // namespace Softphone
