#include "FilterWords_p.h"

#include <QVarLengthArray>
#include <algorithm>
#include <limits>

namespace Softphone {

namespace {

constexpr std::size_t mostWords = 32;
constexpr int mostFields = 31;
// The sum over all words at one level stays below one of the next.
constexpr int openingScore = 1 << 10;
constexpr int wholeScore = 1 << 16;
static_assert(mostWords * mostFields < openingScore && mostWords * openingScore < wholeScore);

/// A country code and the digits that have to follow it before a number is taken for one.
constexpr qsizetype longestCountryCode = 3;
constexpr qsizetype shortestNationalNumber = 4;

QStringView slice(QStringView letters, qsizetype begin, qsizetype end)
{
    return letters.sliced(begin, end - begin);
}

FilterWord wordOf(FoldedText const& text, FoldedWord const& word)
{
    FilterWord found{slice(text.letters, word.begin, word.end).toString(), 0, word.number >= 0, false};
    if (found.digits) {
        FoldedNumber const& number = text.numbers[static_cast<std::size_t>(word.number)];
        bool const alone = number.begin == word.begin && number.end == word.end;
        found.international = alone && number.international;
        auto const significant =
            std::ranges::find_if(found.letters, [](QChar digit) { return digit != u'0'; });
        found.significant = significant - found.letters.cbegin();
    }
    return found;
}

/// Every word on its own.
FilterWords::Reading apart(FoldedText const& text)
{
    FilterWords::Reading words;
    for (FoldedWord const& word : text.words) {
        words.push_back(wordOf(text, word));
    }
    return words;
}

/// Whether the number of the word with the index \a index begins and ends where blanks do.
bool isNumberByItself(FoldedText const& text, std::size_t index)
{
    FoldedNumber const& number = text.numbers[static_cast<std::size_t>(text.words[index].number)];
    auto last = index;
    while (text.words[last].end < number.end) {
        ++last;
    }
    return text.words[index].begin == number.begin && text.words[last].runEnd == number.end;
}

/// What only punctuation separates is one word, and so are the groups of a number.
FilterWords::Reading together(FoldedText const& text)
{
    FilterWords::Reading words;
    for (std::size_t index = 0; index < text.words.size();) {
        FoldedWord whole = text.words[index];
        if (whole.number >= 0 && isNumberByItself(text, index)) {
            whole.end = text.numbers[static_cast<std::size_t>(whole.number)].end;
        } else if (whole.runEnd != whole.end) {
            bool const digits =
                std::ranges::all_of(slice(text.letters, whole.begin, whole.runEnd),
                                    [](QChar letter) { return letter >= u'0' && letter <= u'9'; });
            whole.end = whole.runEnd;
            whole.number = digits ? whole.number : -1;
        }
        words.push_back(wordOf(text, whole));
        while (index < text.words.size() && text.words[index].begin < whole.end) {
            ++index;
        }
    }
    return words;
}

/// How \a piece, put at \a at, stands in \a number; nothing when it does not.
std::optional<WordPlace> pieceAt(QStringView piece, FoldedText const& text, FoldedNumber const& number,
                                 qsizetype at, bool opens)
{
    qsizetype const end = at + piece.size();
    if (end > number.end || slice(text.letters, at, end) != piece) {
        return std::nullopt;
    }
    bool const whole = opens && end == number.end;
    return WordPlace{whole ? WordGrade::Whole : opens ? WordGrade::Opens : WordGrade::Inside, at, end};
}

void keepBetter(std::optional<WordPlace>& best, std::optional<WordPlace> const& other)
{
    if (other && (!best || other->grade > best->grade)) {
        best = other;
    }
}

/// \a word as it stands, at \a at.
std::optional<WordPlace> asWritten(FilterWord const& word, FoldedText const& text, FoldedWord const& host,
                                   FoldedNumber const& number, qsizetype at)
{
    auto place = pieceAt(word.letters, text, number, at,
                         at == number.begin || at == number.significant || at == host.begin);
    if (place && place->grade == WordGrade::Whole && at != number.begin && at != number.significant) {
        place->grade = WordGrade::Opens;
    }
    return place;
}

/// \a word without the zeros in front, where the national number may begin: after a country code, or at once.
std::optional<WordPlace> withoutZeros(FilterWord const& word, FoldedText const& text,
                                      FoldedNumber const& number, qsizetype at)
{
    QStringView const digits = QStringView(word.letters).sliced(word.significant);
    qsizetype const countryCode = at - number.significant;
    bool const begins = number.international && !word.international
                            ? countryCode >= 1 && countryCode <= longestCountryCode
                            : countryCode == 0;
    if (word.significant == 0 || digits.isEmpty() || !begins) {
        return std::nullopt;
    }
    return pieceAt(digits, text, number, at, true);
}

/// \a word without its country code, at the first digit of a national number.
std::optional<WordPlace> withoutCountryCode(FilterWord const& word, FoldedText const& text,
                                            FoldedNumber const& number, qsizetype at)
{
    if (!word.international || number.international || at != number.significant) {
        return std::nullopt;
    }
    QStringView const digits = QStringView(word.letters).sliced(word.significant);
    for (qsizetype code = 1; code <= longestCountryCode && code < digits.size(); ++code) {
        QStringView national = digits.sliced(code);
        while (national.startsWith(u'0')) {
            national = national.sliced(1);
        }
        if (national.size() >= shortestNationalNumber) {
            if (auto const place = pieceAt(national, text, number, at, true)) {
                return place;
            }
        }
    }
    return std::nullopt;
}

std::optional<WordPlace> findInNumber(FilterWord const& word, FoldedText const& text, FoldedWord const& host)
{
    FoldedNumber const& number = text.numbers[static_cast<std::size_t>(host.number)];
    std::optional<WordPlace> best;
    for (qsizetype at = host.begin; at < host.end; ++at) {
        keepBetter(best, asWritten(word, text, host, number, at));
        keepBetter(best, withoutZeros(word, text, number, at));
        keepBetter(best, withoutCountryCode(word, text, number, at));
    }
    return best;
}

/// The index of a pair in a list of rows of \a width each.
constexpr qsizetype pairIndex(std::size_t row, std::size_t column, std::size_t width)
{
    std::size_t const index = row * width + column;
    return static_cast<qsizetype>(index);
}

/// Which word of a text serves each of the words of a filter so that the scores sum up to the most; the
/// Hungarian method, a row at a time.
class Assignment
{
public:
    /// The score of a pair that does not match.
    static constexpr int none = -(1 << 24);

    Assignment(std::size_t rows, std::size_t columns, QVarLengthArray<int, 128> const& scores)
        : m_columns(columns)
        , m_scores(scores)
        , m_rowPrice(static_cast<qsizetype>(rows + 1))
        , m_columnPrice(static_cast<qsizetype>(columns + 1))
        , m_rowOf(static_cast<qsizetype>(columns + 1))
        , m_way(static_cast<qsizetype>(columns + 1))
    {
        std::ranges::fill(m_rowPrice, 0);
        std::ranges::fill(m_columnPrice, 0);
        std::ranges::fill(m_rowOf, 0U);
        for (std::size_t row = 1; row <= rows; ++row) {
            add(row);
        }
    }

    /// The row that the column \a column serves, counted from 1; 0 for none.
    [[nodiscard]] std::size_t rowOf(std::size_t column) const
    {
        return m_rowOf[static_cast<qsizetype>(column) + 1];
    }

private:
    // Row and column 0 stand for "not yet assigned".
    [[nodiscard]] int cost(std::size_t row, std::size_t column) const
    {
        return -m_scores[pairIndex(row - 1, column - 1, m_columns)] -
               m_rowPrice[static_cast<qsizetype>(row)] - m_columnPrice[static_cast<qsizetype>(column)];
    }

    void add(std::size_t newRow)
    {
        QVarLengthArray<int, 64> least(static_cast<qsizetype>(m_columns + 1));
        QVarLengthArray<bool, 64> visited(static_cast<qsizetype>(m_columns + 1));
        std::ranges::fill(least, std::numeric_limits<int>::max());
        std::ranges::fill(visited, false);
        m_rowOf[0] = newRow;
        std::size_t column = 0;
        while (m_rowOf[static_cast<qsizetype>(column)] != 0) {
            column = advance(column, least, visited);
        }
        while (column != 0) {
            std::size_t const before = m_way[static_cast<qsizetype>(column)];
            m_rowOf[static_cast<qsizetype>(column)] = m_rowOf[static_cast<qsizetype>(before)];
            column = before;
        }
    }

    std::size_t advance(std::size_t column, QVarLengthArray<int, 64>& least,
                        QVarLengthArray<bool, 64>& visited)
    {
        visited[static_cast<qsizetype>(column)] = true;
        std::size_t const row = m_rowOf[static_cast<qsizetype>(column)];
        std::size_t next = 0;
        int step = std::numeric_limits<int>::max();
        for (std::size_t other = 1; other <= m_columns; ++other) {
            auto const at = static_cast<qsizetype>(other);
            if (visited[at]) {
                continue;
            }
            if (int const price = cost(row, other); price < least[at]) {
                least[at] = price;
                m_way[at] = column;
            }
            if (least[at] < step) {
                step = least[at];
                next = other;
            }
        }
        for (qsizetype at = 0; at <= static_cast<qsizetype>(m_columns); ++at) {
            if (visited[at]) {
                m_rowPrice[static_cast<qsizetype>(m_rowOf[at])] += step;
                m_columnPrice[at] -= step;
            } else {
                least[at] -= step;
            }
        }
        return next;
    }

    std::size_t m_columns;
    QVarLengthArray<int, 128> const& m_scores;
    QVarLengthArray<int, 33> m_rowPrice;
    QVarLengthArray<int, 64> m_columnPrice;
    QVarLengthArray<std::size_t, 64> m_rowOf;
    QVarLengthArray<std::size_t, 64> m_way;
};

/// A word of a filter that may be served by a word of a text.
struct Offer
{
    std::size_t row;
    std::size_t word;
    WordPlace place;
};

/// Every pair that matches, ordered by the text's words; empty when a word of the filter has none.
std::vector<Offer> offersOf(FilterWords::Reading const& reading, FoldedText const& text)
{
    std::vector<Offer> offers;
    QVarLengthArray<bool, 32> served(static_cast<qsizetype>(reading.size()));
    std::ranges::fill(served, false);
    for (std::size_t word = 0; word < text.words.size(); ++word) {
        for (std::size_t row = 0; row < reading.size(); ++row) {
            if (auto const place = findWord(reading[row], text, word)) {
                offers.push_back({row, word, *place});
                served[static_cast<qsizetype>(row)] = true;
            }
        }
    }
    if (!std::ranges::all_of(served, [](bool is) { return is; })) {
        offers.clear();
    }
    return offers;
}

} // namespace

int wordScore(WordGrade grade, int field)
{
    int const place = mostFields - std::min(field, mostFields - 1);
    return place + (grade == WordGrade::Whole ? wholeScore : grade == WordGrade::Opens ? openingScore : 0);
}

std::optional<WordPlace> findWord(FilterWord const& word, FoldedText const& text, std::size_t index)
{
    FoldedWord const& host = text.words[index];
    std::optional<WordPlace> best;
    if (slice(text.letters, host.begin, host.runEnd).startsWith(word.letters)) {
        qsizetype const end = host.begin + word.letters.size();
        while (text.words[index].end < end) {
            ++index;
        }
        best = WordPlace{text.words[index].end == end ? WordGrade::Whole : WordGrade::Opens, host.begin, end};
    }
    if (word.digits && host.number >= 0) {
        keepBetter(best, findInNumber(word, text, host));
    }
    return best;
}

FilterWords::FilterWords(QString const& words)
{
    FoldedText text;
    text.append(words, 0);
    Reading whole = together(text);
    Reading parts = apart(text);
    if (whole.empty()) {
        return;
    }
    whole.resize(std::min(whole.size(), mostWords));
    parts.resize(std::min(parts.size(), mostWords));
    bool const same = whole == parts;
    m_readings.push_back(std::move(whole));
    if (!same) {
        m_readings.push_back(std::move(parts));
    }
}

FilterWords::Match FilterWords::bestMatch(FoldedText const& text) const
{
    Match best;
    for (Reading const& reading : m_readings) {
        if (Match match = bestMatch(reading, text); match.rank > best.rank) {
            best = std::move(match);
        }
    }
    return best;
}

FilterWords::Match FilterWords::bestMatch(Reading const& reading, FoldedText const& text)
{
    std::vector<Offer> const offers = offersOf(reading, text);
    // The words of the text that serve none are no columns.
    QVarLengthArray<std::size_t, 64> columns;
    for (Offer const& offer : offers) {
        if (columns.isEmpty() || columns.back() != offer.word) {
            columns.append(offer.word);
        }
    }
    auto const width = static_cast<std::size_t>(columns.size());
    if (width < reading.size()) {
        return {};
    }
    QVarLengthArray<int, 128> scores(pairIndex(reading.size(), 0, width));
    QVarLengthArray<Offer const*, 128> offerAt(scores.size());
    std::ranges::fill(scores, Assignment::none);
    std::size_t column = 0;
    for (Offer const& offer : offers) {
        while (columns[static_cast<qsizetype>(column)] != offer.word) {
            ++column;
        }
        auto const at = pairIndex(offer.row, column, width);
        scores[at] = wordScore(offer.place.grade, text.words[offer.word].field);
        offerAt[at] = &offer;
    }
    Assignment const assignment(reading.size(), width, scores);
    Match match{0, std::vector<WordPlace>(reading.size()), std::vector<std::size_t>(reading.size())};
    for (column = 0; column < width; ++column) {
        if (std::size_t const row = assignment.rowOf(column); row > 0) {
            auto const at = pairIndex(row - 1, column, width);
            if (scores[at] == Assignment::none) {
                return {};
            }
            match.rank += scores[at];
            match.places[row - 1] = offerAt[at]->place;
            match.words[row - 1] = offerAt[at]->word;
        }
    }
    return match;
}

} // namespace Softphone
