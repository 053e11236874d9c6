// Output files.
#pragma once

#include "system/files.h"
#include "system/temporary_file.h"

#include <functional>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// A file that is written completely or not at all: a temporary file in the same folder replaces it at the end. Devices,
// pipes and open descriptors such as /dev/stdout cannot be replaced and are written directly.
class OutputFile {
  public:
    explicit OutputFile(const OutputTarget& destination);

    void write(std::string_view bytes);

    // The path to pass to functions that open their output themselves.
    std::string libraryPath();

    // Moves the file into place. writeOutput() calls this.
    void commit();

    // The state of the output if it is not committed: "not written", "left unchanged" or "incomplete".
    const char* stateWithoutCommit() const;

  private:
    OutputTarget target;
    std::optional<TemporaryFile> temporary; // none for a target that is written directly
    File direct;
    std::optional<SpoolFile> spool; // the output of functions that open a file, also to read what they wrote
    bool isBegun = false;
};

// What a command writes: a file, or "-" for standard output.
struct Output {
    std::string path;
    bool force = false; // --force: replace any file

    Output() = default;
    Output(std::string name, bool replacesAny = false) : path(std::move(name)), force(replacesAny) {}
};

// Throws Failure if the output is the same file as the input, under any name.
void requireOther(const std::string& output, const std::string& input);

// Calls `write` with the output, then commits it. Refuses an output that is one of the inputs or, without --force, a
// file whose text does not show that tvmeta made it. Throws Failure with the reason and the state of the output.
void writeOutput(const Output& output, const std::vector<std::string>& inputs,
                 const std::function<void(OutputFile&)>& write);

// The system's reason for the failure of a library function. Set errno to 0 before the call.
std::string systemReason();

// The stream for messages about a written file: standard error if the file is standard output.
std::ostream& messagesFor(const std::string& output);
