#include "Command.h"

#include "Console.h"

#include <QCommandLineParser>

ExitCode failed(ExitCode code, QString const& message)
{
    Console::printError(message);
    return code;
}

ExitCode failed(ExitCode code, QString const& problem, QString const& cause)
{
    bool const hasStop = cause.endsWith(QLatin1Char('.'));
    return failed(code, problem + QStringLiteral(": ") + (hasStop ? cause.chopped(1) : cause));
}

ExitCode fileFailed(QCommandLineParser const& parser, QString const& file, QString const& problem,
                    QString const& cause, QString const& key)
{
    if (wantsJson(parser)) {
        Console::printJson({{key, file}, {QStringLiteral("error"), cause}});
    }
    return failed(ExitCode::Failure, problem, cause);
}

bool wantsJson(QCommandLineParser const& parser)
{
    return parser.isSet(QStringLiteral("json"));
}
