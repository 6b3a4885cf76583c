#include "Commands.h"

QList<Command> const& allCommands()
{
    static QList<Command> const commands = assetsCommands() + contactCommands() + cryptCommands() +
                                           guardCommands() + netCommands() + numberCommands() +
                                           textCommands() + wavCommands();
    return commands;
}
