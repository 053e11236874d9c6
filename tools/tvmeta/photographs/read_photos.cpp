#include "photographs/read_photos.h"

#include "output/failure.h"
#include "output/terminal.h"
#include "photographs/natural_order.h"
#include "photographs/photo_files.h"

#include <algorithm>
#include <deque>
#include <future>
#include <optional>

namespace {

// A photograph or an error; neither for other files in a folder.
struct Outcome {
    std::optional<Photo> photo;
    std::string problem;
};

Outcome readOne(const PhotoFile& file) {
    try {
        if (!file.isNamed && !findFileType(file.path)) {
            return {};
        }
        Photo photo = readRecord(file.path);
        std::string problem = photo.damage.empty() ? "" : file.path + ": " + photo.damage;
        return {std::move(photo), std::move(problem)};
    } catch (const Failure& failure) {
        return {std::nullopt, failure.what()};
    }
}

using Batch = std::vector<Outcome>;

Batch readBatch(std::span<const PhotoFile> files) {
    Batch batch;
    std::ranges::transform(files, std::back_inserter(batch), readOne);
    return batch;
}

// Network disks are slow but handle many requests in parallel, so there are more threads than a small computer has
// processors. Each thread reads a batch, because starting a thread costs about as much as reading a file.
class BatchReader {
  public:
    explicit BatchReader(const std::vector<PhotoFile>& files)
        : remaining(files), batchSize(std::clamp<size_t>(files.size() / (2 * MaxThreads), 1, MaxBatch)) {}

    // The next batch in the order of the files; empty after the last.
    Batch next() {
        while (!remaining.empty() && reading.size() < MaxThreads) {
            const auto files = remaining.first(std::min(batchSize, remaining.size()));
            remaining = remaining.subspan(files.size());
            reading.push_back(std::async(readBatch, files));
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
    size_t batchSize;
    std::deque<std::future<Batch>> reading;
};

} // namespace

Reading readPhotos(const std::vector<std::string>& names, bool recursive, const std::function<void(Photo&&)>& take) {
    Progress progress;
    const PhotoFiles found = findPhotoFiles(names, recursive, progress);
    Reading reading = {found.failures, found.failures};
    size_t done = 0;
    BatchReader reader(found.files);
    for (Batch batch = reader.next(); !batch.empty(); batch = reader.next()) {
        for (Outcome& outcome : batch) {
            progress.done(done++, found.files.size());
            reading.files += outcome.photo || !outcome.problem.empty() ? size_t{1} : 0;
            if (!outcome.problem.empty()) {
                complain(outcome.problem);
                ++reading.failures;
                reading.problems.push_back(std::move(outcome.problem));
            }
            if (outcome.photo) {
                take(std::move(*outcome.photo));
            }
        }
    }
    return reading;
}

void requireAllRead(const Reading& reading) {
    if (reading.files == 0) {
        complain("no JPEG, TIFF or PSD file found");
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
