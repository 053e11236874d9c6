// The writers' form of a photograph's record, with every value that the form can express.
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

// The fraction with the smallest terms that a reader turns into this number again; none for 0 and less, and for numbers
// that no fraction of 32-bit terms gives.
std::optional<Fraction> simplestFraction(float value);
