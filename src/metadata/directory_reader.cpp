#include "metadata/directory_reader.h"

#include "support/bytes.h"

#include <algorithm>
#include <cstdint>

namespace tvmeta {

namespace {

// `byteAt` gives the bytes of the entry by their index.
template <typename ByteAt>
void decodeEntry(ByteOrder order, ByteAt byteAt, DirectoryEntry& entry) noexcept {
    const auto number16 = [&](std::size_t i) { return combine16(order, byteAt(i), byteAt(i + 1)); };
    const auto number32 = [&](std::size_t i) {
        return combine32(order, byteAt(i), byteAt(i + 1), byteAt(i + 2), byteAt(i + 3));
    };
    entry.tag = number16(0);
    entry.type = number16(2);
    entry.count = number32(4);
    entry.field = number32(8);
    const bool shorts = entry.type == tiff_type::Short && entry.count <= 2;
    entry.value = shorts ? number16(8) : entry.field;
    for (std::size_t i = 0; i < EntryValueSize; ++i) {
        entry.fieldBytes[i] = static_cast<unsigned char>(byteAt(8 + i));
    }
}

// An entry that the file cuts short has its missing bytes counted as the byte-order readers count them.
void decode(ByteOrder order, std::span<const unsigned char> bytes, DirectoryEntry& entry) noexcept {
    if (bytes.size() == DirectoryEntrySize) {
        decodeEntry(
            order, [bytes](std::size_t i) -> int { return bytes[i]; }, entry);
    } else {
        decodeEntry(
            order, [bytes](std::size_t i) -> int { return i < bytes.size() ? bytes[i] : EOF; }, entry);
    }
}

} // namespace

void TiffStructure::seek(std::int32_t offset) const noexcept {
    reader.seek(wrappingAdd(base, offset));
}

void DirectoryReader::readBlock() noexcept {
    const auto entries = static_cast<std::size_t>(std::min(remaining_, BlockEntries));
    tiff_.reader.seek(position_);
    blockSize_ = tiff_.reader.read(std::span(block_).first(entries * DirectoryEntrySize));
    blockUsed_ = 0;
}

bool DirectoryReader::next(DirectoryEntry& entry) noexcept {
    if (remaining_ <= 0) {
        tiff_.reader.seek(position_);
        return false;
    }
    if (blockUsed_ == blockSize_) {
        readBlock();
    }
    const std::size_t size = std::min(DirectoryEntrySize, blockSize_ - blockUsed_);
    decode(tiff_.order, std::span(block_).subspan(blockUsed_, size), entry);
    blockUsed_ += size;
    position_ += static_cast<std::int64_t>(size);
    entry.end = position_;
    // Behind the end of the file all entries come out alike: one stands for the rest.
    remaining_ = size > 0 ? remaining_ - 1 : 0;
    return true;
}

} // namespace tvmeta
