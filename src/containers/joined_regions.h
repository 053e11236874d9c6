// Containers: regions of a source that are read as one, such as the segments of a block that is too large for one.
#pragma once

#include "containers/layout.h"

#include <algorithm>
#include <cstdint>
#include <span>

namespace tvmeta {

class JoinedRegions {
  public:
    explicit JoinedRegions(std::span<const Region> regions) : regions_(regions) {}

    std::int64_t size() const {
        std::int64_t sum = 0;
        for (const Region& region : regions_) {
            sum += region.size;
        }
        return sum;
    }

    // Calls `take` with each region of the source that the bytes from `offset` on are in.
    template <typename Take>
    void slice(std::int64_t offset, std::int64_t size, Take take) const {
        for (const Region& region : regions_) {
            const std::int64_t begin = std::min(offset, region.size);
            const std::int64_t count = std::min(size, region.size - begin);
            if (count > 0) {
                take(Region{region.position + begin, count});
            }
            offset -= begin;
            size -= count;
        }
    }

    // Reads exactly the size of the block.
    bool read(SourceReader& reader, std::int64_t offset, std::span<unsigned char> block) const {
        bool complete = true;
        std::size_t done = 0;
        slice(offset, static_cast<std::int64_t>(block.size()), [&](const Region& region) {
            const auto size = static_cast<std::size_t>(region.size);
            complete = complete && readAt(reader, region.position, block.subspan(done, size));
            done += size;
        });
        return complete && done == block.size();
    }

  private:
    std::span<const Region> regions_;
};

} // namespace tvmeta
