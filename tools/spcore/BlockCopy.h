#pragma once

#include <cstddef>

enum class BlockCopy {
    Done,
    NotRead,    ///< the source failed, or has no more
    NotWritten, ///< the target took no more
};

/// Copies \a size bytes from where \a source stands to where \a target stands, descriptors of regular files,
/// and moves both past them.
BlockCopy copyBlock(int source, int target, std::size_t size);

/// As many of these bytes as the system copies by itself; 0 when it copies none, for whatever reason.
std::size_t copyWithinSystem(int source, int target, std::size_t size);
