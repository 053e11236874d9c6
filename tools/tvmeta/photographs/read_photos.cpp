#include "photographs/read_photos.h"

#include "base/failure.h"
#include "base/mapped.h"
#include "base/text.h"
#include "base/words.h"
#include "photographs/photo_files.h"
#include "system/terminal.h"

#include <algorithm>
#include <deque>
#include <future>
#include <map>
#include <new>
#include <optional>

namespace {

// A photograph, an error, or the kind of a file in a folder that is counted; none of them for other files.
struct Outcome {
    std::optional<Photo> photo = {};
    std::string problem = {};
    std::string kind = {};
    bool isPhotoName = false;
};

// What a file in a folder is that has no metadata to read.
std::string kindOf(const OpenPhoto& file, bool isPhotoName) {
    if (file.format() >= TVMETA_FORMAT_REFUSED) {
        return tvmeta_format_name(file.format());
    }
    if (!isPhotoName) {
        return "";
    }
    return file.size() == 0 ? "empty" : "not a photograph";
}

Outcome readOne(const PhotoFile& file, const Wanted& wanted) {
    try {
        const OpenPhoto open(file.path);
        if (!file.isNamed && open.isKnown() && !open.isPhotograph()) {
            const bool isPhotoName = hasPhotoName(file.path);
            return {.kind = kindOf(open, isPhotoName), .isPhotoName = isPhotoName};
        }
        Photo photo = open.read(wanted);
        std::string problem = photo.damage.empty() ? "" : file.path + ": " + photo.damage;
        return {.photo = std::move(photo), .problem = std::move(problem)};
    } catch (const Failure& failure) {
        return {.problem = failure.what()};
    } catch (const std::bad_alloc&) {
        return {.problem = file.path + ": not enough memory"};
    }
}

using Batch = std::vector<Outcome>;

Batch readBatch(std::span<const PhotoFile> files, const Wanted& wanted) {
    return mapped<Outcome>(files, [&](const PhotoFile& file) { return readOne(file, wanted); });
}

// Network disks are slow but handle many requests in parallel, so there are more threads than a small computer has
// processors. Each thread reads a batch, because starting a thread costs about as much as reading a file.
class BatchReader {
  public:
    BatchReader(const std::vector<PhotoFile>& files, const Wanted& wantedParts)
        : remaining(files), wanted(wantedParts),
          batchSize(std::clamp<size_t>(files.size() / (2 * MaxThreads), 1, MaxBatch)) {}

    // The next batch in the order of the files; empty after the last.
    Batch next() {
        while (!remaining.empty() && reading.size() < MaxThreads) {
            const auto files = remaining.first(std::min(batchSize, remaining.size()));
            remaining = remaining.subspan(files.size());
            reading.push_back(std::async(readBatch, files, std::cref(wanted)));
        }
        if (reading.empty()) {
            return {};
        }
        Batch batch = reading.front().get();
        reading.pop_front();
        return batch;
    }

  private:
    static constexpr size_t MaxThreads = 8;
    static constexpr size_t MaxBatch = 32;

    std::span<const PhotoFile> remaining;
    const Wanted& wanted;
    size_t batchSize;
    std::deque<std::future<Batch>> reading;
};

// Files that were not read, in one line: "12 MP4, 3 empty".
void reportKinds(const std::map<std::string, size_t>& kinds) {
    std::vector<std::string> words;
    for (const auto& [kind, count] : kinds) {
        words.push_back(std::to_string(count) + " " + kind);
    }
    if (!words.empty()) {
        complain("not read: " + joined(words));
    }
}

} // namespace

Reading readPhotos(const std::vector<std::string>& names, bool recursive, const Wanted& wanted,
                   const std::function<void(Photo&&)>& take, const std::string& excludedFolder) {
    Progress progress;
    FileMessages messages;
    const std::vector<PhotoFile> found = findPhotoFiles(names, recursive, excludedFolder, progress, messages);
    Reading reading = {messages.count(), messages.count()};
    std::map<std::string, size_t> kinds;
    size_t done = 0;
    BatchReader reader(found, wanted);
    for (Batch batch = reader.next(); !batch.empty(); batch = reader.next()) {
        for (Outcome& outcome : batch) {
            const std::string& path = found[done].path;
            progress.done(done++, found.size());
            if (outcome.photo || !outcome.problem.empty() || outcome.isPhotoName) {
                ++reading.files;
                reading.paths.push_back(path);
            }
            if (!outcome.kind.empty()) {
                ++kinds[outcome.kind];
                reading.failures += outcome.isPhotoName ? size_t{1} : 0;
            }
            if (!outcome.problem.empty()) {
                messages.add(path, outcome.problem);
                ++reading.failures;
                reading.problems.push_back(std::move(outcome.problem));
            }
            if (outcome.photo) {
                take(std::move(*outcome.photo));
            }
        }
    }
    progress.erase();
    messages.finish();
    reportKinds(kinds);
    return reading;
}

void requireAllRead(const Reading& reading) {
    if (reading.files == 0) {
        complain("no photograph found");
    }
    if (reading.failures > 0 && reading.files > 1) {
        throw Failure(std::to_string(reading.failures) + " of " + std::to_string(reading.files) +
                      " files could not be read completely");
    }
    if (reading.failures > 0) {
        throw Reported();
    }
}

void sortByCaptureTime(std::vector<Photo>& photos) {
    std::ranges::sort(photos, [](const Photo& a, const Photo& b) {
        if (a.taken.has_value() != b.taken.has_value()) {
            return a.taken.has_value();
        }
        return a.taken == b.taken ? naturalLess(a.path, b.path) : *a.taken < *b.taken;
    });
}
