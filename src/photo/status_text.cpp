// What a status means, for people.
#include "tvmeta_photo.h"

#include <cstdint>
#include <iterator>

const char* tvmeta_status_text(std::int32_t status) noexcept {
    static constexpr const char* Texts[] = {
        "success",
        "the source cannot be read",
        "not a photograph of a known kind",
        "recognised, but not supported",
        "the file is damaged",
        "not enough memory",
        "wrong argument",
        "the buffer is too small",
        "too large for the format",
        "the file cannot be written",
    };
    const std::int64_t index = -std::int64_t{status};
    return index >= 0 && index < std::ssize(Texts) ? Texts[index] : "unknown status";
}
