#pragma once

// What a check found, for people and for programs.

#include "host/laps.h"

#include <QtCore/QString>

namespace Inspect {
struct CheckResult;
}

namespace Host {

class Output;

/// What was looked at, and each finding with its place and its remedy, in lines of at most 80 characters.
void printCheck(const Inspect::CheckResult &result, const Laps &laps, Output &output);

/// The same as one JSON object on a line.
void printCheckJson(const QString &path, const Inspect::CheckResult &result, const Laps &laps, Output &output);

} // namespace Host
