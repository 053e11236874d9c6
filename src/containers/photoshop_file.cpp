// The header, the colour mode data and the image resources (Photoshop file format). All numbers are big-endian. The two
// kinds differ after the resources only.
#include "containers/finders.h"

#include "metadata/byte_cursor.h"

#include <algorithm>
#include <array>

namespace tvmeta {

void findInPhotoshopFile(SourceReader& reader, const Region& file, Layout& layout) {
    std::array<unsigned char, 30> header{};
    std::array<unsigned char, 4> length{};
    if (!readAt(reader, file.position, header)) {
        layout.markBroken(file.position);
        return;
    }
    ByteCursor cursor(header);
    cursor.skip(4 + 2 + 6 + 2); // signature, version, reserved, channels
    const std::uint32_t height = cursor.get32();
    const std::uint32_t width = cursor.get32();
    cursor.skip(2 + 2); // depth, colour mode
    const std::int64_t resources = file.position + static_cast<std::int64_t>(header.size()) + cursor.get32();
    layout.width = width <= INT32_MAX ? static_cast<std::int32_t>(width) : 0;
    layout.height = height <= INT32_MAX ? static_cast<std::int32_t>(height) : 0;
    if (!readAt(reader, resources, length)) {
        layout.markBroken(resources);
        return;
    }
    const std::int64_t start = resources + static_cast<std::int64_t>(length.size());
    const std::int64_t size = ByteCursor(length).get32();
    if (size > file.end() - start) {
        layout.markBroken(start);
    }
    const Region section{start, std::min(size, file.end() - start)};
    findInResources(reader, std::span(&section, 1), layout);
}

} // namespace tvmeta
