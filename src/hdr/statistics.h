// HDR: luminance statistics of a buffer in shared-exponent form.
//
// By definition the values are added one by one in row order, in double precision. The class has the same bits without
// doing so for most of them.
#pragma once

#include "hdr/block_kernels.h"

#include <cstddef>
#include <cstdint>

namespace tvmeta::hdr {

inline constexpr std::size_t Exponents = 256;
inline constexpr int ExponentBias = 128;
inline constexpr std::size_t Planes = 4;

class Statistics {
  public:
    // `scale` holds 2^(e - 128) for each exponent e.
    explicit Statistics(const float* scale, const BlockKernels& kernels = blockKernels()) noexcept
        : scale_(scale), kernels_(kernels) {}

    // `next` is the row that follows, null if none does.
    void addRow(const unsigned char* row, std::size_t width, const unsigned char* next) noexcept;
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
    bool keepsUnit(int unit, const ExponentRange& range) const noexcept;
    void addRounded(const unsigned char* luminance, const unsigned char* exponents, int unit, int highest) noexcept;
    void addInOrder(const unsigned char* luminance, const unsigned char* exponents) noexcept;

    const float* scale_;
    const BlockKernels& kernels_;
    float minimum_ = 99999997952.0F;
    float maximum_ = 0.0F;
    double sum_ = 0.0;
    std::uint64_t count_ = 0;
};

} // namespace tvmeta::hdr
