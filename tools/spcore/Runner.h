#pragma once

#include "Command.h"

/// Runs the command that \a arguments name: the program's name, then the command's, then its own arguments.
///
/// Prints help where it is asked for; a wrong command line gives one line on standard error and
/// ExitCode::Usage.
ExitCode runCommand(QStringList const& arguments);
