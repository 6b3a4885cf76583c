#include "Commands.h"

QList<Command> const& allCommands()
{
    static QList<Command> const commands = QList<Command>{} + netCommands() + numberCommands();
    return commands;
}
