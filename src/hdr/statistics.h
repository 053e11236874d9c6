// HDR: luminance statistics of an image with shared exponents. Each row is four planes of bytes: blue, green and red
// mantissas, then exponents.
#pragma once

#include "hdr/block_kernels.h"

#include <cstddef>
#include <cstdint>

namespace tvmeta::hdr {

inline constexpr std::size_t Planes = 4;

class Statistics {
  public:
    explicit Statistics(const BlockKernels& kernels) : kernels_(kernels) {}

    // `next` is the row after this one, null after the last.
    void addRow(const unsigned char* row, std::size_t width, const unsigned char* next);

    // Minimum, maximum and mean.
    void report(float results[3]) const;
    double sum() const { return sum_; }

  private:
    void addPixels(const Pixels& pixels);
    void addBlock(const Pixels& block);
    bool isExact(const ExponentRange& range) const;
    void updateExtremes(const Pixels& block, const unsigned char* luminance, const ExponentRange& range);

    const BlockKernels& kernels_;
    float minimum_ = 99999997952.0F; // the float nearest to 10^11
    float maximum_ = 0.0F;
    double sum_ = 0.0;
    std::uint64_t count_ = 0;
};

} // namespace tvmeta::hdr
