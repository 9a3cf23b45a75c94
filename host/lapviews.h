#pragma once

// Laps for people: the table of laps, the channels of a lap, the setup values. For programs: valuetable.h, lapjson.h.

#include "sdk/dynamicdata.h"

#include <vector>

namespace Host {

class Output;
struct Log;

/// What the log is about, and a row for each of the laps of the indices @p laps.
void printLaps(const Log &log, const std::vector<qsizetype> &laps, Output &output);

/// The lap with the index @p lap and a row for each of its channels.
void printChannels(const Log &log, qsizetype lap, Output &output);

/// A row for each of the setup values @p values, by name. Nothing at all if there are none.
void printSetup(const KOV::SDK::DynamicData &values, Output &output);

} // namespace Host
