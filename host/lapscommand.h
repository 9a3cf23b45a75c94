#pragma once

// `orva-host laps`.

#include "host/command.h"

namespace Host {

std::unique_ptr<Command> lapsCommand();

} // namespace Host
