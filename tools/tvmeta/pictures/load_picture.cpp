#include "pictures/load_picture.h"

#include "base/failure.h"
#include "base/text.h"
#include "base/words.h"
#include "pictures/decoders.h"
#include "pictures/profiles.h"

#include <algorithm>
#include <string_view>

// The build gives this name to decoders whose library is missing.
Picture missingDecoder(const std::string& path, Request) {
    throw Failure(path, "this build of tvmeta has no decoder for it");
}

#ifndef TVMETA_HAS_JPEG
Bytes smallJpeg(std::FILE* /*file*/, const std::string& name, int32_t /*side*/) {
    throw Failure(name, "this build of tvmeta does not support JPEG pictures");
}
#endif

namespace {

struct Format {
    std::string_view start; // the first bytes of its files
    std::string_view name;
    Picture (*decoder)(const std::string& path, Request request);
};

constexpr Format Formats[] = {
#define PICTURE_FORMAT(start, name, decoder, package) {{start, sizeof start - 1}, name, decoder},
#include "pictures/formats.inc"
#undef PICTURE_FORMAT
};

const Format* findFormat(const Bytes& start) {
    const auto* const format =
        std::ranges::find_if(Formats, [&](const Format& known) { return asText(start).starts_with(known.start); });
    return format == std::end(Formats) ? nullptr : format;
}

// A result describes its colours by a profile alone.
void replaceColoursByProfile(Picture& picture) {
    if (picture.colours && picture.profile.empty()) {
        picture.profile = picture.channels >= 3 ? profileOf(*picture.colours) : Bytes();
        if (picture.profile.empty()) {
            picture.dropped.push_back(picture.colours->name);
        }
    }
}

} // namespace

Picture loadPicture(const std::string& path, Request request) {
    const Bytes start = readStart(path, 4);
    const Format* const format = findFormat(start);
    if (format == nullptr) {
        throw Failure(path, "not a " + wordList(pictureFormats()) + " picture: " + beginning(start));
    }
    if (format->decoder == missingDecoder) {
        throw Failure(path, "this build of tvmeta does not support " + std::string(format->name) + " pictures");
    }
    Picture picture = format->decoder(path, request);
    replaceColoursByProfile(picture);
    return picture;
}

bool isPicture(const std::string& path) {
    return findFormat(readStart(path, 4)) != nullptr;
}

std::vector<std::string> pictureFormats() {
    std::vector<std::string> names;
    for (const Format& format : Formats) {
        if (names.empty() || names.back() != format.name) {
            names.emplace_back(format.name);
        }
    }
    return names;
}
