#include "Commands.h"

QList<Command> const& allCommands()
{
    static QList<Command> const commands =
        assetsCommands() + contactCommands() + fileCommands() + cryptCommands() +
        guardCommands() + helpCommands() + netCommands() + numberCommands() + textCommands() + wavCommands();
    return commands;
}
