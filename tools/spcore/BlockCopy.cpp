#include "BlockCopy.h"

#include <algorithm>
#include <array>
#include <span>
#include <unistd.h>

namespace {

bool writeAll(int target, std::span<char const> bytes)
{
    while (!bytes.empty()) {
        ssize_t const written = ::write(target, bytes.data(), bytes.size());
        if (written <= 0) {
            return false;
        }
        bytes = bytes.subspan(static_cast<std::size_t>(written));
    }
    return true;
}

BlockCopy copyThroughMemory(int source, int target, std::size_t size)
{
    std::array<char, 0x10000> room;
    while (size > 0) {
        ssize_t const length = ::read(source, room.data(), std::min(size, room.size()));
        if (length <= 0) {
            return BlockCopy::NotRead;
        }
        auto const read = static_cast<std::size_t>(length);
        if (!writeAll(target, std::span(room).first(read))) {
            return BlockCopy::NotWritten;
        }
        size -= read;
    }
    return BlockCopy::Done;
}

} // namespace

BlockCopy copyBlock(int source, int target, std::size_t size)
{
    while (size > 0) {
        std::size_t const copied = copyWithinSystem(source, target, size);
        if (copied == 0) {
            // This works between any two files, and tells which of them fails.
            return copyThroughMemory(source, target, size);
        }
        size -= copied;
    }
    return BlockCopy::Done;
}
