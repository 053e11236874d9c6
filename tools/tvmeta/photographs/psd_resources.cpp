#include "photographs/psd_resources.h"

#include "system/system.h"

#include <tvmeta.h>

namespace {

uint32_t readSize(std::FILE* file) {
    return static_cast<uint32_t>(fgetm4(file));
}

} // namespace

// The file contains the header, the colour table and the resources; sizes precede the last two.
PsdHeader readPsdHeader(std::FILE* file) {
    constexpr int64_t SizePlace = 14; // after the signature, the version, a reserve and the number of channels
    constexpr int64_t HeaderSize = 26;
    PsdHeader header;
    seekTo(file, SizePlace);
    header.height = fgetm4(file);
    header.width = fgetm4(file);
    seekTo(file, HeaderSize);
    seekBy(file, readSize(file));
    header.resources.length = readSize(file);
    header.resources.offset = positionOf(file);
    return header;
}

// A resource is a signature, a number, a name with its length, and data with their length; names and data are padded to
// even lengths. Past the end of the file there is no signature.
Region findResource(std::FILE* file, const Region& resources, PsdResource number) {
    constexpr int32_t Signature = 0x3842494D; // 8BIM
    const int64_t end = resources.offset + resources.length;
    seekTo(file, resources.offset);
    while (positionOf(file) < end && fgetm4(file) == Signature) {
        const int32_t found = fgetm2(file) & 0xFFFF;
        const int nameLength = std::fgetc(file);
        seekBy(file, nameLength | 1);
        const int64_t length = readSize(file);
        if (found == static_cast<int32_t>(number)) {
            return {positionOf(file), length};
        }
        seekBy(file, length + (length & 1));
    }
    return {};
}
