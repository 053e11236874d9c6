#include "photo/iptc_text.h"

namespace tvmeta {

bool IptcReader::next(IptcDataset& dataset) {
    constexpr std::uint16_t Extended = 0x8000; // the number of bytes of the size that follows
    if (cursor_.get8() != iptc_dataset::Marker) {
        return false;
    }
    dataset.record = cursor_.get8();
    dataset.number = cursor_.get8();
    std::uint64_t size = cursor_.get16();
    if ((size & Extended) != 0) {
        size = cursor_.number(size & 7);
    }
    dataset.value = cursor_.take(size);
    return static_cast<bool>(cursor_);
}

bool findDataset(std::span<const unsigned char> block, std::uint8_t dataset, TextWriter& writer, int index) {
    IptcReader reader(block);
    for (IptcDataset found; reader.next(found);) {
        if (found.record != iptc_dataset::ApplicationRecord || found.number != dataset) {
            continue;
        }
        const std::string_view text = trimmed({reinterpret_cast<const char*>(found.value.data()), found.value.size()});
        if (!text.empty() && index-- == 0) {
            putText(writer, text);
            return true;
        }
    }
    return false;
}

} // namespace tvmeta
