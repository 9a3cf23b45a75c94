#pragma once

// Laps as JSON for other programs. The members: docs/json.md and orva-host.schema.json, which change together with
// this.

#include "sdk/dynamicdata.h"

#include <QtCore/QStringList>

#include <vector>

namespace Host {

class Output;
struct Log;

enum class JsonDetail
{
    Headers,  ///< the laps alone
    Channels, ///< and what channels they have
    Values    ///< and the samples of these
};

/// One object on a line of its own: the log, the laps of the indices @p laps and, with JsonDetail::Values, the channels
/// of these @p names, or all if there are no names. @p command goes into the object.
void printLapsJson(const char *command, const Log &log, const std::vector<qsizetype> &laps, JsonDetail detail,
                   const QStringList &names, Output &output);

/// One object on a line of its own: the setup values @p values of the log at @p path.
void printSetupJson(const QString &path, const KOV::SDK::DynamicData &values, Output &output);

} // namespace Host
