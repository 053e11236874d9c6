// Source photographs: the library's record of one, its texts and its blocks.
#pragma once

#include "system/files.h"

#include <tvmeta_photo.h>

#include <array>
#include <chrono>
#include <optional>
#include <string>
#include <vector>

// What a command needs besides the record.
struct Wanted {
    bool texts = false;
};

// Capture times, by the clock of the camera. Without a time zone, their differences do not depend on the time zone and
// daylight saving time of the computer.
using CivilTime = std::chrono::local_seconds;

struct Photo {
    std::string path;
    tvmeta_Photo record = {};
    std::optional<CivilTime> taken = {};
    std::string damage = {}; // description of the damage if only a part could be read
    std::array<std::string, TVMETA_TEXT_SOFTWARE + 1> texts = {}; // of keywords the first
    std::vector<std::string> keywords = {};

    bool has(int32_t field) const { return TVMETA_HAS(&record, field) != 0; }
};

constexpr const char* BlockNames[TVMETA_BLOCKS] = {"EXIF data",   "XMP packet", "IPTC block",
                                                   "ICC profile", "thumbnail",  "preview"};

// A photograph that is open.
class OpenPhoto {
  public:
    // Throws Failure if the file cannot be opened.
    explicit OpenPhoto(const std::string& path);
    ~OpenPhoto() { tvmeta_close(&source_); }
    OpenPhoto(const OpenPhoto&) = delete;
    OpenPhoto& operator=(const OpenPhoto&) = delete;

    bool isPhotograph() const { return status_ == TVMETA_OK || status_ == TVMETA_BROKEN; }
    bool isKnown() const { return status_ != TVMETA_READ_FAILED && status_ != TVMETA_NO_MEMORY; }
    int32_t format() const { return record_.format; }
    bool isCompressed(int32_t block) const { return record_.blocks[block].isCompressed != 0; }
    int64_t size() const { return source_.size; }
    const tvmeta_Source& source() const { return source_; }

    // Throws Failure if the file is not a photograph or cannot be read. From a damaged one, a part is read.
    Photo read(const Wanted& wanted = {}) const;

    // The joined block; empty if there is none. Throws Failure if it cannot be read.
    Bytes block(int32_t block) const;

  private:
    std::string text(int32_t text, int32_t index = 0) const;

    std::string path_;
    tvmeta_Source source_ = {};
    tvmeta_Photo record_ = {};
    int32_t status_ = TVMETA_OK;
};

// Whether a file is a photograph. Throws Failure if it cannot be opened.
bool isPhotograph(const std::string& path);

// Reads a photograph that was named. Prints a warning if it is damaged.
Photo readNamed(const OpenPhoto& file);

// The entries of all directories of a file.
std::vector<tvmeta_Tag> tagsOf(const tvmeta_Source& source);

// A fraction of the record as a number; 0 if it has none.
double quotient(const tvmeta_Rational& fraction);

// EV at ISO 100. Empty without exposure time, f-number or ISO speed.
std::optional<double> exposureValue(const Photo& photo);

// The capture time as EXIF writes it, "YYYY:MM:DD HH:MM:SS"; empty without one.
std::string takenText(const Photo& photo);
