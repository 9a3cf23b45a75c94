#include "inspect/lapcounter.h"

#include <type_traits>

namespace Inspect {

LapCounter::LapCounter(const OtherName &name)
{
    constexpr double percentPerLap = 100.0;
    switch (name.role) {
    case LapRole::Position:
        signal = Position{PositionSignal(percentPerLap / name.scale)};
        break;
    case LapRole::LapNumber:
        signal = CounterSignal();
        break;
    case LapRole::CurrentLapTime:
        signal = RestartSignal(RestartSignal::Kind::Time);
        break;
    case LapRole::LapDistance:
        signal = RestartSignal(RestartSignal::Kind::Distance);
        break;
    case LapRole::Beacon:
        signal = BeaconSignal();
        break;
    case LapRole::LastLapTime:
    case LapRole::LogDistance:
    case LapRole::Time:
        break;
    }
}

void LapCounter::add(double time, double value)
{
    std::visit(
        [=](auto &channel) {
            using Channel = std::remove_reference_t<decltype(channel)>;
            if constexpr (std::is_same_v<Channel, Position>) {
                channel.whole.add(time, value);
                channel.fraction.add(time, value);
            } else if constexpr (!std::is_same_v<Channel, std::monostate>) {
                channel.add(time, value);
            }
        },
        signal);
}

qint64 LapCounter::laps() const
{
    return std::visit(
        [](const auto &channel) -> qint64 {
            using Channel = std::remove_cvref_t<decltype(channel)>;
            if constexpr (std::is_same_v<Channel, Position>) {
                const PositionSignal &position = channel.whole.maximum() <= 1.0 ? channel.fraction : channel.whole;
                return 1 + std::ssize(position.events().list());
            } else if constexpr (std::is_same_v<Channel, std::monostate>) {
                return 1;
            } else {
                return 1 + std::ssize(channel.events().list());
            }
        },
        signal);
}

} // namespace Inspect
