#pragma once

// The rewriting of a .ld log: channel by channel to the common rate, then row by row into the new file.

#include "inspect/rewriteparts.h"

namespace Inspect {

/// All records that can be decoded are brought to 60 per second by the library's resample(), also those that the import
/// passes over. The rows last as long as the longest channel; a channel that ends within a second of that keeps its
/// last value, and after the end of any other rows have no cell for it. Throws RewriteError.
void rewriteBinaryLog(RewriteJob &job);

} // namespace Inspect
