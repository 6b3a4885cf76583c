#include "Command.h"

#include "Console.h"

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
