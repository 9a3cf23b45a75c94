#include "inspect/signalnames.h"

#include "csv/csvtext.h"

#include <algorithm>
#include <array>
#include <numbers>

using KOV::SDK::Lap;

namespace Inspect {

namespace {

struct SignalName
{
    Signal signal;
    QLatin1String name; ///< as comparable() makes it
};

// Of one signal the earlier name is the better one: what the driver's own sensor or the logger's choice of speed says
// comes before what one of several wheels says.
constexpr std::array signalNames{
    SignalName{Signal::Speed, QLatin1String("groundspeed")},
    SignalName{Signal::Speed, QLatin1String("vehiclespeed")},
    SignalName{Signal::Speed, QLatin1String("correctedspeed")},
    SignalName{Signal::Speed, QLatin1String("corrspeed")},
    SignalName{Signal::Speed, QLatin1String("carspeed")},
    SignalName{Signal::Speed, QLatin1String("speed")},
    SignalName{Signal::Speed, QLatin1String("drivespeed")},
    SignalName{Signal::Speed, QLatin1String("gpsspeed")},
    SignalName{Signal::Speed, QLatin1String("wheelspeed")},
    SignalName{Signal::Speed, QLatin1String("wheelspeedfl")},
    SignalName{Signal::Speed, QLatin1String("wheelspeedfr")},
    SignalName{Signal::Speed, QLatin1String("wheelspeedrl")},
    SignalName{Signal::Speed, QLatin1String("wheelspeedrr")},
    SignalName{Signal::Throttle, QLatin1String("throttlepos")},
    SignalName{Signal::Throttle, QLatin1String("throttleposition")},
    SignalName{Signal::Throttle, QLatin1String("throttlepedalpos")},
    SignalName{Signal::Throttle, QLatin1String("throttlepedal")},
    SignalName{Signal::Throttle, QLatin1String("throttle")},
    SignalName{Signal::Throttle, QLatin1String("acceleratorpos")},
    SignalName{Signal::Throttle, QLatin1String("pedalpos")},
    SignalName{Signal::Throttle, QLatin1String("tps")},
    SignalName{Signal::Brake, QLatin1String("brakepos")},
    SignalName{Signal::Brake, QLatin1String("brakeposition")},
    SignalName{Signal::Brake, QLatin1String("brakepedalpos")},
    SignalName{Signal::Brake, QLatin1String("brakepedal")},
    SignalName{Signal::Brake, QLatin1String("brake")},
    SignalName{Signal::Brake, QLatin1String("brakepress")},
    SignalName{Signal::Brake, QLatin1String("brakepres")},
    SignalName{Signal::Brake, QLatin1String("brakepressure")},
    SignalName{Signal::Brake, QLatin1String("brakepressfront")},
    SignalName{Signal::Brake, QLatin1String("brakepresfront")},
    SignalName{Signal::Brake, QLatin1String("brakepressuref")},
    SignalName{Signal::Brake, QLatin1String("brakepressurefront")},
    SignalName{Signal::Gear, QLatin1String("gear")},
    SignalName{Signal::Gear, QLatin1String("gearpos")},
    SignalName{Signal::Gear, QLatin1String("gearposition")},
    SignalName{Signal::Gear, QLatin1String("currentgear")},
    SignalName{Signal::Steering, QLatin1String("steeredangle")},
    SignalName{Signal::Steering, QLatin1String("steeringangle")},
    SignalName{Signal::Steering, QLatin1String("steerangle")},
    SignalName{Signal::Steering, QLatin1String("steeringwheelangle")},
    SignalName{Signal::Steering, QLatin1String("steeringwheelpos")},
    SignalName{Signal::Steering, QLatin1String("steeringpos")},
    SignalName{Signal::Steering, QLatin1String("steering")},
    SignalName{Signal::Latitude, QLatin1String("gpslatitude")},
    SignalName{Signal::Latitude, QLatin1String("latitude")},
    SignalName{Signal::Latitude, QLatin1String("gpslat")},
    SignalName{Signal::Longitude, QLatin1String("gpslongitude")},
    SignalName{Signal::Longitude, QLatin1String("longitude")},
    SignalName{Signal::Longitude, QLatin1String("gpslong")},
    SignalName{Signal::Longitude, QLatin1String("gpslon")},
};

struct Unit
{
    QLatin1String name;
    char kind;
    double factor; ///< to the unit of the kind that has 1
};

constexpr double degree = std::numbers::pi / 180.0;

constexpr std::array units{
    Unit{QLatin1String("m/s"), 'v', 1.0},
    Unit{QLatin1String("km/h"), 'v', 1.0 / 3.6},
    Unit{QLatin1String("kph"), 'v', 1.0 / 3.6},
    Unit{QLatin1String("kmh"), 'v', 1.0 / 3.6},
    Unit{QLatin1String("mph"), 'v', 0.44704},
    Unit{QLatin1String("kn"), 'v', 1852.0 / 3600.0},
    Unit{QLatin1String("knots"), 'v', 1852.0 / 3600.0},
    Unit{QLatin1String("m"), 'd', 1.0},
    Unit{QLatin1String("km"), 'd', 1000.0},
    Unit{QLatin1String("ft"), 'd', 0.3048},
    Unit{QLatin1String("mi"), 'd', 1609.344},
    Unit{QLatin1String("mile"), 'd', 1609.344},
    Unit{QLatin1String("s"), 't', 1.0},
    Unit{QLatin1String("sec"), 't', 1.0},
    Unit{QLatin1String("ms"), 't', 0.001},
    Unit{QLatin1String("min"), 't', 60.0},
    Unit{QLatin1String("h"), 't', 3600.0},
    Unit{QLatin1String("deg"), 'a', degree},
    Unit{QLatin1String("\xB0"), 'a', degree},
    Unit{QLatin1String("rad"), 'a', 1.0},
    Unit{QLatin1String("bar"), 'p', 100.0},
    Unit{QLatin1String("kpa"), 'p', 1.0},
    Unit{QLatin1String("mpa"), 'p', 1000.0},
    Unit{QLatin1String("psi"), 'p', 6.894757},
    Unit{QLatin1String("pu"), 's', 1.0},
    Unit{QLatin1String("ratio"), 's', 1.0},
    Unit{QLatin1String("%"), 's', 0.01},
};

const Unit *findUnit(QStringView name)
{
    const auto found = std::find_if(units.begin(), units.end(), [name](const Unit &unit) {
        return name.compare(unit.name, Qt::CaseInsensitive) == 0;
    });
    return found == units.end() ? nullptr : &*found;
}

QString comparable(QStringView name)
{
    return Csv::valueName(name).remove(u'_');
}

// The recorded channel for which rank(name) is the smallest; none where that is null for all of them.
template <typename Rank>
SignalChannel lowestRanked(const Lap &lap, const Rank &rank)
{
    decltype(rank(QString())) best = nullptr;
    QString bestName;
    for (const QString &name : lap.getAvailableRecordedChannels()) {
        const auto *entry = rank(name);
        if (entry && (!best || entry < best)) {
            best = entry;
            bestName = name;
        }
    }
    return best ? SignalChannel{bestName, lap.channel(bestName)} : SignalChannel{};
}

} // namespace

SignalChannel findSignal(const Lap &lap, Signal signal)
{
    return lowestRanked(lap, [signal](const QString &name) -> const SignalName * {
        const auto known = std::find_if(signalNames.begin(), signalNames.end(),
                                        [signal, wanted = comparable(name)](const SignalName &k) {
                                            return k.signal == signal && k.name == wanted;
                                        });
        return known == signalNames.end() ? nullptr : &*known;
    });
}

SignalChannel findSignal(const Lap &lap, LapRole role)
{
    return lowestRanked(lap, [role](const QString &name) {
        const OtherName *known = otherName(name);
        return known && known->role == role ? known : nullptr;
    });
}

SignalChannel findNamed(const Lap &lap, QStringView name)
{
    return lowestRanked(lap, [wanted = comparable(name)](const QString &known) {
        return comparable(known) == wanted ? &wanted : nullptr;
    });
}

std::optional<double> unitFactor(QStringView from, QStringView to)
{
    const Unit *source = findUnit(from);
    const Unit *target = findUnit(to);
    if (!source || !target || source->kind != target->kind)
        return std::nullopt;
    return source->factor / target->factor;
}

} // namespace Inspect
