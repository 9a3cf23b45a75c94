#pragma once

// How threads hand items to each other.

#include <condition_variable>
#include <deque>
#include <mutex>
#include <optional>
#include <utility>

namespace Inspect {

/// A queue between two threads. It has no limit of its own: whoever needs one sends a fixed number of items round and
/// round through two queues. Thread-safe.
template <typename Item>
class WaitingQueue
{
public:
    void put(Item item)
    {
        {
            const std::lock_guard lock(mutex);
            items.push_back(std::move(item));
        }
        changed.notify_one();
    }
    /// Waits for an item; nothing once the queue is closed and empty.
    std::optional<Item> take()
    {
        std::unique_lock lock(mutex);
        changed.wait(lock, [this] { return isClosed || !items.empty(); });
        if (items.empty())
            return std::nullopt;
        std::optional<Item> item(std::move(items.front()));
        items.pop_front();
        return item;
    }
    /// Tells who waits that nothing more will come.
    void close()
    {
        {
            const std::lock_guard lock(mutex);
            isClosed = true;
        }
        changed.notify_one();
    }

private:
    std::mutex mutex;
    std::condition_variable changed;
    std::deque<Item> items;
    bool isClosed = false;
};

} // namespace Inspect
