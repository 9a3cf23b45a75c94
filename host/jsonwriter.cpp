#include "host/jsonwriter.h"

#include "sdk/sdk_utils.h"

#include <algorithm>
#include <array>

namespace Host {

template <typename Number, typename IsValue>
void JsonWriter::numbers(std::span<const Number> samples, const IsValue &isValue)
{
    constexpr std::size_t bufferBytes = 1 << 12;
    std::array<char, bufferBytes> buffer; // NOLINT(cppcoreguidelines-pro-type-member-init): written before it is read
    char *next = buffer.data();
    writer.beginRaw(rapidjson::kArrayType);
    *next++ = '[';
    for (const Number sample : samples) {
        if (static_cast<std::size_t>(buffer.data() + buffer.size() - next) <= maxNumberLength) {
            sink.write(QByteArrayView(buffer.data(), next));
            next = buffer.data();
        }
        if (isValue(sample)) {
            next = writeExactNumber(next, sample);
        } else {
            constexpr QByteArrayView none("null");
            next = std::copy(none.begin(), none.end(), next);
        }
        *next++ = ',';
    }
    if (!samples.empty())
        --next; // the last comma
    *next++ = ']';
    sink.write(QByteArrayView(buffer.data(), next));
}

void JsonWriter::samples(std::span<const double> samples)
{
    numbers(samples, [](double sample) { return KOV::SDK::isValidValue(sample) && std::isfinite(sample); });
}

void JsonWriter::samples(std::span<const float> samples)
{
    numbers(samples, [](float sample) { return std::isfinite(sample); });
}

} // namespace Host
