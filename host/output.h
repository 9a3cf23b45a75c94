#pragma once

// Standard output and standard error. Everything the program says goes through here, as UTF-8.

#include <QtCore/QByteArrayView>
#include <QtCore/QString>

namespace Host {

/// Standard output, buffered. Throws Failure as soon as something cannot be written (a closed pipe, a full disk), so
/// that no result is lost silently.
class Output
{
public:
    Output();

    void write(QByteArrayView bytes);
    void writeText(const QString &text);
    /// Hands over what is buffered. Without this call nothing is certain to have been written.
    void flush();
    /// Whether bold text may be used: on a terminal that knows how, unless the environment sets NO_COLOR.
    bool isStyled() const { return styled; }

private:
    bool styled;
};

/// Writes @p text to standard error as exactly one line, whatever it holds.
void printError(const QString &text);

} // namespace Host
