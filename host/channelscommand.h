#pragma once

// `orva-host channels`.

#include "host/command.h"

namespace Host {

std::unique_ptr<Command> channelsCommand();

} // namespace Host
