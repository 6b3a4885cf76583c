#include "Commands.h"

#include "Console.h"
#include "InputFile.h"
#include "Interrupt.h"
#include "ProgressBar.h"
#include "Reason.h"
#include "WavJoin.h"
#include "WavLayout.h"

#include <audio/wav.h>

#include <QCommandLineParser>
#include <QJsonArray>
#include <QJsonObject>
#include <limits>
#include <list>
#include <optional>
#include <vector>

namespace {

QString keyFile()
{
    return QStringLiteral("file");
}

QString keyFilename()
{
    return QStringLiteral("filename");
}

/// Runs \a work on each file named and its layout; failure when it failed for one of them.
///
/// \param key  what --json calls the file
template <typename Work>
ExitCode forEachFile(QCommandLineParser const& parser, QString const& key, Work work)
{
    ExitCode result = ExitCode::Success;
    QStringList const files = parser.positionalArguments();
    for (QString const& file : files) {
        InputFile const input(file);
        WavLayout const layout = input.problem().isEmpty() ? WavLayout::read(input.path()) : WavLayout();
        QString const problem = input.problem() + layout.problem;
        ExitCode const code = problem.isEmpty()
                                  ? work(file, layout)
                                  : fileFailed(parser, file, InputFile::shown(file), problem, key);
        result = code == ExitCode::Success ? result : code;
    }
    return result;
}

void printField(QString const& name, QString const& value)
{
    Console::print(QStringLiteral("  ") + name.leftJustified(10) + value);
}

/// What is wrong with the sizes in the header.
QStringList problems(WavLayout const& layout)
{
    QStringList wrong;
    if (layout.riffSize + 8 != layout.fileLength) {
        wrong << QStringLiteral("RIFF size %1 instead of %2")
                     .arg(QString::number(layout.riffSize), QString::number(layout.fileLength - 8));
    }
    if (!layout.tailIsSound) {
        wrong << QStringLiteral("data size %1 instead of %2")
                     .arg(QString::number(layout.dataSize),
                          QString::number(layout.fileLength - layout.dataOffset));
    }
    return wrong;
}

/// Why a repair would leave the file as it is, or make nonsense of it; empty when it would not.
QString notRepairable(WavLayout const& layout)
{
    if (layout.isRf64) {
        return QStringLiteral("an RF64 header cannot be repaired");
    }
    bool const fits = layout.fileLength - 8 <= std::numeric_limits<quint32>::max();
    return fits ? QString() : QStringLiteral("the file is too long for the header that a repair writes");
}

/// What a repair would turn into sound that the header does not call so, in one sentence; empty for nothing.
QString newSound(WavLayout const& layout)
{
    if (layout.bytesAfter() == 0) {
        return QString();
    }
    QString const bytes = QString::number(layout.bytesAfter());
    if (layout.tailIsSound) {
        return QStringLiteral("a repair would turn %1 bytes after the samples into sound: %2")
            .arg(bytes, layout.chunksAfter.join(QLatin1Char(' ')));
    }
    QString const name = layout.dataSize > 0 && !layout.nameAfter.isEmpty()
                             ? QStringLiteral(", which begin with \"%1\"").arg(layout.nameAfter)
                             : QString();
    return QStringLiteral("a repair would take the last %1 bytes for sound").arg(bytes) + name;
}

/// What to know before a repair; empty where there is nothing to say.
QString forecast(WavLayout const& layout)
{
    QString const obstacle = notRepairable(layout);
    return obstacle.isEmpty() ? newSound(layout) : obstacle;
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

void printInfo(QString const& file, WavLayout const& layout)
{
    std::optional<WavFormat> const format = WavFormat::of(layout.format);
    QString const wrong = problems(layout).join(QStringLiteral(", "));
    QString const obstacle = notJoinable(layout);
    Console::printName(Console::bold(file));
    printField(QStringLiteral("format"), format ? format->text() : QStringLiteral("unknown"));
    printField(QStringLiteral("samples"), samplesText(layout, format));
    printField(QStringLiteral("chunks"), (layout.chunks + layout.chunksAfter).join(QLatin1Char(' ')));
    printField(QStringLiteral("sizes"), wrong.isEmpty() ? QStringLiteral("right") : wrong);
    printField(QStringLiteral("joinable"),
               obstacle.isEmpty() ? QStringLiteral("yes") : QStringLiteral("no, ") + obstacle);
}

/// The numbers of \a format under the names that ffprobe gives them.
QJsonObject formatJson(WavFormat const& format, quint64 length)
{
    QJsonObject object{{QStringLiteral("codec_name"), format.codecName()},
                       {QStringLiteral("sample_rate"), qint64(format.rate)},
                       {QStringLiteral("channels"), format.channels},
                       {QStringLiteral("bits_per_sample"), format.bits},
                       {QStringLiteral("block_align"), format.frameSize},
                       {QStringLiteral("bit_rate"), qint64(format.bytesPerSecond) * 8}};
    if (format.bytesPerSecond > 0) {
        object[QStringLiteral("duration")] = static_cast<double>(length) / format.bytesPerSecond;
    }
    if (format.isSampleBySample() && format.frameSize > 0) {
        object[QStringLiteral("nb_samples")] = static_cast<qint64>(length / format.frameSize);
    }
    return object;
}

QJsonObject infoJson(QString const& file, WavLayout const& layout)
{
    std::optional<WavFormat> const format = WavFormat::of(layout.format);
    QJsonObject object = format ? formatJson(*format, layout.samplesLength()) : QJsonObject();
    object[keyFilename()] = file;
    object[QStringLiteral("format_name")] = layout.isRf64 ? QStringLiteral("rf64") : QStringLiteral("wav");
    object[QStringLiteral("size")] = static_cast<qint64>(layout.fileLength);
    object[QStringLiteral("data_offset")] = static_cast<qint64>(layout.dataOffset);
    object[QStringLiteral("data_size")] = static_cast<qint64>(layout.samplesLength());
    object[QStringLiteral("chunks")] = QJsonArray::fromStringList(layout.chunks + layout.chunksAfter);
    object[QStringLiteral("problems")] = QJsonArray::fromStringList(problems(layout));
    object[QStringLiteral("joinable")] = notJoinable(layout).isEmpty();
    return object;
}

ExitCode infoCommand(QCommandLineParser const& parser)
{
    return forEachFile(parser, keyFilename(), [&parser](QString const& file, WavLayout const& layout) {
        if (wantsJson(parser)) {
            Console::printJson(infoJson(file, layout));
        } else {
            printInfo(file, layout);
        }
        return ExitCode::Success;
    });
}

QJsonObject checkJson(QString const& file, WavLayout const& layout)
{
    QJsonObject object{{keyFile(), file},
                       {QStringLiteral("ok"), layout.isIntact()},
                       {QStringLiteral("problems"), QJsonArray::fromStringList(problems(layout))}};
    if (!layout.isIntact()) {
        object[QStringLiteral("repair")] = QJsonObject{
            {QStringLiteral("possible"), notRepairable(layout).isEmpty()},
            {QStringLiteral("bytesBecomeSound"), static_cast<qint64>(layout.bytesAfter())},
            {QStringLiteral("chunksBecomeSound"), QJsonArray::fromStringList(layout.chunksAfter)}};
    }
    return object;
}

ExitCode checkCommand(QCommandLineParser const& parser)
{
    return forEachFile(parser, keyFile(), [&parser](QString const& file, WavLayout const& layout) {
        if (wantsJson(parser)) {
            Console::printJson(checkJson(file, layout));
        } else {
            QString const wrong = problems(layout).join(QStringLiteral(", "));
            QString const next = wrong.isEmpty() ? QString() : forecast(layout);
            Console::printName(InputFile::shown(file) + QStringLiteral(": ") +
                               (wrong.isEmpty() ? QStringLiteral("ok") : wrong) +
                               (next.isEmpty() ? QString() : QStringLiteral("; ") + next));
        }
        return layout.isIntact() ? ExitCode::Success : ExitCode::Failure;
    });
}

ExitCode tellRepaired(QCommandLineParser const& parser, QString const& file, QString const& status)
{
    if (wantsJson(parser)) {
        Console::printJson({{keyFile(), file}, {QStringLiteral("status"), status}});
    } else {
        Console::printName(file + QStringLiteral(": ") + status);
    }
    return ExitCode::Success;
}

ExitCode repair(QCommandLineParser const& parser, QString const& file, WavLayout const& layout)
{
    // The repair takes all up to the end of the file for samples. Where whole chunks follow the samples and
    // both sizes are right, it would make noise of them.
    if (layout.isIntact()) {
        return tellRepaired(parser, file, QStringLiteral("ok"));
    }
    QStringList obstacles{notRepairable(layout), Reason::notChangeable(file)};
    obstacles.removeAll(QString());
    if (!obstacles.isEmpty()) {
        return fileFailed(parser, file, file, obstacles.constFirst());
    }
    wav::RepairResult const result = wav::tryToRepairWavHeaderIfNeeded(nativePath(file));
    switch (result.status) {
    case wav::RepairStatus::NotNeeded:
        return tellRepaired(parser, file, QStringLiteral("ok"));
    case wav::RepairStatus::Repaired:
        return tellRepaired(parser, file, QStringLiteral("repaired"));
    default:
        return fileFailed(parser, file, file, result.message);
    }
}

ExitCode repairCommand(QCommandLineParser const& parser)
{
    if (parser.positionalArguments().contains(QStringLiteral("-"))) {
        return failed(ExitCode::Usage, QStringLiteral("standard input cannot be repaired"));
    }
    return forEachFile(parser, keyFile(), [&parser](QString const& file, WavLayout const& layout) {
        return repair(parser, file, layout);
    });
}

ExitCode joinCommand(QCommandLineParser const& parser)
{
    QString const output = parser.positionalArguments().constFirst();
    std::list<InputFile> inputs;
    std::vector<WavSource> sources;
    for (QString const& named : parser.positionalArguments().mid(1)) {
        InputFile const& input = inputs.emplace_back(named);
        if (!input.problem().isEmpty()) {
            return failed(ExitCode::Failure, InputFile::shown(named), input.problem());
        }
        sources.push_back({InputFile::shown(named), input.path()});
    }
    Interrupt const interrupt;
    std::optional<QString> error;
    {
        ProgressBar bar(QStringLiteral("joining"));
        error = joinWavFiles(output, sources,
                             {[&bar](long long now, long long total) { bar.update(now, total); },
                              [&interrupt] { return interrupt.wasRequested(); }});
    }
    if (error) {
        return failed(interrupt.wasRequested() ? interrupt.exitCode() : ExitCode::Failure, *error);
    }
    if (wantsJson(parser)) {
        Console::printJson(infoJson(output, WavLayout::read(output)));
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
    QString const info =
        QStringLiteral("{filename, format_name, codec_name, sample_rate, channels, bits_per_sample, "
                       "block_align, bit_rate, duration, nb_samples, size, data_offset, data_size, chunks: "
                       "[...], problems: [...], joinable}");
    return {
        {QStringLiteral("wav info"),
         QStringLiteral("Shows format, length and chunks of WAV files"),
         {files(QStringLiteral("WAV files; - is standard input"))},
         {},
         infoCommand,
         info + QStringLiteral(" for each file, {filename, error} for one that is none"),
         QStringLiteral("wav info call.wav")},
        {QStringLiteral("wav check"),
         QStringLiteral("Tells whether the sizes in WAV headers are right, and what a repair would do"),
         {files(QStringLiteral("WAV files, none is written to; - is standard input"))},
         {},
         checkCommand,
         QStringLiteral("{file, ok, problems: [...], repair: {possible, bytesBecomeSound, chunksBecomeSound: "
                        "[...]}} for each file, {file, error} for one that is none; repair stands only where "
                        "ok is false"),
         QStringLiteral("wav check ~/Recordings/*.wav")},
        {QStringLiteral("wav repair"),
         QStringLiteral("Corrects the sizes in WAV headers where they are wrong"),
         {files(QStringLiteral("WAV files; one that needs nothing is not written to"))},
         {},
         repairCommand,
         QStringLiteral("{file, status} for each file, {file, error} for one that is not repaired; status is "
                        "ok or repaired"),
         QStringLiteral("wav repair call.wav")},
        {QStringLiteral("wav join"),
         QStringLiteral("Joins the samples of WAV files of one format, A-law and mu-law among them"),
         {{QStringLiteral("OUT"), QStringLiteral("WAV file to write; beyond 4 GiB it becomes RF64")},
          {QStringLiteral("IN..."), QStringLiteral("WAV files to join, in this order; - is standard input")}},
         {},
         joinCommand,
         info,
         QStringLiteral("wav join day.wav morning.wav evening.wav")},
    };
}
