// Files that the tool writes.
#pragma once

#include "output/files.h"
#include "output/temporary_file.h"

#include <functional>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// A file that is written whole or not at all: its bytes go to a temporary file in the same folder, which replaces it at
// the end. Devices, pipes and open descriptors such as /dev/stdout cannot be replaced and are written directly.
class OutputFile {
  public:
    explicit OutputFile(const OutputTarget& destination);

    void write(std::string_view bytes);

    // The path to pass to functions that open their output themselves.
    std::string libraryPath();

    // Puts the file in its place. writeOutput() calls this.
    void commit();

    // What became of the file if it is not committed.
    const char* fate() const;

  private:
    OutputTarget target;
    std::optional<TemporaryFile> temporary; // none for a target that is written directly
    File direct;
    File spool; // what a function wrote that cannot open such a target
    bool isBegun = false;
};

// Calls `write` with the output, then commits it. The output must be none of the inputs. Throws Failure with the reason
// and with what became of the output.
void writeOutput(const std::string& path, const std::vector<std::string>& inputs,
                 const std::function<void(OutputFile&)>& write);

// The system's reason why a library function failed that returns none. Set errno to 0 before the call.
std::string systemReason();

// Where to report that a file was written: standard error if the file is standard output.
std::ostream& messagesFor(const std::string& output);
