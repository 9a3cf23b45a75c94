// orva-host: imports a telemetry log and prints its laps. From here: options.h (what is asked for), logreader.h (the
// import), selection.h (what is picked) and then one of the views.

#include "host/failure.h"
#include "host/jsonreport.h"
#include "host/logreader.h"
#include "host/options.h"
#include "host/output.h"
#include "host/report.h"
#include "host/selection.h"
#include "host/valuetable.h"
#include "ld/ldx.h"

#include <QtCore/QCoreApplication>

#include <csignal>
#include <exception>
#include <fcntl.h>
#include <new>
#include <unistd.h>

using namespace Host;

namespace {

// What stands on standard error beside the result. A run that fails prints its one line alone, so this waits until
// everything has been checked.
void printRemarks(const Log &log, const Options &options, const Selection &selection)
{
    if (options.isQuiet)
        return;
    for (const QString &message : log.messages)
        printError(message);
    if (options.view == Options::View::Values && !options.lap)
        printError(QStringLiteral("Values of the lap with index %1; --lap picks another").arg(selection.laps.front()));
    if (options.view == Options::View::Setup && log.laps[selection.laps.front()]->header().dynamicData.isEmpty())
        printError(QStringLiteral("%1: no setup values, expected them in %2").arg(log.path, sidecarPath(log.path)));
}

void printLog(const Log &log, const Options &options, Output &output)
{
    const Selection selection = select(log, options);
    printRemarks(log, options, selection);
    switch (options.view) {
    case Options::View::ChannelList:
        printChannels(log, selection, output);
        break;
    case Options::View::Values:
        printValues(log, selection, output);
        break;
    case Options::View::Setup:
        printSetup(log, selection, output);
        break;
    case Options::View::Json:
        printJson(log, selection, output);
        break;
    default:
        printLaps(log, selection, output);
    }
}

// What is opened later must not take the place of a standard stream that the caller has closed: the result would be
// written into it.
void holdStandardStreams()
{
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(stream, F_GETFD) == -1)
            (void)open("/dev/null", O_RDONLY); // takes the lowest free place, and refuses what is written
    }
}

void run(const QStringList &arguments)
{
    const Options options = parseOptions(arguments);
    Output output;
    if (options.view == Options::View::Help)
        output.writeText(helpText());
    else if (options.view == Options::View::Version)
        output.write("orva-host " ORVA_VERSION "\n");
    else
        printLog(readLog(options), options, output);
    output.flush();
}

} // namespace

int main(int argc, char *argv[])
{
    holdStandardStreams();
    std::signal(SIGPIPE, SIG_IGN); // a reader that goes away is a write error like any other
    // Qt complains on standard error where the locale is not one of UTF-8, although nothing here depends on it.
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});
    // Nor may anything else of Qt's stand beside the one line of a run that fails.
    const QCoreApplication application(argc, argv);

    auto status = ExitStatus::Success;
    const auto fail = [&status](const QString &text, ExitStatus failure) {
        printError(QLatin1String("orva-host: ") + text);
        status = failure;
    };
    try {
        run(QCoreApplication::arguments());
    } catch (const Failure &failure) {
        fail(failure.text(), failure.status());
    } catch (const std::bad_alloc &) {
        fail(QStringLiteral("the memory does not suffice for this log"), ExitStatus::BadInput);
    } catch (const std::exception &error) {
        fail(QLatin1String("the import ended with an exception: ") + QString::fromLocal8Bit(error.what()),
             ExitStatus::BadInput);
    } catch (...) {
        fail(QStringLiteral("the import ended with an exception"), ExitStatus::BadInput);
    }
    return static_cast<int>(status);
}
