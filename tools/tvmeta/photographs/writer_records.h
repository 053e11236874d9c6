// Converts a photograph's record to the writers' records, with every value that they can represent.
#pragma once

#include <tvmeta.h>

#include <cstdint>
#include <optional>

struct WriterRecords {
    MetadataBuf metadata = {};
    GpsBuf gps = {};
};

WriterRecords writerRecords(const ExifInfo& info);

struct Fraction {
    int32_t numerator;
    int32_t denominator;
};

// The fraction with the smallest terms that gives this number again. Empty for numbers of 0 and less, and for numbers
// that no fraction of 32-bit terms gives.
std::optional<Fraction> simplestFraction(float value);
