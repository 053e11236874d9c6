#include "photo/iptc_text.h"

#include "support/text_search.h"
#include "tvmeta_photo.h"

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
        const std::string_view text = trimmed(asText(found.value));
        if (!text.empty() && index-- == 0) {
            putText(writer, text);
            return true;
        }
    }
    return false;
}

} // namespace tvmeta

using namespace tvmeta;

std::int64_t tvmeta_list_datasets(const void* block, std::int64_t size, tvmeta_Dataset* datasets,
                                  std::int64_t capacity) noexcept {
    if (size < 0 || (block == nullptr && size > 0) || capacity < 0 || (datasets == nullptr && capacity > 0)) {
        return TVMETA_BAD_ARGUMENT;
    }
    const auto* const bytes = static_cast<const unsigned char*>(block);
    IptcReader reader({bytes, static_cast<std::size_t>(size)});
    std::int64_t count = 0;
    for (IptcDataset dataset; reader.next(dataset); ++count) {
        if (count < capacity) {
            datasets[count] = {dataset.record, dataset.number, dataset.value.data() - bytes,
                               static_cast<std::int64_t>(dataset.value.size())};
        }
    }
    return count;
}
