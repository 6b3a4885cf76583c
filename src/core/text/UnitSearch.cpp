#include "UnitSearch_p.h"

#include <array>
#include <cstddef>
#include <cstring>

namespace {

constexpr char16_t firstNonAscii = 0x80;

constexpr char16_t asciiLower(char16_t unit)
{
    return unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit | 0x20) : unit;
}

/// Lowers whole blocks of ASCII, each in a few vector instructions since a block is read before it is
/// written.
///
/// \return the number of units done
qsizetype writeLowerAscii(char16_t const* units, qsizetype size, char16_t* out)
{
    std::array<char16_t, 8> block;
    qsizetype done = 0;
    while (size - done >= qsizetype(block.size())) {
        std::memcpy(block.data(), units + done, sizeof block);
        char16_t seen = 0;
        for (char16_t const unit : block) {
            seen = static_cast<char16_t>(seen | unit);
        }
        if (seen >= firstNonAscii) {
            break;
        }
        for (char16_t& unit : block) {
            unit = asciiLower(unit);
        }
        std::memcpy(out + done, block.data(), sizeof block);
        done += qsizetype(block.size());
    }
    return done;
}

char16_t* writeCharacter(char32_t character, char16_t* out)
{
    for (char16_t const unit : QChar::fromUcs4(character)) {
        *out++ = unit;
    }
    return out;
}

/// Writes \a text to \a out, ASCII in lower case and every other character as \a writeMapped writes it; stops
/// when that gives null.
template <typename WriteMapped>
char16_t* writeMappedCase(QStringView text, char16_t* out, WriteMapped writeMapped)
{
    char16_t const* const units = text.utf16();
    qsizetype const size = text.size();
    qsizetype at = 0;
    while (at < size) {
        qsizetype const done = writeLowerAscii(units + at, size - at, out);
        at += done;
        out += done;
        // Text beyond ASCII comes in runs too: the next block is only tried after as many units.
        for (qsizetype const stop = std::min(size, at + 8); at < stop; ++at) {
            char16_t const unit = units[at];
            if (unit < firstNonAscii) {
                *out++ = asciiLower(unit);
            } else if (QChar::isHighSurrogate(unit) && at + 1 < size &&
                       QChar::isLowSurrogate(units[at + 1])) {
                ++at;
                out = writeMapped(QChar::surrogateToUcs4(unit, units[at]), out);
            } else {
                out = writeMapped(char32_t(unit), out);
                if (out == nullptr) {
                    return nullptr;
                }
            }
        }
    }
    return out;
}

} // namespace

void UnitSearch::findBorders()
{
    auto const length = static_cast<std::size_t>(m_wanted.size());
    m_borders.assign(length + 1, 0);
    qsizetype border = 0;
    for (std::size_t end = 1; end < length; ++end) {
        QChar const unit = m_wanted[static_cast<qsizetype>(end)];
        while (border > 0 && m_wanted[border] != unit) {
            border = m_borders[static_cast<std::size_t>(border)];
        }
        border += m_wanted[border] == unit ? 1 : 0;
        m_borders[end + 1] = border;
    }
}

qsizetype UnitSearch::followBorders(QStringView text, qsizetype from) const
{
    qsizetype matched = 0;
    for (qsizetype at = from; at < text.size(); ++at) {
        while (matched > 0 && m_wanted[matched] != text[at]) {
            matched = m_borders[static_cast<std::size_t>(matched)];
        }
        matched += m_wanted[matched] == text[at] ? 1 : 0;
        if (matched == m_wanted.size()) {
            return at + 1 - matched;
        }
    }
    return -1;
}

char16_t* writeFolded(QStringView text, char16_t* out)
{
    return writeMappedCase(text, out, [](char32_t character, char16_t* to) {
        return writeCharacter(QChar::toCaseFolded(character), to);
    });
}

char16_t* writeLower(QStringView text, char16_t* out)
{
    // The only character whose lower case is longer than itself: I with a dot becomes i and the dot above.
    constexpr char32_t dottedCapitalI = 0x130;
    return writeMappedCase(text, out, [](char32_t character, char16_t* to) {
        if (QChar::isSurrogate(character)) {
            return static_cast<char16_t*>(nullptr);
        }
        if (character == dottedCapitalI) {
            *to++ = u'i';
            *to++ = u'\u0307';
            return to;
        }
        return writeCharacter(QChar::toLower(character), to);
    });
}
