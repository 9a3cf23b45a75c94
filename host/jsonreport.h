#pragma once

// The log as one JSON object for other programs. Its members: docs/json.md, which changes together with this.

namespace Host {

class Output;
struct Log;
struct Selection;

/// The selected laps with their headers and channels, the samples of the selected channels among them. Written as it
/// goes: the text is never held whole. Half a surrogate pair becomes a question mark.
void printJson(const Log &log, const Selection &selection, Output &output);

} // namespace Host
