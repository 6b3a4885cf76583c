#include "Commands.h"

#include "Console.h"

#include <crypto/Crypto.h>

#include <QCommandLineParser>
#include <QCryptographicHash>
#include <QFileInfo>
#include <QSaveFile>
#include <algorithm>
#include <array>
#include <cstdio>
#include <optional>

namespace {

using Flag = Crypto::CryptoFlag;
using Mode = Crypto::ProtectionMode;

struct NamedMode
{
    char const* name;
    Mode mode;
};

constexpr std::array modes = {NamedMode{"none", Mode::None}, NamedMode{"checksum", Mode::Checksum},
                              NamedMode{"hash", Mode::Hash}};

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

std::optional<Mode> modeOf(QCommandLineParser const& parser)
{
    QString const wanted = parser.value(QStringLiteral("mode"));
    auto const found = std::find_if(modes.begin(), modes.end(), [&wanted](NamedMode const& mode) {
        return wanted == QLatin1String(mode.name);
    });
    return found == modes.end() ? std::nullopt : std::optional(found->mode);
}

QString inputName(QCommandLineParser const& parser)
{
    return parser.positionalArguments().value(0, QStringLiteral("-"));
}

ExitCode writeFile(QString const& path, QByteArray const& bytes)
{
    QFileInfo const target(path);
    if (target.exists() && !target.isFile()) {
        return failed(ExitCode::Failure, path + QStringLiteral(": no regular file"));
    }
    // What was there stays whole until all is written; the new file takes its place, so it must be a file.
    QSaveFile file(path);
    bool const written =
        file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.commit();
    return written ? ExitCode::Success
                   : failed(ExitCode::Failure,
                            QStringLiteral("cannot write %1: %2").arg(path, file.errorString()));
}

ExitCode writeOutput(QCommandLineParser const& parser, QByteArray const& bytes)
{
    if (parser.isSet(QStringLiteral("output"))) {
        return writeFile(parser.value(QStringLiteral("output")), bytes);
    }
    Console::printBytes(bytes);
    return std::fflush(stdout) == 0 && std::ferror(stdout) == 0
               ? ExitCode::Success
               : failed(ExitCode::Failure, QStringLiteral("cannot write standard output"));
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
    std::optional<Mode> const mode = modeOf(parser);
    if (!mode) {
        return failed(ExitCode::Usage, QStringLiteral("crypt encrypt: --mode is none, checksum or hash"));
    }
    std::optional<QByteArray> const data = Console::readInput(inputName(parser));
    if (!data) {
        return failed(ExitCode::Failure, QStringLiteral("cannot read ") + inputName(parser));
    }
    QByteArray const message = Crypto::encrypt(*data, *key, *mode);
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
        return failed(ExitCode::Failure, QStringLiteral("cannot read ") + inputName(parser));
    }
    QByteArray const data = Crypto::decrypt(*message, *key);
    if (data.isEmpty() && !holdsNothing(*message, *key)) {
        return failed(ExitCode::Failure, inputName(parser) + QStringLiteral(": damaged, or another key"));
    }
    return writeOutput(parser, data);
}

ExitCode sha256(QCommandLineParser const& parser)
{
    ExitCode result = ExitCode::Success;
    QStringList const paths = parser.positionalArguments();
    for (QString const& path : paths) {
        QString const digest = Crypto::computeSHA256(path);
        if (digest.isEmpty()) {
            result = failed(ExitCode::Failure, QStringLiteral("cannot read ") + path);
        } else {
            Console::print(digest + QStringLiteral("  ") + path);
        }
    }
    return result;
}

} // namespace

QList<Command> cryptCommands()
{
    return {
        {QStringLiteral("crypt encrypt"),
         QStringLiteral("Scrambles a file under a key"),
         {inputArgument(QStringLiteral("File to scramble; standard input when left out or -"))},
         {keyOption(), modeOption(), outputOption()},
         encrypt},
        {QStringLiteral("crypt decrypt"),
         QStringLiteral("Restores a scrambled file"),
         {inputArgument(QStringLiteral("File to restore; standard input when left out or -"))},
         {keyOption(), outputOption()},
         decrypt},
        {QStringLiteral("crypt sha256"),
         QStringLiteral("Prints the SHA-256 digest of files"),
         {{QStringLiteral("FILE..."), QStringLiteral("Files to hash")}},
         {},
         sha256},
    };
}
