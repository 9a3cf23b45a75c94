#pragma once

// The views for people: the table of laps, the channels of a lap, the setup values. For programs: valuetable.h,
// jsonreport.h.

namespace Host {

class Output;
struct Log;
struct Selection;

/// What the log is about, and a row for each lap.
void printLaps(const Log &log, const Selection &selection, Output &output);

/// The selected lap and a row for each of its channels.
void printChannels(const Log &log, const Selection &selection, Output &output);

/// A row for each setup value of the selected lap, by name. Nothing at all where there are none.
void printSetup(const Log &log, const Selection &selection, Output &output);

} // namespace Host
