#include "ProgressBar.h"

#include <QByteArray>
#include <QLocale>
#include <QStringList>
#include <algorithm>
#include <cstdio>
#include <sys/ioctl.h>
#include <unistd.h>
#include <utility>

namespace {

constexpr int usualWidth = 80;
constexpr int longestBar = 40;
constexpr int shortestBar = 10;
constexpr long long betweenDraws = 100; // milliseconds

int terminalWidth()
{
    winsize size = {};
    bool const isKnown = ::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return isKnown ? size.ws_col : usualWidth;
}

QString sizeText(double bytes)
{
    return QLocale::c().formattedDataSize(static_cast<qint64>(bytes), 1, QLocale::DataSizeSIFormat);
}

/// "0:07", "12:34" or "3:00:00".
QString timeText(long long seconds)
{
    auto const two = [](long long number) {
        return QString::number(number).rightJustified(2, QLatin1Char('0'));
    };
    QString const tail = two(seconds % 60);
    return seconds < 3600 ? QStringLiteral("%1:%2").arg(QString::number(seconds / 60), tail)
                          : QStringLiteral("%1:%2:%3")
                                .arg(QString::number(seconds / 3600), two(seconds / 60 % 60), tail);
}

QString bar(long long percent, qsizetype width)
{
    qsizetype const filled = percent * width / 100;
    return QLatin1Char('[') + QString(filled, QLatin1Char('#')) + QString(width - filled, QLatin1Char('.')) +
           QStringLiteral("] ");
}

/// What is said of the transfer beside its percentage, the most wanted first.
QStringList details(long long now, long long total, long long milliseconds)
{
    QStringList texts{total > 0 ? sizeText(double(now)) + QStringLiteral(" of ") + sizeText(double(total))
                                : sizeText(double(now))};
    if (now <= 0 || milliseconds <= 0) {
        return texts;
    }
    double const bytesPerSecond = double(now) * 1000 / double(milliseconds);
    texts << sizeText(bytesPerSecond) + QStringLiteral("/s");
    if (total > now) {
        texts << timeText(static_cast<long long>(double(total - now) / bytesPerSecond) + 1) +
                     QStringLiteral(" left");
    }
    return texts;
}

} // namespace

ProgressBar::ProgressBar(QString label)
    : m_label(std::move(label))
    , m_isVisible(isatty(STDERR_FILENO) != 0)
{
    m_sinceStart.start();
}

ProgressBar::~ProgressBar()
{
    if (m_drawnAt >= 0) {
        std::fputc('\n', stderr);
    }
}

QString ProgressBar::line(QString const& label, long long now, long long total, long long milliseconds,
                          int width)
{
    bool const isKnown = total > 0;
    long long const done = isKnown ? std::clamp(now, 0LL, total) : now;
    long long const percent = isKnown ? static_cast<long long>(double(done) * 100 / double(total)) : 0;
    QString const start = label + QLatin1Char(' ');
    QString end = isKnown ? QString::number(percent) + QLatin1Char('%') : QString();
    for (QString const& detail : details(done, total, milliseconds)) {
        QString const longer = end + (end.isEmpty() ? QString() : QStringLiteral("  ")) + detail;
        if (start.size() + longer.size() > width) {
            break;
        }
        end = longer;
    }
    // "[", "] "
    qsizetype const room = std::min<qsizetype>(width - start.size() - end.size() - 3, longestBar);
    QString const drawn = isKnown && room >= shortestBar ? bar(percent, room) : QString();
    return (start + drawn + end).left(width);
}

void ProgressBar::update(long long now, long long total)
{
    if (!m_isVisible) {
        return;
    }
    long long const time = m_sinceStart.elapsed();
    if (m_drawnAt >= 0 && time - m_drawnAt < betweenDraws && now != total) {
        return;
    }
    m_drawnAt = time;
    // The last column stays free: some terminals go on to the next line after it.
    int const width = std::max(terminalWidth() - 1, 1);
    QString const text = line(m_label, now, total, time, width).leftJustified(width);
    std::fputs(('\r' + text.toUtf8()).constData(), stderr);
    std::fflush(stderr);
}
