#include "InstanceMessage_p.h"

#include <QtEndian>

namespace Softphone::Impl {

namespace {

constexpr QByteArrayView magic("SPI1");

void appendNumber(QByteArray& bytes, qsizetype number)
{
    char text[4];
    qToBigEndian(static_cast<quint32>(number), text);
    bytes.append(text, sizeof(text));
}

std::optional<qsizetype> takeNumber(QByteArrayView& bytes)
{
    if (bytes.size() < 4) {
        return std::nullopt;
    }
    auto const number = qFromBigEndian<quint32>(bytes.data());
    bytes = bytes.sliced(4);
    return number;
}

std::optional<QByteArrayView> takePart(QByteArrayView& bytes)
{
    auto const size = takeNumber(bytes);
    if (!size || *size > bytes.size()) {
        return std::nullopt;
    }
    QByteArrayView const part = bytes.first(*size);
    bytes = bytes.sliced(*size);
    return part;
}

void appendPart(QByteArray& bytes, QByteArrayView part)
{
    appendNumber(bytes, part.size());
    bytes.append(part);
}

QByteArray utf16(QString const& text)
{
    QByteArray bytes(text.size() * 2, Qt::Uninitialized);
    qToBigEndian<char16_t>(text.utf16(), text.size(), bytes.data());
    return bytes;
}

std::optional<QString> textOf(QByteArrayView utf16)
{
    if (utf16.size() % 2 != 0) {
        return std::nullopt;
    }
    QString text(utf16.size() / 2, Qt::Uninitialized);
    qFromBigEndian<char16_t>(utf16.data(), text.size(), text.data());
    return text;
}

} // namespace

std::optional<QByteArray> InstanceMessage::encoded() const
{
    qsizetype size = activationToken.size();
    QByteArray body;
    appendPart(body, activationToken);
    for (QString const& argument : arguments) {
        size += argument.toUtf8().size();
        appendPart(body, utf16(argument));
    }
    if (size > sizeLimit || arguments.size() > countLimit) {
        return std::nullopt;
    }
    QByteArray header = magic.toByteArray();
    appendNumber(header, body.size());
    return header + body;
}

std::optional<qsizetype> InstanceMessage::lengthAfter(QByteArrayView header)
{
    if (!header.startsWith(magic)) {
        return std::nullopt;
    }
    header = header.sliced(magic.size());
    auto const length = takeNumber(header);
    return length && *length <= wireLimit ? length : std::nullopt;
}

std::optional<InstanceMessage> InstanceMessage::decoded(QByteArrayView body)
{
    auto const token = takePart(body);
    if (!token) {
        return std::nullopt;
    }
    InstanceMessage message{.arguments = {}, .activationToken = token->toByteArray()};
    while (!body.isEmpty()) {
        auto const part = takePart(body);
        auto const argument = part ? textOf(*part) : std::nullopt;
        if (!argument || message.arguments.size() == countLimit) {
            return std::nullopt;
        }
        message.arguments.append(*argument);
    }
    return message;
}

} // namespace Softphone::Impl
