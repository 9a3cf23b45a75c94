#pragma once

// One sampled signal of a lap. How a lap holds its channels by name: lap.h. Repairs on whole channels: channelutils.h.

#include "orva_export.h"

#include <QtCore/QString>

#include <cstddef>
#include <initializer_list>
#include <span>
#include <vector>

namespace KOV::SDK {

/// Stored in a channel where there is no value: the single-precision 1e25, widened. Test with isValid, not for
/// equality.
inline constexpr double invalidValue = static_cast<double>(1e25F);
/// The lowest sample that counts as "no value": the single-precision 1e24, widened.
inline constexpr double invalidThreshold = static_cast<double>(1e24F);

/// A growing array of samples (doubles, oldest first) with a unit text.
///
/// A channel knows neither its name nor its sample rate: sample i of every channel of one lap belongs to the same
/// instant. Channels are shared by QSharedPointer; whoever holds one sees what another holder changes. Indices and
/// counts are not checked: the caller keeps 0 <= index < size(). Not synchronised: one thread at a time while changing.
class ORVA_EXPORT Channel
{
public:
    Channel() = default;
    /// Holds a copy of @p samples, without a unit.
    Channel(std::initializer_list<double> samples);

    double value(long long index) const { return values[static_cast<std::size_t>(index)]; }
    void setValue(long long index, double value) { values[static_cast<std::size_t>(index)] = value; }
    /// Whether the sample at @p index is a value, that is strictly below invalidThreshold; NaN is not.
    bool isValid(long long index) const { return value(index) < invalidThreshold; }
    /// All samples; the view lives until the channel is next changed or destroyed.
    std::span<const double> samples() const { return values; }

    void append(double value) { values.push_back(value); }
    /// Appends @p value @p count times; @p count is not negative.
    void append(long long count, double value);
    /// Appends @p block, which must not lie in this channel, in order.
    void append(std::span<const double> block);

    long long size() const { return static_cast<long long>(values.size()); }
    bool isEmpty() const { return values.empty(); }
    /// The number of samples that fit without another allocation.
    long long capacity() const { return static_cast<long long>(values.capacity()); }
    /// Sets the capacity to exactly @p count samples, unless it is that large already.
    void reserve(long long count);
    /// Cuts or extends the channel to @p count samples. New ones are 0.0, which is a valid sample.
    void resize(long long count);
    /// Removes the last sample; the channel must not be empty.
    void popBack() { values.pop_back(); }
    /// Removes the first sample and moves the others down, in linear time; the channel must not be empty.
    void popFront() { values.erase(values.begin()); }
    /// Removes the first @p count samples at once; @p count is at most size().
    void popFront(long long count);
    /// Frees the capacity that no sample uses.
    void shrinkToFit();

    /// Null until it is set.
    QString unit() const { return unitText; }
    void setUnit(const QString &unit) { unitText = unit; }

private:
    std::vector<double> values;
    QString unitText;
};

} // namespace KOV::SDK
