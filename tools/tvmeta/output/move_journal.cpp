#include "output/move_journal.h"

#include "base/failure.h"
#include "output/output_file.h"
#include "system/files.h"
#include "system/paths.h"
#include "system/system.h"

#include <algorithm>
#include <filesystem>
#include <set>
#include <string_view>
#include <system_error>

namespace {

namespace fs = std::filesystem;

// The first line. A table of the user without it is neither deleted nor changed.
constexpr std::string_view Title = "moved from\tmoved to\n";

// Names may contain the characters that end a column and a line.
constexpr std::pair<char, char> Escapes[] = {{'\\', '\\'}, {'\t', 't'}, {'\n', 'n'}, {'\r', 'r'}};

std::string escaped(std::string_view path) {
    std::string text;
    for (const char c : path) {
        const auto* const escape = std::ranges::find(Escapes, c, &std::pair<char, char>::first);
        text += escape == std::end(Escapes) ? std::string(1, c) : std::string{'\\', escape->second};
    }
    return text;
}

std::string unescaped(std::string_view text) {
    std::string path;
    for (size_t i = 0; i < text.size(); ++i) {
        const char next = i + 1 < text.size() ? text[i + 1] : '\0';
        const auto* const escape = std::ranges::find(Escapes, next, &std::pair<char, char>::second);
        const bool isEscape = text[i] == '\\' && escape != std::end(Escapes);
        path += isEscape ? escape->first : text[i];
        i += isEscape ? 1 : 0;
    }
    return path;
}

Move readLine(const std::string& path, std::string_view line) {
    const size_t tab = line.find('\t');
    const size_t end = line.find('\t', tab == std::string_view::npos ? tab : tab + 1);
    if (tab == std::string_view::npos || end != std::string_view::npos) {
        throw Failure(path, "expected two columns in each line of the list of moves");
    }
    return {unescaped(line.substr(0, tab)), unescaped(line.substr(tab + 1))};
}

// Moves one file back. Returns false after a message.
bool undoMove(const Move& move, size_t& moved) {
    const std::string moving = movingPath(move.to);
    const std::string& current = isThere(move.to) ? move.to : moving;
    if (!isThere(current)) {
        if (!isThere(move.from)) {
            complain(move.to + ": not found; " + move.from + " is not restored");
        }
        return isThere(move.from); // it was not moved, or is back already
    }
    std::error_code error;
    fs::create_directories(pathOf(move.from).parent_path(), error);
    if (const std::error_code reason = moveTo(current, move.from)) {
        complain(move.from + ": " + (reason == std::errc::file_exists ? "already exists" : reason.message()) + "; " +
                 current + " is left where it is");
        return false;
    }
    ++moved;
    return true;
}

void removeEmptyFolders(const std::vector<Move>& moves) {
    std::set<fs::path> folders; // a folder comes before its subfolders
    for (const Move& move : moves) {
        for (const std::string& file : {move.to, movingPath(move.to)}) {
            const fs::path folder = pathOf(file).parent_path();
            folders.insert({folder, folder.parent_path()});
        }
    }
    std::for_each(folders.rbegin(), folders.rend(), [](const fs::path& folder) {
        std::error_code error;
        if (fs::is_directory(folder, error)) {
            fs::remove(folder, error); // fails if it is not empty
        }
    });
}

} // namespace

std::string movingPath(const std::string& target) {
    const fs::path path = pathOf(target);
    const fs::path folder = path.parent_path();
    return nameOf(folder.parent_path() / MovingFolder / folder.filename() / path.filename());
}

std::vector<MoveRun> readJournal(const std::string& path) {
    const Bytes file = readFile(path);
    std::vector<MoveRun> runs(1);
    if (!asText(file).starts_with(Title)) {
        throw Failure(path, "not a list of moves that tvmeta wrote");
    }
    for (std::string_view rest = asText(file).substr(Title.size()); !rest.empty();) {
        const size_t end = std::min(rest.find('\n'), rest.size());
        const std::string_view line = rest.substr(0, end);
        rest.remove_prefix(std::min(end + 1, rest.size()));
        if (line.empty()) {
            runs.emplace_back();
        } else {
            runs.back().push_back(readLine(path, line));
        }
    }
    return runs;
}

void writeJournal(const std::string& path, const std::vector<MoveRun>& runs) {
    std::string text(Title);
    for (const MoveRun& run : runs) {
        text += text == Title || run.empty() ? "" : "\n";
        for (const Move& move : run) {
            text += escaped(move.from) + "\t" + escaped(move.to) + "\n";
        }
    }
    writeOutput({path, true}, {}, [&](OutputFile& output) { output.write(text); });
}

size_t undoMoves(const std::string& journal) {
    std::vector<Move> moves;
    for (const MoveRun& run : readJournal(journal)) {
        moves.insert(moves.end(), run.begin(), run.end());
    }
    size_t moved = 0;
    MoveRun left;
    std::for_each(moves.rbegin(), moves.rend(), [&](const Move& move) {
        if (!undoMove(move, moved)) {
            left.push_back(move);
        }
    });
    std::ranges::reverse(left);
    removeEmptyFolders(moves);
    if (left.empty()) {
        std::error_code error;
        fs::remove(pathOf(journal), error);
        removeEmptyFolders(moves); // now also the folder that contained the journal
    } else {
        writeJournal(journal, {left});
        throw Failure(std::to_string(left.size()) + " of " + std::to_string(moves.size()) +
                      " files were not moved back; " + journal + " still lists them");
    }
    return moved;
}
