#include "ResumeRecord_p.h"

#include "HttpFields_p.h"

namespace Softphone {

// Two lines, the length and the tag. The line break at the end tells a whole record from one that a crash
// cut.

QByteArray ResumeRecord::toBytes() const
{
    return QByteArray::number(length) + '\n' + tag + '\n';
}

std::optional<ResumeRecord> ResumeRecord::fromBytes(QByteArray const& bytes)
{
    qsizetype const end = bytes.indexOf('\n');
    if (end < 0 || end + 1 >= bytes.size() || !bytes.endsWith('\n')) {
        return std::nullopt;
    }
    auto const length = HttpFields::number(QByteArrayView(bytes).first(end));
    QByteArray const tag = bytes.mid(end + 1, bytes.size() - end - 2);
    if (!length || !HttpFields::isStrongTag(tag)) {
        return std::nullopt;
    }
    return ResumeRecord{tag, *length};
}

} // namespace Softphone
