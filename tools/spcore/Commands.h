#pragma once

#include "Command.h"

/// Every command of the tool, in the order in which help lists them.
QList<Command> const& allCommands();

/// The command whose name opens \a words, that of the longest name; null when there is none.
Command const* findCommand(QStringList const& words);

/// What \a command takes: its own options, and those that every command has.
QList<QCommandLineOption> optionsOf(Command const& command);

// One function a group, each in a source file of its own.
QList<Command> assetsCommands();
QList<Command> contactCommands();
QList<Command> cryptCommands();
QList<Command> guardCommands();
QList<Command> doctorCommands();
QList<Command> fileCommands();
QList<Command> helpCommands();
QList<Command> netCommands();
QList<Command> numberCommands();
QList<Command> textCommands();
QList<Command> wavCommands();
