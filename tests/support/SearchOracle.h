#pragma once

#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>
#include <algorithm>
#include <optional>
#include <tuple>

/// What a search filter finds, by trying everything: no table, no order of evaluation, every way to share the
/// words out. For short texts only.
namespace plain {

struct SearchHit
{
    int field;
    qsizetype position;
    qsizetype length;

    bool operator==(SearchHit const&) const = default;
};

/// One character of a field: what it is to a search, and where it stands with its marks.
struct SearchCharacter
{
    enum Kind { Letter, Gap, Blank } kind;
    char32_t character;
    QString letters;
    qsizetype begin;
    qsizetype end;
};

inline QString searchLetters(char32_t character)
{
    static QHash<QString, QString> const plain = [] {
        QHash<QString, QString> all;
        for (
            QString const& pair :
            QStringLiteral(
                "ß=ss æ=ae œ=oe þ=th ð=d đ=d ɖ=d ɗ=d ħ=h ı=i ɨ=i ĸ=k ƙ=k ł=l ƚ=l ŋ=n ɲ=n ø=o ɵ=o ŧ=t ƭ=t ƀ=b "
                "ɓ=b ƈ=c ȼ=c ɇ=e ƒ=f ǥ=g ɠ=g ɉ=j ƥ=p ɍ=r ʉ=u ʋ=v ɏ=y ƴ=y ƶ=z ȥ=z ⱥ=a ⱦ=t")
                .split(u' ')) {
            all.insert(pair.section(u'=', 0, 0), pair.section(u'=', 1));
        }
        return all;
    }();
    QString text = QString::fromUcs4(&character, 1);
    for (int round = 0; round < 3; ++round) {
        QString letters;
        for (char32_t const part : text.normalized(QString::NormalizationForm_KD).toUcs4()) {
            bool const apostrophe =
                (part >= 0x2b9 && part <= 0x2bf) || part == 0x2ee || part == 0xa78b || part == 0xa78c;
            if (QChar::isLetterOrNumber(part) && !apostrophe && part != 0x640) {
                QString const one = QChar::digitValue(part) >= 0 ? QString::number(QChar::digitValue(part))
                                                                 : QString::fromUcs4(&part, 1).toCaseFolded();
                for (QChar const letter : one) {
                    letters += plain.value(letter, letter);
                }
            }
        }
        text = letters;
    }
    return text;
}

inline QList<SearchCharacter> searchCharacters(QString const& field)
{
    QList<SearchCharacter> all;
    qsizetype at = 0;
    for (char32_t const character : field.toUcs4()) {
        // A lone half comes out as a replacement character, which is as long.
        qsizetype const begin = std::exchange(at, at + QString::fromUcs4(&character, 1).size());
        bool const apostrophe = (character >= 0x2b9 && character <= 0x2bf) || character == 0x2ee ||
                                character == 0xa78b || character == 0xa78c;
        if (QChar::isMark(character)) {
            if (!all.isEmpty() && all.back().kind == SearchCharacter::Letter) {
                all.back().end = at;
            }
        } else if (QChar::category(character) == QChar::Other_Format || character == 0x640) {
            continue;
        } else if (QChar::isLetterOrNumber(character) && !apostrophe) {
            if (QString const letters = searchLetters(character); !letters.isEmpty()) {
                all.append({SearchCharacter::Letter, character, letters, begin, at});
            }
        } else {
            bool const blank =
                QChar::isSpace(character) || QChar::category(character) == QChar::Other_Control;
            all.append({blank ? SearchCharacter::Blank : SearchCharacter::Gap, character, {}, begin, at});
        }
    }
    return all;
}

/// A place of letters in a field: which characters, and what they spell.
struct SearchWord
{
    QString letters;                   ///< of the word alone
    QString rest;                      ///< of the word and those that only punctuation parts from it
    QList<qsizetype> ends;             ///< how many letters of the rest end a word
    QList<SearchCharacter> characters; ///< from the first letter on, to the end of the field
    int field;
    int number = -1;
    qsizetype digitsInFront = 0; ///< in its number
};

struct SearchNumber
{
    QString digits;
    bool plus = false;

    bool isInternational() const { return plus || digits.startsWith(QStringLiteral("00")); }
    qsizetype zeros() const
    {
        qsizetype count = 0;
        while (count < digits.size() && digits[count] == u'0') {
            ++count;
        }
        return count;
    }
};

struct SearchField
{
    QList<SearchWord> words;
    QList<SearchNumber> numbers;
    QList<bool> blankInFront; ///< of each word
};

inline bool allDigits(QString const& text)
{
    return std::ranges::all_of(text, [](QChar letter) { return letter >= u'0' && letter <= u'9'; });
}

/// Without "(0)" after the country code.
inline QList<SearchCharacter> withoutTrunkZero(QList<SearchCharacter> all)
{
    auto const letters = [&](qsizetype at) { return at < all.size() ? all[at].letters : QString(); };
    auto const is = [&](qsizetype at, char32_t what) {
        return at < all.size() && all[at].kind != SearchCharacter::Letter && all[at].character == what;
    };
    bool plus = false;
    QString digits;
    for (qsizetype at = 0; at < all.size(); ++at) {
        if (all[at].kind == SearchCharacter::Letter) {
            QString word;
            while (at < all.size() && all[at].kind == SearchCharacter::Letter) {
                word += letters(at++);
            }
            --at;
            digits = allDigits(word) ? digits + word : QString();
            plus = plus && allDigits(word);
        } else if (is(at, '(') && !digits.isEmpty() && (plus || digits.startsWith(QStringLiteral("00"))) &&
                   letters(at + 1) == u"0" && all[at + 1].end == all[at + 1].begin + 1 && is(at + 2, ')') &&
                   all[at + 1].begin == all[at].end && all[at + 2].begin == all[at + 1].end) {
            all.remove(at, 3);
            // What stands on both sides stays apart.
            all.insert(at, SearchCharacter{SearchCharacter::Gap, '-', {}, 0, 0});
        } else if (is(at, '+')) {
            plus = true;
            digits.clear();
        } else {
            auto const category = QChar::category(all[at].character);
            bool const inside = category == QChar::Separator_Space || category == QChar::Punctuation_Dash ||
                                category == QChar::Punctuation_Open || category == QChar::Punctuation_Close ||
                                all[at].character == '.' || all[at].character == '/' ||
                                all[at].character == '\t';
            if (!inside) {
                plus = false;
                digits.clear();
            }
        }
    }
    return all;
}

inline SearchField searchField(QString const& text, int index)
{
    SearchField field;
    QList<SearchCharacter> const all = withoutTrunkZero(searchCharacters(text));
    bool plus = false;
    bool inNumber = false;
    bool blank = true;
    for (qsizetype at = 0; at < all.size(); ++at) {
        if (all[at].kind != SearchCharacter::Letter) {
            auto const category = QChar::category(all[at].character);
            bool const inside = category == QChar::Separator_Space || category == QChar::Punctuation_Dash ||
                                category == QChar::Punctuation_Open || category == QChar::Punctuation_Close ||
                                all[at].character == '.' || all[at].character == '/' ||
                                all[at].character == '\t';
            inNumber = inNumber && inside;
            plus = all[at].character == '+' || (plus && inside);
            blank = blank || all[at].kind == SearchCharacter::Blank;
            continue;
        }
        SearchWord word;
        word.field = index;
        word.characters = all.mid(at);
        bool ended = false;
        for (qsizetype next = at; next < all.size() && all[next].kind != SearchCharacter::Blank; ++next) {
            if (all[next].kind != SearchCharacter::Letter) {
                ended = true;
                continue;
            }
            if (next > at && all[next - 1].kind != SearchCharacter::Letter) {
                word.ends.append(word.rest.size());
            }
            word.rest += all[next].letters;
            if (!ended) {
                word.letters += all[next].letters;
            }
        }
        word.ends.append(word.rest.size());
        if (allDigits(word.letters)) {
            if (!inNumber) {
                field.numbers.append({{}, plus});
            }
            word.number = static_cast<int>(field.numbers.size()) - 1;
            word.digitsInFront = field.numbers.back().digits.size();
            field.numbers.back().digits += word.letters;
        }
        inNumber = word.number >= 0;
        plus = false;
        field.words.append(word);
        field.blankInFront.append(std::exchange(blank, false));
        while (at + 1 < all.size() && all[at + 1].kind == SearchCharacter::Letter) {
            ++at;
        }
    }
    return field;
}

struct SearchNeedle
{
    QString letters;
    bool digits = false;
    bool international = false;

    bool operator==(SearchNeedle const&) const = default;
};

/// A way in which a needle stands in a word: how well, and how many letters after how many.
struct SearchStand
{
    int grade;
    qsizetype skipped;
    qsizetype length;
};

inline void better(std::optional<SearchStand>& best, int grade, qsizetype skipped, qsizetype length)
{
    if (!best || grade > best->grade) {
        best = SearchStand{grade, skipped, length};
    }
}

inline std::optional<SearchStand> stand(SearchNeedle const& needle, SearchWord const& word,
                                        QList<SearchNumber> const& numbers)
{
    std::optional<SearchStand> best;
    if (word.rest.startsWith(needle.letters)) {
        better(best, word.ends.contains(needle.letters.size()) ? 2 : 1, 0, needle.letters.size());
    }
    if (!needle.digits || word.number < 0) {
        return best;
    }
    SearchNumber const& number = numbers[word.number];
    QString stripped = needle.letters;
    while (stripped.startsWith(u'0')) {
        stripped.remove(0, 1);
    }
    for (qsizetype skipped = 0; skipped < word.letters.size(); ++skipped) {
        qsizetype const at = word.digitsInFront + skipped;
        QString const from = number.digits.mid(at);
        bool const start = at == 0 || at == number.zeros();
        if (from.startsWith(needle.letters)) {
            better(best,
                   start && from == needle.letters ? 2
                   : start || skipped == 0         ? 1
                                                   : 0,
                   skipped, needle.letters.size());
        }
        qsizetype const code = at - number.zeros();
        bool const national =
            number.isInternational() && !needle.international ? code >= 1 && code <= 3 : code == 0;
        if (stripped != needle.letters && !stripped.isEmpty() && national && from.startsWith(stripped)) {
            better(best, from == stripped ? 2 : 1, skipped, stripped.size());
        }
        if (needle.international && !number.isInternational() && code == 0) {
            for (qsizetype length = 1; length <= 3; ++length) {
                QString rest = stripped.mid(length);
                while (rest.startsWith(u'0')) {
                    rest.remove(0, 1);
                }
                if (rest.size() >= 4 && from.startsWith(rest)) {
                    better(best, from == rest ? 2 : 1, skipped, rest.size());
                    break;
                }
            }
        }
    }
    return best;
}

/// The readings of a filter: groups of a number and what punctuation parts as one, and each word on its own.
inline QList<QList<SearchNeedle>> searchReadings(QString const& filter)
{
    SearchField const field = searchField(filter, 0);
    QList<SearchNeedle> apart;
    QList<SearchNeedle> together;
    for (qsizetype at = 0; at < field.words.size(); ++at) {
        SearchWord const& word = field.words[at];
        bool const alone = word.number >= 0 && field.numbers[word.number].digits == word.letters;
        apart.append({word.letters, word.number >= 0, alone && field.numbers[word.number].isInternational()});
    }
    for (qsizetype at = 0; at < field.words.size();) {
        SearchWord const& word = field.words[at];
        qsizetype next = at;
        if (word.number >= 0 && word.digitsInFront == 0) {
            while (next < field.words.size() && field.words[next].number == word.number) {
                ++next;
            }
            if (field.blankInFront[at] && (next == field.words.size() || field.blankInFront[next])) {
                SearchNumber const& number = field.numbers[word.number];
                together.append({number.digits, true, number.isInternational()});
                at = next;
                continue;
            }
        }
        if (word.ends.size() == 1) {
            together.append(apart[at++]);
            continue;
        }
        bool const digits = word.number >= 0 && allDigits(word.rest);
        bool const alone = digits && field.numbers[word.number].digits == word.rest;
        together.append({word.rest, digits, alone && field.numbers[word.number].isInternational()});
        for (++at; at < field.words.size() && !field.blankInFront[at];) {
            ++at;
        }
    }
    if (together.isEmpty()) {
        return {};
    }
    QList<QList<SearchNeedle>> readings;
    readings.append(together);
    if (together != apart) {
        readings.append(apart);
    }
    return readings;
}

struct SearchResult
{
    int rank = 0;
    QList<SearchHit> hits;
};

/// All ways to serve the needles from \a first on, the best of them; a rank of -1 for none.
inline SearchResult bestSearch(QList<SearchNeedle> const& needles, qsizetype first,
                               QList<SearchWord> const& words, QList<QList<SearchNumber>> const& numbers,
                               QList<bool>& taken)
{
    if (first == needles.size()) {
        return {};
    }
    SearchResult best{-1, {}};
    for (qsizetype at = 0; at < words.size(); ++at) {
        auto const found =
            taken[at] ? std::nullopt : stand(needles[first], words[at], numbers[words[at].field]);
        if (!found) {
            continue;
        }
        taken[at] = true;
        SearchResult rest = bestSearch(needles, first + 1, words, numbers, taken);
        taken[at] = false;
        int const own =
            31 - std::min(words[at].field, 30) + (found->grade == 2 ? 65536 : found->grade * 1024);
        if (rest.rank < 0 || rest.rank + own <= best.rank) {
            continue;
        }
        qsizetype letters = 0;
        qsizetype begin = -1;
        qsizetype end = 0;
        for (SearchCharacter const& character : words[at].characters) {
            if (character.kind == SearchCharacter::Letter) {
                bool const inside = letters + character.letters.size() > found->skipped &&
                                    letters < found->skipped + found->length;
                begin = inside && begin < 0 ? character.begin : begin;
                end = inside ? character.end : end;
                letters += character.letters.size();
            }
        }
        rest.hits.append({words[at].field, begin, end - begin});
        best = {rest.rank + own, rest.hits};
    }
    return best;
}

inline SearchResult search(QString const& filter, QStringList const& fields)
{
    QList<SearchWord> words;
    QList<QList<SearchNumber>> numbers;
    for (int index = 0; QString const& text : fields) {
        SearchField const field = searchField(text, index++);
        words += field.words;
        numbers.append(field.numbers);
    }
    SearchResult best;
    for (QList<SearchNeedle> const& reading : searchReadings(filter)) {
        QList<bool> taken(words.size(), false);
        SearchResult const found = bestSearch(reading, 0, words, numbers, taken);
        if (found.rank > best.rank) {
            best = found;
        }
    }
    return best;
}

/// Whether \a hits mark the same characters as \a others.
inline bool markTheSame(QList<SearchHit> const& hits, QList<SearchHit> const& others)
{
    auto const marked = [](QList<SearchHit> const& all) {
        QList<std::pair<int, qsizetype>> units;
        for (SearchHit const& hit : all) {
            for (qsizetype at = 0; at < hit.length; ++at) {
                units.append({hit.field, hit.position + at});
            }
        }
        std::ranges::sort(units);
        units.erase(std::unique(units.begin(), units.end()), units.end());
        return units;
    };
    return marked(hits) == marked(others);
}

} // namespace plain
