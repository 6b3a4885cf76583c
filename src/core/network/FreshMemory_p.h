#pragma once

#include <span>

/// Has the system provide the pages of \a memory at once, before they are written to one after the other,
/// where it can do that. What the pages hold stays; nothing happens on failure.
void preparePages(std::span<char> memory);
