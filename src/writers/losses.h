// Writers: what a result could not keep.
#pragma once

#include "tvmeta_photo.h"

#include <algorithm>
#include <cstdint>
#include <span>

namespace tvmeta {

// Stores as many losses as the caller has room for, and counts all.
class LossList {
  public:
    explicit LossList(std::span<tvmeta_Loss> room) : room_(room) {}

    void add(std::int32_t directory, std::int32_t tag, std::int32_t reason) {
        if (count_ < room_.size()) {
            room_[count_] = {directory, tag, reason};
        }
        ++count_;
    }

    void addBlock(std::int32_t block, std::int32_t reason, std::int32_t tag = 0) { add(-1 - block, tag, reason); }

    std::int32_t count() const { return static_cast<std::int32_t>(std::min<std::size_t>(count_, INT32_MAX)); }

  private:
    std::span<tvmeta_Loss> room_;
    std::size_t count_ = 0;
};

} // namespace tvmeta
