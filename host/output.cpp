#include "host/output.h"

#include "host/failure.h"
#include "host/textformat.h"

#include <QtCore/QByteArray>

#include <cerrno>
#include <cstdio>
#include <unistd.h>

namespace Host {

namespace {

constexpr std::size_t bufferBytes = 1 << 16;

bool isStyledTerminal()
{
    const QByteArray terminal = qgetenv("TERM");
    return isatty(STDOUT_FILENO) == 1 && qEnvironmentVariableIsEmpty("NO_COLOR") && !terminal.isEmpty() &&
           terminal != "dumb";
}

[[noreturn]] void failToWrite(int error)
{
    throw Failure(QLatin1String("standard output: cannot be written: ") + qt_error_string(error));
}

} // namespace

Output::Output()
    : styled(isStyledTerminal())
{
    (void)std::setvbuf(stdout, nullptr, _IOFBF, bufferBytes);
}

void Output::write(QByteArrayView bytes)
{
    const auto size = static_cast<std::size_t>(bytes.size());
    if (std::fwrite(bytes.data(), 1, size, stdout) != size)
        failToWrite(errno);
}

void Output::writeText(const QString &text)
{
    write(QByteArrayView(text.toUtf8()));
}

void Output::flush()
{
    if (std::fflush(stdout) != 0)
        failToWrite(errno);
}

void printError(const QString &text)
{
    const QByteArray line = printable(text).toUtf8() + '\n';
    (void)std::fwrite(line.constData(), 1, static_cast<std::size_t>(line.size()), stderr);
}

} // namespace Host
