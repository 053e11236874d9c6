#include "base/line_output.h"

#include <cstdio>
#include <iostream>
#include <mutex>
#include <streambuf>
#include <string>

namespace {

class LineBuffer : public std::streambuf {
  public:
    explicit LineBuffer(std::FILE* stream) : file(stream) {
        std::setvbuf(file, nullptr, _IONBF, 0); // a call of fwrite() is then one call of the system
    }

    bool finish() {
        const std::scoped_lock lock(mutex);
        return write(pending.size());
    }

  protected:
    std::streamsize xsputn(const char* text, std::streamsize size) override {
        constexpr size_t Limit = 65536;
        const std::scoped_lock lock(mutex);
        pending.append(text, static_cast<size_t>(size));
        return pending.size() < Limit || write(lineBytes()) ? size : 0;
    }

    int_type overflow(int_type character) override {
        const char c = traits_type::to_char_type(character);
        return traits_type::eq_int_type(character, traits_type::eof()) || xsputn(&c, 1) == 1
                   ? traits_type::not_eof(character)
                   : traits_type::eof();
    }

    // The start of a line stays: each part of a message flushes standard error, and standard output with it.
    int sync() override {
        const std::scoped_lock lock(mutex);
        return write(lineBytes()) ? 0 : -1;
    }

  private:
    // A line also ends where the next text overwrites it.
    size_t lineBytes() const { return pending.find_last_of("\n\r") + 1; }

    bool write(size_t size) {
        const bool isWritten = std::fwrite(pending.data(), 1, size, file) == size;
        pending.erase(0, size);
        return isWritten;
    }

    std::FILE* file;
    std::mutex mutex;
    std::string pending;
};

// Both exist until the process ends, because the streams do.
LineBuffer& outputLines() {
    static LineBuffer& lines = *new LineBuffer(stdout);
    return lines;
}

LineBuffer& errorLines() {
    static LineBuffer& lines = *new LineBuffer(stderr);
    return lines;
}

} // namespace

void writeWholeLines() {
    std::cout.rdbuf(&outputLines());
    std::cerr.rdbuf(&errorLines());
}

bool finishOutput() {
    errorLines().finish();
    return outputLines().finish() && std::cout.good();
}
