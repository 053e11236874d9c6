// Metadata: a bound for the work that one call does for a file.
//
// Directories may overlap, refer to each other and declare 65,535 entries each: a hostile file of 800 KB can require
// four billion entries, and the same payload again and again. A photograph has a few hundred entries and less than a
// megabyte of payloads.
#pragma once

#include <cstdint>

namespace tvmeta {

struct WorkBudget {
    std::int32_t entries = 1 << 20;         // of EXIF and GPS directories; a larger directory is skipped
    std::int64_t payloadBytes = 64LL << 20; // of image descriptions and Photoshop resources; then no more is read

    bool takeEntries(std::int32_t count) {
        if (count > entries) {
            return false;
        }
        entries -= count;
        return true;
    }

    bool hasPayload() const { return payloadBytes > 0; }
    void takePayload(std::int64_t size) { payloadBytes -= size; }
};

} // namespace tvmeta
