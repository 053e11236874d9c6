#include "commands/set_placement.h"

#include "base/failure.h"
#include "base/mapped.h"
#include "base/text.h"
#include "base/words.h"
#include "output/move_journal.h"
#include "output/set_folders.h"
#include "photographs/photo_sets.h"
#include "photographs/sidecars.h"
#include "system/files.h"
#include "system/paths.h"
#include "system/system.h"

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <iterator>
#include <memory>
#include <optional>

namespace {

namespace fs = std::filesystem;

struct Verb {
    Placement placement;
    const char* present;
    const char* past;
};

Verb verbOf(const PlacementOptions& options) {
    return options.copy   ? Verb{Placement::Copy, "copy", "copied"}
           : options.move ? Verb{Placement::Move, "move", "moved"}
                          : Verb{Placement::Link, "link", "linked"};
}

// All files of one photograph, which go to the same folder: those that were read, then those of editors.
ShotFiles filesOf(const std::vector<const Photo*>& photos, Sidecars& sidecars) {
    ShotFiles files = mapped<std::string>(photos, &Photo::path);
    for (const Photo* photo : photos) {
        std::ranges::move(sidecars.take(photo->path), std::back_inserter(files));
    }
    return files;
}

std::string stemOf(const Photo& photo) {
    return nameOf(pathOf(photo.path).stem());
}

SetWords wordsOf(const PhotoSet& set) {
    const Photo& first = *set.photos.front();
    SetWords words = {.first = stemOf(first),
                      .last = stemOf(*set.photos.back()),
                      .shots = std::to_string(set.photos.size()),
                      .camera = first.record.model,
                      .folder = nameOf(fs::absolute(pathOf(first.path)).parent_path().filename())};
    if (first.taken) { // YYYY:MM:DD HH:MM:SS
        std::string time = takenText(first);
        std::ranges::replace(time, ':', '-');
        words.date = time.substr(0, 10);
        words.time = time.substr(11);
    }
    return words;
}

std::vector<FolderSet> foldersOf(const PhotoSets& found, const std::string& pattern) {
    const std::vector<std::string> names = setNames(pattern, mapped<SetWords>(found.sets, wordsOf));
    std::vector<FolderSet> folders;
    Sidecars sidecars;
    const auto files = [&](const auto& photos) { return filesOf(photos, sidecars); };
    for (const PhotoSet& set : found.sets) {
        folders.push_back({names[folders.size()], mapped<ShotFiles>(set.files, files)});
    }
    return folders;
}

// "3 photographs", and the number of files if there are more.
std::string contents(size_t photographs, size_t files) {
    return counted(photographs, "photograph") + (files == photographs ? "" : " (" + std::to_string(files) + " files)");
}

void dropGuesses(PhotoSets& found) {
    size_t photographs = 0;
    for (const PhotoSet& set : found.sets) {
        photographs += set.isGuess() ? set.photos.size() : 0;
    }
    const size_t guesses = std::erase_if(found.sets, [](const PhotoSet& set) { return set.isGuess(); });
    if (guesses > 0) {
        std::cout << "left out " << guesses << (guesses == 1 ? " guess" : " guesses") << " of "
                  << counted(photographs, "photograph") << "; --guesses places them, too\n";
    }
}

// Fills the folders and prints a line for each one. Returns the number of sets whose folder has other contents.
size_t fillAndReport(const PhotoSets& found, const PlacementOptions& options) {
    const Verb verb = verbOf(options);
    const std::vector<PlannedFolder> plan = planFolders(options.folder, foldersOf(found, options.name), verb.placement);
    const std::string done = options.dryRun ? std::string("would ") + verb.present : verb.past;
    size_t folders = 0, placed = 0;
    const auto report = [&](const PlannedFolder& folder) {
        const PhotoSet& set = found.sets[static_cast<size_t>(&folder - plan.data())];
        std::cout << printable(folder.path) << ": " << done << " " << contents(set.photos.size(), folder.files.size())
                  << ", " << offsetsText(set.offsets) << "\n";
        ++folders;
        placed += set.photos.size();
    };
    const auto inState = [&](PlannedFolder::State state, const auto& action) {
        for (const PlannedFolder& folder : plan) {
            if (folder.state == state) {
                action(folder);
            }
        }
    };
    inState(PlannedFolder::State::Complete,
            [](const PlannedFolder& folder) { std::cout << printable(folder.path) << ": is complete already\n"; });
    if (options.dryRun) {
        inState(PlannedFolder::State::New, report);
    } else {
        fillFolders(options.folder, plan, verb.placement, report);
    }
    size_t taken = 0;
    inState(PlannedFolder::State::Taken, [&](const PlannedFolder& folder) {
        complain(folder.path + ": already exists with other contents; left unchanged (choose another --name)");
        ++taken;
    });
    std::cout << done << " " << counted(placed, "photograph") << " into " << counted(folders, "folder")
              << "; in no set: " << found.singles.size() + found.unknown.size() << "\n";
    return taken;
}

std::shared_ptr<const void> lockOrWait(const std::string& folder) {
    return lockFolder(folder, [&] { complain(folder + ": another run is using the folder; waiting for its end"); });
}

// Two runs at the same time would write one journal. The folder is made for the lock.
class FolderLock {
  public:
    explicit FolderLock(const std::string& name) : folder(pathOf(name)) {
        std::error_code error; // reported when it is filled
        isMade = fs::create_directories(folder, error);
        lock = lockOrWait(name);
    }

    FolderLock(const FolderLock&) = delete;
    FolderLock& operator=(const FolderLock&) = delete;

    ~FolderLock() {
        std::error_code error;
        if (isMade) {
            fs::remove(folder, error); // if it is empty
        }
    }

  private:
    fs::path folder;
    bool isMade = false;
    std::shared_ptr<const void> lock;
};

void placeAndReport(const BracketOptions& input, const PlacementOptions& options) {
    requireNamePattern(options.name);
    std::vector<std::string> names = input.names;
    if (options.move && !options.dryRun) {
        finishMoves(options.folder, [](const PlannedFolder& folder) {
            std::cout << printable(folder.path) << ": moved " << counted(folder.files.size(), "file")
                      << ", as an interrupted run had planned\n";
        });
        dropMoved(names, options.folder);
    }
    PhotoSets found = readPhotoSets(names, input.recursive, input.rules, options.folder);
    printAdvice(found, input.rules);
    if (!options.guesses) {
        dropGuesses(found);
    }
    const size_t taken = fillAndReport(found, options);
    if (options.move && isThere(nameOf(pathOf(options.folder) / JournalName))) {
        std::cout << "to undo: tvmeta brackets --undo " << printable(nameOf(pathOf(options.folder) / JournalName))
                  << "\n";
    }
    requireAllRead(found.reading);
    if (taken > 0) {
        throw Failure(std::to_string(taken) + " of " + counted(found.sets.size(), "set") + " got no folder");
    }
}

} // namespace

std::vector<Option> placementOptions(PlacementOptions& options, const std::vector<std::string>& otherForms) {
    std::vector<std::string> others = otherForms;
    others.insert(others.end(), {"--into", "PATH"});
    return {
        Option({"--into"}, &options.folder, "FOLDER", "Make a folder per set in this folder, with hard\nlinks",
               {.excludes = otherForms}),
        Option({"--name"}, &options.name, "PATTERN",
               "With --into: names of the folders (default\n" + std::string(DefaultNamePattern) + ")",
               {.needs = {"--into"}}),
        Option({"--copy"}, &options.copy, "", "With --into: copy instead of link", {.needs = {"--into"}}),
        Option({"--move"}, &options.move, "",
               "With --into: move instead of link, and list the\nmoves in FOLDER/moves.tsv",
               {.needs = {"--into"}, .excludes = {"--copy"}}),
        Option({"--guesses"}, &options.guesses, "", "With --into: also place the sets that are guesses",
               {.needs = {"--into"}}),
        Option({"--dry-run"}, &options.dryRun, "", "With --into: only print the plan", {.needs = {"--into"}}),
        Option({"--undo"}, &options.undo, "FILE", "Move back the files that moves.tsv lists", {.excludes = others}),
    };
}

void placeSets(const BracketOptions& input, const PlacementOptions& options) {
    std::optional<FolderLock> lock;
    if (!options.dryRun) {
        lock.emplace(options.folder);
    }
    placeAndReport(input, options);
}

void undoPlacement(const PlacementOptions& options) {
    if (options.undo == StandardStream) {
        throw WrongCommandLine("--undo changes its FILE, which therefore cannot be standard input");
    }
    const fs::path folder = fs::absolute(pathOf(options.undo)).parent_path();
    const std::shared_ptr<const void> lock = lockOrWait(nameOf(folder));
    const size_t moved = undoMoves(options.undo); // which can fail
    std::cout << "moved " << counted(moved, "file") << " back\n";
}
