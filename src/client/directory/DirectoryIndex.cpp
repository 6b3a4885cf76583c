#include "DirectoryIndex_p.h"

#include <QHashFunctions>
#include <algorithm>
#include <numeric>
#include <utility>

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

/// What the words of a piece of \a text, those from \a first to \a last, can be found by.
quint64 signatureOf(FoldedText const& text, std::size_t first, std::size_t last)
{
    QStringView const letters = text.letters;
    quint64 bits = 0;
    qsizetype covered = 0;
    int number = -1;
    for (std::size_t index = first; index <= last; ++index) {
        FoldedWord const& word = text.words[index];
        QStringView const run = letters.sliced(word.begin, word.runEnd - word.begin);
        bits |= letterBits(run);
        // Digits that open a run may go on in it, and a word of digits is looked for as in a number.
        if (run.front() >= u'0' && run.front() <= u'9' && word.begin >= covered) {
            bits |= digitBits(run);
            covered = word.runEnd;
        }
        if (std::exchange(number, word.number) != word.number && word.number >= 0) {
            FoldedNumber const& whole = text.numbers[static_cast<std::size_t>(word.number)];
            bits |= digitBits(letters.sliced(whole.begin, whole.end - whole.begin));
        }
    }
    return bits;
}

/// Appends the word with the index \a index of \a text, and in front of it what separates it from the one
/// before.
void appendWord(std::u16string& piece, FoldedText const& text, std::size_t index)
{
    FoldedWord const& word = text.words[index];
    if (!piece.empty()) {
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
    piece.append(text.letters, static_cast<std::size_t>(word.begin),
                 static_cast<std::size_t>(word.end - word.begin));
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
    std::u16string piece;
    for (int field = 0; QString const& content : fields) {
        m_folded.clear();
        m_folded.append(content, 0);
        for (std::size_t first = 0, word = 0; word < m_folded.words.size(); ++word) {
            appendWord(piece, m_folded, word);
            if (endsPiece(m_folded, word)) {
                m_references.push_back({pieceOf(piece, first, word) & 0x7ffffffU,
                                        static_cast<quint32>(std::min(field, lastField)) & 31U});
                piece.clear();
                first = word + 1;
            }
        }
        ++field;
    }
    m_cards[number].end = static_cast<quint32>(m_references.size());
    m_fresh.push_back(card);
}

void DirectoryIndex::remove(int card)
{
    forgetLastFilter();
    References& of = m_cards[static_cast<std::size_t>(card)];
    m_waste += of.end - of.begin;
    auto const end = static_cast<quint32>(m_references.size());
    of = {end, end};
}

void DirectoryIndex::clear()
{
    *this = DirectoryIndex();
}

void DirectoryIndex::settle()
{
    m_texts.shrink_to_fit();
    m_pieces.shrink_to_fit();
    m_signatures.shrink_to_fit();
    m_references.shrink_to_fit();
    m_cards.shrink_to_fit();
    collectPlaces();
}

void DirectoryIndex::collectPlaces()
{
    m_fresh = {};
    m_settled = static_cast<quint32>(m_references.size());
    auto const each = [this](auto const& take) {
        for (auto card = static_cast<quint32>(m_cards.size()); card-- > 0;) {
            for (quint32 at = m_cards[card].begin; at < m_cards[card].end; ++at) {
                take(card, m_references[at]);
            }
        }
    };
    m_placesBegin.assign(m_pieces.size() + 1, 0);
    each([this](quint32, Reference const& of) { ++m_placesBegin[of.piece]; });
    std::partial_sum(m_placesBegin.begin(), m_placesBegin.end(), m_placesBegin.begin());
    m_places.resize(m_placesBegin.back());
    m_places.shrink_to_fit();
    // Each piece is filled from its end, which leaves its beginning.
    each([this](quint32 card, Reference const& of) {
        m_places[--m_placesBegin[of.piece]] = {card & 0x7ffffffU, of.field};
    });
}

/// What was collected of \a piece: nothing of one that is newer.
std::span<DirectoryIndex::Place const> DirectoryIndex::places(quint32 piece) const
{
    if (piece + 1 >= m_placesBegin.size()) {
        return {};
    }
    return {m_places.begin() + m_placesBegin[piece], m_places.begin() + m_placesBegin[piece + 1]};
}

QStringView DirectoryIndex::text(quint32 piece) const
{
    qsizetype const begin = m_pieces[piece].begin;
    qsizetype const end = piece + 1 < m_pieces.size() ? m_pieces[piece + 1].begin : std::ssize(m_texts);
    return QStringView(m_texts).sliced(begin, end - begin);
}

/// The piece \a text, which is made of the folded words from \a first to \a last.
quint32 DirectoryIndex::pieceOf(QStringView text, std::size_t first, std::size_t last)
{
    if (3 * m_slots.size() < 4 * (m_pieces.size() + 1)) {
        growSlots();
    }
    std::size_t slot = qHash(text) & (m_slots.size() - 1);
    for (; m_slots[slot] != 0; slot = (slot + 1) & (m_slots.size() - 1)) {
        if (this->text(m_slots[slot] - 1) == text) {
            return m_slots[slot] - 1;
        }
    }
    auto const begin = static_cast<quint32>(m_texts.size());
    m_texts.append(text.utf16(), static_cast<std::size_t>(text.size()));
    bool const isWord = first == last && m_folded.words[first].number < 0;
    m_pieces.push_back({begin & 0x7fffffffU, isWord ? 1U : 0U});
    m_signatures.push_back(signatureOf(m_folded, first, last));
    m_slots[slot] = static_cast<quint32>(m_pieces.size());
    return m_slots[slot] - 1;
}

void DirectoryIndex::growSlots()
{
    m_slots.assign(std::max<std::size_t>(1024, 2 * m_slots.size()), 0);
    for (quint32 piece = 0; piece < m_pieces.size(); ++piece) {
        std::size_t slot = qHash(text(piece)) & (m_slots.size() - 1);
        while (m_slots[slot] != 0) {
            slot = (slot + 1) & (m_slots.size() - 1);
        }
        m_slots[slot] = piece + 1;
    }
}

/// The grade of \a word in \a piece, counted from 1; 0 when it does not match.
quint32 DirectoryIndex::gradeOf(FilterWord const& word, quint32 piece)
{
    auto const counted = [](WordGrade grade) { return static_cast<quint32>(grade) + 1; };
    QStringView const letters = text(piece);
    if (m_pieces[piece].isWord != 0) {
        bool const whole = letters.size() == word.letters.size();
        return letters.startsWith(word.letters) ? counted(whole ? WordGrade::Whole : WordGrade::Opens) : 0;
    }
    m_folded.clear();
    m_folded.append(letters, 0);
    quint32 best = 0;
    for (std::size_t index = 0; index < m_folded.words.size(); ++index) {
        if (auto const place = findWord(word, m_folded, index)) {
            best = std::max(best, counted(place->grade));
        }
    }
    return best;
}

void DirectoryIndex::gradePiece(FilterWord const& word, quint32 piece, WordMatches& matches)
{
    if (quint32 const grade = gradeOf(word, piece); grade > 0) {
        m_marks[piece] = grade;
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
    return m_last.size() <= reading.size() && std::equal(m_last.begin(), m_last.end(), reading.begin(),
                                                         [](WordMatches const& old, FilterWord const& word) {
                                                             return word.letters.startsWith(old.word.letters);
                                                         });
}

std::vector<int> const& DirectoryIndex::ranks(FilterWords const& words)
{
    // A few cards that have changed are looked at one by one.
    if (m_fresh.size() > m_cards.size() / 64) {
        collectPlaces();
    }
    std::vector<FilterWords::Reading> const& readings = words.readings();
    bool const single = readings.size() == 1;
    if (!single || !narrows(readings.front())) {
        m_last.clear();
    }
    std::vector<WordMatches> const before = std::exchange(m_last, {});
    m_found.clear();
    m_ranks.assign(m_cards.size(), 0);
    m_marks.resize(m_pieces.size(), 0);
    for (FilterWords::Reading const& reading : readings) {
        rankAll(reading, before);
    }
    if (!single || !std::ranges::all_of(readings.front(), mayBeNarrowed)) {
        m_last.clear();
    }
    return m_ranks;
}

/// \a before is what the words that this reading goes on with have matched.
void DirectoryIndex::rankAll(FilterWords::Reading const& reading, std::vector<WordMatches> const& before)
{
    std::vector<WordMatches> matches;
    for (std::size_t word = 0; word < reading.size(); ++word) {
        matches.push_back(match(reading[word], word < before.size() ? &before[word].pieces : nullptr));
    }
    bool const single = reading.size() == 1;
    if (single) {
        rankPlaces(matches.front());
    } else {
        markWords(matches);
        rankPlaces(reading, matches);
    }
    for (int const card : m_fresh) {
        auto const number = static_cast<quint32>(card);
        take(number, single ? rankByOneWord(m_cards[number]) : rankByWords(reading, m_cards[number]));
    }
    for (WordMatches const& of : matches) {
        for (quint32 const piece : of.pieces) {
            m_marks[piece] = 0;
        }
    }
    m_last = std::move(matches);
}

/// Makes each mark the words that match the piece, in place of the grade of one.
void DirectoryIndex::markWords(std::vector<WordMatches> const& matches)
{
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

void DirectoryIndex::rankPlaces(WordMatches const& of)
{
    for (quint32 const piece : of.pieces) {
        auto const grade = static_cast<WordGrade>(m_marks[piece] - 1);
        for (Place const& place : places(piece)) {
            if (!isFresh(place.card)) {
                take(place.card, wordScore(grade, static_cast<int>(place.field)));
            }
        }
    }
}

void DirectoryIndex::rankPlaces(FilterWords::Reading const& reading, std::vector<WordMatches> const& matches)
{
    // How many of the words, one after the other, each card has so far.
    std::vector<quint8> served(m_cards.size(), 0);
    for (quint8 word = 0; WordMatches const& of : matches) {
        for (quint32 const piece : of.pieces) {
            for (Place const& place : places(piece)) {
                if (quint8& count = served[place.card]; count == word) {
                    ++count;
                }
            }
        }
        ++word;
    }
    for (quint32 card = 0; card < served.size(); ++card) {
        if (served[card] == matches.size()) {
            take(card, rankByWords(reading, m_cards[card]));
        }
    }
}

void DirectoryIndex::take(quint32 card, int rank)
{
    int& best = m_ranks[card];
    if (rank > 0 && best == 0) {
        m_found.push_back(static_cast<int>(card));
    }
    best = std::max(best, rank);
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
            m_folded.append(text(reference.piece), static_cast<int>(reference.field));
        }
    }
    return FilterWords::bestMatch(reading, m_folded).rank;
}

void DirectoryIndex::forgetLastFilter()
{
    m_last.clear();
}

} // namespace Softphone
