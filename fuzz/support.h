// Helpers shared by the fuzz targets.
//
// Each target is one file, named after the source file or the function that it tests. It builds arguments from the
// fuzzer's bytes, calls the library, and checks the result against the documentation. Numbers come from the end of the
// input and payloads from its start, so a seed is a payload followed by some bytes. Buffers have exactly the documented
// size, so that the address sanitizer detects any access outside of them.
#pragma once

#include "testing/memory_file.h"
#include "tvmeta.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace fuzz {

using Bytes = std::vector<std::uint8_t>;

// Stops the run if the library does not do what its documentation says.
inline void require(bool condition, const char* promise) {
    if (!condition) {
        std::fprintf(stderr, "Broken promise: %s\n", promise);
        std::abort();
    }
}

// Checks that two records, texts or blocks have the same bytes.
template <typename Record>
bool sameBytes(const Record& a, const Record& b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

template <typename Record>
bool allZero(const Record& record) {
    const auto* const bytes = reinterpret_cast<const unsigned char*>(&record);
    return std::all_of(bytes, bytes + sizeof record, [](unsigned char byte) { return byte == 0; });
}

inline std::uint32_t loadLe(const Bytes& bytes, std::size_t offset, std::size_t size) {
    require(offset <= bytes.size() && size <= bytes.size() - offset, "offsets are within the file");
    std::uint32_t value = 0;
    for (std::size_t i = size; i > 0; --i) {
        value = value << 8 | bytes[offset + i - 1];
    }
    return value;
}

using test::MemoryFile;
using test::Stream;

// The file of this process.
inline const MemoryFile& memoryFile() {
    static const MemoryFile file;
    return file;
}

inline Bytes contentOf(const MemoryFile& file) {
    const std::string content = test::readFile(file.path());
    return {content.begin(), content.end()};
}

// All method codes, and settings from the input: slider positions or arbitrary floats.
inline constexpr std::array<std::int32_t, 6> MethodCodes = {METHOD_DETAILS_ENHANCER,   METHOD_TONE_COMPRESSOR,
                                                            METHOD_CONTRAST_OPTIMIZER, METHOD_FUSION_ADJUST,
                                                            METHOD_FUSION_INTENSIVE,   METHOD_FUSION_REAL_ESTATE};

using Settings = std::vector<float>;

inline Settings takeSliders(FuzzedDataProvider& input) {
    Settings settings(SETTINGS_SLOTS);
    for (float& slot : settings) {
        slot = static_cast<float>(input.ConsumeIntegralInRange<int>(0, 1000)) / 10.0F;
    }
    return settings;
}

inline Settings takeFloats(FuzzedDataProvider& input) {
    Settings settings(SETTINGS_SLOTS);
    for (float& slot : settings) {
        const auto bits = input.ConsumeIntegral<std::uint32_t>();
        std::memcpy(&slot, &bits, sizeof slot);
    }
    return settings;
}

// A text with the terminating zero that the settings readers require.
inline std::vector<char> terminated(std::string_view text) {
    std::vector<char> block(text.size() + 1);
    text.copy(block.data(), text.size());
    return block;
}

inline std::string_view textOf(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

inline std::int32_t lengthOf(std::size_t size) {
    return static_cast<std::int32_t>(size);
}

// The result of METHOD_DETECT for a text without a terminator.
inline std::int32_t detectedMethod(std::string_view text) {
    const std::vector<char> block = terminated(text);
    return get_settings_from_xmp(METHOD_DETECT, lengthOf(block.size()), block.data(), nullptr, nullptr);
}

inline std::int32_t countedDeclarations(std::string_view text) {
    const std::vector<char> block = terminated(text);
    return tvsettings_occurences_in_xmp(lengthOf(block.size()), block.data());
}

} // namespace fuzz
