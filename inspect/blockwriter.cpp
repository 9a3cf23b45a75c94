#include "inspect/blockwriter.h"

#include <algorithm>
#include <cerrno>

namespace Inspect {

namespace {

constexpr std::size_t blockBytes = std::size_t{1} << 20;

} // namespace

BlockWriter::BlockWriter(QIODevice &target, qint64 limitBytes)
    : device(target)
    , limit(limitBytes)
    , buffer(2 * blockBytes)
{
}

char *BlockWriter::room(std::size_t count)
{
    if (used >= blockBytes)
        handOver();
    const std::size_t needed = used + count;
    if (needed > buffer.size())
        buffer.resize(needed);
    return buffer.data() + used;
}

void BlockWriter::commit(const char *end)
{
    used = static_cast<std::size_t>(end - buffer.data());
}

void BlockWriter::write(QByteArrayView bytes)
{
    const auto size = static_cast<std::size_t>(bytes.size());
    char *start = room(size);
    std::copy_n(bytes.data(), size, start);
    commit(start + size);
}

bool BlockWriter::isFull() const
{
    return isBroken || (limit > 0 && writtenBytes + static_cast<qint64>(used) >= limit);
}

bool BlockWriter::flush()
{
    handOver();
    return !isBroken;
}

void BlockWriter::handOver()
{
    auto count = static_cast<qint64>(used);
    if (limit > 0)
        count = std::min(count, limit - writtenBytes);
    errno = 0;
    if (!isBroken && device.write(buffer.data(), count) != count) {
        isBroken = true;
        // Not every device says what the system said, and closing one forgets it.
        writeError = errno != 0 ? qt_error_string(errno) : device.errorString();
    }
    writtenBytes += count;
    used = 0;
}

} // namespace Inspect
