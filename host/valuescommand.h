#pragma once

// `orva-host values`.

#include "host/command.h"

namespace Host {

std::unique_ptr<Command> valuesCommand();

} // namespace Host
