#include "Commands.h"

QList<Command> const& allCommands()
{
    static QList<Command> const commands = QList<Command>{} + assetsCommands() + guardCommands() +
                                           netCommands() + numberCommands() + textCommands();
    return commands;
}
