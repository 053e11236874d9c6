#include "output/output_file.h"

#include "base/failure.h"
#include "base/markup.h"
#include "photographs/photo.h"
#include "pictures/load_picture.h"
#include "system/paths.h"
#include "system/system.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <system_error>

namespace {

// Adds the state of the output to a failure. Most failures are about an input and do not name the output.
Failure withState(const std::string& problem, const std::string& path, const std::string& state) {
    const bool isNamed = problem.starts_with(path + ": ");
    return Failure(problem + "; " + (isNamed ? "" : path + " ") + state);
}

// Pages and plots begin with their element or document type, and the comment.
bool isPageOrPlot(std::string_view text) {
    constexpr size_t MaxStart = 512;
    const bool isMarkup = text.starts_with("<!doctype html>\n") || text.starts_with("<svg ");
    return isMarkup && text.substr(0, MaxStart).find(MadeByTvmeta) != std::string_view::npos;
}

// <tvtm:NAME>VALUE</tvtm:NAME>
bool isSetting(std::string_view line) {
    constexpr std::string_view Start = "<tvtm:";
    const std::string_view name = line.substr(0, line.find('>'));
    if (!name.starts_with(Start)) {
        return false;
    }
    const std::string end = "</" + std::string(name.substr(1)) + ">";
    return line.ends_with(end) && line.find('<', 1) == line.size() - end.size();
}

// What write_xmp() writes.
bool isSettingsFile(std::string_view text) {
    constexpr std::string_view Head = "<x:xmpmeta xmlns:x='adobe:ns:meta/'>\n"
                                      "<rdf:RDF xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'>\n\n"
                                      "<rdf:Description rdf:about=''\n"
                                      "xmlns:tvtm='http://tonalvista.test/tonalvista_settings01'>\n";
    constexpr std::string_view Tail = "</rdf:Description>\n\n</rdf:RDF>\n</x:xmpmeta>\n";
    if (!text.starts_with(Head) || !text.ends_with(Tail) || text.size() < Head.size() + Tail.size()) {
        return false;
    }
    text = text.substr(Head.size(), text.size() - Head.size() - Tail.size());
    while (!text.empty() && isSetting(text.substr(0, text.find('\n')))) {
        text.remove_prefix(std::min(text.find('\n'), text.size() - 1) + 1);
    }
    return text.empty();
}

// True for a page, a plot, and a settings file that contains nothing but settings.
bool isOwnFile(const std::string& path) {
    constexpr size_t MaxSettings = 65536;
    const Bytes start = readStart(path, MaxSettings + 1);
    return isPageOrPlot(asText(start)) || (start.size() <= MaxSettings && isSettingsFile(asText(start)));
}

// What another file is, for messages.
std::string kindOfFile(const std::string& path) {
    return isPhotograph(path) ? "is a photograph"
           : isPicture(path)  ? "is a picture"
                              : "is not known to be made by tvmeta";
}

void requireReplaceable(const Output& output) {
    const OutputTarget target = resolveTarget(output.path);
    if (target.exists && !output.force && !isOwnFile(target.path)) {
        throw Failure(output.path, "exists and " + kindOfFile(target.path) + "; use --force to replace it");
    }
}

} // namespace

OutputFile::OutputFile(const OutputTarget& destination) : target(destination) {
    if (!target.isDirect) {
        temporary.emplace(target);
    }
}

void OutputFile::write(std::string_view bytes) {
    if (!temporary && !direct) {
        direct = openDirect(target);
        isBegun = true;
    }
    writeBytes(temporary ? temporary->stream() : direct.get(), bytes, target.name);
}

std::string OutputFile::libraryPath() {
    return temporary ? temporary->path() : spool.emplace().path();
}

void OutputFile::commit() {
    if (spool) {
        direct = openDirect(target);
        isBegun = true;
        std::rewind(spool->stream());
        readPieces(spool->stream(), target.name,
                   [this](std::string_view piece) { writeBytes(direct.get(), piece, target.name); });
    }
    // The last bytes are still in a buffer. If the disk is full, writing them fails.
    if (direct && std::fflush(direct.get()) != 0) {
        failWithErrno(target.name);
    }
    if (temporary) {
        temporary->replace(target);
    }
}

const char* OutputFile::stateWithoutCommit() const {
    return isBegun ? "incomplete" : target.exists ? "left unchanged" : "not written";
}

void requireOther(const std::string& output, const std::string& input) {
    const bool isInput = input == StandardStream, isOutput = output == StandardStream;
    const auto identity = isInput ? fileIdentity(stdin) : fileIdentity(input);
    const bool isTerminal = isInput && isOutput && !isRegularFile(stdin);
    if (!isTerminal && identity && identity == (isOutput ? fileIdentity(stdout) : fileIdentity(output))) {
        throw Failure(output, "output is the same file as input");
    }
}

void writeOutput(const Output& output, const std::vector<std::string>& inputs,
                 const std::function<void(OutputFile&)>& write) {
    std::error_code error;
    const bool exists = std::filesystem::is_regular_file(pathOf(output.path), error);
    std::optional<OutputFile> file;
    try {
        std::ranges::for_each(inputs, [&](const auto& input) { requireOther(output.path, input); });
        requireReplaceable(output);
        file.emplace(resolveTarget(output.path));
        write(*file);
        if (!exists) {
            requireReplaceable(output); // a file of that name may be new
        }
        file->commit();
    } catch (const WrongCommandLine&) {
        throw;
    } catch (const std::exception& problem) {
        const char* const state = file ? file->stateWithoutCommit() : exists ? "left unchanged" : "not written";
        throw withState(problemOf(problem), output.path, state);
    }
}

std::string systemReason() {
    return errno == 0 ? "cannot write the file" : std::strerror(errno);
}

std::ostream& messagesFor(const std::string& output) {
    const auto identity = fileIdentity(output); // NUL of Windows has none
    const bool isStandardOutput = output == StandardStream || (identity && identity == fileIdentity(stdout));
    return isStandardOutput ? std::cerr : std::cout;
}
