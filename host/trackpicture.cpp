#include "host/trackpicture.h"

#include "host/pagemodel.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Host {

namespace {

constexpr double pictureSize = 1000.0; // of the longer side; a point's place is rounded to a thousandth of it
constexpr double minExtent = 1e-3;     // m
constexpr int margin = 30;
constexpr int speedClasses = 8;
constexpr int noClass = -1;

struct Bounds
{
    double low = std::numeric_limits<double>::infinity();
    double high = -std::numeric_limits<double>::infinity();

    void add(double value) // not NaN
    {
        low = std::fmin(low, value);
        high = std::fmax(high, value);
    }
    double extent() const { return high - low; }
};

QByteArray pointText(const TrackPicture::Spot &spot)
{
    return QByteArray::number(spot.x) + ' ' + QByteArray::number(spot.y);
}

// The path through the spots from @p first to @p last, broken where one is not known. Spots that fall on the one before
// are left out.
QByteArray pathOf(const std::vector<TrackPicture::Spot> &spots, std::size_t first, std::size_t last)
{
    QByteArray path;
    const TrackPicture::Spot *before = nullptr;
    for (std::size_t i = first; i <= last; ++i) {
        const TrackPicture::Spot &spot = spots[i];
        if (spot.isKnown && !(before && before->x == spot.x && before->y == spot.y)) {
            path += before ? 'L' : 'M';
            path += pointText(spot);
        }
        before = spot.isKnown ? &spot : nullptr;
    }
    return path;
}

QByteArray pathElement(const QByteArray &classes, const QByteArray &path)
{
    return "<path class=\"" + classes + "\" d=\"" + path + "\"/>\n";
}

int speedClass(double speed, const Bounds &bounds)
{
    if (std::isnan(speed) || !(bounds.extent() > 0.0))
        return noClass;
    return std::min(static_cast<int>((speed - bounds.low) / bounds.extent() * speedClasses), speedClasses - 1);
}

QByteArray classNames(int speedClass)
{
    return speedClass == noClass ? QByteArray("line") : "speed speed-" + QByteArray::number(speedClass);
}

// Across the track where the lap begins.
QByteArray lineMark(const std::vector<TrackPicture::Spot> &spots)
{
    const auto start = spots.begin();
    const auto next = std::find_if(start, spots.end(), [&](const auto &spot) {
        return spot.isKnown && (spot.x != start->x || spot.y != start->y);
    });
    if (next == spots.end() || !start->isKnown)
        return {};
    constexpr double halfLength = 28.0;
    const double length = std::hypot(next->x - start->x, next->y - start->y);
    const int x = static_cast<int>(std::lround((next->y - start->y) / length * halfLength));
    const int y = static_cast<int>(std::lround((next->x - start->x) / length * halfLength));
    return pathElement("line", 'M' + pointText({start->x + x, start->y - y, true}) + 'L' +
                                   pointText({start->x - x, start->y + y, true}));
}

} // namespace

TrackPicture trackPicture(const PageTrack &track)
{
    Bounds east;
    Bounds north;
    Bounds speed;
    for (const Inspect::TrackPoint &point : track.points) {
        east.add(point.east);
        north.add(point.north);
    }
    for (const double value : track.speeds)
        speed.add(value);
    const double size = std::max(east.extent(), north.extent());
    if (!(size > minExtent))
        return {};

    const double scale = pictureSize / size;
    const auto pixels = [scale](double metres) { return static_cast<int>(std::lround(metres * scale)); };
    TrackPicture picture;
    for (const Inspect::TrackPoint &point : track.points) {
        const bool isKnown = !std::isnan(point.east) && !std::isnan(point.north);
        picture.spots.push_back(
            isKnown ? TrackPicture::Spot{pixels(point.east - east.low), pixels(north.high - point.north), true}
                    : TrackPicture::Spot{0, 0, false});
    }
    if (speed.extent() > 0.0) {
        picture.slowest = speed.low;
        picture.fastest = speed.high;
    }

    const auto classAt = [&](std::size_t i) {
        return i < track.speeds.size() ? speedClass(track.speeds[i], speed) : noClass;
    };
    const std::size_t last = picture.spots.size() - 1;
    QByteArray lines;
    for (std::size_t first = 0; first < last;) {
        std::size_t end = first + 1;
        while (end < last && classAt(end) == classAt(first))
            ++end;
        if (const QByteArray path = pathOf(picture.spots, first, end); path.contains('L'))
            lines += pathElement(classNames(classAt(first)), path);
        first = end;
    }
    const auto side = [&](const Bounds &bounds) { return QByteArray::number(pixels(bounds.extent()) + 2 * margin); };
    const QByteArray corner = QByteArray::number(-margin);
    picture.svg = "<svg role=\"img\" aria-label=\"Track map\" viewBox=\"" + corner + ' ' + corner + ' ' + side(east) +
                  ' ' + side(north) + "\">\n" + pathElement("casing", pathOf(picture.spots, 0, last)) + lines +
                  (track.beginsAtLine ? lineMark(picture.spots) : QByteArray()) +
                  "<circle id=\"spot\" r=\"18\" visibility=\"hidden\"/>\n</svg>\n";
    return picture;
}

QByteArray speedScaleSvg()
{
    QByteArray svg = "<svg aria-hidden=\"true\" viewBox=\"0 0 8 1\" preserveAspectRatio=\"none\">";
    for (int i = 0; i < speedClasses; ++i) {
        const QByteArray number = QByteArray::number(i);
        svg += "<rect class=\"speed-" + number + "\" stroke=\"none\" x=\"" + number + "\" width=\"1\" height=\"1\"/>";
    }
    return svg + "</svg>";
}

} // namespace Host
