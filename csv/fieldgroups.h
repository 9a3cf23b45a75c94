#pragma once

// Internal to rows: usual fields, four at a time.

#include <cstddef>
#include <span>

namespace Csv {

constexpr int fieldsPerGroup = 4;

/// Reads fields in groups of four, from @p at in a row that ends at @p end: into @p values from @p count on, which it
/// increases. It stops where fewer than four fields are left, or fewer places for them, and before what is unusual.
/// Returns the beginning of the next field, or end + 1 after the last one. Null when the whole row is a case for the
/// reference path. Loads whole blocks: up to LineReader::slack bytes before and after the row.
using FieldGroupReader = const char *(*)(const char *at, const char *end, std::span<double> values, std::size_t *count);

/// The reader for this processor; null where it lacks the instructions. Thread-safe, and so is the reader.
FieldGroupReader fieldGroupReader();

} // namespace Csv
