// Folders with the files of bracketed sets. A folder is filled under a hidden name and then renamed, so that it is
// complete when it appears; an interrupted run can be repeated. Nothing is overwritten.
#pragma once

#include <functional>
#include <string>
#include <vector>

enum class Placement { Link, Copy, Move };

// The files of one photograph, such as raw file, JPEG and sidecar. The first one leads.
using ShotFiles = std::vector<std::string>;

struct FolderSet {
    std::string name; // of its folder
    std::vector<ShotFiles> shots;
};

struct PlannedFile {
    std::string path;
    std::string name; // in the folder
};

struct PlannedFolder {
    enum class State { New, Complete, Taken };

    std::string path;
    std::vector<PlannedFile> files;
    State state = State::New; // Complete: it contains these files already. Taken: it has other contents.
};

// Plans a folder for each set. Changes nothing. Throws Failure if files cannot be placed: on another file system, or
// links that would be moved.
std::vector<PlannedFolder> planFolders(const std::string& folder, const std::vector<FolderSet>& sets,
                                       Placement placement);

using FolderReport = std::function<void(const PlannedFolder& folder)>;

// Makes the folders of a plan whose state is New and reports each one. Moves are recorded in FOLDER/moves.tsv before
// the first file is moved. Throws Failure on errors: the folders before are complete, and the files of the others are
// where they were.
void fillFolders(const std::string& folder, const std::vector<PlannedFolder>& plan, Placement placement,
                 const FolderReport& report);

// Completes the moves of an interrupted run, which its journal lists, and reports each folder.
void finishMoves(const std::string& folder, const FolderReport& report);

// Removes the files from a list of names that were moved into the folder.
void dropMoved(std::vector<std::string>& names, const std::string& folder);
