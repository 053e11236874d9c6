// Lists the entries of the directories.
#include "photo/open_photo.h"

using namespace tvmeta;

std::int64_t tvmeta_list_tags(const tvmeta_Source* source, const tvmeta_Photo*, tvmeta_Tag* tags,
                              std::int64_t capacity) noexcept {
    if (!isUsable(source) || capacity < 0 || (tags == nullptr && capacity > 0)) {
        return TVMETA_BAD_ARGUMENT;
    }
    OpenPhoto photo(*source);
    std::int64_t count = 0;
    for (tvmeta_Tag tag; photo.tags.next(tag); ++count) {
        if (count < capacity) {
            tags[count] = tag;
        }
    }
    const std::int32_t failure = photo.failure();
    return failure == TVMETA_OK ? count : failure;
}
