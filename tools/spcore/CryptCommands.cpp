#include "Commands.h"

#include "Console.h"
#include "FileName.h"
#include "InputFile.h"
#include "Reason.h"

#include <crypto/Crypto.h>

#include <QCommandLineParser>
#include <QCryptographicHash>
#include <QSaveFile>
#include <algorithm>
#include <optional>

namespace {

using Flag = Crypto::CryptoFlag;
using Mode = Crypto::ProtectionMode;

/// In the order of their values.
QStringList modeNames()
{
    return {QStringLiteral("none"), QStringLiteral("checksum"), QStringLiteral("hash")};
}

QCommandLineOption keyOption()
{
    return {{QStringLiteral("k"), QStringLiteral("key")},
            QStringLiteral("Key as a number, 0x... for hexadecimal; only its low byte takes part"),
            QStringLiteral("NUMBER")};
}

QCommandLineOption modeOption()
{
    return {{QStringLiteral("m"), QStringLiteral("mode")},
            QStringLiteral("Tag by which damage is noticed: none, checksum or hash (the default)"),
            QStringLiteral("MODE"),
            QStringLiteral("hash")};
}

QCommandLineOption outputOption()
{
    return {{QStringLiteral("o"), QStringLiteral("output")},
            QStringLiteral("File to write, instead of standard output"),
            QStringLiteral("FILE")};
}

Argument inputArgument(QString const& description)
{
    return {QStringLiteral("[FILE]"), description};
}

std::optional<unsigned long long> keyOf(QCommandLineParser const& parser)
{
    bool isNumber = false;
    unsigned long long const key = parser.value(QStringLiteral("key")).toULongLong(&isNumber, 0);
    return isNumber ? std::optional(key) : std::nullopt;
}

/// The mode that the user has chosen among those that the option takes.
Mode modeOf(QCommandLineParser const& parser)
{
    qsizetype const chosen = modeNames().indexOf(parser.value(QStringLiteral("mode")));
    return static_cast<Mode>(std::max<qsizetype>(chosen, 0));
}

QString inputName(QCommandLineParser const& parser)
{
    return parser.positionalArguments().value(0, QStringLiteral("-"));
}

ExitCode writeFile(QString const& path, QByteArray const& bytes)
{
    auto const fail = [&path](QString const& reason) {
        return failed(ExitCode::Failure, QStringLiteral("cannot write ") + path, reason);
    };
    if (!FileName::isUtf8(path)) {
        return fail(QStringLiteral("the name of a new file must be UTF-8"));
    }
    if (QString const reason = Reason::notWritable(path, bytes.size()); !reason.isEmpty()) {
        return fail(reason);
    }
    // What was there stays whole until all is written; the new file takes its place, so it must be a file.
    QSaveFile file(path);
    bool const written =
        file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.commit();
    return written ? ExitCode::Success : fail(file.errorString());
}

ExitCode writeOutput(QCommandLineParser const& parser, QByteArray const& bytes)
{
    QString const path = parser.value(QStringLiteral("output"));
    QJsonObject answer{{QStringLiteral("bytes"), bytes.size()}};
    if (parser.isSet(QStringLiteral("output"))) {
        answer[QStringLiteral("file")] = path;
        if (ExitCode const code = writeFile(path, bytes); code != ExitCode::Success) {
            return code;
        }
    } else if (!wantsJson(parser)) {
        Console::printBytes(bytes);
    } else {
        answer[QStringLiteral("base64")] = QString::fromLatin1(bytes.toBase64());
    }
    if (wantsJson(parser)) {
        Console::printJson(answer);
    }
    return ExitCode::Success;
}

/// Whether \a message holds empty data, as opposed to none that can be read. Asked of its tag, which shows as
/// the payload once the flags say that there is none.
bool holdsNothing(QByteArray const& message, unsigned long long key)
{
    if (message.size() < 2) {
        return false;
    }
    QByteArray const shown = Crypto::decrypt('\0' + message.mid(1), key);
    switch (static_cast<Flag>(message[0])) {
    case Flag::None:
        return shown.isEmpty();
    case Flag::Checksum:
        return shown == QByteArray(2, '\0');
    case Flag::Hash:
        return shown == QCryptographicHash::hash(QByteArray(), QCryptographicHash::Sha1);
    default:
        return false; // encrypt never compresses nothing
    }
}

ExitCode encrypt(QCommandLineParser const& parser)
{
    std::optional<unsigned long long> const key = keyOf(parser);
    if (!key) {
        return failed(ExitCode::Usage, QStringLiteral("crypt encrypt: --key needs a number"));
    }
    std::optional<QByteArray> const data = Console::readInput(inputName(parser));
    if (!data) {
        return ExitCode::Failure;
    }
    QByteArray const message = Crypto::encrypt(*data, *key, modeOf(parser));
    return message.isEmpty() ? failed(ExitCode::Failure, QStringLiteral("out of memory"))
                             : writeOutput(parser, message);
}

ExitCode decrypt(QCommandLineParser const& parser)
{
    std::optional<unsigned long long> const key = keyOf(parser);
    if (!key) {
        return failed(ExitCode::Usage, QStringLiteral("crypt decrypt: --key needs a number"));
    }
    std::optional<QByteArray> const message = Console::readInput(inputName(parser));
    if (!message) {
        return ExitCode::Failure;
    }
    QByteArray const data = Crypto::decrypt(*message, *key);
    if (data.isEmpty() && !holdsNothing(*message, *key)) {
        return failed(
            ExitCode::Failure, QStringLiteral("cannot restore ") + InputFile::shown(inputName(parser)),
            message->size() < 2 ? QStringLiteral("it is too short for a scrambled file")
                                : QStringLiteral("it is damaged, or was scrambled under another key"));
    }
    return writeOutput(parser, data);
}

ExitCode sha256(QCommandLineParser const& parser)
{
    ExitCode result = ExitCode::Success;
    QStringList const paths = parser.positionalArguments();
    for (QString const& path : paths) {
        InputFile const input(path);
        QString const digest = input.problem().isEmpty() ? Crypto::computeSHA256(input.path()) : QString();
        if (digest.isEmpty()) {
            QString const reason = input.problem().isEmpty() ? QStringLiteral("it failed") : input.problem();
            result =
                fileFailed(parser, path, QStringLiteral("cannot read ") + InputFile::shown(path), reason);
        } else if (wantsJson(parser)) {
            Console::printJson({{QStringLiteral("file"), path}, {QStringLiteral("sha256"), digest}});
        } else {
            Console::printName(digest + QStringLiteral("  ") + path);
        }
    }
    return result;
}

} // namespace

QList<Command> cryptCommands()
{
    QString const output = QStringLiteral("{bytes, file} with --output, else {bytes, base64}");
    return {
        {QStringLiteral("crypt encrypt"),
         QStringLiteral("Scrambles a file under a key"),
         {inputArgument(QStringLiteral("File to scramble; standard input when left out or -"))},
         {keyOption(), modeOption(), outputOption()},
         encrypt,
         output,
         QStringLiteral("crypt encrypt --key 42 --output settings.bin settings.json"),
         {{QStringLiteral("mode"), modeNames()}}},
        {QStringLiteral("crypt decrypt"),
         QStringLiteral("Restores a scrambled file"),
         {inputArgument(QStringLiteral("File to restore; standard input when left out or -"))},
         {keyOption(), outputOption()},
         decrypt,
         output,
         QStringLiteral("crypt decrypt --key 42 settings.bin")},
        {QStringLiteral("crypt sha256"),
         QStringLiteral("Prints the SHA-256 digest of files"),
         {{QStringLiteral("FILE..."), QStringLiteral("Files to hash; - is standard input")}},
         {},
         sha256,
         QStringLiteral("{file, sha256} for each file, {file, error} for one that cannot be read"),
         QStringLiteral("crypt sha256 *.wav")},
    };
}
