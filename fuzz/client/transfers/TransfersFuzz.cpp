// The fields that a transfer decides by, against plain regular expressions, and the record of a part file.

#include "HttpFields_p.h"
#include "ResumeRecord_p.h"

#include <QRegularExpression>
#include <cstdint>
#include <cstdlib>

namespace {

using namespace Softphone;

void require(bool holds)
{
    if (!holds) {
        std::abort();
    }
}

/// The digits that \a pattern finds in all of \a text, as numbers; empty where one is too large or none
/// match.
QList<qint64> numbersIn(QByteArray const& text, QString const& pattern)
{
    QRegularExpression const expression(QStringLiteral("\\A(?:") + pattern + QStringLiteral(")\\z"));
    QRegularExpressionMatch const match = expression.match(QString::fromLatin1(text));
    QList<qint64> numbers;
    for (int i = 1; match.hasMatch() && i <= expression.captureCount(); ++i) {
        bool isNumber = false;
        numbers.append(match.captured(i).toLongLong(&isNumber));
        if (!isNumber) {
            return {};
        }
    }
    return numbers;
}

void checkNumber(QByteArray const& text)
{
    auto const number = HttpFields::number(text);
    QList<qint64> const expected = numbersIn(text, QStringLiteral("([0-9]+)"));
    require(number.has_value() == !expected.isEmpty() && (!number || *number == expected.constFirst()));
}

void checkContentRange(QByteArray const& text)
{
    auto const range = HttpFields::contentRange(text);
    QList<qint64> const expected = numbersIn(text, QStringLiteral("bytes ([0-9]+)-([0-9]+)/([0-9]+)"));
    bool const fits =
        expected.size() == 3 && expected.at(0) <= expected.at(1) && expected.at(1) < expected.at(2);
    require(range.has_value() == fits);
    require(!range || QList<qint64>({range->first, range->last, range->total}) == expected);
}

void checkRetryAfter(QByteArray const& text)
{
    QDateTime const now(QDate(2026, 1, 1), QTime(12, 0), Qt::UTC);
    auto const wait = HttpFields::retryAfter(text, now);
    require(!wait || wait->count() >= 0);
}

void checkRecord(QByteArray const& bytes)
{
    if (auto const record = ResumeRecord::fromBytes(bytes)) {
        require(HttpFields::isStrongTag(record->tag) && HttpFields::isFieldValue(record->tag));
        auto const again = ResumeRecord::fromBytes(record->toBytes());
        require(again && again->tag == record->tag && again->length == record->length);
    }
    for (qsizetype cut = 0; cut < bytes.size() && bytes.size() < 200; ++cut) {
        // What a crash has cut is no record, unless another line break stood there.
        require(bytes.at(cut) == '\n' || !ResumeRecord::fromBytes(bytes.first(cut + 1)));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    QByteArray const bytes(reinterpret_cast<char const*>(data), static_cast<qsizetype>(size));
    checkNumber(bytes);
    checkContentRange(bytes);
    checkContentRange("bytes " + bytes);
    checkRetryAfter(bytes);
    checkRecord(bytes);
    checkRecord(bytes + "\n\"tag\"\n");
    require(!HttpFields::isFieldName(bytes) || HttpFields::isFieldValue(bytes));
    return 0;
}
