#include "host/output.h"

#include "host/failure.h"
#include "host/platform.h"
#include "host/textformat.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <utility>

namespace Host {

namespace {

constexpr std::size_t bufferBytes = 1 << 16;

bool isStyledTerminal()
{
    const QByteArray terminal = qgetenv("TERM");
    return isOutputTerminal() && qEnvironmentVariableIsEmpty("NO_COLOR") && !terminal.isEmpty() && terminal != "dumb";
}

[[noreturn]] void failToWrite(int error)
{
    throw OutputFailure(QLatin1String("standard output cannot be written: ") + qt_error_string(error));
}

void handOver(const char *bytes, std::size_t size)
{
    if (std::fwrite(bytes, 1, size, stdout) != size)
        failToWrite(errno);
}

} // namespace

Output::Output()
    : buffer(bufferBytes)
    , styled(isStyledTerminal())
{
    (void)std::setvbuf(stdout, nullptr, _IONBF, 0); // this class has the buffer
}

void Output::beginBlock(const QString &title)
{
    pendingTitle = (hasBlock ? "\n" : "") + printable(title).toUtf8() + ":\n";
}

void Output::write(QByteArrayView bytes)
{
    if (!pendingTitle.isEmpty()) {
        hasBlock = true;
        write(std::exchange(pendingTitle, {}));
    }
    const auto size = static_cast<std::size_t>(bytes.size());
    if (size > buffer.size() - used)
        flush();
    if (size > buffer.size()) {
        handOver(bytes.data(), size);
    } else {
        std::copy(bytes.begin(), bytes.end(), buffer.data() + used);
        used += size;
    }
}

void Output::writeText(const QString &text)
{
    write(QByteArrayView(text.toUtf8()));
}

void Output::flush()
{
    handOver(buffer.data(), std::exchange(used, 0));
    if (std::fflush(stdout) != 0)
        failToWrite(errno);
}

void printError(const QString &text)
{
    const QByteArray line = printable(text).toUtf8() + '\n';
    (void)std::fwrite(line.constData(), 1, static_cast<std::size_t>(line.size()), stderr);
}

} // namespace Host
