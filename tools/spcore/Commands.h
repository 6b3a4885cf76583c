#pragma once

#include "Command.h"

/// Every command of the tool, in the order in which help lists them.
QList<Command> const& allCommands();

// One function a group, each in a source file of its own.
QList<Command> assetsCommands();
QList<Command> contactCommands();
QList<Command> cryptCommands();
QList<Command> guardCommands();
QList<Command> fileCommands();
QList<Command> netCommands();
QList<Command> numberCommands();
QList<Command> textCommands();
QList<Command> wavCommands();
