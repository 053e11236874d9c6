// Binary PGM and PPM pictures, and PFM ones, which contain floats.

#include "base/failure.h"
#include "base/numbers.h"
#include "pictures/decoders.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <string>

namespace {

bool isBlank(int character) {
    return character == ' ' || (character >= '\t' && character <= '\r');
}

// The next word of a header, after white space and comments, which end with their line. Also reads one blank after the
// word; after the last word it separates the header from the pixels.
std::string nextWord(std::FILE* file) {
    constexpr size_t MaxLength = 32;
    int character = std::fgetc(file);
    while (isBlank(character) || character == '#') {
        const bool isComment = character == '#';
        while (isComment && character != '\n' && character != EOF) {
            character = std::fgetc(file);
        }
        character = std::fgetc(file);
    }
    std::string word;
    while (character != EOF && !isBlank(character) && word.size() < MaxLength) {
        word += static_cast<char>(character);
        character = std::fgetc(file);
    }
    return word;
}

std::string found(const std::string& word) {
    return word.empty() ? "none" : word;
}

int64_t nextSide(const std::string& path, std::FILE* file) {
    const std::string word = nextWord(file);
    const std::optional<int64_t> side = parseWholeNumber(word);
    if (!side || *side < 1) {
        throw Failure(path, "expected a width and height of 1 or more, found " + found(word));
    }
    return *side;
}

Depth nextDepth(const std::string& path, std::FILE* file) {
    const std::string white = nextWord(file);
    if (white != "255" && white != "65535") {
        throw Failure(path, "expected a white of 255 or 65535, found " + found(white));
    }
    return white == "255" ? Depth::Integer8 : Depth::Integer16;
}

// The scale of a PFM picture: its sign gives the byte order, its value the unit of the samples.
double nextScale(const std::string& path, std::FILE* file) {
    const std::string word = nextWord(file);
    const std::optional<double> scale = parseNumber(word);
    if (!scale || *scale == 0) {
        throw Failure(path, "expected a scale such as -1.0, found " + found(word));
    }
    return *scale;
}

template <std::ptrdiff_t SampleSize>
void swapBytes(unsigned char* bytes, size_t size) {
    for (unsigned char* sample = bytes; sample != bytes + size; sample += SampleSize) {
        std::reverse(sample, sample + SampleSize);
    }
}

void makeNative(unsigned char* bytes, size_t size, Depth depth, std::endian order) {
    if (order == std::endian::native || depth == Depth::Integer8) {
        return;
    }
    depth == Depth::Integer16 ? swapBytes<2>(bytes, size) : swapBytes<4>(bytes, size);
}

struct Layout {
    std::endian order = std::endian::big;
    bool isBottomUp = false;
};

// Reads rows one by one, so that their bytes are still in the cache when they are swapped.
void readPixels(const std::string& path, std::FILE* file, const Layout& layout, Picture& picture) {
    const size_t rowSize = rowBytes(picture);
    const auto rows = static_cast<size_t>(picture.height);
    const auto position = static_cast<uint64_t>(std::ftell(file));
    requireFileBytes(path, picture, position + sampleBytes(picture));
    picture.samples.resize(sampleBytes(picture));
    for (size_t i = 0; i < rows; ++i) {
        unsigned char* const row = picture.samples.data() + (layout.isBottomUp ? rows - 1 - i : i) * rowSize;
        if (std::fread(row, 1, rowSize, file) != rowSize) {
            throw Failure(path, "the pixels are incomplete");
        }
        makeNative(row, rowSize, picture.depth, layout.order);
    }
}

} // namespace

Picture readPnm(const std::string& path, Request request) {
    const File file = openPicture(path);
    const std::string kind = nextWord(file.get());
    const bool isPfm = kind == "PF" || kind == "Pf";
    const int64_t width = nextSide(path, file.get());
    const int64_t height = nextSide(path, file.get());
    const double scale = isPfm ? nextScale(path, file.get()) : 1;
    const Depth depth = isPfm ? Depth::Float32 : nextDepth(path, file.get());
    Picture picture = pictureWithoutSamples(path, width, height, kind == "P6" || kind == "PF" ? 3 : 1, depth);
    if (std::fabs(scale) != 1) {
        picture.dropped.push_back("scale " + shortNumber(std::fabs(scale)));
    }
    if (request.pixels) {
        readPixels(path, file.get(), {scale < 0 ? std::endian::little : std::endian::big, isPfm}, picture);
    }
    return picture;
}
