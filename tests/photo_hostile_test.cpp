// The reader of any photograph on damaged and hostile files: no crash, documented results, bounded reads.
#include "testing/golden.h"
#include "testing/photo_sources.h"
#include "testing/photographs_table.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>

using namespace test;

namespace {

constexpr std::int32_t Statuses[] = {TVMETA_OK, TVMETA_BROKEN, TVMETA_UNKNOWN_KIND, TVMETA_REFUSED_KIND};

template <std::size_t Size>
bool isTerminated(const char (&text)[Size]) {
    return std::find(text, text + Size, '\0') != text + Size;
}

// What is wrong with the record of a file; empty if nothing is.
std::string faultOf(const tvmeta_Photo& photo, std::int32_t status, std::int64_t size) {
    if (std::ranges::find(Statuses, status) == std::end(Statuses)) {
        return "status " + std::to_string(status);
    }
    if ((status == TVMETA_BROKEN) != (photo.brokenAt >= 0) || (photo.derived & ~photo.present) != 0) {
        return "masks";
    }
    if (!isTerminated(photo.make) || !isTerminated(photo.model) || !isTerminated(photo.lens) ||
        !isTerminated(photo.serialNumber)) {
        return "texts";
    }
    for (const tvmeta_Block& block : photo.blocks) {
        if (block.size < 0 || block.size > size || block.position > size - block.size ||
            (block.size > 0) != (block.pieces > 0)) {
            return "blocks";
        }
    }
    return "";
}

// Reads the record, the tags, the blocks and one text of a file. Returns what is wrong.
std::string readFile(const Bytes& bytes, std::size_t number, Digest& digest) {
    CallerSource counted(bytes);
    const tvmeta_Source source = counted.source();
    tvmeta_Photo photo = emptyRecord();
    const std::int32_t status = tvmeta_read_photo(&source, &photo);
    if (std::string fault = faultOf(photo, status, std::ssize(bytes)); !fault.empty()) {
        return fault;
    }
    std::array<tvmeta_Tag, 100> tags;
    const std::int64_t count = tvmeta_list_tags(&source, &photo, tags.data(), std::ssize(tags));
    if (count < 0 ? count != status : status < TVMETA_BROKEN) {
        return "number of tags";
    }
    for (int block = 0; block < TVMETA_BLOCKS; ++block) {
        if (photo.blocks[block].size == 0) {
            const bool isAsked = static_cast<std::size_t>(block) == number % TVMETA_BLOCKS;
            digest.addRecord(isAsked ? tvmeta_read_block(&source, &photo, block, nullptr, 0) : 0);
            continue;
        }
        Bytes content(static_cast<std::size_t>(photo.blocks[block].size), '\0');
        const std::int64_t read = tvmeta_read_block(&source, &photo, block, content.data(), std::ssize(content));
        digest.add(content);
        const bool isCompressed = photo.blocks[block].isCompressed != 0;
        if (read != (isCompressed ? std::int64_t{TVMETA_REFUSED_KIND} : std::ssize(content))) {
            return "block " + std::to_string(block) + " gives " + std::to_string(read);
        }
    }
    char text[64];
    const auto wanted = static_cast<std::int32_t>(number % (TVMETA_TEXT_SOFTWARE + 1));
    const std::int64_t size = tvmeta_read_text(&source, &photo, wanted, 0, text, sizeof text);
    if (size < 0 && size != status) {
        return "text " + std::to_string(wanted);
    }
    for (std::int64_t i = 0; i < std::min(count, std::ssize(tags)); ++i) {
        digest.addRecord(tags[static_cast<std::size_t>(i)]);
    }
    digest.addRecord(photo);
    digest.addRecord(std::array{std::int64_t{status}, count, size});
    digest.add({text, static_cast<std::size_t>(std::clamp<std::int64_t>(size, 0, sizeof text))});
    // Each of the calls above reads the windows and the blocks of a small file a few times at most.
    const std::int64_t mostBytes = 16 * std::ssize(bytes) + 16384;
    return counted.isMisused() || counted.bytesRead() > mostBytes ? "reads" : "";
}

TEST(HostilePhoto, CutAtEveryByte) {
    Results results;
    for (const Photograph& photo : photographs()) {
        Digest digest;
        for (std::size_t size = 0; size <= photo.bytes.size(); ++size) {
            ASSERT_EQ(readFile(photo.bytes.substr(0, size), size, digest), "") << photo.name << " cut at " << size;
        }
        results.add(photo.name, digest.value());
    }
    results.compare("cut");
}

// The others differ in values alone.
constexpr std::string_view OneOfEach[] = {"complete.jpg", "little.tif",   "big.btf",        "big.dng",
                                          "small.psd",    "camera.cr3",   "camera.raf",     "camera.rw2",
                                          "film.hif",     "flipped.avif", "bare.jxl",       "parts.jxl",
                                          "text.png",     "brotli.jxl",   "signature.webp", "lossless.webp"};

// Any bytes may be a length, an offset or a count: 0, 1, the maximum, and beyond the file, in both byte orders.
TEST(HostilePhoto, EveryNumberChanged) {
    Results results;
    for (const Photograph& photo : photographs()) {
        if (std::ranges::find(OneOfEach, photo.name) == std::end(OneOfEach)) {
            continue;
        }
        const auto beyond = static_cast<std::uint32_t>(photo.bytes.size() + 100);
        const Bytes numbers[] = {Bytes(1, '\0'), Bytes(1, '\1'),   Bytes(1, '\xFF'), be16(0xFFFF),
                                 be32(0),        be32(1),          le32(1),          be32(beyond),
                                 le32(beyond),   be32(0x7FFFFFFF), be32(0xFFFFFFFF), be64(0x7FFFFFFFFFFFFFF0)};
        // A packet has no numbers.
        const std::size_t packet = photo.bytes.find(Packet);
        const std::size_t packetEnd = packet == Bytes::npos ? packet : packet + Packet.size();
        for (const Bytes& number : numbers) {
            Digest digest;
            for (std::size_t at = 0; at + number.size() <= photo.bytes.size(); ++at) {
                if (at >= packet && at < packetEnd) {
                    continue;
                }
                Bytes changed = photo.bytes;
                changed.replace(at, number.size(), number);
                ASSERT_EQ(readFile(changed, at, digest), "") << photo.name << " at " << at;
            }
            results.add(photo.name, digest.value());
        }
    }
    results.compare("numbers");
}

// Tables that refer to each other, or whose rows have no bytes: without bounds these take hours.
TEST(HostilePhoto, LargeTables) {
    const auto heic = [](const Bytes& boxes) { return box("ftyp", "heic" + zeros(8)) + versionBox("meta", 0, boxes); };
    const Bytes properties = box("ipco", repeated(box("irot", Bytes(1, '\1')), 16000, ""));
    const Bytes associations = be16(1) + "\xFF" + repeated(be16(15999), 255, "");
    const Bytes location = be16(4) + be16(0) + be16(0) + be16(65535); // no bytes for each of its extents
    const Bytes packet = versionBox("iinf", 0, be16(1) + itemInfo(4, "mime", Bytes("application/rdf+xml\0", 20)));
    Tiff tiff;
    const Bytes index = tiff.finish(tiff.add(Entries(100, {0xB002, 7, 1600, le32(8)})));
    const struct {
        const char* what;
        Bytes bytes;
    } cases[] = {
        {"associations",
         heic(versionBox("pitm", 0, be16(1)) +
              box("iprp", properties + versionBox("ipma", 0, be32(1000) + repeated(associations, 1000, ""), 1)))},
        {"extents", heic(packet + versionBox("iloc", 1, be16(0) + be16(65535) + repeated(location, 65535, "")))},
        {"pictures", "\xFF\xD8" + repeated(iccSegment(1, 1, "a"), 1000, "") +
                         repeated(segment(0xE2, Bytes("MPF\0", 4) + index), 1000, "")},
        {"items", jpeg(xmpSegment(xmp("<dc:subject>" + repeated("<rdf:li>", 8000, "") + "</dc:subject>")))},
    };
    Digest ignored; // limits alone are tested
    for (const auto& test : cases) {
        ASSERT_EQ(readFile(test.bytes, TVMETA_TEXT_KEYWORD, ignored), "") << test.what;
    }
}

// So many directories, of which the last has the ICC profile: in the chain, or as children of the first.
Bytes directories(int count, bool isChain) {
    Tiff tiff;
    Bytes children;
    std::uint32_t next = tiff.add({{34675, 7, static_cast<std::uint32_t>(Profile.size()), Profile}});
    for (int i = count - 1; i > 1; --i) {
        children.insert(0, le32(next));
        next = tiff.add({tiff.shortEntry(60000, 0)}, isChain ? next : 0);
    }
    children = le32(next) + children;
    const Tiff::Entry parent = {330, 4, static_cast<std::uint32_t>(count - 1), children};
    return tiff.finish(isChain ? tiff.add({tiff.shortEntry(60000, 0)}, next) : tiff.add({parent}));
}

// As many parts as the manual says are read: a block in the last of them is found, one in the next is not.
TEST(HostilePhoto, PartsAreLimited) {
    const struct {
        const char* what;
        int most;
        Bytes (*file)(int parts);
    } rows[] = {
        {"segments", 1 << 16, [](int n) { return jpeg(repeated(segment(0xEF, ""), n - 1, "") + xmpSegment(Packet)); }},
        {"chunks of PNG", 1 << 16,
         [](int n) { return png(repeated(pngChunk("none", ""), n - 2, "") + pngText(Packet)); }},
        {"chunks of WebP", 1 << 16,
         [](int n) { return webp(repeated(webpChunk("none", ""), n - 1, "") + webpChunk("XMP ", Packet)); }},
        {"boxes", 1 << 14, [](int n) { return jxl(repeated(box("free", ""), n - 3, "") + box("xml ", Packet)); }},
        {"resources", 1 << 12,
         [](int n) { return psd(repeated(resource(1, ""), n - 1, "") + resource(0x0424, Packet)); }},
        {"Photoshop segments", 64,
         [](int n) {
             return jpeg(repeated(photoshopSegment(resource(1, "")), n - 1, "") +
                         photoshopSegment(resource(0x0424, Packet)));
         }},
        {"TIFF structures", 4,
         [](int n) {
             return psd(repeated(resource(1058, cameraTiff(Tiff())), n - 1, "") + resource(1058, directories(2, true)));
         }},
        {"images in a chain", 4, [](int n) { return directories(n, true); }},
        {"directories", 32, [](int n) { return directories(n, false); }},
    };
    for (const auto& row : rows) {
        for (const int parts : {row.most, row.most + 1}) {
            const auto& blocks = readPhotoOf(row.file(parts)).record.blocks;
            EXPECT_EQ(blocks[TVMETA_XMP].size + blocks[TVMETA_ICC].size > 0, parts == row.most) << row.what;
        }
    }
}

// Three directories of 65,535 entries; the documented limit is inside of the third.
TEST(HostilePhoto, EntriesAreLimited) {
    const Entries many(65535, {60000, 3, 1, le16(0)});
    Tiff tiff;
    const std::uint32_t second = tiff.add(many), third = tiff.add(many);
    Entries first = many;
    first[0] = {330, 4, 2, le32(second) + le32(third)};
    const Bytes bytes = tiff.finish(tiff.add(first));
    tvmeta_Source source;
    tvmeta_memory(bytes.data(), std::ssize(bytes), &source);
    EXPECT_EQ(tvmeta_list_tags(&source, nullptr, nullptr, 0), 131'072);
}

} // namespace
