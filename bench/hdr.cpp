// Statistics of HDR buffers.
#include "support/hdr_buffers.h"
#include "support/jobs.h"
#include "testing/hdr_definition.h"

#include <tvmeta.h>

#include <array>
#include <bit>
#include <memory>

// Memory bandwidth must limit the floor, so it uses AVX2 even if the rest is compiled without.
#if defined(__x86_64__) && defined(__linux__)
#define BENCH_WIDEST_VECTORS __attribute__((target_clones("avx2", "default")))
#else
#define BENCH_WIDEST_VECTORS
#endif

namespace bench {

namespace {

struct Distribution {
    const char* job;
    HdrBuffer (*make)();
};

HdrBuffer constantBuffer() {
    return HdrBuffer(HdrWidth * HdrHeight * 4, 128);
}

HdrBuffer zeroBuffer() {
    return HdrBuffer(HdrWidth * HdrHeight * 4, 0);
}

template <FillExponents Fill>
HdrBuffer bufferWith() {
    return hdrBuffer(Fill);
}

// The first rows are like photographs: light and shade in a row, dark noise. The others measure unusual data.
constexpr Distribution Distributions[] = {
    {"HDR 24 MP, wide span in a row", bufferWith<fillWithWindows>},
    {"HDR 24 MP, noise in the dark", bufferWith<fillWithDarkNoise>},
    {"HDR 24 MP, exponents 110 to 140, smooth", bufferWith<fillSmoothly>},
    {"HDR 24 MP, exponents 110 to 140", bufferWith<fillRange<110, 140>>},
    {"HDR 24 MP, exponents 90 to 160", bufferWith<fillRange<90, 160>>},
    {"HDR 24 MP, exponents 1 to 255", bufferWith<fillRange<1, 255>>},
    {"HDR 24 MP, any bytes", bufferWith<leaveAny>},
    {"HDR 24 MP, one value", constantBuffer},
    {"HDR 24 MP, no pixel", zeroBuffer},
};

// Bit for bit, so that NaN compares too.
using Bits = std::array<std::uint32_t, 3>;

Bits measureByTvmeta(const HdrBuffer& buffer) {
    float results[3] = {};
    hdrMinMax(static_cast<std::int32_t>(HdrWidth), static_cast<std::int32_t>(HdrHeight), buffer.data(), results);
    return std::bit_cast<Bits>(results);
}

Bits measureByPeer(const HdrBuffer& buffer) {
    return std::bit_cast<Bits>(test::hdrByDefinition(HdrWidth, HdrHeight, buffer.data()).results);
}

// The floor: reads every byte once.
BENCH_WIDEST_VECTORS std::uint64_t sumWords(const unsigned char* bytes, std::size_t size) {
    constexpr std::size_t Lanes = 32; // enough for several loads in flight
    std::uint64_t sums[Lanes] = {};
    for (std::size_t i = 0; i < size; i += sizeof sums) {
        std::uint64_t words[Lanes];
        std::memcpy(words, bytes + i, sizeof words);
        for (std::size_t lane = 0; lane < Lanes; ++lane) {
            sums[lane] += words[lane];
        }
    }
    std::uint64_t total = 0;
    for (const std::uint64_t sum : sums) {
        total += sum;
    }
    return total;
}
static_assert(HdrWidth * HdrHeight * 4 % 256 == 0, "whole groups of words");

bool isSum(std::uint64_t total, const HdrBuffer& buffer) {
    for (std::size_t i = 0; i < buffer.size(); i += sizeof total) {
        std::uint64_t word = 0;
        std::memcpy(&word, &buffer[i], sizeof word);
        total -= word;
    }
    return total == 0;
}

void addContenders(Contenders& contenders, const Distribution& distribution) {
    const auto buffer = std::make_shared<const HdrBuffer>(distribution.make());
    const Bits expected = measureByPeer(*buffer);
    const auto isRight = [&](const Bits& bits) { return bits == expected; };
    contenders.add(
        "tvmeta", [buffer] { return measureByTvmeta(*buffer); }, isRight);
    contenders.add(
        "as written", [buffer] { return measureByPeer(*buffer); }, isRight);
    contenders.add(
        "floor", [buffer] { return sumWords(buffer->data(), buffer->size()); },
        [&](std::uint64_t total) { return isSum(total, *buffer); });
}

} // namespace

void addHdrJobs(Jobs& jobs) {
    for (const Distribution& distribution : Distributions) {
        jobs.push_back(
            {distribution.job, [distribution](Contenders& contenders) { addContenders(contenders, distribution); }});
    }
}

} // namespace bench
