#include "StringUtils.h"

#include <QKeySequence>
#include <QRegularExpression>
#include <QStringView>
#include <QTime>
#include <algorithm>
#include <array>
#include <bitset>
#include <iterator>
#include <limits>
#include <utility>

namespace {

constexpr QChar space = u' ';

/// The set of all UTF-16 units of a text, so that asking for one costs the same however long the text is.
class UnitSet
{
public:
    explicit UnitSet(QStringView units)
    {
        for (QChar const unit : units) {
            m_members.set(unit.unicode());
        }
    }

    [[nodiscard]] bool contains(QChar unit) const { return m_members.test(unit.unicode()); }

private:
    std::bitset<std::numeric_limits<char16_t>::max() + 1> m_members;
};

bool isAsciiLetter(QChar unit)
{
    return (unit >= u'A' && unit <= u'Z') || (unit >= u'a' && unit <= u'z');
}

bool isAsciiDigit(QChar unit)
{
    return unit >= u'0' && unit <= u'9';
}

// [A-Za-z0-9._%+-]
bool isMailboxUnit(QChar unit)
{
    return isAsciiLetter(unit) || isAsciiDigit(unit) || QStringView(u"._%+-").contains(unit);
}

// [A-Za-z0-9.-]
bool isDomainUnit(QChar unit)
{
    return isAsciiLetter(unit) || isAsciiDigit(unit) || unit == u'.' || unit == u'-';
}

// [\d#*]
bool isDialUnit(QChar unit)
{
    return isAsciiDigit(unit) || unit == u'#' || unit == u'*';
}

// [\d#*,]
bool isDialUnitOrPause(QChar unit)
{
    return isDialUnit(unit) || unit == u',';
}

bool isTopLevelDomain(QStringView label)
{
    // Four letters were enough when callers settled on this; longer endings are refused to this day.
    return label.size() >= 2 && label.size() <= 4 && std::ranges::all_of(label, isAsciiLetter);
}

QList<QString> matching(QList<QString> const& texts, QString const& pattern)
{
    QRegularExpression const expression(pattern);
    QList<QString> found;
    if (expression.isValid()) {
        std::ranges::copy_if(texts, std::back_inserter(found),
                             [&](QString const& text) { return expression.match(text).hasMatch(); });
    }
    return found;
}

using Version = std::array<int, 4>;

Version parseVersion(QStringView text)
{
    Version version{};
    for (int& component : version) {
        // A component that is no number counts as 0, as does a missing one.
        qsizetype const dot = text.indexOf(u'.');
        component = text.first(dot < 0 ? text.size() : dot).toInt();
        if (dot < 0) {
            break;
        }
        text = text.sliced(dot + 1);
    }
    return version;
}

} // namespace

QString StringUtils::stringifyNumberWithLowerBoundWidth(int number, int width, QChar const& fill)
{
    return QStringLiteral("%1").arg(number, width, 10, fill);
}

QString StringUtils::getFistLetterUppercase(QString text)
{
    if (!text.isEmpty() && text.at(0).isLetter()) {
        text.front() = text.front().toTitleCase();
    }
    return text;
}

QString StringUtils::removeExtraBlankSpaces(QString const& text)
{
    QString result = text.trimmed();
    auto const isRepeatedSpace = [](QChar left, QChar right) { return left == space && right == space; };
    if (std::ranges::adjacent_find(std::as_const(result), isRepeatedSpace) != result.cend()) {
        auto const first = result.begin();
        result.truncate(std::unique(first, result.end(), isRepeatedSpace) - first);
    }
    return result;
}

QString StringUtils::removeWhitespaceCharacters(QString const& text)
{
    return text.simplified();
}

QString StringUtils::getInitialsFromFullName(QString const& fullName)
{
    constexpr qsizetype most = 3;
    QString initials;
    QChar previous = space;
    for (QChar const unit : QStringView(fullName).trimmed()) {
        if (previous == space && unit.isLetterOrNumber()) {
            initials += unit;
            if (initials.size() == most) {
                break;
            }
        }
        previous = unit;
    }
    return initials;
}

QString StringUtils::sanitizeEmail(QString email)
{
    email.remove(space);
    return email;
}

bool StringUtils::validateEmail(QString const& email)
{
    QStringView const text(email);
    qsizetype const at = text.indexOf(u'@');
    qsizetype const lastDot = text.lastIndexOf(u'.');
    if (at < 1 || lastDot < at + 2) {
        return false;
    }
    return std::ranges::all_of(text.first(at), isMailboxUnit) &&
           std::ranges::all_of(text.sliced(at + 1, lastDot - at - 1), isDomainUnit) &&
           isTopLevelDomain(text.sliced(lastDot + 1));
}

bool StringUtils::validatePhoneNumber(QString const& number)
{
    QStringView text(number);
    if (text.startsWith(u'+')) {
        text = text.sliced(1);
    }
    return !text.isEmpty() && isDialUnit(text.front()) && std::ranges::all_of(text, isDialUnitOrPause);
}

void StringUtils::removeNoPrintableChars(QString& text, QString const& charsToRemove)
{
    UnitSet const unwanted(charsToRemove);
    text.removeIf([&](QChar unit) { return !unit.isPrint() || unwanted.contains(unit); });
}

QList<QString> StringUtils::filterAudioDevices(QList<QString> const& devices, QString const& endPattern,
                                               QString const& namePattern)
{
    return matching(matching(devices, endPattern + u'$'), namePattern);
}

QString StringUtils::getDurationSecondsToString(int seconds)
{
    // A time of day: after 24 hours it begins anew.
    QTime const time = QTime(0, 0).addSecs(seconds);
    return time.toString(time.hour() != 0 ? u"hh:mm:ss" : u"mm:ss");
}

std::optional<bool> StringUtils::isLessInsensitive(QString const& a, QString const& b)
{
    int const order = a.compare(b, Qt::CaseInsensitive);
    return order == 0 ? std::nullopt : std::optional<bool>(order < 0);
}

StringUtils::ShortcutDefinition StringUtils::parseShortcut(QString const& text)
{
    constexpr unsigned int modifierBits = 0xFE00'0000;
    constexpr unsigned int keyBits = 0x01FF'FFFF;

    QKeySequence const sequence = QKeySequence::fromString(text, QKeySequence::NativeText);
    if (sequence.isEmpty()) {
        return {};
    }
    auto const combined = static_cast<unsigned int>(sequence[0].toCombined());
    // Only the first combination of a sequence counts.
    unsigned int const key = combined & keyBits;
    QString const keyText = QKeySequence(static_cast<int>(key)).toString(QKeySequence::NativeText);
    if (keyText.isEmpty()) {
        return {};
    }
    return {combined & modifierBits, key, keyText, text};
}

QList<QVariant> StringUtils::toQmlSequence(QString const& text)
{
    ShortcutDefinition const definition = parseShortcut(text);
    if (!definition.isValid()) {
        return {};
    }
    return {static_cast<int>(definition.modifiers), static_cast<int>(definition.key)};
}

bool StringUtils::isBiggerVersionThan(QString const& a, QString const& b)
{
    return parseVersion(a) > parseVersion(b);
}

bool StringUtils::isSameVersionAs(QString const& a, QString const& b)
{
    return parseVersion(a) == parseVersion(b);
}

bool StringUtils::isLessVersionThan(QString const& a, QString const& b)
{
    return parseVersion(a) < parseVersion(b);
}
