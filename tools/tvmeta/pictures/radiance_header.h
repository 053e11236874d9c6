// The text at the start of a Radiance HDR picture, and the bytes after it.
#pragma once

#include "pictures/picture.h"
#include "system/files.h"

#include <array>
#include <cstdint>
#include <span>
#include <string>

using ByteSpan = std::span<const unsigned char>;

// Reads a file sequentially through one window.
class ByteSource {
  public:
    explicit ByteSource(const std::string& name) : path(name), file(openFile(name)), window(WindowSize) {}

    // The next `count` bytes, at most WindowSize; at the end of the file peek returns fewer, take throws Failure. They
    // are valid until the next call.
    ByteSpan peek(size_t count);
    ByteSpan take(size_t count);

    // The next line, without its line feed.
    std::string line();

    static constexpr size_t WindowSize = size_t{1} << 18;

    const std::string& path;

  private:
    File file;
    Bytes window;
    size_t first = 0; // unread bytes of the window
    size_t last = 0;
};

struct RadianceHeader {
    int32_t width = 0;
    int32_t height = 0;
    bool isBottomUp = false;
    std::array<double, 3> correction = {1, 1, 1}; // the factors by which the colours were multiplied
    std::optional<ColourSpace> colours = {};
};

// Throws Failure if the header is damaged or not supported.
RadianceHeader readRadianceHeader(ByteSource& source);
