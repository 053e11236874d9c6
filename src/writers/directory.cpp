#include "writers/directory.h"

#include "support/bytes.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>

namespace tvmeta {

namespace {

// Ends the process instead of writing past an array. Only a mistake in the library gets here: no argument and no file
// decides how many fields there are or how large a number is.
void requireRoom(bool fits) {
    if (!fits) {
        std::abort();
    }
}

} // namespace

std::span<const unsigned char> Directory::Field::bytes() const noexcept {
    return borrowed.data() != nullptr ? borrowed : std::span(own).first(std::min(size, own.size()));
}

Directory::Field& Directory::add(std::uint16_t tag, std::uint16_t type, std::size_t count, std::size_t size) noexcept {
    requireRoom(fieldCount_ < fields_.size());
    Field& field = fields_[fieldCount_++];
    field = {tag, type, static_cast<std::uint32_t>(count), size, {}, {}, nullptr};
    ++entries_;
    valueBytes_ += field.isInline() ? 0 : size;
    return field;
}

Directory::Field& Directory::addNumbers(std::uint16_t tag, std::uint16_t type, std::size_t count,
                                        std::size_t size) noexcept {
    requireRoom(size <= OwnSize);
    return add(tag, type, count, size);
}

void Directory::addShort(std::uint16_t tag, std::uint16_t value) noexcept {
    addShorts(tag, 1, value);
}

void Directory::addShorts(std::uint16_t tag, std::size_t count, std::uint16_t value) noexcept {
    Field& field = addNumbers(tag, tiff_type::Short, count, 2 * count);
    for (std::size_t i = 0; i < count; ++i) {
        storeLe16(field.own.data() + 2 * i, value);
    }
}

void Directory::addLong(std::uint16_t tag, std::uint32_t value) noexcept {
    storeLe32(addNumbers(tag, tiff_type::Long, 1, 4).own.data(), value);
}

void Directory::addShortOrLong(std::uint16_t tag, std::uint32_t value) noexcept {
    if (value <= UINT16_MAX) {
        addShort(tag, static_cast<std::uint16_t>(value));
    } else {
        addLong(tag, value);
    }
}

void Directory::addRationals(std::uint16_t tag, std::span<const std::int32_t> words) noexcept {
    Field& field = addNumbers(tag, tiff_type::Rational, words.size() / 2, 4 * words.size());
    for (std::size_t i = 0; i < words.size(); ++i) {
        storeLe32(field.own.data() + 4 * i, static_cast<std::uint32_t>(words[i]));
    }
}

void Directory::addText(std::uint16_t tag, std::span<const char> text, std::size_t count) noexcept {
    const auto* const bytes = reinterpret_cast<const unsigned char*>(text.data());
    addBytes(tag, tiff_type::Ascii, count, {bytes, text.size()}, count);
}

void Directory::addBytes(std::uint16_t tag, std::uint16_t type, std::size_t count, std::span<const unsigned char> bytes,
                         std::size_t size) noexcept {
    add(tag, type, count, size).borrowed = bytes.first(std::min(bytes.size(), size));
}

void Directory::addDirectory(std::uint16_t tag, const Directory& directory) noexcept {
    Field& field = add(tag, tiff_type::Long, 1, directory.size());
    field.directory = &directory;
}

void Directory::fixLayout(std::size_t entries, std::size_t valueBytes) noexcept {
    entries_ = entries;
    valueBytes_ = valueBytes;
}

void Directory::writeValue(const Placed& placed, std::span<unsigned char> block, std::size_t position) noexcept {
    const Field& field = *placed.field;
    const std::size_t offset = std::min(placed.offset, block.size());
    const std::span<unsigned char> room = block.subspan(offset, std::min(field.size, block.size() - offset));
    if (field.directory != nullptr) {
        field.directory->write(room, position + placed.offset);
        return;
    }
    ByteWriter value(room);
    value.put(field.bytes());
    value.putZeros(field.size - field.bytes().size());
}

void Directory::writeEntries(std::span<const Placed> placed, std::span<unsigned char> block,
                             std::size_t position) const noexcept {
    ByteWriter writer(block.first(std::min(headSize(), block.size())));
    writer.put16(static_cast<std::uint16_t>(entries_));
    const std::size_t written = std::min(placed.size(), entries_);
    for (const auto& [field, offset] : placed.first(written)) {
        writer.put16(field->tag);
        writer.put16(field->type);
        writer.put32(field->count);
        if (field->isInline()) {
            writer.put(field->bytes());
            writer.skip(EntryValueSize - field->bytes().size());
        } else {
            writer.put32(static_cast<std::uint32_t>(position + offset));
        }
    }
    writer.skip((entries_ - written) * DirectoryEntrySize);
    writer.put32(0); // no further directory
}

void Directory::write(std::span<unsigned char> block, std::size_t position) const noexcept {
    std::array<Placed, MaxFields> places;
    const std::span<Placed> placed = std::span(places).first(fieldCount_);
    std::size_t offset = headSize();
    for (std::size_t i = 0; i < fieldCount_; ++i) {
        placed[i] = {&fields_[i], offset};
        if (!fields_[i].isInline()) {
            writeValue(placed[i], block, position);
            offset += fields_[i].size;
        }
    }
    std::ranges::sort(placed, {}, [](const Placed& place) { return place.field->tag; });
    writeEntries(placed, block, position);
}

void writeTiffHeader(std::span<unsigned char, TiffHeaderSize> header, std::size_t firstDirectory) noexcept {
    storeLe16(header.data(), LittleEndianMark);
    storeLe16(header.data() + 2, TiffMagic);
    storeLe32(header.data() + 4, static_cast<std::uint32_t>(firstDirectory));
}

} // namespace tvmeta
