#include "writers/photo_entries.h"

#include "containers/tag_values.h"
#include "support/tiff_vocabulary.h"
#include "writers/kept_tags.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>

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

// The entries that are kept, one by one. Two passes over a photograph choose the same ones.
class Chooser {
  public:
    Chooser(OpenPhoto& photo, KeptValues kept) : photo_(photo), kept_(kept) {}

    explicit operator bool() const { return static_cast<bool>(seen_); } // false without memory

    // Gives the next one, and names those that are lost before it, if there is a list.
    bool next(tvmeta_Tag& tag, LossList* losses) {
        while (photo_.tags.next(tag)) {
            const std::optional<std::int32_t> loss = judge(tag);
            if (!loss) {
                return true;
            }
            if (*loss != 0 && losses != nullptr) {
                losses->add(tag.directory, tag.tag, *loss);
            }
        }
        return false;
    }

  private:
    // Empty for an entry to keep, 0 for one that is no loss, else the reason.
    std::optional<std::int32_t> judge(const tvmeta_Tag& tag) {
        const Fate fate = fateOf(tag.directory, tag.tag);
        if (fate == Fate::Private) {
            return TVMETA_LOSS_PRIVATE;
        }
        unsigned char& seen = seen_.data()[static_cast<std::size_t>(tag.directory) << 16 | tag.tag];
        if (!isKept(fate) || tag.count == 0 || seen != 0) { // of several entries the first counts
            return 0;
        }
        if (fate == Fate::MakerNote && !isMovableNote(photo_.reader, tag)) {
            return TVMETA_LOSS_MAKER_NOTE;
        }
        const std::uint64_t size = isWritable(tag) ? tag.count * itemSize(tag.type) : 0; // inside of the structure
        if (size == 0 || size > MaxValueBytes - bytes_) {
            return TVMETA_LOSS_BROKEN;
        }
        bytes_ += size;
        seen = 1;
        return std::nullopt;
    }

    bool isKept(Fate fate) const {
        switch (fate) {
        case Fate::Kept:
        case Fate::MakerNote:
            return true;
        case Fate::KeptAtSameSize:
            return kept_.positions;
        case Fate::Resolution:
            return kept_.resolution;
        case Fate::Software:
            return kept_.software;
        case Fate::ColorSpace:
            return kept_.colorSpace;
        default:
            return false;
        }
    }

    OpenPhoto& photo_;
    KeptValues kept_;
    std::uint64_t bytes_ = 0;
    ZeroedBuffer seen_{(TVMETA_SUB_IMAGE + 1) << 16}; // a byte for each tag of each directory
};

void reverseNumbers(std::span<unsigned char> value, std::size_t size) {
    for (std::size_t i = 0; size > 1 && i + size <= value.size(); i += size) {
        std::ranges::reverse(value.subspan(i, size));
    }
}

} // namespace

std::int32_t PhotoEntries::load(const tvmeta_Source& photo, KeptValues kept, LossList& losses) {
    std::size_t count = 0;
    std::uint64_t bytes = 0;
    {
        OpenPhoto open(photo);
        Chooser chooser(open, kept);
        if (!chooser) {
            return TVMETA_NO_MEMORY;
        }
        for (tvmeta_Tag tag; chooser.next(tag, nullptr); ++count) {
            bytes += tag.count * itemSize(tag.type);
        }
        if (const std::int32_t failure = open.failure(); failure != TVMETA_OK) {
            return failure;
        }
    }
    entryBlock_ = ZeroedBuffer(count * sizeof(KeptEntry)); // fewer than 2^18
    values_ = ZeroedBuffer(static_cast<std::size_t>(bytes));
    OpenPhoto open(photo);
    Chooser chooser(open, kept);
    if (!entryBlock_ || !values_ || !chooser) {
        return TVMETA_NO_MEMORY;
    }
    entries_ = reinterpret_cast<KeptEntry*>(entryBlock_.data());
    std::span<unsigned char> room = values_.bytes();
    for (tvmeta_Tag tag; chooser.next(tag, &losses) && count_ < count;) {
        const auto size = static_cast<std::size_t>(tag.count * itemSize(tag.type));
        if (size > room.size() || !readAt(open.reader, tag.position, room.first(size))) {
            losses.add(tag.directory, tag.tag, TVMETA_LOSS_BROKEN);
            continue;
        }
        if (tag.isBigEndian != 0) {
            reverseNumbers(room.first(size), numberSize(tag.type));
        }
        entries_[count_++] = {tag.directory, tag.tag, tag.type, tag.count, room.first(size)};
        room = room.subspan(size);
    }
    return open.reader.failed() ? TVMETA_READ_FAILED : TVMETA_OK;
}

const KeptEntry* PhotoEntries::find(std::int32_t directory, std::uint16_t tag) const {
    const auto found = std::ranges::find_if(
        entries(), [=](const KeptEntry& entry) { return entry.directory == directory && entry.tag == tag; });
    return found != entries().end() ? &*found : nullptr;
}

} // namespace tvmeta
