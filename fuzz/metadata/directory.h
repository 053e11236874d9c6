// Shared by the targets of the two directory parsers: a directory somewhere in a stream.
#pragma once

#include "support.h"

namespace fuzz {

using DirectoryParser = decltype(parse_exif_data);

// The record read from a position of a stream. Fields without an entry keep the fill byte.
inline ExifInfo parsedRecord(DirectoryParser& parse, std::FILE* stream, std::int32_t place, std::int32_t byteOrder,
                             std::int32_t tiffBase) {
    ExifInfo info;
    std::memset(&info, 0, sizeof info);
    std::fseek(stream, place, SEEK_SET);
    require(parse(stream, 0, byteOrder, tiffBase, &info) == 1, "the result is 1");
    return info;
}

inline void parseDirectory(DirectoryParser& parse, const std::uint8_t* data, std::size_t size) {
    constexpr std::int32_t LittleEndian = 0x4949;
    constexpr std::int32_t BigEndian = 0x4D4D;
    FuzzedDataProvider input(data, size);
    const std::int32_t byteOrder = input.ConsumeBool() ? LittleEndian : BigEndian;
    const std::int32_t place = input.ConsumeIntegral<std::uint16_t>();
    const auto tiffBase = input.ConsumeIntegral<std::int32_t>();
    Bytes bytes = input.ConsumeRemainingBytes<std::uint8_t>();

    const Stream stream = memoryFile().write(bytes).open();
    const ExifInfo info = parsedRecord(parse, stream.get(), place, byteOrder, tiffBase);
    require(info.dateTimeOriginal[sizeof info.dateTimeOriginal - 1] == '\0' &&
                info.gpsDateStamp[sizeof info.gpsDateStamp - 1] == '\0',
            "texts are terminated");

    // Unlike a file, a memory stream refuses positions past the end. The record must be the same.
    std::string copy(bytes.begin(), bytes.end());
    const Stream other = test::streamOf(copy);
    if (other && static_cast<std::size_t>(place) <= bytes.size()) {
        require(sameBytes(info, parsedRecord(parse, other.get(), place, byteOrder, tiffBase)),
                "file and memory streams give the same record");
    }
}

} // namespace fuzz
