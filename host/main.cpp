// orva-host: reads telemetry logs and prints what they hold. From here: commandline.h (which command is asked for),
// commands.h (what commands there are), and then one of the commands.

#include "host/commandline.h"
#include "host/commands.h"
#include "host/failure.h"
#include "host/output.h"
#include "host/platform.h"

#include <QtCore/QCoreApplication>

using namespace Host;

namespace {

ExitStatus run(const QStringList &arguments)
{
    Output output;
    const CommandList commands = allCommands();
    Command *command = readCommandLine(arguments, commands, output);
    const ExitStatus status = command ? command->run(output) : ExitStatus::Success;
    output.flush();
    return status;
}

} // namespace

int main(int argc, char *argv[])
{
    holdStandardStreams();
    ignoreBrokenPipes();
    // Qt complains on standard error where the locale is not one of UTF-8, although nothing here depends on it.
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});
    // Nothing else of Qt's may appear beside the one line of a run that fails either.
    const QCoreApplication application(argc, argv);
    return static_cast<int>(guarded([] { return run(QCoreApplication::arguments()); }));
}
