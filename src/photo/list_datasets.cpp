// Lists the datasets of an IPTC block.
#include "photo/iptc_text.h"
#include "tvmeta_photo.h"

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
