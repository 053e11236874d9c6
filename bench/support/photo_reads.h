// Reads any photograph with the library, and lists the reads.
#pragma once

#include "support/jobs.h"
#include "support/tiff_builder.h"

#include <tvmeta_photo.h>

#include <string>
#include <vector>

namespace bench {

inline tvmeta_Photo readAnyPhoto(const tvmeta_Source& source) {
    tvmeta_Photo photo;
    photo.recordSize = sizeof photo;
    if (tvmeta_read_photo(&source, &photo) != TVMETA_OK) {
        photo.model[0] = '\0';
    }
    return photo;
}

inline tvmeta_Photo openAndReadPhoto(const std::string& path) {
    tvmeta_Source source;
    if (tvmeta_open(path.c_str(), &source) != TVMETA_OK) {
        throw Failure(path + ": cannot open the file");
    }
    const tvmeta_Photo photo = readAnyPhoto(source);
    tvmeta_close(&source);
    return photo;
}

// Lists what is read of a source.
struct Recorder {
    tvmeta_Source file;
    std::vector<Region> reads;

    static std::int64_t read(void* context, std::int64_t position, void* buffer, std::int64_t count) {
        auto& self = *static_cast<Recorder*>(context);
        self.reads.push_back({static_cast<std::size_t>(position), static_cast<std::size_t>(count)});
        return self.file.read(self.file.context, position, buffer, count);
    }
};

inline constexpr std::size_t MaxBytesRead = 64 * 1024;

// What tvmeta_read_photo() reads of a file.
inline std::vector<Region> readsOfPhoto(const std::string& path) {
    Recorder recorder{};
    tvmeta_open(path.c_str(), &recorder.file);
    readAnyPhoto({&recorder, recorder.file.size, Recorder::read, nullptr});
    tvmeta_close(&recorder.file);
    std::size_t total = 0;
    for (const Region& region : recorder.reads) {
        total += region.size;
    }
    if (total > MaxBytesRead) {
        throw Failure(path + ": " + std::to_string(total) + " bytes were read");
    }
    return recorder.reads;
}

} // namespace bench
