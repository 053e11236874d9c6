// The journal of moved files: after a title, two columns of paths, one line per file, an empty line between two runs.
#pragma once

#include <string>
#include <vector>

struct Move {
    std::string from;
    std::string to;
};
using MoveRun = std::vector<Move>;

inline constexpr const char* JournalName = "moves.tsv";
inline constexpr const char* MovingFolder = ".tvmeta-moving"; // of folders that are being filled

// The runs of a journal, the last one last. Throws Failure if it cannot be read or is no journal.
std::vector<MoveRun> readJournal(const std::string& path);

// Replaces the journal and synchronises it with the disk, so that it is complete before the first move.
void writeJournal(const std::string& path, const std::vector<MoveRun>& runs);

// Where a file is while its folder is being filled.
std::string movingPath(const std::string& target);

// Moves files back that a journal lists, also from the hidden folders of an interrupted run. Overwrites nothing.
// Removes folders that are empty then, and the journal if it has no other line. Prints a message for each file that
// cannot be moved and then throws Failure. Returns the number of files moved.
size_t undoMoves(const std::string& journal);
