#include "DTMFHelpers.h"

#include <cstdint>
#include <string_view>

namespace {

/// The characters in the order of their signals' numbers.
constexpr std::string_view characters = ",0123456789*#";

/// The same characters as a set: bit n stands for the character with the code n.
constexpr std::uint64_t characterSet = [] {
    std::uint64_t set = 0;
    for (char const c : characters) {
        set |= std::uint64_t{1} << static_cast<unsigned>(c);
    }
    return set;
}();

} // namespace

std::optional<char> DTMFHelpers::translateDTMFSignalToChar(DTMFSignal signal)
{
    // A negative number becomes an index far beyond the end.
    auto const index = static_cast<std::size_t>(signal);
    return index < characters.size() ? std::optional(characters[index]) : std::nullopt;
}

std::optional<DTMFHelpers::DTMFSignal> DTMFHelpers::translateCharToDTMFSignal(char character)
{
    std::size_t const index = characters.find(character);
    return index < characters.size() ? std::optional(static_cast<DTMFSignal>(index)) : std::nullopt;
}

bool DTMFHelpers::isValidDTMFCharacter(QChar character)
{
    char16_t const code = character.unicode();
    return code < 64 && (characterSet >> code & 1U) != 0;
}
