#include "DirectoryIndex_p.h"

#include <QHashFunctions>
#include <algorithm>

namespace Softphone {

namespace {

constexpr int lastField = 30; // all from here on count as one, see SearchFilter::rank()

/// The bits of a signature for a first letter, and for it and the second.
quint64 letterBits(QStringView letters)
{
    auto const first = letters.front().unicode();
    // Digits have bits of their own, or a letter would find most numbers.
    quint64 bits = quint64(1) << (first >= u'0' && first <= u'9' ? first - u'0' : 10U + first % 22U);
    if (letters.size() > 1) {
        bits |= quint64(1) << (32 + ((first * 7U + letters[1].unicode()) & 31U));
    }
    return bits;
}

/// The bits for each place of \a digits.
quint64 digitBits(QStringView digits)
{
    quint64 bits = 0;
    for (qsizetype at = 0; at < digits.size(); ++at) {
        bits |= letterBits(digits.sliced(at));
    }
    return bits;
}

/// What the words of \a text can be found by.
quint64 signatureOf(FoldedText const& text)
{
    QStringView const letters = text.letters;
    quint64 bits = 0;
    qsizetype covered = 0;
    for (FoldedWord const& word : text.words) {
        QStringView const run = letters.sliced(word.begin, word.runEnd - word.begin);
        bits |= letterBits(run);
        // Digits that open a run may go on in it, and a word of digits is looked for as in a number.
        if (run.front() >= u'0' && run.front() <= u'9' && word.begin >= covered) {
            bits |= digitBits(run);
            covered = word.runEnd;
        }
    }
    for (FoldedNumber const& number : text.numbers) {
        bits |= digitBits(letters.sliced(number.begin, number.end - number.begin));
    }
    return bits;
}

/// Appends the word with the index \a index of \a text, and in front of it what separates it from the one
/// before.
void appendWord(QString& piece, FoldedText const& text, std::size_t index)
{
    FoldedWord const& word = text.words[index];
    if (!piece.isEmpty()) {
        FoldedWord const& before = text.words[index - 1];
        bool const sameRun = before.runEnd > before.end;
        bool const sameNumber = word.number >= 0 && word.number == before.number;
        piece += sameNumber ? (sameRun ? u'-' : u' ') : u':';
    }
    if (word.number >= 0) {
        FoldedNumber const& number = text.numbers[static_cast<std::size_t>(word.number)];
        if (number.begin == word.begin && number.international) {
            piece += u'+';
        }
    }
    piece += QStringView(text.letters).sliced(word.begin, word.end - word.begin);
}

/// Whether no word of a filter reaches from the word with the index \a index to the next.
bool endsPiece(FoldedText const& text, std::size_t index)
{
    if (index + 1 == text.words.size()) {
        return true;
    }
    FoldedWord const& word = text.words[index];
    FoldedWord const& next = text.words[index + 1];
    return word.runEnd == word.end && (word.number < 0 || word.number != next.number);
}

bool mayBeNarrowed(FilterWord const& word)
{
    // A zero or a country code in front may be left out once more digits follow.
    return !word.digits || (word.significant == 0 && !word.international);
}

} // namespace

void DirectoryIndex::add(int card, QStringList const& fields)
{
    forgetLastFilter();
    auto const number = static_cast<std::size_t>(card);
    if (number >= m_cards.size()) {
        m_cards.resize(number + 1);
    }
    remove(card);
    m_cards[number].begin = static_cast<quint32>(m_references.size());
    QString piece;
    for (int field = 0; QString const& content : fields) {
        m_folded.clear();
        m_folded.append(content, 0);
        for (std::size_t word = 0; word < m_folded.words.size(); ++word) {
            appendWord(piece, m_folded, word);
            if (endsPiece(m_folded, word)) {
                m_references.push_back(
                    {pieceOf(piece) & 0x7ffffffU, static_cast<quint32>(std::min(field, lastField)) & 31U});
                piece.resize(0);
            }
        }
        ++field;
    }
    m_cards[number].end = static_cast<quint32>(m_references.size());
}

void DirectoryIndex::remove(int card)
{
    forgetLastFilter();
    References& of = m_cards[static_cast<std::size_t>(card)];
    m_waste += of.end - of.begin;
    of = {};
}

void DirectoryIndex::clear()
{
    *this = DirectoryIndex();
}

void DirectoryIndex::squeeze()
{
    m_texts.squeeze();
    m_pieces.shrink_to_fit();
    m_signatures.shrink_to_fit();
    m_references.shrink_to_fit();
    m_cards.shrink_to_fit();
}

quint32 DirectoryIndex::pieceOf(QStringView text)
{
    if (m_slots.size() < 2 * (m_pieces.size() + 1)) {
        growSlots();
    }
    std::size_t slot = qHash(text) & (m_slots.size() - 1);
    for (; m_slots[slot] != 0; slot = (slot + 1) & (m_slots.size() - 1)) {
        if (this->text(m_pieces[m_slots[slot] - 1]) == text) {
            return m_slots[slot] - 1;
        }
    }
    auto const begin = static_cast<quint32>(m_texts.size());
    m_texts += text;
    m_pieces.push_back({begin, static_cast<quint32>(m_texts.size())});
    FoldedText folded;
    folded.append(text, 0);
    m_signatures.push_back(signatureOf(folded));
    m_slots[slot] = static_cast<quint32>(m_pieces.size());
    return m_slots[slot] - 1;
}

void DirectoryIndex::growSlots()
{
    m_slots.assign(std::max<std::size_t>(1024, 2 * m_slots.size()), 0);
    for (quint32 piece = 0; piece < m_pieces.size(); ++piece) {
        std::size_t slot = qHash(text(m_pieces[piece])) & (m_slots.size() - 1);
        while (m_slots[slot] != 0) {
            slot = (slot + 1) & (m_slots.size() - 1);
        }
        m_slots[slot] = piece + 1;
    }
}

void DirectoryIndex::gradePiece(FilterWord const& word, quint32 piece, WordMatches& matches)
{
    m_folded.clear();
    m_folded.append(text(m_pieces[piece]), 0);
    quint32 best = 0;
    for (std::size_t index = 0; index < m_folded.words.size(); ++index) {
        if (auto const place = findWord(word, m_folded, index)) {
            best = std::max(best, static_cast<quint32>(place->grade) + 1);
        }
    }
    if (best > 0) {
        m_marks[piece] = best;
        matches.pieces.push_back(piece);
    }
}

/// The pieces that \a word matches, among those given or all; the marks of these are their grades.
DirectoryIndex::WordMatches DirectoryIndex::match(FilterWord const& word, std::vector<quint32> const* among)
{
    WordMatches matches{word, {}};
    if (among != nullptr) {
        for (quint32 const piece : *among) {
            gradePiece(word, piece, matches);
        }
        return matches;
    }
    quint64 wanted = letterBits(word.letters);
    if (word.digits && word.international) {
        wanted = 0;
    } else if (word.digits && word.significant < word.letters.size()) {
        wanted = digitBits(QStringView(word.letters).sliced(word.significant));
    }
    for (quint32 piece = 0; piece < m_signatures.size(); ++piece) {
        if ((m_signatures[piece] & wanted) == wanted) {
            gradePiece(word, piece, matches);
        }
    }
    return matches;
}

/// Whether what \a reading matches is among what the last filter matched.
bool DirectoryIndex::narrows(FilterWords::Reading const& reading) const
{
    return !m_last.empty() && m_last.size() <= reading.size() &&
           std::equal(m_last.begin(), m_last.end(), reading.begin(),
                      [](WordMatches const& old, FilterWord const& word) {
                          return word.letters.startsWith(old.word.letters);
                      });
}

std::vector<int> const& DirectoryIndex::ranks(FilterWords const& words)
{
    std::vector<FilterWords::Reading> const& readings = words.readings();
    bool const single = readings.size() == 1;
    std::vector<int> const before = std::move(m_found);
    bool const narrow = single && narrows(readings.front());
    if (!narrow) {
        m_last.clear();
    }
    m_found.clear();
    m_ranks.assign(m_cards.size(), 0);
    m_marks.resize(m_pieces.size(), 0);
    for (FilterWords::Reading const& reading : readings) {
        rankAll(reading, narrow ? &before : nullptr);
    }
    if (!single || !std::ranges::all_of(readings.front(), mayBeNarrowed)) {
        m_last.clear();
    }
    return m_ranks;
}

void DirectoryIndex::rankAll(FilterWords::Reading const& reading, std::vector<int> const* among)
{
    std::vector<WordMatches> matches;
    for (std::size_t word = 0; word < reading.size(); ++word) {
        matches.push_back(
            match(reading[word], among != nullptr && word < m_last.size() ? &m_last[word].pieces : nullptr));
    }
    if (reading.size() > 1) {
        for (WordMatches const& of : matches) {
            for (quint32 const piece : of.pieces) {
                m_marks[piece] = 0;
            }
        }
        for (std::size_t word = 0; word < matches.size(); ++word) {
            for (quint32 const piece : matches[word].pieces) {
                m_marks[piece] |= 1U << word;
            }
        }
    }
    auto const rank = [&](int card) {
        References const& of = m_cards[static_cast<std::size_t>(card)];
        int const found = reading.size() == 1 ? rankByOneWord(of) : rankByWords(reading, of);
        int& best = m_ranks[static_cast<std::size_t>(card)];
        if (found > 0 && best == 0) {
            m_found.push_back(card);
        }
        best = std::max(best, found);
    };
    if (among != nullptr) {
        std::ranges::for_each(*among, rank);
    } else {
        for (int card = 0; card < static_cast<int>(m_cards.size()); ++card) {
            rank(card);
        }
    }
    for (WordMatches const& of : matches) {
        for (quint32 const piece : of.pieces) {
            m_marks[piece] = 0;
        }
    }
    m_last = std::move(matches);
}

int DirectoryIndex::rankByOneWord(References const& of) const
{
    int best = 0;
    for (quint32 at = of.begin; at < of.end; ++at) {
        Reference const& reference = m_references[at];
        if (quint32 const grade = m_marks[reference.piece]; grade > 0) {
            best = std::max(best,
                            wordScore(static_cast<WordGrade>(grade - 1), static_cast<int>(reference.field)));
        }
    }
    return best;
}

int DirectoryIndex::rankByWords(FilterWords::Reading const& reading, References const& of)
{
    quint32 found = 0;
    for (quint32 at = of.begin; at < of.end; ++at) {
        found |= m_marks[m_references[at].piece];
    }
    if (found != static_cast<quint32>((quint64(1) << reading.size()) - 1)) {
        return 0;
    }
    m_folded.clear();
    for (quint32 at = of.begin; at < of.end; ++at) {
        Reference const& reference = m_references[at];
        if (m_marks[reference.piece] != 0) {
            m_folded.append(text(m_pieces[reference.piece]), static_cast<int>(reference.field));
        }
    }
    return FilterWords::bestMatch(reading, m_folded).rank;
}

void DirectoryIndex::forgetLastFilter()
{
    m_last.clear();
}

} // namespace Softphone
