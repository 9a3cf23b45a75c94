#pragma once

// Brings the channels of a log to one rate, so that one index means one instant in all of them.

#include "orva_export.h"

#include <QtCore/qglobal.h>

#include <vector>

/// Brings @p samples from @p sampleRate to @p wantedRate (both in samples per second) by linear interpolation.
///
/// Single precision throughout; no filtering, so downsampling picks points. Element 0 of the result is element 0 of the
/// input, and the tail of an upsampled channel repeats the last sample. The length is the product of the rates'
/// quotient and the input's length, both single precision, rounded up: it can be one more than exact arithmetic gives.
/// An empty input, a rate that is not positive and a result that no vector can hold give an empty result. Re-entrant.
/// Allocates the result once.
ORVA_EXPORT std::vector<float> resample(const std::vector<float> &samples, int sampleRate, int wantedRate);

/// The number of samples that resample gives for @p length samples; 0 if it gives none. Thread-safe.
ORVA_EXPORT qint64 resampledLength(qint64 length, int sampleRate, int wantedRate);
