#include "host/commands.h"

#include "host/channelscommand.h"
#include "host/checkcommand.h"
#include "host/lapscommand.h"
#include "host/reportcommand.h"
#include "host/rewritecommand.h"
#include "host/setupcommand.h"
#include "host/valuescommand.h"

namespace Host {

CommandList allCommands()
{
    CommandList commands;
    commands.push_back(lapsCommand());
    commands.push_back(channelsCommand());
    commands.push_back(valuesCommand());
    commands.push_back(setupCommand());
    commands.push_back(checkCommand());
    commands.push_back(rewriteCommand());
    commands.push_back(reportCommand());
    return commands;
}

} // namespace Host
