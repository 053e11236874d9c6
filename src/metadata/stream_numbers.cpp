// The exported readers of single numbers from a stream. They read nothing ahead.
#include "metadata/byte_order.h"
#include "tvmeta.h"

using namespace tvmeta;

namespace {

int readByte(FILE* stream) {
    return stream != nullptr ? getc(stream) : EOF;
}

} // namespace

std::uint16_t fgetmi2(FILE* stream, std::int32_t byteOrder) noexcept {
    const int first = readByte(stream);
    return combine16(byteOrderOf(byteOrder), first, readByte(stream));
}

std::int32_t fgetmi4(FILE* stream, std::int32_t byteOrder) noexcept {
    int bytes[4];
    for (int& byte : bytes) {
        byte = readByte(stream);
    }
    return combine32(byteOrderOf(byteOrder), bytes[0], bytes[1], bytes[2], bytes[3]);
}

std::uint16_t fgetm2(FILE* stream) noexcept {
    return fgetmi2(stream, BigEndianMark);
}

std::int32_t fgetm4(FILE* stream) noexcept {
    return fgetmi4(stream, BigEndianMark);
}
