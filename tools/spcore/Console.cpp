#include "Console.h"

#include "FileName.h"
#include "InputFile.h"
#include "Reason.h"

#include <QFile>
#include <QJsonDocument>
#include <QRegularExpression>
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <unistd.h>

namespace {

/// Why the first piece of output was lost that was; 0 before one was.
int outputError = 0;

void keepError(bool isWritten)
{
    if (!isWritten && outputError == 0) {
        outputError = errno;
    }
}

QString withoutSecrets(QString text)
{
    static QRegularExpression const login(QStringLiteral("(?<=//)[^/\\s]*@"));
    static QRegularExpression const query(QStringLiteral("(://[^\\s?#\"]*)[?#][^\\s\"]*"));
    return text.remove(login).replace(query, QStringLiteral("\\1"));
}

} // namespace

namespace Console {

void print(QString const& text)
{
    printBytes(text.toUtf8() + '\n');
}

void printName(QString const& name)
{
    printBytes(FileName::toNative(name) + '\n');
}

void printBytes(QByteArray const& bytes)
{
    auto const size = static_cast<std::size_t>(bytes.size());
    keepError(std::fwrite(bytes.constData(), 1, size, stdout) == size);
}

void flush()
{
    keepError(std::fflush(stdout) == 0);
}

void printJson(QJsonObject const& object)
{
    printBytes(QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n');
}

void printJsonArray(QJsonArray const& array)
{
    printBytes(QJsonDocument(array).toJson(QJsonDocument::Compact) + '\n');
}

void printError(QString const& message)
{
    flush();
    QByteArray const line = "spcore: " + FileName::toNative(withoutSecrets(message.simplified())) + '\n';
    std::fwrite(line.constData(), 1, static_cast<std::size_t>(line.size()), stderr);
}

ExitCode finish(ExitCode code)
{
    flush();
    if (outputError == 0) {
        return code;
    }
    if (outputError != EPIPE) {
        printError(QStringLiteral("cannot write standard output: ") + Reason::ofError(outputError));
    }
    return code == ExitCode::Success ? ExitCode::Failure : code;
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
    bool const isStandardInput = InputFile::isStandardInput(path);
    auto const fail = [&path](QString const& reason) -> std::optional<QByteArray> {
        failed(ExitCode::Failure, QStringLiteral("cannot read ") + InputFile::shown(path), reason);
        return std::nullopt;
    };
    std::optional<InputFile> named;
    if (!isStandardInput && !named.emplace(path).problem().isEmpty()) {
        return fail(named->problem());
    }
    QFile file(isStandardInput ? QString() : named->path());
    bool const isOpen =
        isStandardInput ? file.open(stdin, QIODevice::ReadOnly) : file.open(QIODevice::ReadOnly);
    QByteArray bytes = isOpen ? file.readAll() : QByteArray();
    if (file.error() != QFileDevice::NoError) {
        return fail(file.errorString());
    }
    return bytes;
}

} // namespace Console
