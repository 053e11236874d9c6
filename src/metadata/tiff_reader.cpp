#include "metadata/tiff_reader.h"

#include <algorithm>

namespace tvmeta {

namespace {

// In an entry that the file cuts short, missing bytes count as in the byte-order readers.
DirectoryEntry decode(ByteOrder order, std::span<const unsigned char> bytes) {
    std::array<int, DirectoryEntrySize> b;
    b.fill(EOF);
    std::ranges::copy(bytes, b.begin());
    DirectoryEntry entry{};
    entry.tag = combine16(order, b[0], b[1]);
    entry.type = combine16(order, b[2], b[3]);
    entry.count = combine32(order, b[4], b[5], b[6], b[7]);
    entry.field = combine32(order, b[8], b[9], b[10], b[11]);
    const bool isShort = entry.type == tiff_type::Short && entry.count <= 2;
    entry.value = isShort ? combine16(order, b[8], b[9]) : entry.field;
    for (std::size_t i = 0; i < EntryValueSize; ++i) {
        entry.fieldBytes[i] = static_cast<unsigned char>(b[8 + i]);
    }
    return entry;
}

} // namespace

void TiffReader::readLine(std::span<char> text) const {
    std::size_t size = 0;
    for (int byte = 0; size + 1 < text.size() && byte != '\n'; ++size) {
        byte = reader.get();
        if (byte == EOF) {
            break;
        }
        text[size] = static_cast<char>(byte);
    }
    if (size > 0) {
        text[size] = '\0';
    }
}

void DirectoryReader::readBlock() {
    const auto entries = static_cast<std::size_t>(std::min(remaining_, BlockEntries));
    tiff_.reader.seek(position_);
    blockSize_ = tiff_.reader.read(std::span(block_).first(entries * DirectoryEntrySize));
    blockUsed_ = 0;
}

std::optional<DirectoryEntry> DirectoryReader::next() {
    if (remaining_ <= 0) {
        tiff_.reader.seek(position_);
        return std::nullopt;
    }
    if (blockUsed_ == blockSize_) {
        readBlock();
    }
    const std::size_t size = std::min(DirectoryEntrySize, blockSize_ - blockUsed_);
    DirectoryEntry entry = decode(tiff_.order, std::span(block_).subspan(blockUsed_, size));
    blockUsed_ += size;
    position_ += static_cast<std::int64_t>(size);
    entry.end = position_;
    // Past the end of the file all entries decode alike, so one is enough.
    remaining_ = size > 0 ? remaining_ - 1 : 0;
    return entry;
}

} // namespace tvmeta
