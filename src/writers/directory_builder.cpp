#include "writers/directory_builder.h"

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

std::span<const unsigned char> DirectoryBuilder::Field::bytes() const {
    return borrowed.data() != nullptr ? borrowed : std::span(numbers).first(std::min(size, numbers.size()));
}

DirectoryBuilder::Field& DirectoryBuilder::add(std::uint16_t tag, std::uint16_t type, std::size_t count,
                                               std::size_t size) {
    requireRoom(fieldCount_ < fields_.size());
    Field& field = fields_[fieldCount_++];
    field = {tag, type, static_cast<std::uint32_t>(count), size, {}, {}, nullptr};
    ++entries_;
    valueBytes_ += field.isInline() ? 0 : size;
    return field;
}

DirectoryBuilder::Field& DirectoryBuilder::addNumbers(std::uint16_t tag, std::uint16_t type, std::size_t count,
                                                      std::size_t size) {
    requireRoom(size <= MaxNumbersSize);
    return add(tag, type, count, size);
}

void DirectoryBuilder::addShort(std::uint16_t tag, std::uint16_t value) {
    addShorts(tag, 1, value);
}

void DirectoryBuilder::addShorts(std::uint16_t tag, std::size_t count, std::uint16_t value) {
    Field& field = addNumbers(tag, tiff_type::Short, count, 2 * count);
    for (std::size_t i = 0; i < count; ++i) {
        putLe16(field.numbers.data() + 2 * i, value);
    }
}

void DirectoryBuilder::addLong(std::uint16_t tag, std::uint32_t value) {
    putLe32(addNumbers(tag, tiff_type::Long, 1, 4).numbers.data(), value);
}

void DirectoryBuilder::addShortOrLong(std::uint16_t tag, std::uint32_t value) {
    if (value <= UINT16_MAX) {
        addShort(tag, static_cast<std::uint16_t>(value));
    } else {
        addLong(tag, value);
    }
}

void DirectoryBuilder::addRationals(std::uint16_t tag, std::span<const std::int32_t> words) {
    Field& field = addNumbers(tag, tiff_type::Rational, words.size() / 2, 4 * words.size());
    for (std::size_t i = 0; i < words.size(); ++i) {
        putLe32(field.numbers.data() + 4 * i, static_cast<std::uint32_t>(words[i]));
    }
}

void DirectoryBuilder::addText(std::uint16_t tag, std::span<const char> text, std::size_t count) {
    const auto* const bytes = reinterpret_cast<const unsigned char*>(text.data());
    addBytes(tag, tiff_type::Ascii, count, {bytes, text.size()}, count);
}

void DirectoryBuilder::addBytes(std::uint16_t tag, std::uint16_t type, std::size_t count,
                                std::span<const unsigned char> bytes, std::size_t size) {
    add(tag, type, count, size).borrowed = bytes.first(std::min(bytes.size(), size));
}

void DirectoryBuilder::addDirectory(std::uint16_t tag, const DirectoryBuilder& directory) {
    Field& field = add(tag, tiff_type::Long, 1, directory.size());
    field.directory = &directory;
}

void DirectoryBuilder::setRoom(std::size_t entries, std::size_t valueBytes) {
    entries_ = entries;
    valueBytes_ = valueBytes;
}

void DirectoryBuilder::writeValue(const Placed& placed, std::span<unsigned char> block, std::size_t position) {
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

void DirectoryBuilder::writeEntries(std::span<const Placed> placed, std::span<unsigned char> block,
                                    std::size_t position) const {
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

void DirectoryBuilder::write(std::span<unsigned char> block, std::size_t position) const {
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

void writeTiffHeader(std::span<unsigned char, TiffHeaderSize> header, std::size_t firstDirectory) {
    putLe16(header.data(), LittleEndianMark);
    putLe16(header.data() + 2, TiffMagic);
    putLe32(header.data() + 4, static_cast<std::uint32_t>(firstDirectory));
}

} // namespace tvmeta
