#include "photo/iptc_text.h"

#include "metadata/byte_cursor.h"

namespace tvmeta {

bool findDataset(std::span<const unsigned char> block, std::uint8_t dataset, TextWriter& writer, int index) {
    constexpr std::uint8_t Marker = 0x1C;
    constexpr std::uint8_t ApplicationRecord = 2;
    constexpr std::uint16_t Extended = 0x8000; // the number of bytes of the size that follows
    ByteCursor cursor(block);
    while (cursor.get8() == Marker && cursor) {
        const std::uint8_t record = cursor.get8();
        const std::uint8_t number = cursor.get8();
        std::uint64_t size = cursor.get16();
        if ((size & Extended) != 0) {
            size = cursor.number(size & 7);
        }
        const std::span<const unsigned char> value = cursor.take(size);
        if (cursor && record == ApplicationRecord && number == dataset && index-- == 0) {
            putText(writer, trimmed({reinterpret_cast<const char*>(value.data()), value.size()}));
            return true;
        }
    }
    return false;
}

} // namespace tvmeta
