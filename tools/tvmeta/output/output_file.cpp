#include "output/output_file.h"

#include "output/failure.h"
#include "system/file_copy.h"
#include "system/paths.h"
#include "system/system.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <new>
#include <system_error>

namespace {

void requireNoInput(const std::string& path, const std::vector<std::string>& inputs) {
    for (const std::string& input : inputs) {
        if (isSameFile(path, input)) {
            throw Failure(path, "output is the same file as input");
        }
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
        std::rewind(spool.get());
        readPieces(spool.get(), target.name,
                   [this](std::string_view piece) { writeBytes(direct.get(), piece, target.name); });
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
    std::string fate = std::filesystem::is_regular_file(pathOf(path), error) ? "left unchanged" : "not written";
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
    return isStandardOutput(output) ? std::cerr : std::cout;
}
