#include "Command.h"

#include "Console.h"

ExitCode failed(ExitCode code, QString const& message)
{
    Console::printError(message);
    return code;
}
