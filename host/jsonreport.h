#pragma once

// The log as one JSON object for other programs. Its members: docs/json.md, which changes together with this.

namespace Host {

class Output;
struct Log;
struct Selection;

/// The selected laps with their headers and channels, the samples of the selected channels among them. Nothing larger
/// than a channel's list entry is held in memory.
void printJson(const Log &log, const Selection &selection, Output &output);

} // namespace Host
