#include "FileName.h"

#include <QUtf8StringView>
#include <algorithm>

namespace {

constexpr char16_t escapeBase = 0xDC00;
constexpr int longestCharacter = 4;

bool isEscape(QString const& text, qsizetype index)
{
    char16_t const unit = text[index].unicode();
    return unit >= escapeBase + 0x80 && unit <= escapeBase + 0xFF &&
           (index == 0 || !text[index - 1].isHighSurrogate());
}

/// The length of the character that begins at \a index; 0 when none does.
qsizetype characterAt(QByteArray const& bytes, qsizetype index)
{
    for (qsizetype length = 1; length <= std::min<qsizetype>(longestCharacter, bytes.size() - index);
         ++length) {
        if (QUtf8StringView(bytes.constData() + index, length).isValidUtf8()) {
            return length;
        }
    }
    return 0;
}

} // namespace

namespace FileName {

QString fromNative(QByteArray const& bytes)
{
    QString text;
    for (qsizetype index = 0; index < bytes.size();) {
        qsizetype const length = characterAt(bytes, index);
        text += length > 0 ? QString::fromUtf8(bytes.mid(index, length))
                           : QString(QChar(char16_t(escapeBase + static_cast<unsigned char>(bytes[index]))));
        index += std::max<qsizetype>(length, 1);
    }
    return text;
}

QByteArray toNative(QString const& text)
{
    QByteArray bytes;
    qsizetype done = 0;
    for (qsizetype index = 0; index < text.size(); ++index) {
        if (isEscape(text, index)) {
            bytes += text.mid(done, index - done).toUtf8();
            bytes += static_cast<char>(text[index].unicode() - escapeBase);
            done = index + 1;
        }
    }
    return bytes + text.mid(done).toUtf8();
}

bool isUtf8(QString const& text)
{
    return text.isValidUtf16();
}

} // namespace FileName
