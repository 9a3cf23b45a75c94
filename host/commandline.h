#pragma once

// From the arguments of the program to the command that they ask for.

#include "host/command.h"

#include <QtCore/QStringList>

namespace Host {

/// Reads @p arguments, the program's name first, into the options of one of @p commands, and returns that command.
/// Prints what --help and --version ask for, and returns null then. Throws Failure with ExitStatus::BadCommandLine.
///
/// A command line that does not begin with the name of a command means the first of @p commands.
Command *readCommandLine(const QStringList &arguments, const CommandList &commands, Output &output);

} // namespace Host
