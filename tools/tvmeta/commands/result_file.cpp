#include "commands/result_file.h"

#include "base/failure.h"
#include "base/text.h"
#include "base/words.h"
#include "output/output_file.h"
#include "system/system.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <map>
#include <new>
#include <string_view>
#include <utility>

namespace {

struct TagName {
    int32_t directory;
    int32_t tag;
    std::string_view name;
};

// Tags that people look for. Others are counted by kind.
constexpr TagName TagNames[] = {
    {TVMETA_IMAGE, 270, "description"},
    {TVMETA_IMAGE, 271, "camera maker"},
    {TVMETA_IMAGE, 272, "camera model"},
    {TVMETA_IMAGE, 315, "artist"},
    {TVMETA_IMAGE, 33432, "copyright"},
    {TVMETA_EXIF_DIRECTORY, 33434, "exposure time"},
    {TVMETA_EXIF_DIRECTORY, 33437, "f-number"},
    {TVMETA_EXIF_DIRECTORY, 34855, "ISO speed"},
    {TVMETA_EXIF_DIRECTORY, 36867, "capture time"},
    {TVMETA_EXIF_DIRECTORY, 37386, "focal length"},
    {TVMETA_EXIF_DIRECTORY, 37510, "user comment"},
    {TVMETA_EXIF_DIRECTORY, 42036, "lens"},
};

// Properties that an XMP packet has in a form or number that leaves open which one is the picture's own.
constexpr std::pair<int32_t, std::string_view> Properties[] = {
    {256, "width"}, {257, "height"}, {274, "orientation"}, {40962, "width"}, {40963, "height"}};

std::string nameOf(const tvmeta_Loss& loss) {
    if (loss.directory < 0) {
        const std::string block(BlockNames[-1 - loss.directory]);
        if (loss.reason == TVMETA_LOSS_CLAMPED) {
            return "keywords beyond ASCII in the " + block;
        }
        if (loss.reason == TVMETA_LOSS_BROKEN) {
            return "damaged parts of the file";
        }
        if (loss.reason != TVMETA_LOSS_XMP_LEFT) {
            return block;
        }
        const auto* const property =
            std::ranges::find(Properties, loss.tag, &std::pair<int32_t, std::string_view>::first);
        return property != std::end(Properties)
                   ? std::string(property->second) + " in the " + block + " (left as it is)"
                   : "keywords in the " + block;
    }
    for (const TagName& named : TagNames) {
        if (named.directory == loss.directory && named.tag == loss.tag) {
            return std::string(named.name);
        }
    }
    return loss.reason == TVMETA_LOSS_MAKER_NOTE ? "maker notes" : "";
}

// A tag of a directory, and its value with numbers as little-endian ones.
using Key = std::pair<int32_t, uint16_t>;
struct TagValue {
    uint16_t type = 0;
    uint64_t count = 0;
    Bytes bytes;

    bool operator==(const TagValue&) const = default;
};

// Bytes of a number within an item of a type (TIFF 6.0), by type code.
size_t numberSize(uint16_t type) {
    constexpr std::array<size_t, 13> Sizes = {1, 1, 1, 2, 4, 4, 1, 1, 2, 4, 4, 4, 8};
    return type < Sizes.size() ? Sizes[type] : 1;
}

Bytes valueOf(const tvmeta_Source& source, const tvmeta_Tag& tag) {
    const bool isRational = tag.type == 5 || tag.type == 10;
    const size_t size = numberSize(tag.type);
    Bytes bytes(static_cast<size_t>(tag.count) * size * (isRational ? 2 : 1));
    if (source.read(source.context, tag.position, bytes.data(), std::ssize(bytes)) != std::ssize(bytes)) {
        return {};
    }
    for (size_t i = 0; tag.isBigEndian != 0 && i + size <= bytes.size(); i += size) {
        std::reverse(bytes.begin() + static_cast<std::ptrdiff_t>(i),
                     bytes.begin() + static_cast<std::ptrdiff_t>(i + size));
    }
    return bytes;
}

// Large values are not worth reading twice: none of a camera's has more.
constexpr uint64_t MaxChecked = 1 << 20;

std::map<Key, TagValue> valuesOf(const tvmeta_Source& source) {
    std::map<Key, TagValue> values;
    for (const tvmeta_Tag& tag : tagsOf(source)) {
        if (tag.position >= 0 && tag.count > 0 && tag.count <= MaxChecked) {
            values.try_emplace({tag.directory, tag.tag}, TagValue{tag.type, tag.count, valueOf(source, tag)});
        }
    }
    return values;
}

// Every entry that the library says it kept must be in the file as it is in the photograph. `planned` has the entries
// of the result.
void requireKept(const std::string& path, const tvmeta_Source& photo, const tvmeta_Source& planned) {
    const OpenPhoto written(path);
    const auto found = valuesOf(written.source());
    const auto originals = valuesOf(photo);
    for (const auto& [key, value] : valuesOf(planned)) {
        constexpr uint16_t Pointers[] = {34665, 34853, 40965};
        constexpr uint16_t Own[] = {274, 282, 283, 296, 305, 306, 40961, 40962, 40963};
        if (std::ranges::find(Pointers, key.second) != std::end(Pointers)) {
            continue;
        }
        const auto inFile = found.find(key);
        const auto original = originals.find(key);
        const bool isOwn = std::ranges::find(Own, key.second) != std::end(Own);
        const bool isOriginal = original == originals.end() || isOwn || original->second == value;
        if (inFile == found.end() || inFile->second != value || !isOriginal) {
            throw Failure(path, "internal error: tag " + std::to_string(key.second) +
                                    " of the result differs from the photograph");
        }
    }
}

// The result of the library if it is a size or a number.
size_t requireSaved(int64_t result, const std::string& shown) {
    if (result == TVMETA_NO_MEMORY) {
        throw std::bad_alloc();
    }
    if (result < 0) {
        const char* const reason = tvmeta_status_text(static_cast<int32_t>(result));
        throw Failure(shown, result == TVMETA_WRITE_FAILED ? systemReason() : reason);
    }
    return static_cast<size_t>(result);
}

void requireKeyword(const std::string& keyword) {
    constexpr size_t MaxKeyword = 32767;
    if (keyword.empty() || keyword.size() > MaxKeyword) {
        throw WrongCommandLine("expected a keyword of 1 to " + std::to_string(MaxKeyword) + " bytes, found " +
                               std::to_string(keyword.size()));
    }
    if (!isUtf8(keyword)) {
        throw WrongCommandLine("expected a keyword in UTF-8, found '" + keyword + "'");
    }
}

constexpr int32_t MaxLosses = 1 << 10;

} // namespace

std::vector<std::string> lossWords(const std::vector<tvmeta_Loss>& losses) {
    std::vector<std::string> words;
    std::map<std::string, size_t> counts;
    for (const tvmeta_Loss& loss : losses) {
        const std::string name = nameOf(loss);
        if (name.empty()) {
            ++counts[loss.reason == TVMETA_LOSS_PRIVATE ? "private tag" : "damaged tag"];
        } else if (std::ranges::find(words, name) == words.end()) {
            words.push_back(name);
        }
    }
    for (const auto& [kind, count] : counts) {
        words.push_back(counted(count, kind));
    }
    return words;
}

std::vector<const char*> keywordTexts(const std::vector<std::string>& keywords) {
    std::vector<const char*> texts;
    for (const std::string& keyword : keywords) {
        requireKeyword(keyword);
        texts.push_back(keyword.c_str());
    }
    return texts;
}

Bytes exifBlock(const tvmeta_Result& result, const std::string& shown, std::vector<tvmeta_Loss>& losses) {
    Bytes block(requireSaved(tvmeta_build_exif(&result, nullptr, 0, nullptr, 0, nullptr), shown));
    losses.resize(MaxLosses);
    int32_t count = 0;
    requireSaved(tvmeta_build_exif(&result, block.data(), std::ssize(block), losses.data(), MaxLosses, &count), shown);
    losses.resize(static_cast<size_t>(std::min(count, MaxLosses)));
    return block;
}

std::vector<tvmeta_Loss> saveResult(const tvmeta_Result& result, const std::string& shown) {
    std::vector<tvmeta_Loss> losses(MaxLosses);
    errno = 0;
    const size_t count = requireSaved(tvmeta_save_tiff(&result, losses.data(), MaxLosses), shown);
    losses.resize(std::min(count, losses.size()));
    if (result.photo != nullptr) {
        std::vector<tvmeta_Loss> same;
        const Bytes block = exifBlock(result, shown, same);
        tvmeta_Source planned;
        tvmeta_memory(block.data(), std::ssize(block), &planned);
        requireKept(result.path, *result.photo, planned);
    }
    return losses;
}
