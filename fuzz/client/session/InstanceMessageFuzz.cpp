// Bytes that another process sends to the first copy: refused, or a message that has these very bytes.

#include "../../../src/client/session/InstanceMessage_p.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

using Softphone::Impl::InstanceMessage;

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    QByteArrayView const bytes(data, static_cast<qsizetype>(size));
    if (bytes.size() < InstanceMessage::headerSize) {
        return 0;
    }
    auto const header = bytes.first(InstanceMessage::headerSize);
    auto const body = bytes.sliced(InstanceMessage::headerSize);
    auto const length = InstanceMessage::lengthAfter(header);
    auto const message = InstanceMessage::decoded(body);
    auto const again = message ? message->encoded() : std::nullopt;
    // Within the limits for the way there is text whose UTF-8 is beyond its own.
    if (again && (again->sliced(InstanceMessage::headerSize) != body ||
                  (length && *length == body.size() && !again->startsWith(header)))) {
        std::abort();
    }
    return 0;
}
