#include "pages/thumbnails.h"

#include "base/failure.h"
#include "pictures/load_picture.h"
#include "system/temporary_file.h"

#include <cstdio>
#include <new>

namespace {

constexpr size_t MaxBlockBytes = 1 << 18;

// A page must not contain what a browser may refuse, or pictures that are only called thumbnails.
bool isJpeg(const Bytes& file, int32_t maxSide) {
    tvmeta_Source source;
    tvmeta_Photo size;
    size.recordSize = sizeof size;
    tvmeta_memory(file.data(), std::ssize(file), &source);
    const auto isUsual = [&](int32_t side) { return side > 0 && side <= maxSide; };
    return !file.empty() && tvmeta_read_photo(&source, &size) == TVMETA_OK && size.format == TVMETA_FORMAT_JPEG &&
           isUsual(size.width) && isUsual(size.height);
}

Bytes ownBlock(const Photo& photo, int32_t block) {
    return photo.record.blocks[block].size > 0 ? OpenPhoto(photo.path).block(block) : Bytes();
}

// libjpeg reads files.
Bytes smaller(const Bytes& jpeg, const std::string& path, int32_t side) {
    const SpoolFile file;
    writeBytes(file.stream(), asText(jpeg), path);
    std::rewind(file.stream());
    return smallJpeg(file.stream(), path, side);
}

// The result of a function, or nothing if it fails: the photograph is damaged, CMYK, gone, or this build has no
// decoder.
template <typename Function>
Bytes unlessFailed(Function function) {
    try {
        return function();
    } catch (const Failure&) {
        return {};
    } catch (const std::bad_alloc&) {
        return {};
    }
}

} // namespace

Bytes thumbnailOf(const Photo& photo) {
    constexpr int32_t MaxSide = 2048;
    constexpr int32_t MadeSide = 240; // enough for the size on the page
    Bytes own = unlessFailed([&] { return ownBlock(photo, TVMETA_THUMBNAIL); });
    if (own.size() <= MaxBlockBytes && isJpeg(own, MaxSide)) {
        return own;
    }
    return unlessFailed([&] {
        const bool isFileJpeg = photo.record.format == TVMETA_FORMAT_JPEG;
        return isFileJpeg ? smallJpeg(openFile(photo.path).get(), photo.path, MadeSide)
                          : smaller(ownBlock(photo, TVMETA_PREVIEW), photo.path, MadeSide);
    });
}

Bytes previewOf(const Photo& photo) {
    constexpr int32_t MaxSide = 65535;
    constexpr int32_t MadeSide = 1000;
    return unlessFailed([&] {
        Bytes own = ownBlock(photo, TVMETA_PREVIEW);
        return own.size() > MaxBlockBytes ? smaller(own, photo.path, MadeSide) : isJpeg(own, MaxSide) ? own : Bytes();
    });
}
