// The exported readers of single numbers from a stream. They read nothing ahead.
#include "metadata/byte_order.h"
#include "tvmeta.h"

using namespace tvmeta;

namespace {

int readByte(FILE* stream) {
    return stream != nullptr ? getc(stream) : EOF;
}

std::uint16_t read16(FILE* stream, ByteOrder order) {
    const int b0 = readByte(stream);
    const int b1 = readByte(stream);
    return combine16(order, b0, b1);
}

std::int32_t read32(FILE* stream, ByteOrder order) {
    const int b0 = readByte(stream);
    const int b1 = readByte(stream);
    const int b2 = readByte(stream);
    const int b3 = readByte(stream);
    return combine32(order, b0, b1, b2, b3);
}

} // namespace

std::uint16_t fgetmi2(FILE* stream, std::int32_t byteOrder) noexcept {
    return read16(stream, byteOrderOf(byteOrder));
}

std::int32_t fgetmi4(FILE* stream, std::int32_t byteOrder) noexcept {
    return read32(stream, byteOrderOf(byteOrder));
}

std::uint16_t fgetm2(FILE* stream) noexcept {
    return read16(stream, ByteOrder::Big);
}

std::int32_t fgetm4(FILE* stream) noexcept {
    return read32(stream, ByteOrder::Big);
}
