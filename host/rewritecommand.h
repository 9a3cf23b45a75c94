#pragma once

// `orva-host rewrite`.

#include "host/command.h"

namespace Host {

std::unique_ptr<Command> rewriteCommand();

} // namespace Host
