#pragma once

// Why a log cannot be rewritten.

#include <QtCore/QString>

#include <exception>
#include <utility>

namespace Inspect {

/// Ends a rewriting. text() says what was found and where, without the log's name, a full stop or a line break.
class RewriteError : public std::exception
{
public:
    explicit RewriteError(QString text)
        : message(std::move(text))
    {
    }

    const QString &text() const { return message; }
    const char *what() const noexcept override { return "a log cannot be rewritten"; }

private:
    QString message;
};

} // namespace Inspect
