#include "Commands.h"

#include "Console.h"
#include "Interrupt.h"
#include "WavJoin.h"
#include "WavLayout.h"

#include <audio/WAVData.h>
#include <audio/wav.h>

#include <QCommandLineParser>
#include <optional>

namespace {

/// Runs \a work on each file named; failure when it failed for one of them.
template <typename Work>
ExitCode forEachFile(QCommandLineParser const& parser, Work work)
{
    ExitCode result = ExitCode::Success;
    QStringList const paths = parser.positionalArguments();
    for (QString const& path : paths) {
        if (!work(path)) {
            result = ExitCode::Failure;
        }
    }
    return result;
}

/// Says that \a path is no WAV file, and answers false.
bool refuse(QString const& path)
{
    Console::printError(path + QStringLiteral(": not a WAV file, or not readable"));
    return false;
}

void printField(QString const& name, QString const& value)
{
    Console::print(QStringLiteral("  ") + name.leftJustified(10) + value);
}

/// What is wrong with the sizes in the header, empty when nothing is.
QString complaint(WavLayout const& layout)
{
    QStringList wrong;
    if (layout.riffSize + quint64(8) != layout.fileLength) {
        wrong << QStringLiteral("RIFF size %1 instead of %2")
                     .arg(QString::number(layout.riffSize), QString::number(layout.fileLength - 8));
    }
    if (!layout.tailIsSound) {
        wrong << QStringLiteral("data size %1 instead of %2")
                     .arg(QString::number(layout.dataSize),
                          QString::number(layout.fileLength - layout.dataOffset));
    }
    return wrong.join(QStringLiteral(", "));
}

QString samplesText(WavLayout const& layout, std::optional<WavFormat> const& format)
{
    QString text = QStringLiteral("%1 bytes from offset %2")
                       .arg(QString::number(layout.samplesLength()), QString::number(layout.dataOffset));
    if (format && format->bytesPerSecond > 0) {
        double const seconds = static_cast<double>(layout.samplesLength()) / format->bytesPerSecond;
        text += QStringLiteral(", ") + QString::number(seconds, 'f', 3) + QStringLiteral(" s");
    }
    return text;
}

bool showInfo(QString const& path)
{
    std::optional<WavLayout> const layout = WavLayout::read(path);
    if (!layout) {
        return refuse(path);
    }
    std::optional<WavFormat> const format = WavFormat::of(layout->format);
    QString const wrong = complaint(*layout);
    Console::print(Console::bold(path));
    printField(QStringLiteral("format"), format ? format->text() : QStringLiteral("unknown"));
    printField(QStringLiteral("samples"), samplesText(*layout, format));
    printField(QStringLiteral("chunks"), layout->chunks.join(QLatin1Char(' ')));
    printField(QStringLiteral("sizes"), wrong.isEmpty() ? QStringLiteral("right") : wrong);
    printField(QStringLiteral("joinable"), WAVData(nativePath(path)).hasHeader()
                                               ? QStringLiteral("yes")
                                               : QStringLiteral("no, other chunks before the samples"));
    return true;
}

bool check(QString const& path)
{
    std::optional<WavLayout> const layout = WavLayout::read(path);
    if (!layout) {
        return refuse(path);
    }
    QString const wrong = complaint(*layout);
    Console::print(path + QStringLiteral(": ") + (wrong.isEmpty() ? QStringLiteral("ok") : wrong));
    return wrong.isEmpty();
}

bool repair(QString const& path)
{
    // The repair takes all up to the end of the file for samples. Where whole chunks follow the samples and
    // both sizes are right, it would make noise of them.
    std::optional<WavLayout> const layout = WavLayout::read(path);
    if (layout && layout->isIntact()) {
        Console::print(path + QStringLiteral(": ok"));
        return true;
    }
    wav::RepairResult const result = wav::tryToRepairWavHeaderIfNeeded(nativePath(path));
    switch (result.status) {
    case wav::RepairStatus::NotNeeded:
        Console::print(path + QStringLiteral(": ok"));
        return true;
    case wav::RepairStatus::Repaired:
        Console::print(path + QStringLiteral(": repaired"));
        return true;
    default:
        Console::printError(path + QStringLiteral(": ") + result.message);
        return false;
    }
}

ExitCode infoCommand(QCommandLineParser const& parser)
{
    return forEachFile(parser, showInfo);
}

ExitCode checkCommand(QCommandLineParser const& parser)
{
    return forEachFile(parser, check);
}

ExitCode repairCommand(QCommandLineParser const& parser)
{
    return forEachFile(parser, repair);
}

ExitCode joinCommand(QCommandLineParser const& parser)
{
    QStringList const paths = parser.positionalArguments();
    Interrupt const interrupt;
    std::optional<QString> error;
    {
        Console::ProgressBar bar(QStringLiteral("joining"));
        error = joinWavFiles(paths.first(), paths.mid(1),
                             {[&bar](long long now, long long total) { bar.update(now, total); },
                              [&interrupt] { return interrupt.wasRequested(); }});
    }
    if (error) {
        Console::printError(*error);
        return ExitCode::Failure;
    }
    return ExitCode::Success;
}

Argument files(QString const& description)
{
    return {QStringLiteral("FILE..."), description};
}

} // namespace

QList<Command> wavCommands()
{
    return {
        {QStringLiteral("wav info"),
         QStringLiteral("Shows format, length and chunks of WAV files"),
         {files(QStringLiteral("WAV files"))},
         {},
         infoCommand},
        {QStringLiteral("wav check"),
         QStringLiteral("Tells whether the sizes in WAV headers are right"),
         {files(QStringLiteral("WAV files; none is written to"))},
         {},
         checkCommand},
        {QStringLiteral("wav repair"),
         QStringLiteral("Corrects the sizes in WAV headers where they are wrong"),
         {files(QStringLiteral("WAV files; one that needs nothing is not written to"))},
         {},
         repairCommand},
        {QStringLiteral("wav join"),
         QStringLiteral("Joins the samples of WAV files of one format"),
         {{QStringLiteral("OUT"), QStringLiteral("WAV file to write")},
          {QStringLiteral("IN..."), QStringLiteral("WAV files to join, in this order")}},
         {},
         joinCommand},
    };
}
