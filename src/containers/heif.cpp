// HEIF and AVIF: the items of the 'meta' box. The first image is the primary item; EXIF and XMP are items of their own.
#include "containers/boxes.h"
#include "containers/finders.h"
#include "metadata/byte_cursor.h"
#include "support/text_search.h"
#include "support/zeroed_buffer.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <span>
#include <string_view>

namespace tvmeta {

namespace {

// The boxes in 'meta', of size 0 if they are missing.
struct Meta {
    Region primary;
    Region itemInfo;
    Region locations;
    Region properties;
    Region data;
};

struct MetaRow {
    std::uint32_t type;
    Region Meta::*box;
};

constexpr MetaRow MetaRows[] = {{boxType("pitm"), &Meta::primary},
                                {boxType("iinf"), &Meta::itemInfo},
                                {boxType("iloc"), &Meta::locations},
                                {boxType("iprp"), &Meta::properties},
                                {boxType("idat"), &Meta::data}};

Meta readMeta(SourceReader& reader, const Region& content, Layout& layout) {
    Meta meta;
    BoxWalker boxes(reader, content, layout);
    for (Box box; boxes.next(box);) {
        const auto* const row = std::ranges::find(MetaRows, box.type, &MetaRow::type);
        if (row != std::end(MetaRows)) {
            meta.*row->box = box.content;
        }
    }
    return meta;
}

// The content of a box in memory. Tables of a photograph have some kilobytes.
class BoxBytes {
  public:
    BoxBytes(SourceReader& reader, const Region& region, Layout& layout)
        : buffer_(region.size <= MaxSize ? static_cast<std::size_t>(region.size) : 0),
          isRead_(buffer_ && readAt(reader, region.position, buffer_.bytes())) {
        layout.isWithoutMemory |= !buffer_;
    }

    ByteCursor cursor() { return ByteCursor(isRead_ ? buffer_.bytes() : std::span<unsigned char>()); }

  private:
    static constexpr std::int64_t MaxSize = 1 << 20;

    ZeroedBuffer buffer_;
    bool isRead_;
};

struct Version {
    std::uint8_t number;
    std::uint32_t flags;
};

Version getVersion(ByteCursor& cursor) {
    const std::uint8_t number = cursor.get8();
    return {number, static_cast<std::uint32_t>(cursor.number(3))};
}

std::uint32_t primaryItem(SourceReader& reader, const Region& region, Layout& layout) {
    BoxBytes bytes(reader, region, layout);
    ByteCursor cursor = bytes.cursor();
    return getVersion(cursor).number == 0 ? cursor.get16() : cursor.get32();
}

// A text with a terminator.
std::string_view getText(ByteCursor& cursor) {
    ByteCursor ahead = cursor;
    std::size_t size = 0;
    while (ahead && ahead.get8() != 0) {
        ++size;
    }
    const std::string_view text = asText(cursor.take(size));
    cursor.skip(1);
    return text;
}

struct Items {
    std::uint32_t exif = 0; // identifiers; 0 if there is none
    std::uint32_t xmp = 0;
};

void readItemInfo(ByteCursor cursor, Items& items) {
    const std::uint8_t version = getVersion(cursor).number;
    if (version < 2) {
        return;
    }
    const std::uint32_t id = version == 2 ? cursor.get16() : cursor.get32();
    cursor.skip(2); // protection
    const std::uint32_t type = cursor.get32();
    if (type == boxType("Exif") && items.exif == 0) {
        items.exif = id;
    } else if (type == boxType("mime") && items.xmp == 0) {
        getText(cursor); // name
        if (getText(cursor) == "application/rdf+xml") {
            items.xmp = id;
        }
    }
}

Items findItems(SourceReader& reader, const Region& itemInfo, Layout& layout) {
    std::array<unsigned char, 1> version{};
    Items items;
    if (itemInfo.size == 0 || !readAt(reader, itemInfo.position, version)) {
        return items;
    }
    const std::int64_t header = 4 + (version[0] == 0 ? 2 : 4); // version, flags and number of items
    BoxWalker boxes(reader, itemInfo.after(header), layout);
    for (Box box; boxes.next(box);) {
        if (box.type == boxType("infe")) {
            BoxBytes bytes(reader, box.content, layout);
            readItemInfo(bytes.cursor(), items);
        }
    }
    return items;
}

// The sizes of the numbers in the table of locations.
struct LocationSizes {
    std::size_t offset;
    std::size_t length;
    std::size_t base;
    std::size_t index;
};

LocationSizes getLocationSizes(ByteCursor& cursor, std::uint8_t version) {
    const std::uint8_t first = cursor.get8();
    const std::uint8_t second = cursor.get8();
    const auto size = [](int nibble) { return static_cast<std::size_t>(nibble > 8 ? 8 : nibble); };
    return {size(first >> 4), size(first & 15), size(second >> 4), version > 0 ? size(second & 15) : 0};
}

// Calls `take` with the item and the region of each extent of the items that is inside of the file. An extent can have
// no bytes in the table, so those of other items are skipped at once, and those of the items are counted.
template <typename Take>
void forEachExtent(ByteCursor cursor, const Items& items, const Region& file, const Region& data, Take take) {
    int extentsLeft = Layout::MaxPieces;
    const std::uint8_t version = getVersion(cursor).number;
    const LocationSizes sizes = getLocationSizes(cursor, version);
    const std::uint32_t count = version < 2 ? cursor.get16() : cursor.get32();
    for (std::uint32_t i = 0; i < count && cursor; ++i) {
        const std::uint32_t id = version < 2 ? cursor.get16() : cursor.get32();
        const int method = version > 0 ? cursor.get16() & 15 : 0; // 0: in the file, 1: in 'idat', 2: in another item
        cursor.skip(2);                                           // data reference
        const std::uint64_t base = cursor.number(sizes.base);
        const Region& space = method == 1 ? data : file;
        const auto spaceSize = static_cast<std::uint64_t>(space.size);
        const std::uint32_t extents = cursor.get16();
        if (id == 0 || (id != items.exif && id != items.xmp)) {
            cursor.skip(extents * (sizes.index + sizes.offset + sizes.length));
            continue;
        }
        for (std::uint32_t extent = 0; extent < extents && cursor && extentsLeft > 0; ++extent, --extentsLeft) {
            cursor.skip(sizes.index);
            const std::uint64_t offset = cursor.number(sizes.offset);
            const std::uint64_t length = cursor.number(sizes.length);
            const bool isInside =
                base <= spaceSize && offset <= spaceSize - base && length <= spaceSize - base - offset;
            if (cursor && method <= 1 && isInside) {
                const std::uint64_t size = length > 0 ? length : spaceSize - base - offset; // 0: all of it
                take(id, Region{space.position + static_cast<std::int64_t>(base + offset),
                                static_cast<std::int64_t>(size)});
            }
        }
    }
}

void addItems(SourceReader& reader, const Meta& meta, const Items& items, const Region& file, Layout& layout) {
    BoxBytes table(reader, meta.locations, layout);
    std::int64_t left = file.size; // overlapping extents would make a block that is larger than the file
    forEachExtent(table.cursor(), items, file, meta.data, [&](std::uint32_t id, const Region& extent) {
        if (id == items.exif && layout.structures().empty()) {
            addExifBox(reader, extent, layout);
        } else if (id == items.xmp && extent.size <= left) {
            layout.addPiece(TVMETA_XMP, extent);
            left -= extent.size;
        }
    });
    if (items.exif != 0 && layout.structures().empty()) {
        layout.markBroken(meta.locations.position);
    }
}

// How the primary image is turned: a rotation by quarters counter-clockwise, and a mirror after it.
struct Transform {
    enum Mirror { None, TopBottom, LeftRight };

    unsigned quarters = 0;
    Mirror mirror = None;

    std::int32_t orientation() const {
        static constexpr std::int32_t Orientations[3][4] = {{1, 8, 3, 6}, {4, 5, 2, 7}, {2, 7, 4, 5}};
        return Orientations[mirror][quarters];
    }
};

void readProperty(SourceReader& reader, const Box& property, Transform& transform, Layout& layout) {
    std::array<unsigned char, 12> bytes{};
    ByteCursor cursor(readStart(reader, property.content, bytes));
    switch (property.type) {
    case boxType("ispe"):
        cursor.skip(4); // version and flags
        layout.width = static_cast<std::int32_t>(cursor.get32() & INT32_MAX);
        layout.height = static_cast<std::int32_t>(cursor.get32() & INT32_MAX);
        break;
    case boxType("irot"):
        transform.quarters = (transform.quarters + cursor.get8()) & 3;
        break;
    case boxType("imir"):
        transform.mirror = (cursor.get8() & 1) != 0 ? Transform::LeftRight : Transform::TopBottom;
        break;
    case boxType("colr"):
        if (const std::uint32_t kind = cursor.get32(); kind == boxType("prof") || kind == boxType("rICC")) {
            layout.addFirst(TVMETA_ICC, property.content.after(4));
        }
        break;
    default:
        break;
    }
}

// The numbers of the properties of the primary image, from 1 on.
struct Associations {
    std::array<unsigned, 255> numbers{};
    std::size_t count = 0;

    bool contain(unsigned number) const { return std::ranges::count(std::span(numbers).first(count), number) > 0; }
};

Associations findAssociations(SourceReader& reader, const Meta& meta, Layout& layout) {
    const std::uint32_t primary = primaryItem(reader, meta.primary, layout);
    BoxBytes table(reader, findBox(reader, meta.properties, boxType("ipma"), layout), layout);
    ByteCursor cursor = table.cursor();
    const Version version = getVersion(cursor);
    const bool isWide = (version.flags & 1) != 0;
    Associations found;
    for (std::uint32_t items = cursor.get32(); items > 0 && cursor; --items) {
        const std::uint32_t id = version.number == 0 ? cursor.get16() : cursor.get32();
        const std::size_t count = cursor.get8();
        if (id != primary) {
            cursor.skip(count * (isWide ? 2 : 1));
            continue;
        }
        for (; found.count < count && cursor; ++found.count) {
            found.numbers[found.count] = isWide ? cursor.get16() & 0x7FFFU : cursor.get8() & 0x7FU;
        }
        break;
    }
    return found;
}

void readPrimaryImage(SourceReader& reader, const Meta& meta, Layout& layout) {
    const Associations associations = findAssociations(reader, meta, layout);
    BoxWalker boxes(reader, findBox(reader, meta.properties, boxType("ipco"), layout), layout);
    Transform transform;
    bool isTransformed = false;
    Box property;
    for (unsigned number = 1; boxes.next(property); ++number) {
        if (associations.contain(number)) {
            isTransformed |= property.type == boxType("irot") || property.type == boxType("imir");
            readProperty(reader, property, transform, layout);
        }
    }
    // Readers of HEIF turn the picture by these properties alone. Files without any may still say it in EXIF.
    if (isTransformed) {
        layout.orientation = transform.orientation();
    }
}

} // namespace

void findInHeif(SourceReader& reader, const Region& file, Layout& layout) {
    constexpr std::int64_t VersionAndFlags = 4;
    const Region content = findBox(reader, file, boxType("meta"), layout);
    if (content.size <= VersionAndFlags) {
        layout.markBroken(file.position);
        return;
    }
    const Meta meta = readMeta(reader, content.after(VersionAndFlags), layout);
    addItems(reader, meta, findItems(reader, meta.itemInfo, layout), file, layout);
    readPrimaryImage(reader, meta, layout);
}

} // namespace tvmeta
