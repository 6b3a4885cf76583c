#include "Commands.h"
#include "Console.h"
#include "Interrupt.h"

#include <network/NetworkUtils.h>

#include <QCommandLineParser>
#include <QFileInfo>
#include <optional>
#include <vector>

namespace {

/// What every transfer needs before the first and after the last.
struct Transfers
{
    Transfers() { NetworkUtils::start(); }
    ~Transfers() { NetworkUtils::stop(); }
    Transfers(Transfers const&) = delete;
    Transfers& operator=(Transfers const&) = delete;
};

/// Runs \a transfer with an operator that draws the bar \a label and ends it on Ctrl-C.
template <typename Transfer>
ExitCode runTransfer(QString const& label, bool isDownload, QString const& problem, Transfer transfer)
{
    Transfers const transfers;
    Interrupt const interrupt;
    NetworkUtils::TransferResult result;
    {
        Console::ProgressBar bar(label);
        NetworkUtils::Operator op;
        op.isDownload = isDownload;
        op.progress = [&bar](long long now, long long total) { bar.update(now, total); };
        op.isCancelled = [&interrupt] { return interrupt.wasRequested(); };
        result = transfer(&op);
    }
    if (result.ok) {
        return ExitCode::Success;
    }
    if (interrupt.wasRequested()) {
        return failed(ExitCode::Failure, QStringLiteral("cancelled"));
    }
    return failed(ExitCode::Failure,
                  result.remoteError ? problem + QStringLiteral(": the server refused") : problem);
}

ExitCode get(QCommandLineParser const& parser)
{
    QString const url = parser.positionalArguments().at(0);
    QString const file = parser.positionalArguments().at(1);
    QString const problem = QStringLiteral("cannot download ") + url + QStringLiteral(" to ") + file;
    return runTransfer(QStringLiteral("get"), true, problem,
                       [&](NetworkUtils::Operator* op) { return NetworkUtils::downloadFile(url, file, op); });
}

ExitCode size(QCommandLineParser const& parser)
{
    Transfers const transfers;
    QString const url = parser.positionalArguments().constFirst();
    long long const bytes = NetworkUtils::getFileSize(url);
    if (bytes < 0) {
        return failed(ExitCode::Failure, QStringLiteral("cannot ask for the size of ") + url);
    }
    Console::print(QString::number(bytes));
    return ExitCode::Success;
}

ExitCode put(QCommandLineParser const& parser)
{
    QFileInfo const file(parser.positionalArguments().at(0));
    QString const url = parser.positionalArguments().at(1);
    if (!file.isFile() || !file.isReadable()) {
        return failed(ExitCode::Failure, QStringLiteral("cannot read ") + file.filePath());
    }
    QString const problem = QStringLiteral("cannot upload ") + file.filePath() + QStringLiteral(" to ") + url;
    return runTransfer(QStringLiteral("put"), false, problem, [&](NetworkUtils::Operator* op) {
        return NetworkUtils::putFile(url, file.filePath(), file.size(), op);
    });
}

/// \a bytes as the text they are in UTF-8; nothing when they are none or hold a U+0000, which ends a body.
std::optional<QString> asText(QByteArray const& bytes)
{
    QString text = QString::fromUtf8(bytes);
    if (bytes.contains('\0') || text.toUtf8() != bytes) {
        return std::nullopt;
    }
    return text;
}

ExitCode post(QCommandLineParser const& parser)
{
    QString const url = parser.positionalArguments().constFirst();
    QStringList headers = parser.values(QStringLiteral("header"));
    if (headers.isEmpty()) {
        headers = {NetworkUtils::getJSONContentTypeSpec()};
    }
    std::optional<QByteArray> const input = Console::readInput(QStringLiteral("-"));
    std::optional<QString> const body = input ? asText(*input) : std::nullopt;
    if (!body) {
        return failed(ExitCode::Failure, QStringLiteral("standard input is not UTF-8 text"));
    }
    Transfers const transfers;
    if (!NetworkUtils::post(url, std::vector<QString>(headers.begin(), headers.end()), *body)) {
        return failed(ExitCode::Failure, QStringLiteral("cannot post to ") + url);
    }
    return ExitCode::Success;
}

} // namespace

QList<Command> netCommands()
{
    Argument const url = {QStringLiteral("URL"), QStringLiteral("HTTP or HTTPS address")};
    return {
        {QStringLiteral("net get"),
         QStringLiteral("Downloads a file; an error page is downloaded like any other"),
         {url, {QStringLiteral("FILE"), QStringLiteral("File to write, removed when the download fails")}},
         {},
         get},
        {QStringLiteral("net size"),
         QStringLiteral("Prints the size that a server gives for a file; 0 when it gives none"),
         {url},
         {},
         size},
        {QStringLiteral("net put"),
         QStringLiteral("Uploads a file"),
         {{QStringLiteral("FILE"), QStringLiteral("File to send")}, url},
         {},
         put},
        {QStringLiteral("net post"),
         QStringLiteral("Posts the text on standard input"),
         {url},
         {QCommandLineOption(
             QStringLiteral("header"),
             QStringLiteral("Header line, any number of times; Content-Type: application/json unless given"),
             QStringLiteral("LINE"))},
         post},
    };
}
