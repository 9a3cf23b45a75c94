#pragma once

// The list of commands. To add one: its header here, its line in the list.

#include "host/command.h"

namespace Host {

/// All commands in the order of the help. The first is the one that runs where the command line names none.
CommandList allCommands();

} // namespace Host
