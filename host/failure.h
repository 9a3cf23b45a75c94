#pragma once

// How any part of the program gives up, and the exit status that people and scripts see.

#include <QtCore/QString>

#include <exception>
#include <functional>
#include <utility>

namespace Host {

enum class ExitStatus
{
    Success = 0,
    BadInput = 1,       ///< something cannot be read or written, or what was asked of a log is not in it
    BadCommandLine = 2, ///< the command line itself is wrong
    Amiss = 3           ///< read, but something about the log is amiss
};

/// The status of a run of which parts ended as @p first and @p second: what could not be read outweighs what is amiss.
ExitStatus worse(ExitStatus first, ExitStatus second);

/// Ends the work on a log, or the run. @p text says what was found, where, and what to do; no full stop, no line break.
class Failure : public std::exception
{
public:
    explicit Failure(QString text, ExitStatus status = ExitStatus::BadInput)
        : message(std::move(text))
        , exitStatus(status)
    {
    }

    const QString &text() const { return message; }
    ExitStatus status() const { return exitStatus; }
    const char *what() const noexcept override { return "the run ended early"; }

private:
    QString message;
    ExitStatus exitStatus;
};

/// Standard output cannot be written: nothing that follows makes sense.
class OutputFailure : public Failure
{
public:
    using Failure::Failure;
};

/// Calls @p action and returns its status. If an exception leaves it, prints the one line of a failure instead and
/// returns the status that belongs to it.
ExitStatus guarded(const std::function<ExitStatus()> &action);
/// The same for the part of a run that is about @p log. Lets an OutputFailure pass, because the whole run ends by it.
ExitStatus guardedFor(const QString &log, const std::function<ExitStatus()> &action);

} // namespace Host
