// HDR: luminance statistics of a buffer in shared-exponent form.
//
// By definition the values are added one by one in row order, in double precision. Whole blocks are added at once where
// no rounding can happen in any order, and passed over where every value would be rounded away: the bits are those of
// the definition.
#pragma once

#include "hdr/block_kernels.h"

#include <cstddef>
#include <cstdint>

namespace tvmeta::hdr {

inline constexpr std::size_t Exponents = 256;
inline constexpr int ExponentBias = 128;

class Statistics {
  public:
    // `scale` holds 2^(e - 128) for each exponent e.
    explicit Statistics(const float* scale) noexcept : scale_(scale) {}

    void addRow(const unsigned char* row, std::size_t width) noexcept;
    // Minimum, maximum, mean.
    void store(float results[3]) const noexcept;
    double sum() const noexcept { return sum_; }

  private:
    void addPixels(const Block& rest, std::size_t pixels) noexcept;
    void addBlock(const Block& block) noexcept;
    void addPaddedBlock(const Block& rest, std::size_t pixels) noexcept;
    void updateMaximum(const unsigned char* luminance, const unsigned char* exponents,
                       const ExponentRange& range) noexcept;
    void updateMinimum(const unsigned char* luminance, const unsigned char* exponents,
                       const ExponentRange& range) noexcept;
    void addSum(const unsigned char* luminance, const unsigned char* exponents, const ExponentRange& range) noexcept;
    bool isExact(const ExponentRange& range, double largestSum) const noexcept;
    void addInOrder(const unsigned char* luminance, const unsigned char* exponents) noexcept;

    const float* scale_;
    float minimum_ = 99999997952.0F;
    float maximum_ = 0.0F;
    double sum_ = 0.0;
    std::uint64_t count_ = 0;
};

} // namespace tvmeta::hdr
