#pragma once

// The driven line as a picture.

#include <QtCore/QByteArray>

#include <vector>

namespace Host {

struct PageTrack;

struct TrackPicture
{
    struct Spot
    {
        int x;
        int y;
        bool isKnown;
    };
    QByteArray svg;          ///< an element, to be styled by its classes; no attribute holds text of a log
    std::vector<Spot> spots; ///< on the picture, one for each point of the track
    double slowest = 0.0;    ///< the ends of the colour scale; equal without speeds
    double fastest = 0.0;
};

/// Draws @p track, coloured by speed in classes speed-0 (slow) to speed-7. Its svg is empty where fewer than two points
/// are known.
TrackPicture trackPicture(const PageTrack &track);

/// The colours of the scale, slow to fast.
QByteArray speedScaleSvg();

} // namespace Host
