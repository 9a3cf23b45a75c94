// Writing in blocks of a megabyte.

#include "outputfile.h"

#include <algorithm>
#include <cstring>

namespace samples {

namespace {

constexpr size_t blockBytes = 1 << 20;

} // namespace

OutputFile::OutputFile(const QString &path, qint64 limitBytes)
    : file(path)
    , limit(limitBytes)
    , buffer(2 * blockBytes)
{
}

bool OutputFile::open()
{
    return file.open(QIODevice::WriteOnly | QIODevice::Unbuffered);
}

char *OutputFile::room(qsizetype count)
{
    if (used >= blockBytes)
        flush();
    const size_t needed = used + static_cast<size_t>(count);
    if (needed > buffer.size())
        buffer.resize(needed);
    return buffer.data() + used;
}

void OutputFile::commit(const char *end)
{
    used = static_cast<size_t>(end - buffer.data());
}

void OutputFile::write(const QByteArray &bytes)
{
    char *start = room(bytes.size());
    std::memcpy(start, bytes.constData(), static_cast<size_t>(bytes.size()));
    commit(start + bytes.size());
}

bool OutputFile::isFull() const
{
    return isBroken || (limit > 0 && writtenBytes + static_cast<qint64>(used) >= limit);
}

bool OutputFile::close()
{
    flush();
    file.close();
    return !isBroken;
}

QString OutputFile::errorText() const
{
    return isBroken ? writeError : file.errorString();
}

void OutputFile::flush()
{
    auto count = static_cast<qint64>(used);
    if (limit > 0)
        count = std::min(count, limit - writtenBytes);
    if (!isBroken && file.write(buffer.data(), count) != count) {
        isBroken = true;
        writeError = file.errorString(); // closing the file forgets it
    }
    writtenBytes += count;
    used = 0;
}

} // namespace samples
