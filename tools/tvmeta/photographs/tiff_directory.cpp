#include "photographs/tiff_directory.h"

#include "system/system.h"

#include <tvmeta.h>

#include <algorithm>
#include <array>

namespace {

uint32_t read4(std::FILE* file, int32_t order) {
    return static_cast<uint32_t>(fgetmi4(file, order));
}

TiffEntry readEntry(std::FILE* file, int32_t order) {
    constexpr int32_t Short = 3;
    TiffEntry entry;
    entry.tag = fgetmi2(file, order) & 0xFFFF;
    entry.type = fgetmi2(file, order) & 0xFFFF;
    entry.count = read4(file, order);
    entry.valueField = positionOf(file);
    if (entry.type == Short && entry.count == 1) {
        entry.value = static_cast<uint32_t>(fgetmi2(file, order) & 0xFFFF);
        fgetmi2(file, order);
    } else {
        entry.value = read4(file, order);
    }
    return entry;
}

// Bytes per item of each type, indexed by type code.
int64_t itemSize(int32_t type) {
    constexpr auto Sizes = std::to_array<int64_t>({1, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8, 4});
    return type >= 0 && static_cast<size_t>(type) < Sizes.size() ? Sizes[static_cast<size_t>(type)] : 1;
}

} // namespace

const TiffEntry* TiffDirectory::find(int32_t tag) const {
    const auto found = std::ranges::find(entries, tag, &TiffEntry::tag);
    return found == entries.end() ? nullptr : &*found;
}

std::optional<uint32_t> TiffDirectory::value(int32_t tag) const {
    const TiffEntry* entry = find(tag);
    return entry == nullptr ? std::nullopt : std::optional(entry->value);
}

std::optional<TiffStructure> TiffStructure::find(std::FILE* file, int64_t base) {
    constexpr int32_t LittleEndian = 0x4949, BigEndian = 0x4D4D, Magic = 42;
    if (!seekTo(file, base)) {
        return std::nullopt;
    }
    const int32_t order = fgetm2(file);
    if ((order != LittleEndian && order != BigEndian) || fgetmi2(file, order) != Magic) {
        return std::nullopt;
    }
    return TiffStructure{file, base, order, read4(file, order)};
}

void TiffStructure::seek(uint32_t offset) const {
    seekTo(file, base + int64_t{offset});
}

TiffDirectory TiffStructure::directory(uint32_t offset) const {
    TiffDirectory directory;
    if (offset == 0) {
        return directory;
    }
    seek(offset);
    for (int32_t entries = fgetmi2(file, order) & 0xFFFF; entries > 0 && std::feof(file) == 0; --entries) {
        const TiffEntry entry = readEntry(file, order);
        if (std::feof(file) == 0) {
            directory.entries.push_back(entry);
        }
    }
    directory.next = std::feof(file) == 0 ? read4(file, order) : 0;
    return directory;
}

Region TiffStructure::region(const TiffEntry& entry) const {
    constexpr int64_t FieldSize = 4;
    const int64_t length = itemSize(entry.type) * int64_t{entry.count};
    return {length <= FieldSize ? entry.valueField : base + int64_t{entry.value}, length};
}
