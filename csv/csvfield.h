#pragma once

// Internal to rows: one field of a text export in its bytes. What a field means: csvrow.h.

namespace Csv {

constexpr char quote = '"';

/// Stores the number of the field at @p at, in a row that ends at @p end, and returns the field's end; null when a
/// comma, a quote or a character beyond ASCII in it makes the whole row a case for the reference path. Thread-safe.
const char *readField(const char *at, const char *end, double *value);

} // namespace Csv
