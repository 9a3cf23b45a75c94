#pragma once

// Writes a drive as a binary .ld log: head, block chain, channel records and samples.

#include "channels.h"
#include "drive.h"
#include "loginfo.h"

#include "inspect/blockwriter.h"

namespace samples {

// How a .ld log and a text export of the same drive at 60 per second differ, though laps and lap times are the same:
//  - The text export's first lap always reads as number 0, the log's has the counter's own number. Here the out lap is
//    number 0 in both.
//  - The very last sample of a log belongs to no lap; the last row of a text export belongs to the last lap.
//  - The unfinished lap has no lap time in a log, and a placeholder of 59:59.000 from a text export.
//  - Readers cut milliseconds off a text's lap times and round a log's; Drive makes lap times on which both agree.
//  - The text's columns all have one rate. In the log the channels that laps come from, and the driver's, are recorded
//    at 60 per second (the side force at 360) and hold the same numbers as the text, but as single-precision floats;
//    the slower and faster ones come near them after resampling.
//  - Names have no blanks and minus signs in the log, since its readers do not take them out; "Lap Number" is "Lap".

/// The head, one record per channel and all samples of @p drive, or as much of it as @p file takes. Channel by channel,
/// so memory does not grow with the log. False, and nothing is written, where the log would be larger than its 32-bit
/// offsets allow.
[[nodiscard]] bool writeLd(Inspect::BlockWriter &file, Drive &drive, const std::vector<Channel> &channels,
                           const LogInfo &info);

/// How many samples at @p rate per second a log of about @p sizeBytes lasts.
qint64 ldSamplesForSize(const std::vector<Channel> &channels, int rate, qint64 sizeBytes);

} // namespace samples
