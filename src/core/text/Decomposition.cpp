#include "Decomposition_p.h"

#include <QChar>
#include <QList>
#include <QString>

namespace {

/// \a character decomposed until nothing in it decomposes any further.
QString decomposeFully(char32_t character)
{
    if (QChar::decompositionTag(character) != QChar::Canonical) {
        return QString::fromUcs4(&character, 1);
    }
    QString full;
    for (char32_t const part : QChar::decomposition(character).toUcs4()) {
        full += decomposeFully(part);
    }
    return full;
}

} // namespace

DecompositionTable const& DecompositionTable::instance()
{
    static DecompositionTable const table;
    return table;
}

DecompositionTable::DecompositionTable()
    : m_places(pageSize)
{
    for (char32_t character = 0; character < end; ++character) {
        bool const decomposes = QChar::decompositionTag(character) == QChar::Canonical;
        if (decomposes && !isHangulSyllable(character)) {
            add(character);
        }
        if (character < m_staying.size()) {
            m_staying.set(character,
                          !decomposes && !QChar::isMark(character) && !QChar::isSurrogate(character));
        }
    }
}

void DecompositionTable::add(char32_t character)
{
    quint16& page = m_pages[character / pageSize];
    if (page == 0) {
        page = static_cast<quint16>(m_places.size() / pageSize);
        m_places.resize(m_places.size() + pageSize);
    }
    QString const full = decomposeFully(character);
    m_places[page * pageSize + character % pageSize] = {static_cast<quint16>(m_units.size()),
                                                        static_cast<quint16>(full.size())};
    m_units += full.toStdU16String();
}

std::array<char16_t, 3> decomposeHangul(char32_t character)
{
    constexpr char32_t vowels = 21;
    constexpr char32_t finals = 28; // "none" included
    char32_t const index = character - 0xAC00;
    char32_t const final = index % finals;
    return {static_cast<char16_t>(0x1100 + index / (vowels * finals)),
            static_cast<char16_t>(0x1161 + index % (vowels * finals) / finals),
            static_cast<char16_t>(final == 0 ? 0 : 0x11A7 + final)};
}
