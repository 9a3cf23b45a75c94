#pragma once

// `orva-host setup`.

#include "host/command.h"

namespace Host {

std::unique_ptr<Command> setupCommand();

} // namespace Host
