#pragma once

// The rewriting of a text export: two readings, the first for the laps, the second row by row into the new file.

#include "inspect/rewriteparts.h"

namespace Inspect {

/// Rows that come 60 times a second are kept, with their cells as they are but for quotes and the decimal sign. Others
/// are interpolated in time; rows across a gap are not. Throws RewriteError.
void rewriteExport(RewriteJob &job);

} // namespace Inspect
