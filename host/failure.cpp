#include "host/failure.h"

#include "host/output.h"

#include <algorithm>
#include <array>
#include <new>

namespace Host {

namespace {

ExitStatus failed(const QString &text, ExitStatus status = ExitStatus::BadInput)
{
    printError(QLatin1String("orva-host: ") + text);
    return status;
}

} // namespace

ExitStatus worse(ExitStatus first, ExitStatus second)
{
    constexpr std::array order{ExitStatus::Success, ExitStatus::Amiss, ExitStatus::BadInput,
                               ExitStatus::BadCommandLine};
    return std::find(order.begin(), order.end(), first) < std::find(order.begin(), order.end(), second) ? second
                                                                                                        : first;
}

ExitStatus guarded(const std::function<ExitStatus()> &action)
{
    try {
        return action();
    } catch (const Failure &failure) {
        return failed(failure.text(), failure.status());
    } catch (const std::bad_alloc &) {
        return failed(QStringLiteral("not enough memory"));
    } catch (const std::exception &error) {
        return failed(QLatin1String("unexpected exception: ") + QString::fromLocal8Bit(error.what()));
    } catch (...) {
        return failed(QStringLiteral("unexpected exception"));
    }
}

ExitStatus guardedFor(const QString &log, const std::function<ExitStatus()> &action)
{
    try {
        return action();
    } catch (const OutputFailure &) {
        throw;
    } catch (const Failure &failure) {
        return failed(failure.text(), failure.status());
    } catch (const std::bad_alloc &) {
        return failed(log + QLatin1String(": not enough memory for this log"));
    } catch (const std::exception &error) {
        return failed(log + QLatin1String(": the plug-in threw an exception: ") + QString::fromLocal8Bit(error.what()));
    } catch (...) {
        return failed(log + QLatin1String(": the plug-in threw an exception"));
    }
}

} // namespace Host
