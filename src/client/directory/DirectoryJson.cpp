#include "DirectoryJson_p.h"

#include <QHash>
#include <QUtf8StringView>
#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <optional>

namespace Softphone {

namespace {

constexpr int deepest = 1024;
constexpr qsizetype mostErrors = 1000;

/// A wrong place, found by the innermost reader and reported by the outermost.
struct Wrong
{
    char const* at = nullptr;
    char const* what = nullptr;
    bool inText = false; ///< between quotation marks
};

/// Texts that many cards have in common, held once.
class SharedTexts
{
public:
    QString text(QByteArrayView utf8)
    {
        auto const found = m_texts.constFind(utf8);
        if (found != m_texts.cend()) {
            return *found;
        }
        QString const made = QString::fromUtf8(utf8);
        // The keys are views into the JSON.
        return m_texts.size() < most ? *m_texts.insert(utf8, made) : made;
    }

private:
    static constexpr qsizetype most = 16384;

    QHash<QByteArrayView, QString> m_texts;
};

class Reader
{
public:
    explicit Reader(QByteArrayView json)
        : m_begin(json.data())
        , m_at(json.data())
        , m_end(json.data() + json.size())
        , m_counted(json.data())
        , m_lineBegin(json.data())
    {
    }

    DirectoryEntries read()
    {
        if (QByteArrayView(m_at, m_end).startsWith("\xef\xbb\xbf")) {
            m_at += 3;
            m_lineBegin = m_at;
        }
        skipBlanks();
        if (take('[')) {
            readEntries();
        } else if (m_at < m_end && *m_at == '{') {
            readEntry();
        } else {
            report(
                {m_at, m_at == m_end ? "The text is empty" : "Neither an array nor an object begins here"});
            return std::move(m_found);
        }
        skipBlanks();
        if (m_at < m_end && !m_lost) {
            report({m_at, "Something follows after the end"});
        }
        return std::move(m_found);
    }

private:
    void readEntries()
    {
        skipBlanks();
        if (take(']')) {
            return;
        }
        for (;;) {
            skipBlanks();
            readEntry();
            skipBlanks();
            if (m_at == m_end) {
                if (!m_lost) {
                    report({m_at, "The array does not end"});
                }
                return;
            }
            if (take(']')) {
                return;
            }
            if (!take(',')) {
                // Only after an entry that could be read, or recovery would stand on one of the two.
                report({m_at, "A comma is missing here"});
                if (*m_at != '{') {
                    recover(0);
                    if (!take(',')) {
                        take(']');
                        return;
                    }
                }
            }
        }
    }

    void readEntry()
    {
        m_entry = m_at;
        m_depth = 0;
        if (m_at == m_end) {
            return;
        }
        if (*m_at != '{') {
            report({m_at, *m_at == ']' ? "An entry is missing here" : "This entry is no object"});
            if (*m_at != ']' && !skipValue()) {
                recover(m_depth);
            }
            return;
        }
        ContactCard card;
        if (readCard(card)) {
            m_found.cards.push_back(std::move(card));
        } else {
            report(m_wrong);
            recover(m_depth);
        }
    }

    bool readCard(ContactCard& card)
    {
        return readMembers([&](QByteArrayView name) {
            if (name == "firstName") {
                return readText(card.firstName, Repeats::Often);
            }
            if (name == "lastName") {
                return readText(card.lastName);
            }
            if (name == "company") {
                return readText(card.company, Repeats::Often);
            }
            if (name == "unit") {
                return readText(card.department, Repeats::Often);
            }
            if (name == "id") {
                return readId(card.id);
            }
            if (name == "contacts") {
                return readPoints(card.points);
            }
            return skipValue();
        });
    }

    bool readPoints(QList<ContactPoint>& points)
    {
        points.clear();
        if (peek() != '[') {
            return skipValue();
        }
        points.reserve(3); // most have as many, and room for more would stay
        return readElements([&] {
            if (peek() != '{') {
                return skipValue();
            }
            ContactPoint point;
            bool hasType = false;
            bool hasValue = false;
            bool const good = readMembers([&](QByteArrayView name) {
                if (name == "type") {
                    hasType = true;
                    return readText(point.label, Repeats::Often);
                }
                if (name == "value") {
                    hasValue = true;
                    return readText(point.value);
                }
                return skipValue();
            });
            if (good && hasType && hasValue) {
                point.type = PBXContactInfo::contactLabel2referenceType(point.label);
                points.append(std::move(point));
            }
            return good;
        });
    }

    bool readId(QString& id)
    {
        id.clear();
        char const* const begin = m_at;
        if (peek() == '"') {
            return readText(id);
        }
        if (!skipValue()) {
            return false;
        }
        QByteArrayView const literal(begin, m_at);
        bool whole = false;
        if (qint64 const number = literal.toLongLong(&whole); whole) {
            id = QString::number(number);
        } else if (double const real = literal.toDouble(&whole);
                   whole && real >= -0x1p63 && real < 0x1p63 && real == std::trunc(real)) {
            id = QString::number(static_cast<qint64>(real));
        }
        return true;
    }

    enum class Repeats { Rarely, Often };

    /// A text, or empty for a value of another kind.
    bool readText(QString& text, Repeats repeats = Repeats::Rarely)
    {
        text.clear();
        if (peek() != '"') {
            return skipValue();
        }
        QByteArrayView plain;
        if (!scanText(plain, text)) {
            return false;
        }
        if (text.isNull()) {
            text = repeats == Repeats::Often ? m_shared.text(plain) : QString::fromUtf8(plain);
        }
        return true;
    }

    /// Reads the text at the opening quotation mark: \a plain is what stands between the two, and \a decoded
    /// the text if it has escapes, else null.
    bool scanText(QByteArrayView& plain, QString& decoded)
    {
        char const* const begin = ++m_at;
        unsigned char bits = 0;
        while (m_at < m_end && *m_at != '"' && *m_at != '\\' && *m_at != '\n') {
            bits |= static_cast<unsigned char>(*m_at++);
        }
        plain = QByteArrayView(begin, m_at);
        if ((bits & 0x80) != 0 && !isValid(plain)) {
            return false;
        }
        if (m_at < m_end && *m_at == '\\') {
            decoded = QString::fromUtf8(plain);
            return decode(decoded);
        }
        return endText();
    }

    bool endText() { return take('"') || wrong(m_at, "A text does not end in this line"); }

    bool isValid(QByteArrayView text)
    {
        if (QUtf8StringView(text.data(), text.size()).isValidUtf8()) {
            return true;
        }
        for (char const* at = text.begin(); at < text.end();) {
            auto const lead = static_cast<unsigned char>(*at);
            auto const length = std::min<qsizetype>(lead < 0x80   ? 1
                                                    : lead < 0xe0 ? 2
                                                    : lead < 0xf0 ? 3
                                                                  : 4,
                                                    text.end() - at);
            if (!QUtf8StringView(at, length).isValidUtf8()) {
                m_at = at + 1;
                return wrong(at, "This is no UTF-8", true);
            }
            at += length;
        }
        return true;
    }

    /// Reads on from the first escape.
    bool decode(QString& text)
    {
        while (m_at < m_end && *m_at != '"' && *m_at != '\n') {
            if (*m_at == '\\') {
                if (!readEscape(text)) {
                    return false;
                }
                continue;
            }
            char const* const begin = m_at;
            while (m_at < m_end && *m_at != '"' && *m_at != '\\' && *m_at != '\n') {
                ++m_at;
            }
            QByteArrayView const piece(begin, m_at);
            if (!isValid(piece)) {
                return false;
            }
            text += QString::fromUtf8(piece);
        }
        replaceHalves(text);
        return endText();
    }

    bool readEscape(QString& text)
    {
        static constexpr std::string_view names = "\"\\/bfnrt";
        static constexpr std::u16string_view meanings = u"\"\\/\b\f\n\r\t";
        char const* const begin = m_at++;
        if (m_at < m_end && *m_at == 'u') {
            bool good =
                m_end - m_at > 4 && std::all_of(m_at + 1, m_at + 5, [](char digit) {
                    return (digit >= '0' && digit <= '9') || ((digit | 0x20) >= 'a' && (digit | 0x20) <= 'f');
                });
            if (!good) {
                return wrong(begin, "This is no escape", true);
            }
            text += QChar(QByteArrayView(m_at + 1, 4).toUShort(nullptr, 16));
            m_at += 5;
            return true;
        }
        auto const index = m_at < m_end ? names.find(*m_at) : std::string_view::npos;
        if (index == std::string_view::npos) {
            return wrong(begin, "This is no escape", true);
        }
        ++m_at;
        text += QChar(meanings[index]);
        return true;
    }

    /// Half of a character cannot be saved, and stands for nothing.
    static void replaceHalves(QString& text)
    {
        for (qsizetype at = 0; at < text.size(); ++at) {
            bool const pair =
                text[at].isHighSurrogate() && at + 1 < text.size() && text[at + 1].isLowSurrogate();
            if (pair) {
                ++at;
            } else if (text[at].isSurrogate()) {
                text[at] = QChar::ReplacementCharacter;
            }
        }
    }

    /// Reads an object; \a read takes the value of each name and says whether it could.
    template <typename Read>
    bool readMembers(Read read)
    {
        return readAll('}', "A comma or a closing brace is missing here", [&] {
            if (peek() != '"') {
                return wrong(m_at, "A name in quotation marks is missing here");
            }
            QByteArrayView name;
            QString decoded;
            if (!scanText(name, decoded)) {
                return false;
            }
            QByteArray const bytes = decoded.toUtf8();
            skipBlanks();
            if (!take(':')) {
                return wrong(m_at, "A colon is missing here");
            }
            skipBlanks();
            return read(decoded.isNull() ? name : QByteArrayView(bytes));
        });
    }

    /// Reads an array; \a read takes each element.
    template <typename Read>
    bool readElements(Read read)
    {
        return readAll(']', "A comma or a closing bracket is missing here", read);
    }

    /// Reads what commas separate, from the opening bracket to \a end; \a missing is what is wrong where
    /// neither of both stands.
    template <typename Read>
    bool readAll(char end, char const* missing, Read read)
    {
        if (!open()) {
            return false;
        }
        skipBlanks();
        bool ended = take(end);
        while (!ended) {
            skipBlanks();
            if (!read()) {
                return false;
            }
            skipBlanks();
            ended = take(end);
            if (!ended && !take(',')) {
                return wrong(m_at, missing);
            }
        }
        --m_depth;
        return true;
    }

    bool skipValue()
    {
        switch (peek()) {
        case '{':
            return readMembers([this](QByteArrayView) { return skipValue(); });
        case '[':
            return readElements([this] { return skipValue(); });
        case '"': {
            QByteArrayView plain;
            QString decoded;
            return scanText(plain, decoded);
        }
        case 't':
            return skipWord("true");
        case 'f':
            return skipWord("false");
        case 'n':
            return skipWord("null");
        default:
            return skipNumber();
        }
    }

    bool skipWord(QByteArrayView word)
    {
        if (!QByteArrayView(m_at, m_end).startsWith(word)) {
            return wrong(m_at, "This is no value");
        }
        m_at += word.size();
        return true;
    }

    bool skipNumber()
    {
        char const* const begin = m_at;
        take('-');
        char const* const whole = m_at;
        bool good = skipDigits() && (*whole != '0' || m_at == whole + 1);
        if (good && take('.')) {
            good = skipDigits();
        }
        if (good && (take('e') || take('E'))) {
            if (!take('+')) {
                take('-');
            }
            good = skipDigits();
        }
        return good || wrong(begin, "This is no value");
    }

    bool skipDigits()
    {
        char const* const begin = m_at;
        while (m_at < m_end && *m_at >= '0' && *m_at <= '9') {
            ++m_at;
        }
        return m_at != begin;
    }

    /// Goes to what follows the entry that is wrong, \a depth brackets deep in it: a comma, the end of the
    /// array, or an entry that begins a line as the wrong one did.
    void recover(int depth)
    {
        std::optional<qsizetype> const indent = indentOf(m_entry);
        bool inText = m_wrong.inText && m_wrong.at != nullptr;
        m_wrong = {};
        for (; m_at < m_end; ++m_at) {
            char const byte = *m_at;
            if (inText || byte == '"') {
                if (byte == '\\' && inText && m_at + 1 < m_end && m_at[1] != '\n') {
                    ++m_at;
                } else if (byte == '\n') {
                    inText = false;
                } else if (byte == '"') {
                    inText = !inText;
                }
                continue;
            }
            bool const opens = byte == '{' || byte == '[';
            if (byte == '{' && m_at != m_entry && indent && indentOf(m_at) == indent) {
                insertComma();
                return;
            }
            if (depth <= 0 && (byte == ',' || byte == ']')) {
                return;
            }
            depth += opens ? 1 : byte == '}' || byte == ']' ? -1 : 0;
        }
        m_lost = true;
    }

    /// The comma in front of the entry at which reading goes on has been skipped.
    void insertComma() { m_comma = true; }

    /// How far \a at is from the start of its line, if only blanks are between.
    [[nodiscard]] std::optional<qsizetype> indentOf(char const* at) const
    {
        constexpr qsizetype widest = 64; // more is looked at too often
        qsizetype width = 0;
        while (at > m_begin && width <= widest && (at[-1] == ' ' || at[-1] == '\t')) {
            --at;
            ++width;
        }
        return at > m_begin && at[-1] == '\n' ? std::optional(width) : std::nullopt;
    }

    bool open()
    {
        if (m_depth >= deepest) {
            return wrong(m_at, "This is nested too deeply");
        }
        ++m_depth;
        ++m_at;
        return true;
    }

    void skipBlanks()
    {
        while (m_at < m_end && (*m_at == ' ' || *m_at == '\n' || *m_at == '\r' || *m_at == '\t')) {
            ++m_at;
        }
    }

    [[nodiscard]] char peek() const { return m_at < m_end ? *m_at : '\0'; }

    bool take(char byte)
    {
        if (byte == ',' && std::exchange(m_comma, false)) {
            return true;
        }
        bool const there = m_at < m_end && *m_at == byte;
        m_at += there ? 1 : 0;
        return there;
    }

    bool wrong(char const* at, char const* what, bool inText = false)
    {
        m_wrong = {at, at == m_end ? "The text ends within an entry" : what, inText};
        return false;
    }

    /// Wrong places come in their order, so that the lines in front of them are counted once.
    void report(Wrong const& place)
    {
        if (m_found.errors.size() == mostErrors) {
            return;
        }
        for (; m_counted < place.at; ++m_counted) {
            if (*m_counted == '\n') {
                ++m_line;
                m_lineBegin = m_counted + 1;
                m_column = 0;
            } else if (m_counted >= m_lineBegin) {
                m_column += (static_cast<unsigned char>(*m_counted) & 0xc0) != 0x80 ? 1 : 0;
            }
        }
        m_found.errors.append({m_line, m_column + 1, QString::fromLatin1(place.what)});
    }

    char const* m_begin;
    char const* m_at;
    char const* m_end;
    char const* m_entry = nullptr;
    char const* m_counted;   ///< up to where lines are counted
    char const* m_lineBegin; ///< of the line in which that is
    int m_line = 1;
    int m_column = 0;
    int m_depth = 0;
    bool m_comma = false; ///< one is to be taken that is not there
    bool m_lost = false;  ///< recovery came to the end
    Wrong m_wrong;
    SharedTexts m_shared;
    DirectoryEntries m_found;
};

} // namespace

DirectoryEntries readDirectory(QByteArrayView json)
{
    return Reader(json).read();
}

} // namespace Softphone
