// Results recorded on x86-64 Linux, which every platform must give. After a change that is meant to differ,
// TVMETA_RECORD=1 in the environment of a test records them anew in testing/golden.
#pragma once

#include "testing/files.h"

#include <bit>
#include <cinttypes>
#include <cstdlib>
#include <gtest/gtest.h>
#include <map>
#include <random>

namespace test {

// The same numbers on every platform: the state is taken modulo 2^64.
class Random {
  public:
    std::uint32_t next() { return static_cast<std::uint32_t>(engine_() >> 32); }
    std::uint32_t below(std::uint32_t limit) { return next() % limit; }
    template <typename Value, std::size_t Size>
    const Value& oneOf(const Value (&values)[Size]) {
        return values[below(Size)];
    }

  private:
    std::linear_congruential_engine<std::uint64_t, 6364136223846793005U, 1442695040888963407U, 0> engine_;
};

// FNV-1a with 64 bits.
inline std::uint64_t hashOf(std::string_view bytes) {
    std::uint64_t hash = 0xCBF29CE484222325U;
    for (const char byte : bytes) {
        hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001B3U;
    }
    return hash;
}
template <typename Record>
std::uint64_t hashOfRecord(const Record& record) {
    return hashOf({reinterpret_cast<const char*>(&record), sizeof record});
}

// A hash of many results, one after the other: like FNV-1a, but over words of eight bytes, the last filled up with
// zeros, because tests without optimisation add hundreds of megabytes.
class Digest {
  public:
    void add(std::string_view bytes) {
        for (; !bytes.empty(); bytes.remove_prefix(std::min(bytes.size(), sizeof(std::uint64_t)))) {
            std::uint64_t word = 0;
            bytes.copy(reinterpret_cast<char*>(&word), sizeof word);
            value_ = (value_ ^ word) * 0x100000001B3U;
            value_ ^= value_ >> 32;
        }
    }
    template <typename Record>
    void addRecord(const Record& record) {
        add({reinterpret_cast<const char*>(&record), sizeof record});
    }
    std::uint64_t value() const { return value_; }

  private:
    std::uint64_t value_ = 0xCBF29CE484222325U;
};

// Results of generated inputs. A line of their file is a group, the number of its first result, and results in
// hexadecimal: bit patterns of numbers, or hashes of texts, records and files.
class Results {
  public:
    void add(const std::string& group, std::uint64_t result) { groups_[group].push_back(result); }
    void addCode(const char* group, std::int32_t code) { add(group, std::uint64_t{static_cast<std::uint32_t>(code)}); }
    void addBits(const char* group, float value) { add(group, std::uint64_t{std::bit_cast<std::uint32_t>(value)}); }

    Bytes text() const {
        constexpr std::size_t PerLine = 8;
        Bytes text;
        for (const auto& [group, results] : groups_) {
            for (std::size_t i = 0; i < results.size(); ++i) {
                char digits[20];
                std::snprintf(digits, sizeof digits, " %" PRIx64, results[i]);
                text += i % PerLine == 0 ? (i == 0 ? "" : "\n") + group + ' ' + std::to_string(i) : "";
                text += digits;
            }
            text += '\n';
        }
        return text;
    }

    void compare(const char* file) const {
        const std::string path = TVMETA_GOLDEN "/" + std::string(file) + ".txt";
        if (std::getenv("TVMETA_RECORD") != nullptr) {
            writeFile(path, text());
        }
        EXPECT_EQ(text(), readFile(path)) << "if this is meant: TVMETA_RECORD=1";
    }

  private:
    std::map<Bytes, std::vector<std::uint64_t>> groups_;
};

// Adds the digest of all rounds so far after each of `perResult` rounds. A round is called with its number, from 1 on.
template <typename Round>
void addRounds(Results& results, const char* group, int rounds, int perResult, Round addRound) {
    Random random;
    Digest digest;
    for (int round = 1; round <= rounds; ++round) {
        addRound(round, random, digest);
        if (round % perResult == 0) {
            results.add(group, digest.value());
        }
    }
}

// The same, compared with a file of this name.
template <typename Round>
void compareRounds(const char* name, int rounds, int perResult, Round addRound) {
    Results results;
    addRounds(results, name, rounds, perResult, addRound);
    results.compare(name);
}

} // namespace test
