#pragma once

// `orva-host check`.

#include "host/command.h"

namespace Host {

std::unique_ptr<Command> checkCommand();

} // namespace Host
