// Settings: a settings packet that was found in an XMP text.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace tvmeta {

struct Method;

struct Version {
    std::int64_t major;
    std::int64_t minor;
};

struct Packet {
    std::string_view text; // the whole XMP text
    Version version;
    std::size_t methodTag; // offset of "tvtm:Method"
    std::size_t valueSkip; // characters between a tag and its value: ">" or "=" and a quote
    const Method* method;  // null: unknown name
};

} // namespace tvmeta
