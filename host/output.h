#pragma once

// Standard output and standard error. Everything the program says goes through here, as UTF-8.

#include <QtCore/QByteArray>
#include <QtCore/QByteArrayView>
#include <QtCore/QString>

#include <vector>

namespace Host {

/// Standard output, buffered. Throws OutputFailure as soon as something cannot be written (a closed pipe, a full disk),
/// so that no result is lost silently.
class Output
{
public:
    Output();

    /// What is written next belongs to @p title, which is printed on a line before it, after an empty line unless it is
    /// the first. If nothing is written, neither is the title.
    void beginBlock(const QString &title);
    void write(QByteArrayView bytes);
    void put(char byte)
    {
        if (used == buffer.size() || !pendingTitle.isEmpty())
            write(QByteArrayView(&byte, 1));
        else
            buffer[used++] = byte;
    }
    void writeText(const QString &text);
    /// Hands over what is buffered. Without this call nothing is certain to have been written.
    void flush();
    /// Whether bold text may be used: on a terminal that knows how, unless the environment sets NO_COLOR.
    bool isStyled() const { return styled; }

private:
    std::vector<char> buffer;
    std::size_t used = 0;
    QByteArray pendingTitle;
    bool hasBlock = false;
    bool styled;
};

/// Writes @p text to standard error as exactly one line, whatever it contains.
void printError(const QString &text);

} // namespace Host
