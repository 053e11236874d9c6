#include "hdr/block_kernels.h"

#include <algorithm>
#include <bit>
#include <limits>
#include <numeric>

namespace tvmeta::hdr {

namespace {

ExponentRange exponentRange(const Pixels& block) {
    unsigned char counts[BlockStep] = {};
    for (std::size_t i = 0; i < block.size; i += BlockStep) {
        for (std::size_t lane = 0; lane < BlockStep; ++lane) {
            counts[lane] = static_cast<unsigned char>(counts[lane] + (block.exponent[i + lane] != 0 ? 1 : 0));
        }
    }
    unsigned char lowest = 0xFF; // less one, so that an exponent of 0 becomes the highest
    unsigned char highest = 0;
    for (std::size_t i = 0; i < block.size; ++i) {
        lowest = std::min(lowest, static_cast<unsigned char>(block.exponent[i] - 1));
        highest = std::max(highest, block.exponent[i]);
    }
    return {lowest + 1U, highest, std::accumulate(counts, counts + BlockStep, 0U)};
}

void luminances(const Pixels& block, unsigned char* __restrict out) {
    for (std::size_t i = 0; i < block.size; ++i) {
        const unsigned char value = luminance(block.blue[i], block.green[i], block.red[i]);
        out[i] = block.exponent[i] != 0 ? value : static_cast<unsigned char>(0);
    }
}

// 2^power of 0 and more without a table: the power goes into the exponent field of a float.
float powerOfTwo(unsigned char power) {
    constexpr auto One = std::bit_cast<std::uint32_t>(1.0F);
    constexpr int FractionBits = std::numeric_limits<float>::digits - 1;
    return std::bit_cast<float>(One + (static_cast<std::uint32_t>(power) << FractionBits));
}

std::uint32_t sum(const Pixels& block, const unsigned char* luminance, const ExponentRange& range) {
    constexpr std::size_t Lanes = 16;
    static_assert(LuminanceBits + MaxSpan + (BlockBits - 4) <= std::numeric_limits<float>::digits);
    const auto lowest = static_cast<unsigned char>(range.lowest);
    unsigned char powers[MaxBlock]; // 0 for pixels that do not count, which have luminance 0
    for (std::size_t i = 0; i < block.size; ++i) {
        powers[i] = static_cast<unsigned char>(std::max(block.exponent[i], lowest) - lowest);
    }
    float sums[Lanes] = {};
    for (std::size_t i = 0; i < block.size; i += Lanes) {
        for (std::size_t lane = 0; lane < Lanes; ++lane) {
            sums[lane] += static_cast<float>(luminance[i + lane]) * powerOfTwo(powers[i + lane]);
        }
    }
    return static_cast<std::uint32_t>(std::accumulate(sums, sums + Lanes, 0.0));
}

} // namespace

constexpr BlockKernels PortableKernels = {exponentRange, luminances, sum};

const BlockKernels& fastestKernels() {
#ifdef TVMETA_X86_64
    if (hasAvx2()) {
        return Avx2Kernels;
    }
#endif
    return PortableKernels;
}

} // namespace tvmeta::hdr
