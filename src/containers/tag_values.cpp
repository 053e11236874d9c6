#include "containers/tag_values.h"

#include "containers/layout.h"
#include "metadata/byte_cursor.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace tvmeta {

namespace {

enum class Number { None, Unsigned, Signed, Fraction, SignedFraction };

struct FieldType {
    std::uint8_t size;
    Number number;
};

// By type code: TIFF 6.0 types 1 to 12, IFD (13), BigTIFF types 16 to 18, UTF-8 of EXIF 3.0 (129).
constexpr FieldType Types[] = {
    {0, Number::None},     {1, Number::Unsigned}, {1, Number::None},           {2, Number::Unsigned},
    {4, Number::Unsigned}, {8, Number::Fraction}, {1, Number::Signed},         {1, Number::Unsigned},
    {2, Number::Signed},   {4, Number::Signed},   {8, Number::SignedFraction}, {4, Number::None},
    {8, Number::None},     {4, Number::Unsigned}, {0, Number::None},           {0, Number::None},
    {8, Number::Unsigned}, {8, Number::Signed},   {8, Number::Unsigned},
};
constexpr std::uint16_t Utf8Type = 129;

FieldType typeOf(std::uint16_t type) {
    if (type == Utf8Type) {
        return {1, Number::None};
    }
    return type < std::size(Types) ? Types[type] : Types[0];
}

std::int64_t withSign(std::uint64_t value, std::size_t size) {
    const std::size_t unused = 64 - 8 * size;
    return static_cast<std::int64_t>(value << unused) >> unused;
}

// The bytes of one item of up to eight bytes, as a cursor's contents.
std::optional<std::array<unsigned char, 8>> readItem(SourceReader& reader, const tvmeta_Tag& tag, std::uint64_t index) {
    const std::size_t size = typeOf(tag.type).size;
    std::array<unsigned char, 8> item{};
    if (tag.position < 0 || index >= tag.count || size == 0) {
        return std::nullopt;
    }
    const std::int64_t position = tag.position + static_cast<std::int64_t>(index * size); // inside of the structure
    return readAt(reader, position, std::span(item).first(size)) ? std::optional(item) : std::nullopt;
}

ByteOrder orderOf(const tvmeta_Tag& tag) {
    return tag.isBigEndian != 0 ? ByteOrder::Big : ByteOrder::Little;
}

} // namespace

std::uint64_t itemSize(std::uint16_t type) {
    return typeOf(type).size;
}

std::optional<std::int64_t> readInteger(SourceReader& reader, const tvmeta_Tag& tag, std::uint64_t index) {
    const FieldType type = typeOf(tag.type);
    if (type.number != Number::Unsigned && type.number != Number::Signed) {
        return std::nullopt;
    }
    const auto item = readItem(reader, tag, index);
    if (!item) {
        return std::nullopt;
    }
    const std::uint64_t value = ByteCursor(*item, orderOf(tag)).number(type.size);
    if (type.number == Number::Signed) {
        return withSign(value, type.size);
    }
    return value <= INT64_MAX ? std::optional(static_cast<std::int64_t>(value)) : std::nullopt;
}

std::optional<tvmeta_Rational> readFraction(SourceReader& reader, const tvmeta_Tag& tag, std::uint64_t index) {
    const Number number = typeOf(tag.type).number;
    if (number != Number::Fraction && number != Number::SignedFraction) {
        const std::optional<std::int64_t> integer = readInteger(reader, tag, index);
        return integer ? std::optional(tvmeta_Rational{*integer, 1}) : std::nullopt;
    }
    const auto item = readItem(reader, tag, index);
    if (!item) {
        return std::nullopt;
    }
    ByteCursor cursor(*item, orderOf(tag));
    const std::uint32_t numerator = cursor.get32();
    const std::uint32_t denominator = cursor.get32();
    if (number == Number::SignedFraction) {
        return tvmeta_Rational{withSign(numerator, 4), withSign(denominator, 4)};
    }
    return tvmeta_Rational{numerator, denominator};
}

std::size_t readBytes(SourceReader& reader, const tvmeta_Tag& tag, std::span<char> bytes) {
    const std::uint64_t size = tag.count * itemSize(tag.type); // inside of the structure
    if (tag.position < 0 || !reader.seek(tag.position)) {
        return 0;
    }
    const auto room = static_cast<std::size_t>(std::min<std::uint64_t>(size, bytes.size()));
    return reader.read({reinterpret_cast<unsigned char*>(bytes.data()), room});
}

} // namespace tvmeta
