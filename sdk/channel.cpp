#include "sdk/channel.h"

namespace KOV::SDK {

Channel::Channel(std::initializer_list<double> samples)
    : values(samples)
{
}

void Channel::append(long long count, double value)
{
    values.insert(values.end(), static_cast<std::size_t>(count), value);
}

void Channel::append(std::span<const double> block)
{
    values.insert(values.end(), block.begin(), block.end());
}

void Channel::reserve(long long count)
{
    if (count > capacity())
        values.reserve(static_cast<std::size_t>(count));
}

void Channel::resize(long long count)
{
    values.resize(static_cast<std::size_t>(count), 0.0);
}

void Channel::popFront(long long count)
{
    values.erase(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(count));
}

void Channel::shrinkToFit()
{
    values.shrink_to_fit();
}

} // namespace KOV::SDK
