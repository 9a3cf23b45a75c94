#pragma once

// Internal: the samples of a channel at the common rate, computed piece by piece where they are read. No channel is
// ever held at both rates.

#include <QtCore/qglobal.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>

namespace Ld {

/// Refers to the samples that it was made of. Copies are cheap.
class SampleView
{
public:
    SampleView() = default;
    /// The samples as they are.
    SampleView(std::span<const float> samples);
    /// The samples brought to another rate by linear interpolation (resample.h).
    SampleView(std::span<const float> samples, int sampleRate, int wantedRate);

    qint64 size() const { return length; }
    /// Calls visit(std::span<const float>) for the samples from @p begin to before @p end, in pieces and in order.
    template <typename Visit>
    void visit(qint64 begin, qint64 end, Visit visit) const
    {
        std::array<float, pieceSamples> buffer; // NOLINT(cppcoreguidelines-pro-type-member-init): written first
        for (; begin < end; begin += pieceSamples) {
            const auto count = static_cast<std::size_t>(std::min(end - begin, pieceSamples));
            visit(read(begin, std::span(buffer).first(count)));
        }
    }
    float operator[](qint64 index) const
    {
        float sample = 0.0F;
        return read(index, {&sample, 1}).front();
    }

private:
    static constexpr qint64 pieceSamples = 2048; // stays in a processor's first cache

    // The samples from begin on, as many as buffer has room for; in it only if they are computed.
    std::span<const float> read(qint64 begin, std::span<float> buffer) const;

    std::span<const float> input;
    float ratio = 0.0F; // of the rates; 0 for samples as they are
    qint64 length = 0;
};

} // namespace Ld
