#pragma once

// How any part of the program gives up. main.cpp turns it into the one line and the exit status that people see.

#include <QtCore/QString>

#include <exception>
#include <utility>

namespace Host {

enum class ExitStatus
{
    Success = 0,
    BadInput = 1,  ///< the log, the plug-in or the output: what was asked for cannot be had
    BadOptions = 2 ///< the command line itself is wrong
};

/// Ends the run. @p text says what was found, where, and what was expected; no full stop, no line break.
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

} // namespace Host
