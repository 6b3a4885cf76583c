#include "Commands.h"

QList<Command> const& allCommands()
{
    static QList<Command> const commands =
        assetsCommands() + contactCommands() + fileCommands() + cryptCommands() + doctorCommands() +
        guardCommands() + helpCommands() + netCommands() + numberCommands() + textCommands() + wavCommands();
    return commands;
}
