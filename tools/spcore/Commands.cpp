#include "Commands.h"

QList<Command> const& allCommands()
{
    static QList<Command> const commands = QList<Command>{} + assetsCommands() + contactCommands() +
                                           guardCommands() + netCommands() + numberCommands() +
                                           textCommands();
    return commands;
}
