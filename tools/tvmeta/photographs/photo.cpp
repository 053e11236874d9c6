#include "photographs/photo.h"

#include "base/failure.h"
#include "base/text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <new>

namespace {

constexpr size_t MaxKeywords = 1000;

} // namespace

OpenPhoto::OpenPhoto(const std::string& path) : path_(path) {
    if (tvmeta_open(readablePath(path).c_str(), &source_) != TVMETA_OK) {
        openFile(path); // throws with the reason
        throw Failure(path, "cannot be opened");
    }
    record_.recordSize = sizeof record_;
    status_ = tvmeta_read_photo(&source_, &record_);
}

std::string OpenPhoto::text(int32_t text, int32_t index) const {
    std::string value(256, '\0');
    int64_t size = tvmeta_read_text(&source_, &record_, text, index, value.data(), std::ssize(value));
    if (size > std::ssize(value)) {
        value.resize(static_cast<size_t>(size));
        size = tvmeta_read_text(&source_, &record_, text, index, value.data(), size);
    }
    value.resize(static_cast<size_t>(std::max<int64_t>(size, 0)));
    return value;
}

Bytes OpenPhoto::block(int32_t block) const {
    if (isCompressed(block)) {
        throw Failure(path_, std::string("the ") + BlockNames[block] + " is compressed, which is not supported");
    }
    Bytes bytes(static_cast<size_t>(record_.blocks[block].size));
    if (!bytes.empty() &&
        tvmeta_read_block(&source_, &record_, block, bytes.data(), std::ssize(bytes)) != std::ssize(bytes)) {
        throw Failure(path_, std::string("the ") + BlockNames[block] + " cannot be read");
    }
    return bytes;
}

Photo OpenPhoto::read(const Wanted& wanted) const {
    if (status_ == TVMETA_NO_MEMORY) {
        throw std::bad_alloc();
    }
    if (record_.format >= TVMETA_FORMAT_REFUSED) {
        throw Failure(path_, std::string(tvmeta_format_name(record_.format)) + " files are not supported");
    }
    if (!isPhotograph()) {
        throw Failure(path_, status_ == TVMETA_UNKNOWN_KIND ? "not a photograph: " + beginning(readStart(path_, 4))
                                                            : tvmeta_status_text(status_));
    }
    Photo photo = {.path = path_, .record = record_};
    if (photo.has(TVMETA_CAPTURE_TIME)) {
        photo.taken = CivilTime(std::chrono::seconds(record_.captureTime));
    }
    if (status_ == TVMETA_BROKEN) {
        photo.damage = "damaged at byte " + std::to_string(record_.brokenAt) + "; the rest was read";
    }
    if (wanted.texts) {
        for (int32_t i = 0; i <= TVMETA_TEXT_SOFTWARE; ++i) {
            photo.texts[static_cast<size_t>(i)] = text(i);
        }
        for (std::string keyword = photo.texts[TVMETA_TEXT_KEYWORD];
             !keyword.empty() && photo.keywords.size() < MaxKeywords; // each costs a search of the packet
             keyword = text(TVMETA_TEXT_KEYWORD, static_cast<int32_t>(photo.keywords.size()))) {
            photo.keywords.push_back(keyword);
        }
    }
    return photo;
}

bool isPhotograph(const std::string& path) {
    return OpenPhoto(path).isPhotograph();
}

Photo readNamed(const OpenPhoto& file) {
    Photo photo = file.read();
    if (!photo.damage.empty()) {
        complain("warning: " + photo.path + ": " + photo.damage);
    }
    return photo;
}

std::vector<tvmeta_Tag> tagsOf(const tvmeta_Source& source) {
    const int64_t count = tvmeta_list_tags(&source, nullptr, nullptr, 0);
    std::vector<tvmeta_Tag> tags(static_cast<size_t>(std::max<int64_t>(count, 0)));
    tvmeta_list_tags(&source, nullptr, tags.data(), std::ssize(tags));
    return tags;
}

double quotient(const tvmeta_Rational& fraction) {
    return fraction.denominator == 0 ? 0
                                     : decimal(static_cast<float>(static_cast<double>(fraction.numerator) /
                                                                  static_cast<double>(fraction.denominator)));
}

std::optional<double> exposureValue(const Photo& photo) {
    const double time = quotient(photo.record.exposureTime), fNumber = quotient(photo.record.fNumber);
    const double value = std::log2(fNumber * fNumber / time) - std::log2(photo.record.isoSpeed / 100.0);
    const bool isKnown = time > 0 && fNumber > 0 && photo.record.isoSpeed > 0;
    return isKnown && std::isfinite(value) ? std::optional(value) : std::nullopt;
}

std::string takenText(const Photo& photo) {
    if (!photo.taken) {
        return {};
    }
    const auto day = std::chrono::floor<std::chrono::days>(*photo.taken);
    const std::chrono::year_month_day date(day);
    const std::chrono::hh_mm_ss time(*photo.taken - day);
    return fmt::format("{:04}:{:02}:{:02} {:02}:{:02}:{:02}", static_cast<int>(date.year()),
                       static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()), time.hours().count(),
                       time.minutes().count(), time.seconds().count());
}
