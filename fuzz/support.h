// Fuzzing: what the targets share.
//
// Each target is one file, named after the source file whose functions it drives. It makes arguments of the fuzzer's
// bytes, calls, and checks what the manual promises about the result. Numbers are taken from the end of the input and
// payloads from its start, so that a seed is a payload with some bytes behind it. Blocks that the library reads or
// writes have exactly the promised size: the address sanitizer guards what lies around them.
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

// Ends the run when something does not hold that the library promises.
inline void require(bool holds, const char* promise) {
    if (!holds) {
        std::fprintf(stderr, "Broken promise: %s\n", promise);
        std::abort();
    }
}

// The same bytes: for records, texts and blocks that must agree or must not have been touched.
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
    require(offset <= bytes.size() && size <= bytes.size() - offset, "what is pointed to lies within the file");
    std::uint32_t value = 0;
    for (std::size_t i = size; i > 0; --i) {
        value = value << 8 | bytes[offset + i - 1];
    }
    return value;
}

using test::MemoryFile;
using test::Stream;

// The target's own file.
inline const MemoryFile& memoryFile() {
    static const MemoryFile file;
    return file;
}

inline Bytes contentOf(const MemoryFile& file) {
    const std::string content = test::readFile(file.path());
    return {content.begin(), content.end()};
}

// The codes that have a method, and how their settings are taken: as positions of sliders, or as any 32 bits.
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

// A text as the settings readers take it: with its terminating zero.
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

// What METHOD_DETECT finds in a text without a terminator.
inline std::int32_t detectedMethod(std::string_view text) {
    const std::vector<char> block = terminated(text);
    return get_settings_from_xmp(METHOD_DETECT, lengthOf(block.size()), block.data(), nullptr, nullptr);
}

inline std::int32_t countedDeclarations(std::string_view text) {
    const std::vector<char> block = terminated(text);
    return tvsettings_occurences_in_xmp(lengthOf(block.size()), block.data());
}

} // namespace fuzz
