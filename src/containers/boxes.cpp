#include "containers/boxes.h"

#include "metadata/byte_cursor.h"
#include "support/text_search.h"

#include <algorithm>
#include <array>

namespace tvmeta {

bool BoxWalker::next(Box& box) {
    constexpr std::uint32_t SizeFollows = 1;
    constexpr std::uint32_t ToTheEnd = 0;
    std::array<unsigned char, 16> header{};
    const std::int64_t left = end_ - position_;
    if (left < 8 || boxesLeft_-- == 0) {
        return false;
    }
    ByteCursor cursor(readStart(reader_, {position_, left}, header));
    std::uint64_t size = cursor.get32();
    box.type = cursor.get32();
    if (size == SizeFollows) {
        size = cursor.get64();
    } else if (size == ToTheEnd) {
        size = static_cast<std::uint64_t>(left);
    }
    if (!cursor || size < cursor.position()) {
        layout_.markBroken(position_);
        return false;
    }
    box.isCut = size > static_cast<std::uint64_t>(left);
    const std::int64_t present = box.isCut ? left : static_cast<std::int64_t>(size);
    const auto headerSize = static_cast<std::int64_t>(cursor.position());
    box.content = {position_ + headerSize, std::max<std::int64_t>(present - headerSize, 0)};
    position_ += present;
    return true;
}

Region findBox(SourceReader& reader, const Region& region, std::uint32_t type, Layout& layout) {
    BoxWalker boxes(reader, region, layout);
    for (Box box; boxes.next(box);) {
        if (box.type == type) {
            return box.content;
        }
    }
    return {};
}

void addExifBox(SourceReader& reader, const Region& content, Layout& layout) {
    std::array<unsigned char, 4> bytes{};
    const std::int64_t skipped =
        4 + (readAt(reader, content.position, bytes) ? std::int64_t{ByteCursor(bytes).get32()} : 0);
    if (skipped < content.size) {
        layout.addStructure(content.after(skipped));
    } else {
        layout.markBroken(content.position);
    }
}

Region findJpegIn(SourceReader& reader, const Region& region) {
    std::array<unsigned char, 34> start{};
    const std::size_t offset = asText(readStart(reader, region, start)).find("\xFF\xD8\xFF");
    return offset == NotFound ? Region() : region.after(static_cast<std::int64_t>(offset));
}

} // namespace tvmeta
