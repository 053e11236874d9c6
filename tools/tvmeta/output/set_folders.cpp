#include "output/set_folders.h"

#include "base/failure.h"
#include "base/words.h"
#include "output/move_journal.h"
#include "output/output_file.h"
#include "output/set_names.h"
#include "system/files.h"
#include "system/paths.h"
#include "system/system.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <system_error>

namespace {

namespace fs = std::filesystem;

// Links in the folder are followed, but not the file itself.
fs::path fullPath(const std::string& file) {
    const fs::path path = fs::absolute(pathOf(file));
    return fs::weakly_canonical(path.parent_path()) / path.filename();
}

// A link, or a copy, which has the time of its original. FAT stores times in steps of two seconds.
bool isLinkOrCopy(const fs::path& file, const fs::path& original) {
    constexpr auto Step = std::chrono::seconds(2);
    if (isSameFile(nameOf(file), nameOf(original))) {
        return true;
    }
    return fs::is_regular_file(file) && fs::file_size(file) == fs::file_size(original) &&
           std::chrono::abs(fs::last_write_time(file) - fs::last_write_time(original)) <= Step;
}

PlannedFolder::State stateOf(const PlannedFolder& folder) {
    if (!isThere(folder.path)) {
        return PlannedFolder::State::New;
    }
    const bool isComplete = std::ranges::all_of(folder.files, [&](const PlannedFile& file) {
        return isLinkOrCopy(pathOf(folder.path) / pathOf(file.name), pathOf(file.path));
    });
    return isComplete ? PlannedFolder::State::Complete : PlannedFolder::State::Taken;
}

// The device of a folder, or of the nearest folder above that exists. That of a file can differ from its folder's where
// file systems are stacked.
uint64_t deviceOf(fs::path folder) {
    while (!isThere(nameOf(folder)) && folder.has_relative_path()) {
        folder = folder.parent_path();
    }
    return fileIdentity(nameOf(folder)).value_or(FileIdentity()).volume;
}

[[noreturn]] void failAcross(const std::string& file, const std::string& folder, Placement placement) {
    const bool isMove = placement == Placement::Move;
    throw Failure(file, "on another file system than " + folder + ", so it cannot be " + (isMove ? "moved" : "linked") +
                            "; use --copy" + (isMove ? " instead of --move" : ""));
}

// Checked before the first file is placed.
void requirePlaceable(const std::string& folder, const std::vector<PlannedFolder>& plan, Placement placement) {
    if (placement == Placement::Copy) {
        return;
    }
    const uint64_t device = deviceOf(fullPath(folder));
    for (const PlannedFolder& set : plan) {
        for (const PlannedFile& file : set.files) {
            if (placement == Placement::Move && isLink(file.path)) {
                throw Failure(file.path, "is a symbolic link, which --move does not move; name the file itself");
            }
            std::error_code error;
            const fs::path original = fs::canonical(pathOf(file.path), error);
            if (!error && deviceOf(original.parent_path()) != device) {
                failAcross(file.path, folder, placement);
            }
        }
    }
}

// Symbolic links are followed: a relative link would break in the new folder.
void linkFile(const std::string& file, const fs::path& target) {
    std::error_code error;
    const fs::path original = fs::canonical(pathOf(file), error);
    if (!error) {
        fs::create_hard_link(original, target, error);
    }
    const auto isOneOf = [&](auto... reasons) { return ((error == reasons) || ...); };
    if (error == std::errc::cross_device_link) {
        failAcross(file, nameOf(target.parent_path().parent_path().parent_path()), Placement::Link);
    }
    if (isOneOf(std::errc::operation_not_permitted, std::errc::operation_not_supported,
                std::errc::function_not_supported, std::errc::too_many_links)) {
        throw Failure(file, "cannot make a hard link (" + error.message() + "); use --copy");
    }
    if (error) {
        throw Failure(nameOf(target), error.message());
    }
}

// The time comes last, because a copy without it is not complete.
void copyWhole(const std::string& file, const fs::path& target) {
    writeOutput(nameOf(target), {file}, [&](OutputFile& output) {
        readPieces(openFile(file).get(), file, [&](std::string_view piece) { output.write(piece); });
    });
    std::error_code error;
    const fs::path original = pathOf(file);
    const fs::file_status status = fs::status(original, error);
    if (!error) {
        fs::permissions(target, status.permissions(), error);
    }
    const fs::file_time_type time = fs::last_write_time(original, error);
    if (!error) {
        fs::last_write_time(target, time, error);
    }
}

void moveWhole(const std::string& file, const fs::path& target) {
    const std::error_code error = moveTo(file, nameOf(target));
    if (error == std::errc::cross_device_link) {
        failAcross(file, nameOf(target.parent_path().parent_path().parent_path()), Placement::Move);
    }
    if (error) {
        throw Failure(file, "cannot be moved: " + error.message());
    }
}

// A stopped run leaves links or copies, which can be deleted, or moved files, which cannot: each has its own folder.
fs::path hiddenFolder(const std::string& folder, Placement placement) {
    return pathOf(folder) / (placement == Placement::Move ? MovingFolder : ".tvmeta-partial");
}

// Fills one folder under its hidden name.
class FolderFiller {
  public:
    FolderFiller(const PlannedFolder& planned, const fs::path& hiddenPath, Placement chosen)
        : folder(planned), hidden(hiddenPath / pathOf(planned.path).filename()), placement(chosen) {}

    void fill() {
        try {
            std::error_code error;
            fs::create_directories(hidden, error);
            if (!error) {
                std::ranges::for_each(folder.files, [this](const PlannedFile& file) { place(file); });
                error = moveTo(nameOf(hidden), folder.path);
            }
            if (error) {
                throw Failure(folder.path, error.message());
            }
        } catch (const Failure&) {
            std::for_each(folder.files.rbegin(), folder.files.rend(), [this](const auto& file) { takeBack(file); });
            std::error_code error;
            fs::remove(hidden, error); // if it is empty
            throw;
        }
    }

  private:
    void place(const PlannedFile& file) {
        const fs::path target = hidden / pathOf(file.name);
        switch (placement) {
        case Placement::Link:
            return linkFile(file.path, target);
        case Placement::Copy:
            return copyWhole(file.path, target);
        case Placement::Move:
            if (!isThere(nameOf(target))) { // an interrupted run has moved it
                moveWhole(file.path, target);
            }
        }
    }

    void takeBack(const PlannedFile& file) {
        const fs::path target = hidden / pathOf(file.name);
        std::error_code error;
        if (placement != Placement::Move) {
            fs::remove(target, error);
        } else if (isThere(nameOf(target)) && moveTo(nameOf(target), file.path)) {
            complain(nameOf(target) + ": cannot be moved back to " + file.path);
        }
    }

    const PlannedFolder& folder;
    fs::path hidden;
    Placement placement;
};

// The journal of the moves into a folder.
class Journal {
  public:
    explicit Journal(const std::string& folder)
        : path(nameOf(pathOf(folder) / JournalName)), runs(isThere(path) ? readJournal(path) : std::vector<MoveRun>()) {
    }

    void add(const std::vector<PlannedFolder>& plan) {
        MoveRun& run = runs.emplace_back();
        for (const PlannedFolder& set : plan) {
            for (const PlannedFile& file : set.files) {
                if (set.state == PlannedFolder::State::New) {
                    run.push_back({nameOf(fullPath(file.path)), nameOf(fullPath(set.path) / pathOf(file.name))});
                }
            }
        }
        writeJournal(path, runs);
    }

    // Drops the moves of the last run that were not made, or were taken back.
    void prune() {
        if (runs.empty()) { // another program has removed the file
            return;
        }
        std::erase_if(runs.back(), [](const Move& move) {
            return isThere(move.from) && !isThere(move.to) && !isThere(movingPath(move.to));
        });
        std::error_code error;
        const bool isEmpty = std::ranges::all_of(runs, &MoveRun::empty);
        isEmpty ? static_cast<void>(std::filesystem::remove(pathOf(path), error)) : writeJournal(path, runs);
    }

    // The plan of the last run, without files that are neither where they were nor in their hidden folder.
    std::vector<PlannedFolder> unfinished() const {
        std::vector<PlannedFolder> plan;
        for (const Move& move : runs.empty() ? MoveRun() : runs.back()) {
            const fs::path target = pathOf(move.to);
            const std::string folder = nameOf(target.parent_path());
            if (isThere(folder)) {
                continue;
            }
            if (!isThere(move.from) && !isThere(movingPath(move.to))) {
                complain(move.from + ": not found; left out of " + folder);
                continue;
            }
            if (plan.empty() || plan.back().path != folder) {
                plan.push_back({folder, {}});
            }
            plan.back().files.push_back({move.from, nameOf(target.filename())});
        }
        return plan;
    }

    bool hasMoved(const std::string& file) const {
        const std::string from = nameOf(fullPath(file));
        return std::ranges::any_of(
            runs, [&](const MoveRun& run) { return std::ranges::find(run, from, &Move::from) != run.end(); });
    }

  private:
    std::string path;
    std::vector<MoveRun> runs;
};

void fillAll(const std::string& folder, const std::vector<PlannedFolder>& plan, Placement placement,
             const FolderReport& report) {
    const fs::path hidden = hiddenFolder(folder, placement);
    size_t done = 0;
    std::error_code error;
    try {
        for (const PlannedFolder& set : plan) {
            if (set.state == PlannedFolder::State::New) {
                FolderFiller(set, hidden, placement).fill();
                report(set);
                ++done;
            }
        }
        fs::remove(hidden, error);
    } catch (const Failure& failure) {
        fs::remove(hidden, error); // if it is empty
        const std::string outcome =
            done == 0 ? "no folder was made" : counted(done, "set") + (done == 1 ? " is complete" : " are complete");
        throw Failure(std::string(failure.what()) + "; " + outcome);
    }
}

} // namespace

std::vector<PlannedFolder> planFolders(const std::string& folder, const std::vector<FolderSet>& sets,
                                       Placement placement) {
    if (placement != Placement::Move && isThere(nameOf(hiddenFolder(folder, Placement::Move)))) {
        throw Failure(folder, "an interrupted run with --move has left files in " + std::string(MovingFolder) +
                                  "; repeat it, or undo it: tvmeta brackets --undo " +
                                  nameOf(pathOf(folder) / JournalName));
    }
    std::vector<PlannedFolder> plan;
    for (const FolderSet& set : sets) {
        PlannedFolder& planned = plan.emplace_back();
        planned.path = nameOf(pathOf(folder) / pathOf(set.name));
        UniqueNames names;
        for (const ShotFiles& files : set.shots) {
            for (const std::string& file : files) {
                const fs::path path = pathOf(file);
                planned.files.push_back({file, names.take(nameOf(path.stem()), nameOf(path.extension()))});
            }
        }
        planned.state = stateOf(planned);
    }
    requirePlaceable(folder, plan, placement);
    return plan;
}

void fillFolders(const std::string& folder, const std::vector<PlannedFolder>& plan, Placement placement,
                 const FolderReport& report) {
    const auto isNew = [](const PlannedFolder& set) { return set.state == PlannedFolder::State::New; };
    std::error_code error;
    fs::remove_all(hiddenFolder(folder, Placement::Link), error); // links and copies of an interrupted run
    if (std::ranges::none_of(plan, isNew)) {
        return;
    }
    fs::create_directories(pathOf(folder), error);
    if (error) {
        throw Failure(folder, error.message());
    }
    if (placement == Placement::Move) { // the hidden folder marks an unfinished run, so the journal comes first
        Journal(folder).add(plan);
    }
    try {
        fillAll(folder, plan, placement, report);
    } catch (const Failure&) {
        if (placement == Placement::Move) {
            try {
                Journal(folder).prune();
            } catch (const Failure&) { // on a full disk; --undo ignores moves that were not made
            }
        }
        throw;
    }
}

void finishMoves(const std::string& folder, const FolderReport& report) {
    if (isThere(nameOf(hiddenFolder(folder, Placement::Move)))) {
        fillAll(folder, Journal(folder).unfinished(), Placement::Move, report);
    }
}

void dropMoved(std::vector<std::string>& names, const std::string& folder) {
    const Journal journal(folder);
    std::erase_if(names, [&](const std::string& name) { return !isThere(name) && journal.hasMoved(name); });
}
