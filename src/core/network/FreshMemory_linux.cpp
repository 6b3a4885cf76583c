#include "FreshMemory_p.h"

#include <cstdint>
#include <sys/mman.h>
#include <unistd.h>

void preparePages(std::span<char> memory)
{
    // Systems older than the request refuse it.
    auto const pageSize = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
    auto const begin = reinterpret_cast<std::uintptr_t>(memory.data());
    std::uintptr_t const ahead = (pageSize - begin % pageSize) % pageSize;
    if (ahead < memory.size()) {
        std::span<char> const pages = memory.subspan(ahead);
        madvise(pages.data(), pages.size() - pages.size() % pageSize, MADV_POPULATE_WRITE);
    }
}
