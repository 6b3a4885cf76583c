#include "Commands.h"
#include "Console.h"
#include "FileName.h"
#include "InputFile.h"
#include "Interrupt.h"
#include "ProgressBar.h"

#include <files/FilePaths.h>
#include <files/UrlHelpers.h>

#include <QCommandLineParser>
#include <QEventLoop>
#include <QJsonObject>
#include <QUtf8StringView>
#include <algorithm>
#include <client/Transfers.h>
#include <optional>
#include <utility>

using Softphone::Transfer;
using Softphone::TransferRequest;
using Softphone::Transfers;

namespace {

using Header = std::pair<QByteArray, QByteArray>;

/// The address that \a typed means; without a scheme, as in "localhost:8080/report", a web server's.
QUrl addressOf(QString const& typed)
{
    qsizetype const mark = typed.indexOf(QStringLiteral("://"));
    bool const hasScheme = mark > 0 && typed.indexOf(QLatin1Char('/')) == mark + 1;
    return QUrl(hasScheme ? typed : QStringLiteral("http://") + typed);
}

/// How messages name \a url: without a login, and without a query, which often holds a key.
QString shown(QUrl const& url)
{
    return url.isValid()
               ? url.toDisplayString(QUrl::RemoveUserInfo | QUrl::RemoveQuery | QUrl::RemoveFragment)
               : QStringLiteral("this address");
}

/// Waits until \a transfer has ended, however that is; Ctrl-C ends it. A \a label gives it a bar.
///
/// \param problem  what could not be done when it fails
ExitCode finish(Transfer& transfer, QString const& problem, QString const& label = QString())
{
    Interrupt interrupt;
    interrupt.whenRequested([&transfer] { transfer.cancel(); });
    {
        ProgressBar bar(label);
        QEventLoop loop;
        if (!label.isEmpty()) {
            QObject::connect(&transfer, &Transfer::progress, &loop,
                             [&bar](qint64 done, qint64 total) { bar.update(done, total); });
        }
        QObject::connect(&transfer, &Transfer::finished, &loop, &QEventLoop::quit);
        loop.exec();
    }
    switch (transfer.error()) {
    case Softphone::TransferError::None:
        return ExitCode::Success;
    case Softphone::TransferError::Cancelled:
        return failed(interrupt.exitCode(), QStringLiteral("cancelled"));
    default:
        return failed(ExitCode::Failure, problem, transfer.errorText());
    }
}

/// What --json tells of \a transfer, which has succeeded.
QJsonObject summary(Transfer const& transfer, QUrl const& url)
{
    return {{QStringLiteral("url"), shown(url)}, {QStringLiteral("status"), transfer.status()}};
}

/// Answers for a \a transfer of the file \a file that ended with \a code.
ExitCode answer(QCommandLineParser const& parser, ExitCode code, Transfer const& transfer, QUrl const& url,
                QString const& file)
{
    if (code == ExitCode::Success && wantsJson(parser)) {
        QJsonObject object = summary(transfer, url);
        object[QStringLiteral("file")] = file;
        object[QStringLiteral("bytes")] = transfer.done();
        Console::printJson(object);
    }
    return code;
}

/// The file in \a folder that is named after \a url. Its login is no part of a name.
QString fileIn(QString const& folder, QUrl const& url)
{
    QString const name = UrlHelpers::getFileName(url.toString(QUrl::FullyEncoded | QUrl::RemoveUserInfo));
    return FilePaths::absoluteFilePath(folder, FilePaths::safeFileName(name));
}

ExitCode get(QCommandLineParser const& parser)
{
    QString const destination = parser.positionalArguments().at(1);
    if (destination.isEmpty()) {
        return failed(ExitCode::Usage, QStringLiteral("the file to write has no name"));
    }
    TransferRequest request;
    request.url = addressOf(parser.positionalArguments().at(0));
    request.path = destination;
    if (FilePaths::isDirectory(destination)) {
        request.path = fileIn(destination, request.url);
        // Nobody has asked to replace a file of a name that comes from the address.
        request.ifExists = Softphone::IfExists::Fail;
    }
    if (!FileName::isUtf8(request.path)) {
        return failed(ExitCode::Usage, QStringLiteral("the file to write needs a name in UTF-8"));
    }
    Transfers transfers;
    Transfer& transfer = *transfers.download(request);
    ExitCode const code =
        finish(transfer, QStringLiteral("cannot download ") + shown(request.url), QStringLiteral("get"));
    return answer(parser, code, transfer, request.url, transfer.path());
}

ExitCode size(QCommandLineParser const& parser)
{
    TransferRequest request;
    request.url = addressOf(parser.positionalArguments().constFirst());
    Transfers transfers;
    Transfer& transfer = *transfers.size(request);
    ExitCode const code =
        finish(transfer, QStringLiteral("cannot ask for the size of ") + shown(request.url));
    if (code == ExitCode::Success && wantsJson(parser)) {
        QJsonObject object = summary(transfer, request.url);
        object[QStringLiteral("bytes")] = transfer.total() < 0 ? QJsonValue() : QJsonValue(transfer.total());
        Console::printJson(object);
    } else if (code == ExitCode::Success) {
        Console::print(QString::number(std::max<qint64>(transfer.total(), 0)));
    }
    return code;
}

ExitCode put(QCommandLineParser const& parser)
{
    QString const file = parser.positionalArguments().at(0);
    InputFile const input(file);
    if (!input.problem().isEmpty()) {
        return failed(ExitCode::Failure, QStringLiteral("cannot read ") + InputFile::shown(file),
                      input.problem());
    }
    TransferRequest request;
    request.path = input.path();
    request.url = addressOf(parser.positionalArguments().at(1));
    Transfers transfers;
    Transfer& transfer = *transfers.upload(request);
    ExitCode const code =
        finish(transfer, QStringLiteral("cannot upload to ") + shown(request.url), QStringLiteral("put"));
    return answer(parser, code, transfer, request.url, file);
}

/// The fields that \a lines give, "Name: value" each, and the type of the body where they do not; nothing
/// when one of them has no name or no value.
std::optional<QList<Header>> headersOf(QStringList const& lines)
{
    QList<Header> headers;
    bool isTyped = false;
    for (QString const& line : lines) {
        qsizetype const colon = line.indexOf(QLatin1Char(':'));
        if (colon <= 0) {
            return std::nullopt;
        }
        QByteArray const name = line.left(colon).toUtf8();
        isTyped = isTyped || name.compare("Content-Type", Qt::CaseInsensitive) == 0;
        headers.append(Header(name, line.mid(colon + 1).toUtf8().trimmed()));
    }
    if (!isTyped) {
        headers.append(Header("Content-Type", "application/json"));
    }
    return headers;
}

/// \a object with what the server has sent: as text, or in Base64 where it is none.
QJsonObject withBody(QJsonObject object, Transfer const& transfer)
{
    QByteArray const body = transfer.body();
    object[QStringLiteral("contentType")] = QString::fromLatin1(transfer.header("Content-Type"));
    if (QUtf8StringView(body.constData(), body.size()).isValidUtf8()) {
        object[QStringLiteral("body")] = QString::fromUtf8(body);
    } else {
        object[QStringLiteral("base64")] = QString::fromLatin1(body.toBase64());
    }
    return object;
}

/// Prints what a server has sent; of what could steer a terminal, one gets the line breaks only.
void printAnswer(QCommandLineParser const& parser, Transfer const& transfer, QUrl const& url)
{
    if (wantsJson(parser)) {
        Console::printJson(withBody(summary(transfer, url), transfer));
        return;
    }
    if (!Console::isTerminal()) {
        Console::printBytes(transfer.body());
        return;
    }
    QStringList lines = QString::fromUtf8(transfer.body()).split(QLatin1Char('\n'));
    std::ranges::transform(lines, lines.begin(), Console::harmless);
    Console::printBytes(lines.join(QLatin1Char('\n')).toUtf8());
}

ExitCode post(QCommandLineParser const& parser)
{
    std::optional<QList<Header>> const headers = headersOf(parser.values(QStringLiteral("header")));
    if (!headers) {
        return failed(ExitCode::Usage, QStringLiteral("a header line is not of the form \"Name: value\""));
    }
    std::optional<QByteArray> const body = Console::readInput(QStringLiteral("-"));
    if (!body) {
        return ExitCode::Failure;
    }
    TransferRequest request;
    request.url = addressOf(parser.positionalArguments().constFirst());
    request.headers = *headers;
    Transfers transfers;
    Transfer& transfer = *transfers.post(request, *body);
    ExitCode const code = finish(transfer, QStringLiteral("cannot post to ") + shown(request.url));
    // A service tells in the body what it did not like.
    if (code == ExitCode::Success || transfer.error() == Softphone::TransferError::HttpStatus) {
        printAnswer(parser, transfer, request.url);
    }
    return code;
}

} // namespace

QList<Command> netCommands()
{
    Argument const url = {QStringLiteral("URL"),
                          QStringLiteral("HTTP or HTTPS address; a login in it is sent and not shown")};
    return {
        {QStringLiteral("net get"),
         QStringLiteral("Downloads a file, along redirects; an error page is an error"),
         {url,
          {QStringLiteral("FILE"),
           QStringLiteral("File to write, replaced when all of the new one is there; in a folder, a new one "
                          "named after the URL")}},
         {},
         get,
         QStringLiteral("{url, status, file, bytes}"),
         QStringLiteral("net get https://phone.example/book.json book.json")},
        {QStringLiteral("net size"),
         QStringLiteral("Prints the size that a server gives for a file; 0 when it gives none"),
         {url},
         {},
         size,
         QStringLiteral("{url, status, bytes}; bytes is null when the server gives none"),
         QStringLiteral("net size https://phone.example/book.json")},
        {QStringLiteral("net put"),
         QStringLiteral("Uploads a file"),
         {{QStringLiteral("FILE"), QStringLiteral("File to send; - is standard input")}, url},
         {},
         put,
         QStringLiteral("{url, status, file, bytes}"),
         QStringLiteral("net put call.wav https://phone.example/recordings/call.wav")},
        {QStringLiteral("net post"),
         QStringLiteral("Posts standard input and prints the answer, also of a server that refuses it"),
         {url},
         {QCommandLineOption(
             QStringLiteral("header"),
             QStringLiteral("Header line, any number of times; Content-Type: application/json unless given"),
             QStringLiteral("LINE"))},
         post,
         QStringLiteral("{url, status, contentType, body}, or base64 for a body that is no text"),
         QStringLiteral("net post --header 'X-Client: desk' https://phone.example/status <status.json")},
    };
}
