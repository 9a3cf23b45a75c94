#include "inspect/blockwriter.h"

#include <algorithm>
#include <cerrno>

namespace Inspect {

namespace {

constexpr std::size_t blockBytes = std::size_t{1} << 20;
constexpr int handedBlocks = 2; // the one that is written and the next

} // namespace

BlockWriter::BlockWriter(QIODevice &target, qint64 limitBytes)
    : device(target)
    , limit(limitBytes)
    , buffer(2 * blockBytes)
{
}

BlockWriter::~BlockWriter()
{
    filled.close();
    if (thread.joinable())
        thread.join();
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
    if (thread.joinable()) { // all blocks are back when all is written
        std::vector<Block> blocks;
        while (blocks.size() < handedBlocks)
            blocks.push_back(*spent.take());
        for (Block &block : blocks)
            spent.put(std::move(block));
    }
    writeOut(buffer.data(), countToWrite());
    return !isBroken;
}

// The count of the bytes in the buffer, which count as written from now on.
qint64 BlockWriter::countToWrite()
{
    auto count = static_cast<qint64>(used);
    if (limit > 0)
        count = std::min(count, limit - writtenBytes);
    writtenBytes += count;
    used = 0;
    return count;
}

void BlockWriter::handOver()
{
    if (!thread.joinable()) {
        for (int i = 0; i < handedBlocks; ++i)
            spent.put({std::vector<char>(buffer.size()), 0});
        thread = std::thread([this] {
            while (auto block = filled.take()) {
                writeOut(block->bytes.data(), block->count);
                spent.put(std::move(*block));
            }
        });
    }
    Block block = *spent.take();
    block.bytes.swap(buffer);
    block.count = countToWrite();
    filled.put(std::move(block));
}

void BlockWriter::writeOut(const char *bytes, qint64 count)
{
    if (isBroken)
        return;
    errno = 0;
    if (device.write(bytes, count) == count)
        return;
    // Not every device says what the system said, and closing one forgets it.
    writeError = errno != 0 ? qt_error_string(errno) : device.errorString();
    isBroken = true;
}

} // namespace Inspect
