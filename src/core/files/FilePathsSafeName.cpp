#include "FilePaths.h"

#include <QByteArray>
#include <QTextBoundaryFinder>
#include <algorithm>

namespace {

constexpr QChar substitute = u'_';
/// What file systems take for a name, counted in UTF-8.
constexpr qsizetype mostBytes = 255;
constexpr qsizetype mostBytesOfCharacter = 4;

/// Whether a name may not hold \a character: separators of any system, what shells of other systems and their
/// file systems reserve (':' also opens Qt's resources), controls, and what turns the direction of the text
/// that follows, so that "exe.txt" is read where "txt.exe" stands.
bool isForbidden(QChar character)
{
    auto const isBetween = [character](char16_t first, char16_t last) {
        return character >= first && character <= last;
    };
    QChar::Category const category = character.category();
    return QStringView(u"/\\:*?\"<>|").contains(character) || category == QChar::Other_Control ||
           category == QChar::Separator_Line || category == QChar::Separator_Paragraph ||
           isBetween(0x202A, 0x202E) || isBetween(0x2066, 0x2069);
}

/// \a name with a substitute for every forbidden character and for every half of one, which no file system
/// can store.
QString withSubstitutes(QString name)
{
    for (qsizetype i = 0; i < name.size(); ++i) {
        if (name[i].isHighSurrogate() && i + 1 < name.size() && name[i + 1].isLowSurrogate()) {
            ++i;
        } else if (name[i].isSurrogate() || isForbidden(name[i])) {
            name[i] = substitute;
        }
    }
    return name;
}

/// \a name without dots and blanks at its end: some systems drop them, so that it would be another's name.
QString withoutUnstableEnd(QString const& name)
{
    qsizetype size = name.size();
    while (size > 0 && (name[size - 1] == u'.' || name[size - 1].isSpace())) {
        --size;
    }
    return name.left(size);
}

/// Whether \a name is a device on some system, whatever follows the first dot.
bool isDevice(QString const& name)
{
    static constexpr QLatin1String devices[] = {
        QLatin1String("CON"),    QLatin1String("PRN"),     QLatin1String("AUX"),    QLatin1String("NUL"),
        QLatin1String("CONIN$"), QLatin1String("CONOUT$"), QLatin1String("CLOCK$"),
    };
    static constexpr QLatin1String numberedDevices[] = {QLatin1String("COM"), QLatin1String("LPT")};
    QStringView const base = QStringView(name).left(name.indexOf(u'.')).trimmed();
    auto const isBase = [base](QLatin1String device) {
        return base.compare(device, Qt::CaseInsensitive) == 0;
    };
    auto const opensBase = [base](QLatin1String device) {
        return base.size() == 4 && base.startsWith(device, Qt::CaseInsensitive);
    };
    // Superscript digits count as digits there.
    return std::ranges::any_of(devices, isBase) ||
           (std::ranges::any_of(numberedDevices, opensBase) &&
            QStringView(u"0123456789\u00B9\u00B2\u00B3").contains(base.back()));
}

/// As many whole characters of \a text as take at most \a bytes in UTF-8, marks together with the letter that
/// they stand on; of one letter with a great many marks, some of these.
QString cut(QString const& text, qsizetype bytes)
{
    auto const fits = [&](qsizetype size) { return text.left(size).toUtf8().size() <= bytes; };
    if (fits(text.size())) {
        return text;
    }
    // One unit takes a byte or more.
    QString const head = text.left(bytes + 1);
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, head);
    finder.setPosition(head.size());
    qsizetype size = head.size();
    while (size > 0 && !fits(size)) {
        size = finder.toPreviousBoundary();
    }
    if (size > 0) {
        return text.left(size);
    }
    for (size = head.size(); !fits(size) || text[size - 1].isHighSurrogate();) {
        --size;
    }
    return text.left(size);
}

/// \a name in at most as many bytes as a name may have, its suffix whole unless nothing else had room then.
QString shortened(QString const& name)
{
    qsizetype const dot = name.lastIndexOf(u'.');
    QString const suffix = dot > 0 ? name.mid(dot) : QString();
    qsizetype const room = mostBytes - suffix.toUtf8().size();
    return room < mostBytesOfCharacter ? cut(name, mostBytes)
                                       : cut(name.left(name.size() - suffix.size()), room) + suffix;
}

} // namespace

QString FilePaths::safeFileName(QString const& name)
{
    QString safe = withoutUnstableEnd(withSubstitutes(name));
    if (isDevice(safe)) {
        safe.prepend(substitute);
    }
    safe = withoutUnstableEnd(shortened(safe));
    return safe.isEmpty() ? QString(substitute) : safe;
}
