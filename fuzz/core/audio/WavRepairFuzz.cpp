// The input is a file to repair.

#include "InputFile.h"

#include <audio/wav.h>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* bytes, std::size_t size)
{
    InputFile const file(bytes, size);
    std::string const before = InputFile::content();
    wav::RepairStatus const status = wav::tryToRepairWavHeaderIfNeeded(InputFile::path()).status;
    std::string const after = InputFile::content();
    if (after.size() != before.size()) {
        std::abort();
    }
    long changed = 0;
    for (std::size_t i = 0; i < before.size(); ++i) {
        changed += before[i] != after[i] ? 1 : 0;
    }
    // Two sizes of four bytes are all that a repair writes.
    bool const repaired = status == wav::RepairStatus::Repaired;
    if (changed > (repaired ? 8 : 0)) {
        std::abort();
    }
    bool const settled =
        wav::tryToRepairWavHeaderIfNeeded(InputFile::path()).status == wav::RepairStatus::NotNeeded;
    if (repaired && !settled) {
        std::abort();
    }
    return 0;
}
