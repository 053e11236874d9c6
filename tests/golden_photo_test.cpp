// Results of generated inputs of the functions of tvmeta_photo.h: random photographs and texts, kept tags, results of
// damaged photographs, keywords, brackets. Those of damaged photographs are in photo_hostile_test.
#include "testing/generated.h"
#include "testing/golden.h"
#include "testing/photo_sources.h"
#include "testing/photographs_table.h"
#include "testing/results.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <gtest/gtest.h>
#include <utility>

using namespace test;

namespace {

constexpr float Settings[SETTINGS_SLOTS] = {5, 3, 70};

void addSaved(Digest& digest, const Saved& saved) {
    digest.addRecord(saved.status);
    std::ranges::for_each(saved.losses, [&](const tvmeta_Loss& loss) { digest.addRecord(loss); });
    digest.add(saved.file);
}

// Every tag of every directory, 512 in a photograph: as two bytes, then with types and counts of all kinds.
TEST(Golden, KeptTags) {
    constexpr std::array Directories = {&PhotoParts::image, &PhotoParts::exif, &PhotoParts::gps,
                                        &PhotoParts::interoperability};
    Results results;
    Random random;
    for (std::size_t round = 0; round < 2 * Directories.size(); ++round) {
        const std::size_t directory = round / 2;
        const bool isRandom = round % 2 != 0;
        Digest digest;
        PhotoParts parts;
        for (unsigned tag = 0; tag <= 0xFFFF; ++tag) {
            constexpr unsigned Parents[] = {256, 257, 330, 700, 33723, 34377, 34665, 34853, 40965};
            const std::uint32_t type = isRandom ? random.below(20) : 1;
            const std::uint32_t count = isRandom ? random.below(type == 2 ? 7 : 3) : 2;
            if (std::ranges::find(Parents, tag) == std::end(Parents)) {
                (parts.*Directories[directory]).push_back({tag, type, count, Bytes("1\1\2\0\4\3\2\1", 8)});
            }
            const bool isLittle = tag % 1024 < 512;
            if (tag % 512 == 511) {
                addSaved(digest, save(photoOf(std::exchange(parts, {}), isLittle)));
            }
            if (tag % 4096 == 4095) {
                results.add("directory " + std::to_string(directory), digest.value());
            }
        }
    }
    results.compare("kept");
}

TEST(Golden, ResultsOfDamagedPhotographs) {
    const std::array<const char*, 2> keywords = {"lake", "s\xC3\xA9"};
    Results results;
    Random random;
    for (const Photograph& photo : photographs()) {
        Digest digest;
        for (int round = 0; round < 60; ++round) {
            Bytes changed = photo.bytes;
            const std::uint32_t at = random.below(static_cast<std::uint32_t>(changed.size()));
            changed.replace(at, static_cast<std::size_t>(round % 2), 1,
                            static_cast<char>(random.below(3) == 0 ? random.next() : at % 3 - 1));
            addSaved(digest, save(changed, [&](tvmeta_Result& result) {
                         result.keywords = keywords.data();
                         result.keywordCount = round % 3;
                         result.method = round % 4;
                         result.settings = Settings;
                         result.bitsCode = round % 7 == 0 ? 3216 : 8;
                         result.width = result.bitsCode == 8 ? 2 : 1;
                     }));
        }
        results.add(photo.name, digest.value());
    }
    results.compare("damaged");
}

Bytes photoWith(const Bytes& packet, const Bytes& block) {
    const auto entry = [](unsigned tag, const Bytes& bytes) {
        return Tiff::Entry{tag, 7, static_cast<std::uint32_t>(bytes.size()), bytes};
    };
    return photoOf({{entry(700, packet), entry(33723, block)}, {}, {}, {}});
}

// Of the photograph, or of the caller.
TEST(Golden, Keywords) {
    const std::array<const char*, 3> keywords = {"lake", "fog", "s\xC3\xA9"};
    compareRounds("keywords", 4000, 100, [&](int round, Random& random, Digest& digest) {
        const Bytes block = randomBlock(random), packet = randomPacket(random, round % 3 != 0);
        const Bytes photo = round % 2 == 0 ? photoWith(packet, block) : "";
        addSaved(digest, save(photo, [&](tvmeta_Result& result) {
                     result.keywords = keywords.data();
                     result.keywordCount = round % 4;
                     result.iptc = photo.empty() ? block.data() : nullptr;
                     result.iptcSize = photo.empty() ? std::ssize(block) : 0;
                     result.xmp = photo.empty() ? packet.data() : nullptr;
                     result.xmpSize = photo.empty() ? std::ssize(packet) : 0;
                     result.method = round % 9 == 0 ? METHOD_FUSION_INTENSIVE : METHOD_NONE;
                     result.settings = Settings;
                 }));
    });
}

// Numbers that are calculated are rounded: their last bit differs between platforms.
TEST(Golden, Photographs) {
    compareRounds("photographs", 4000, 100, [&](int, Random& random, Digest& digest) {
        const Bytes photo = randomPhoto(random);
        auto [status, record] = readPhotoOf(photo);
        MetadataBuf metadata{};
        GpsBuf gps{};
        tvmeta_Shot shot{};
        shot.recordSize = sizeof shot;
        digest.addRecord(std::array<std::int64_t, 3>{status, tvmeta_writer_records(&record, &metadata, &gps),
                                                     tvmeta_shot(&record, nullptr, nullptr, &shot)});
        for (double* const number : {&record.latitude, &record.longitude, &record.altitude}) {
            digest.addRecord(std::int64_t{std::llround(std::exchange(*number, 0.0) * 1000)});
        }
        digest.addRecord(record);
        digest.addRecord(metadata);
        digest.addRecord(gps);
        digest.addRecord(shot);
        digest.add(buildExif(photo));
    });
}

// The first keywords, or the title, of a photograph.
void addTexts(Digest& digest, const Bytes& packet, const Bytes& block, std::int32_t text) {
    const Bytes photo = photoWith(packet, block);
    const tvmeta_Source source = memorySource(photo);
    for (std::int32_t index = 0; index < 3; ++index) {
        std::array<char, 20> buffer{};
        digest.addRecord(tvmeta_read_text(&source, nullptr, text, index, buffer.data(), std::ssize(buffer)));
        digest.addRecord(buffer);
    }
}

TEST(Golden, Texts) {
    compareRounds("texts", 20000, 500, [&](int round, Random& random, Digest& digest) {
        const Bytes block = randomBlock(random);
        addTexts(digest, randomPacket(random, round % 3 != 0), block, TVMETA_TEXT_KEYWORD);
        addTexts(digest, randomTitle(random), block, TVMETA_TEXT_TITLE);
    });
}

TEST(Golden, Settings) {
    compareRounds("settings", 20000, 500, [&](int round, Random& random, Digest& digest) {
        static constexpr std::int32_t Methods[] = {1, 2, 3, 10, 11, 15};
        const std::int32_t method = random.oneOf(Methods);
        const Bytes text = randomSettings(random, method);
        char lens[64] = {};
        SettingsValues settings = {};
        const std::int32_t request = round % 4 == 0 ? MODE_LENS : round % 4 == 1 ? METHOD_DETECT : method;
        digest.addRecord(get_settings_from_xmp(request, size32(text) + 1, text.c_str(), lens, settings));
        digest.addRecord(std::bit_cast<std::array<std::uint32_t, SETTINGS_SLOTS>>(settings));
        digest.add(lens);
    });
}

// Rounded: logarithms differ in their last bit between platforms.
void addBrackets(Digest& digest, const Brackets& found) {
    for (const tvmeta_BracketMember& member : found.members) {
        digest.addRecord(
            std::array{member.set, member.place, member.leader, std::int64_t{std::llround(member.offset * 1000)}});
    }
    for (const tvmeta_BracketSet& set : found.sets) {
        digest.addRecord(std::array{set.confidence, set.evidence});
        digest.addRecord(std::array{set.shots, set.expectedShots, std::int64_t{std::llround(set.longestPause * 1000)}});
    }
}

TEST(Golden, Brackets) {
    compareRounds("brackets", 32000, 400, [&](int round, Random& random, Digest& digest) {
        static constexpr double Gaps[] = {-1, 0, 0.25, 4};
        const Shoot shoot = round % 2 == 0 ? randomFiles(random) : randomShoot(random);
        addBrackets(digest, find(shoot.shots, {round % 10 == 0 ? 3 : 0, round % 11 == 0 ? random.oneOf(Gaps) : -1}));
    });
}

} // namespace
