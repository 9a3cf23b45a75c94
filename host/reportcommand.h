#pragma once

// orva-host report: a page of laps to look at.

#include "host/command.h"

namespace Host {

std::unique_ptr<Command> reportCommand();

} // namespace Host
