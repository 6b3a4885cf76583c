// The input is a file.

#include "InputFile.h"

#include <audio/WAVData.h>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* bytes, std::size_t size)
{
    InputFile const file(bytes, size);
    WAVData data(InputFile::path());
    constexpr std::size_t largestZeroedRest = 0x10000;
    bool const proportionate = data.formatBody().size() <= size + largestZeroedRest &&
                               data.listBody().size() <= size + largestZeroedRest;
    bool const inside = !data.hasHeader() || data.headerLength() <= size;
    if (!proportionate || !inside || data.parseFile() != data.hasHeader()) {
        std::abort();
    }
    WAVData const before = data;
    if (!data.append(before) || data.dataSize() != 2 * before.dataSize()) {
        std::abort();
    }
    std::ofstream sink("/dev/null", std::ios::binary);
    data.writeHeaderToFile(sink);
    // Without a header the copy would only be slow.
    if (data.hasHeader() && !data.writePayloadToFile(sink)) {
        std::abort();
    }
    return 0;
}
