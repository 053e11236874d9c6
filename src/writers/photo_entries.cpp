#include "writers/photo_entries.h"

#include "containers/layout.h"
#include "containers/tag_values.h"
#include "support/tiff_vocabulary.h"
#include "writers/kept_tags.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace tvmeta {

namespace {

using namespace std::string_view_literals;

// Some hundred kilobytes of a photograph at most; the bound keeps hostile files cheap.
constexpr std::uint64_t MaxValueBytes = 64 << 20;

// Formats of maker notes whose offsets count from their own start: they can be moved.
constexpr std::string_view MovableNotes[] = {"Nikon\0\2"sv, "OLYMPUS\0"sv,   "OM SYSTEM\0"sv,
                                             "FUJIFILM"sv,  "Apple iOS\0"sv, "PENTAX \0"sv};

bool isMovableNote(SourceReader& reader, const tvmeta_Tag& tag) {
    std::array<char, 10> start{};
    const std::string_view text(start.data(), readBytes(reader, tag, start));
    return std::ranges::any_of(MovableNotes, [text](std::string_view format) { return text.starts_with(format); });
}

// Bytes of a number within an item, for the byte order: a rational is two numbers.
std::size_t numberSize(std::uint16_t type) {
    const bool isRational = type == tiff_type::Rational || type == tiff_type::SignedRational;
    return static_cast<std::size_t>(itemSize(type)) / (isRational ? 2 : 1);
}

// Offsets of directories are of no use in another file, and BigTIFF's numbers are none of TIFF's.
bool isWritable(const tvmeta_Tag& tag) {
    return tag.position >= 0 && itemSize(tag.type) > 0 && tag.type != tiff_type::Ifd &&
           (tag.type < tiff_type::Long8 || tag.type > tiff_type::Ifd8);
}

bool isKept(Fate fate, KeptValues kept) {
    switch (fate) {
    case Fate::Kept:
    case Fate::KeptAtSameSize: // until the size is known
    case Fate::MakerNote:
        return true;
    case Fate::Resolution:
        return kept.resolution;
    case Fate::Software:
        return kept.software;
    case Fate::ColorSpace:
        return kept.colorSpace;
    default:
        return false;
    }
}

std::uint64_t valueSize(const tvmeta_Tag& tag) {
    return tag.count * itemSize(tag.type); // inside of the structure, or of no size
}

void reverseNumbers(std::span<unsigned char> value, std::size_t size) {
    for (std::size_t i = 0; size > 1 && i + size <= value.size(); i += size) {
        std::ranges::reverse(value.subspan(i, size));
    }
}

} // namespace

unsigned char& PhotoEntries::seen(const tvmeta_Tag& tag) {
    return seen_.data()[static_cast<std::size_t>(tag.directory) << 16 | tag.tag];
}

bool PhotoEntries::append(const tvmeta_Tag& tag) {
    constexpr std::size_t UsualCount = 128;
    if (count_ == entryBlock_.size() / sizeof(KeptEntry)) {
        ZeroedBuffer larger(std::max(UsualCount, 2 * count_) * sizeof(KeptEntry)); // fewer than 2^18
        if (!larger) {
            return false;
        }
        auto* const moved = reinterpret_cast<KeptEntry*>(larger.data());
        std::ranges::copy(entries(), moved);
        entryBlock_ = std::move(larger);
        entries_ = moved;
    }
    entries_[count_++] = {tag, {}};
    return true;
}

bool PhotoEntries::offer(SourceReader& reader, const tvmeta_Tag& tag, KeptValues kept, LossList& losses) {
    const Fate fate = fateOf(tag.directory, tag.tag);
    if (!seen_) {
        return false;
    }
    std::int32_t loss = 0;
    if (fate == Fate::Private) {
        loss = TVMETA_LOSS_PRIVATE;
    } else if (!isKept(fate, kept) || tag.count == 0 || seen(tag) != 0) { // of several entries the first counts
        return true;
    } else if (fate == Fate::MakerNote && !isMovableNote(reader, tag)) {
        loss = TVMETA_LOSS_MAKER_NOTE;
    } else if (!isWritable(tag) || valueSize(tag) > MaxValueBytes - valueBytes_) {
        loss = TVMETA_LOSS_BROKEN;
    }
    if (loss != 0) {
        losses.add(tag.directory, tag.tag, loss);
        return true;
    }
    valueBytes_ += valueSize(tag);
    seen(tag) = 1;
    return append(tag);
}

std::int32_t PhotoEntries::readValues(SourceReader& reader, bool isSameSize, LossList& losses) {
    values_ = ZeroedBuffer(static_cast<std::size_t>(valueBytes_));
    if (!values_) {
        return TVMETA_NO_MEMORY;
    }
    std::span<unsigned char> room = values_.bytes();
    std::size_t count = 0;
    for (const KeptEntry& entry : entries()) {
        const tvmeta_Tag& tag = entry.tag;
        if (!isSameSize && fateOf(tag.directory, tag.tag) == Fate::KeptAtSameSize) {
            continue;
        }
        const auto value = room.first(static_cast<std::size_t>(valueSize(tag)));
        if (!readAt(reader, tag.position, value)) {
            losses.add(tag.directory, tag.tag, TVMETA_LOSS_BROKEN);
            continue;
        }
        if (tag.isBigEndian != 0) {
            reverseNumbers(value, numberSize(tag.type));
        }
        entries_[count++] = {tag, value};
        room = room.subspan(value.size());
    }
    count_ = count;
    return reader.failed() ? TVMETA_READ_FAILED : TVMETA_OK;
}

} // namespace tvmeta
