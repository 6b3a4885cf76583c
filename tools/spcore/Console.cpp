#include "Console.h"

#include <QFile>
#include <algorithm>
#include <cstdio>
#include <unistd.h>

namespace {

constexpr int barWidth = 40;

} // namespace

namespace Console {

void print(QString const& text)
{
    printBytes(text.toUtf8() + '\n');
}

void printBytes(QByteArray const& bytes)
{
    std::fwrite(bytes.constData(), 1, static_cast<std::size_t>(bytes.size()), stdout);
}

void printError(QString const& message)
{
    std::fflush(stdout);
    QByteArray const line = "spcore: " + message.simplified().toUtf8() + '\n';
    std::fwrite(line.constData(), 1, static_cast<std::size_t>(line.size()), stderr);
}

QString harmless(QString text)
{
    auto const isControl = [](QChar unit) { return unit.category() == QChar::Other_Control; };
    std::replace_if(text.begin(), text.end(), isControl, QLatin1Char(' '));
    return text;
}

bool isTerminal()
{
    return isatty(STDOUT_FILENO) != 0;
}

bool hasColours()
{
    return isTerminal() && qEnvironmentVariableIsEmpty("NO_COLOR") && qgetenv("TERM") != "dumb";
}

QString bold(QString const& text)
{
    return hasColours() ? QStringLiteral("\x1b[1m") + text + QStringLiteral("\x1b[0m") : text;
}

std::optional<QByteArray> readInput(QString const& path)
{
    QFile file(path);
    bool const open =
        path == QStringLiteral("-") ? file.open(stdin, QIODevice::ReadOnly) : file.open(QIODevice::ReadOnly);
    if (!open) {
        return std::nullopt;
    }
    QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError) {
        return std::nullopt;
    }
    return bytes;
}

ProgressBar::ProgressBar(QString label)
    : m_label(std::move(label))
    , m_visible(isatty(STDERR_FILENO) != 0)
{
}

ProgressBar::~ProgressBar()
{
    if (m_visible && m_shown >= 0) {
        std::fputc('\n', stderr);
    }
}

void ProgressBar::update(long long now, long long total)
{
    if (!m_visible) {
        return;
    }
    bool const known = total > 0;
    long long const shown = known ? std::clamp(now, 0LL, total) * 100 / total : now;
    if (shown == m_shown) {
        return;
    }
    m_shown = shown;
    QString line = QStringLiteral("\r") + m_label + QLatin1Char(' ');
    if (known) {
        int const filled = static_cast<int>(shown * barWidth / 100);
        line += QLatin1Char('[') + QString(filled, QLatin1Char('#')) +
                QString(barWidth - filled, QLatin1Char('.')) + QStringLiteral("] ") + QString::number(shown) +
                QLatin1Char('%');
    } else {
        line += QString::number(now) + QStringLiteral(" bytes");
    }
    std::fputs(line.toUtf8().constData(), stderr);
    std::fflush(stderr);
}

} // namespace Console
