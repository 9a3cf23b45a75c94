#pragma once

// The samples of channels as comma-separated text.

namespace Host {

class Output;
struct Log;
struct Selection;

/// A header row with the selected channels' names, then a row for each sample of the selected lap, after RFC 4180 but
/// with bare line feeds. Numbers read back exactly; a sample without a value is an empty field.
void printValues(const Log &log, const Selection &selection, Output &output);

} // namespace Host
