#include "output/output_file.h"

#include "output/failure.h"

#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <new>
#include <system_error>

namespace {

void requireNoInput(const std::string& path, const std::vector<std::string>& inputs) {
    std::error_code error;
    for (const std::string& input : inputs) {
        if (std::filesystem::equivalent(path, input, error)) {
            throw Failure(path, "output is the same file as input");
        }
    }
}

void writeBytes(std::FILE* file, std::string_view bytes, const std::string& name) {
    if (std::fwrite(bytes.data(), 1, bytes.size(), file) != bytes.size()) {
        failWithErrno(name);
    }
}

void copyBytes(std::FILE* from, std::FILE* to, const std::string& name) {
    std::array<char, 65536> piece;
    std::rewind(from);
    while (const size_t got = std::fread(piece.data(), 1, piece.size(), from)) {
        writeBytes(to, {piece.data(), got}, name);
    }
    if (std::ferror(from)) {
        failWithErrno(name);
    }
}

// Adds the state of the output to a failure. Most failures are about an input and do not name the output.
Failure withFate(const std::string& problem, const std::string& path, const std::string& fate) {
    const bool isNamed = problem.starts_with(path + ": ");
    return Failure(problem + "; " + (isNamed ? "" : path + " ") + fate);
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
    if (temporary) {
        return temporary->path();
    }
    if (!target.isSpooled) {
        isBegun = true;
        return target.path;
    }
    spool.reset(std::tmpfile());
    if (!spool) {
        failWithErrno("temporary file for " + target.name);
    }
    return reopeningPath(spool.get());
}

void OutputFile::commit() {
    if (spool) {
        direct = openDirect(target);
        isBegun = true;
        copyBytes(spool.get(), direct.get(), target.name);
    }
    // A full disk can fail only at the last buffered bytes.
    if (direct && std::fflush(direct.get()) != 0) {
        failWithErrno(target.name);
    }
    if (temporary) {
        temporary->replace(target);
    }
}

const char* OutputFile::fate() const {
    return isBegun ? "incomplete" : target.exists ? "left unchanged" : "not written";
}

void writeOutput(const std::string& path, const std::vector<std::string>& inputs,
                 const std::function<void(OutputFile&)>& write) {
    std::error_code error;
    std::string fate = std::filesystem::is_regular_file(path, error) ? "left unchanged" : "not written";
    std::optional<OutputFile> output;
    try {
        requireNoInput(path, inputs);
        output.emplace(resolveTarget(path));
        write(*output);
        output->commit();
    } catch (const WrongCommandLine&) {
        throw;
    } catch (const std::exception& problem) {
        const bool isMemory = dynamic_cast<const std::bad_alloc*>(&problem) != nullptr;
        throw withFate(isMemory ? "not enough memory" : problem.what(), path, output ? output->fate() : fate);
    }
}

std::string systemReason() {
    return errno == 0 ? "cannot write the file" : std::strerror(errno);
}

std::ostream& messagesFor(const std::string& output) {
    struct stat file = {};
    struct stat standard = {};
    const bool isKnown = stat(output.c_str(), &file) == 0 && fstat(STDOUT_FILENO, &standard) == 0;
    const bool isSame = file.st_dev == standard.st_dev && file.st_ino == standard.st_ino;
    return isKnown && isSame ? std::cerr : std::cout;
}
