#include "writers/directory_builder.h"

#include <algorithm>
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
                                               std::size_t size, DirectoryBuilder* directory) {
    requireRoom(fieldCount_ < room().size());
    Field& field = room()[fieldCount_++];
    field = {tag, type, static_cast<std::uint32_t>(count), size, {}, {}, directory, 0};
    ++entries_;
    valueBytes_ += isInline(field) ? 0 : form_.aligned(size);
    return field;
}

ByteWriter DirectoryBuilder::addNumbers(std::uint16_t tag, std::uint16_t type, std::size_t count, std::size_t size) {
    requireRoom(size <= MaxNumbersSize);
    return ByteWriter(add(tag, type, count, size).numbers);
}

void DirectoryBuilder::addNumber(std::uint16_t tag, std::uint16_t type, std::size_t size, std::uint64_t value) {
    addNumbers(tag, type, 1, size).putNumber(value, size);
}

void DirectoryBuilder::addShorts(std::uint16_t tag, std::size_t count, std::uint16_t value) {
    ByteWriter numbers = addNumbers(tag, tiff_type::Short, count, 2 * count);
    for (std::size_t i = 0; i < count; ++i) {
        numbers.put16(value);
    }
}

void DirectoryBuilder::addRationals(std::uint16_t tag, std::span<const std::int32_t> words) {
    ByteWriter numbers = addNumbers(tag, tiff_type::Rational, words.size() / 2, 4 * words.size());
    for (const std::int32_t word : words) {
        numbers.put32(static_cast<std::uint32_t>(word));
    }
}

void DirectoryBuilder::addText(std::uint16_t tag, std::span<const char> text, std::size_t count) {
    const auto* const bytes = reinterpret_cast<const unsigned char*>(text.data());
    if (count > 0) {
        addBytes(tag, tiff_type::Ascii, count, {bytes, text.size()}, count);
    }
}

void DirectoryBuilder::addBytes(std::uint16_t tag, std::uint16_t type, std::size_t count,
                                std::span<const unsigned char> bytes, std::size_t size) {
    add(tag, type, count, size).borrowed = bytes.first(std::min(bytes.size(), size));
}

void DirectoryBuilder::addBlock(std::uint16_t tag, std::uint16_t type, std::span<const unsigned char> block) {
    if (!block.empty()) {
        addBytes(tag, type, block.size(), block, block.size());
    }
}

void DirectoryBuilder::addDirectory(std::uint16_t tag, DirectoryBuilder& directory) {
    if (directory.entries() > 0) {
        add(tag, form_.offsetType(), 1, directory.size(), &directory);
    }
}

bool DirectoryBuilder::has(std::uint16_t tag) const {
    const std::span<const Field> all = room_.data() != nullptr ? std::span<const Field>(room_) : own_;
    return std::ranges::count(all.first(fieldCount_), tag, &Field::tag) > 0;
}

void DirectoryBuilder::writeValue(const Field& field, std::span<unsigned char> block, std::size_t position) const {
    const std::size_t offset = std::min(field.offset, block.size());
    const std::span<unsigned char> room = block.subspan(offset, std::min(field.size, block.size() - offset));
    if (field.directory != nullptr) {
        field.directory->write(room, position + field.offset);
        return;
    }
    ByteWriter value(room);
    value.put(field.bytes());
    value.putZeros(field.size - field.bytes().size());
}

void DirectoryBuilder::writeEntries(std::span<unsigned char> block, std::size_t position) {
    ByteWriter writer(block.first(std::min(headSize(), block.size())));
    writer.putNumber(entries_, form_.countSize());
    const std::size_t written = std::min(fieldCount_, entries_);
    for (const Field& field : fields().first(written)) {
        writer.put16(field.tag);
        writer.put16(field.type);
        writer.putNumber(field.count, form_.offsetSize());
        if (isInline(field)) {
            writer.put(field.bytes());
            writer.skip(form_.offsetSize() - field.bytes().size());
        } else {
            writer.putNumber(position + field.offset, form_.offsetSize());
        }
    }
    writer.skip((entries_ - written) * form_.entrySize());
    writer.putNumber(0, form_.offsetSize()); // no further directory
}

void DirectoryBuilder::write(std::span<unsigned char> block, std::size_t position) {
    std::size_t offset = headSize();
    for (Field& field : fields()) {
        field.offset = offset;
        if (!isInline(field)) {
            writeValue(field, block, position);
            offset += form_.aligned(field.size);
        }
    }
    std::ranges::sort(fields(), {}, &Field::tag);
    writeEntries(block, position);
}

void writeTiffHeader(std::span<unsigned char> header, std::size_t firstDirectory, DirectoryForm form) {
    ByteWriter writer(header);
    writer.put16(LittleEndianMark);
    writer.put16(form.isBig ? BigTiffMagic : TiffMagic);
    if (form.isBig) {
        writer.put16(static_cast<std::uint16_t>(form.offsetSize()));
        writer.put16(0);
    }
    writer.putNumber(firstDirectory, form.offsetSize());
}

} // namespace tvmeta
