// Builders of small files. They keep a test short enough to show the bytes that matter.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace test {

using Bytes = std::string;

inline Bytes le16(unsigned value) {
    return {static_cast<char>(value), static_cast<char>(value >> 8)};
}
inline Bytes be16(unsigned value) {
    return {static_cast<char>(value >> 8), static_cast<char>(value)};
}
inline Bytes le32(std::uint32_t value) {
    return le16(value) + le16(value >> 16);
}
inline Bytes be32(std::uint32_t value) {
    return be16(value >> 16) + be16(value);
}
inline Bytes le64(std::uint64_t value) {
    return le32(static_cast<std::uint32_t>(value)) + le32(static_cast<std::uint32_t>(value >> 32));
}
inline Bytes be64(std::uint64_t value) {
    return be32(static_cast<std::uint32_t>(value >> 32)) + be32(static_cast<std::uint32_t>(value));
}
// A number of a little-endian file in memory.
inline std::uint32_t loadLe16(const Bytes& bytes, std::size_t offset) {
    return static_cast<unsigned char>(bytes.at(offset)) |
           static_cast<std::uint32_t>(static_cast<unsigned char>(bytes.at(offset + 1))) << 8;
}
inline std::uint32_t loadLe32(const Bytes& bytes, std::size_t offset) {
    return loadLe16(bytes, offset) | loadLe16(bytes, offset + 2) << 16;
}

inline Bytes zeros(std::size_t count) {
    return Bytes(count, '\0');
}

inline std::int32_t size32(const Bytes& bytes) {
    return static_cast<std::int32_t>(bytes.size());
}
inline const unsigned char* raw(const Bytes& bytes) {
    return reinterpret_cast<const unsigned char*>(bytes.data());
}
inline unsigned char* raw(Bytes& bytes) {
    return reinterpret_cast<unsigned char*>(bytes.data());
}

inline constexpr std::string_view Host = "tonalvista.test";

// Builds a TIFF structure: appends directories and returns their offsets. With the magic number 43 it is a BigTIFF; raw
// files have numbers of their own.
class Tiff {
  public:
    struct Entry {
        unsigned tag;
        unsigned type;
        std::uint32_t count;
        Bytes value; // up to four bytes (BigTIFF: eight) go into the entry, longer values after the directory
    };

    explicit Tiff(bool little = true, unsigned magic = 42)
        : little_(little), big_(magic == 43), bytes_(little ? "II" : "MM") {
        bytes_ += n16(magic) + (big_ ? n16(8) + n16(0) : Bytes()) + number(0);
    }

    Bytes n16(unsigned value) const { return little_ ? le16(value) : be16(value); }
    Bytes n32(std::uint32_t value) const { return little_ ? le32(value) : be32(value); }
    Bytes number(std::uint64_t value) const { // a count or an offset
        return big_ ? (little_ ? le64(value) : be64(value)) : n32(static_cast<std::uint32_t>(value));
    }
    Bytes rational(std::uint32_t numerator, std::uint32_t denominator) const {
        return n32(numerator) + n32(denominator);
    }

    Entry shortEntry(unsigned tag, unsigned value) const { return {tag, 3, 1, n16(value)}; }
    Entry longEntry(unsigned tag, std::uint32_t value) const { return {tag, 4, 1, n32(value)}; }
    Entry textEntry(unsigned tag, const Bytes& text) const {
        return {tag, 2, static_cast<std::uint32_t>(text.size() + 1), text + '\0'};
    }
    Entry rationalEntry(unsigned tag, std::uint32_t numerator, std::uint32_t denominator) const {
        return {tag, 5, 1, rational(numerator, denominator)};
    }

    // Appends a directory, its values and the offset of the next one. Returns the offset of the directory.
    std::uint32_t add(const std::vector<Entry>& entries, std::uint32_t next = 0) {
        const auto offset = static_cast<std::uint32_t>(bytes_.size());
        Bytes values;
        const std::size_t room = big_ ? 8 : 4;
        const Bytes count = big_ ? number(entries.size()) : n16(static_cast<unsigned>(entries.size()));
        const std::size_t valueStart = offset + count.size() + (4 + 2 * room) * entries.size() + room;
        bytes_ += count;
        for (const Entry& entry : entries) {
            bytes_ += n16(entry.tag) + n16(entry.type) + number(entry.count);
            if (entry.value.size() <= room) {
                bytes_ += entry.value + zeros(room - entry.value.size());
            } else {
                bytes_ += number(valueStart + values.size());
                values += entry.value;
            }
        }
        bytes_ += number(next) + values;
        return offset;
    }

    // The finished structure, with a header that points at the directory.
    Bytes finish(std::uint32_t firstDirectory) {
        const Bytes offset = number(firstDirectory);
        bytes_.replace(big_ ? 8 : 4, offset.size(), offset);
        return bytes_;
    }

  private:
    bool little_;
    bool big_;
    Bytes bytes_;
};

inline Bytes cutAfter(const Bytes& text, const Bytes& last) {
    return text.substr(0, text.find(last) + last.size());
}
inline Bytes segment(unsigned marker, const Bytes& payload) {
    return Bytes("\xFF") + static_cast<char>(marker) + be16(static_cast<unsigned>(payload.size() + 2)) + payload;
}
inline Bytes exifSegment(const Bytes& tiff) {
    return segment(0xE1, Bytes("Exif\0\0", 6) + tiff);
}
inline Bytes xmpSegment(const Bytes& packet) {
    return segment(0xE1, Bytes("http://ns.adobe.com/xap/1.0/\0", 29) + packet);
}
inline Bytes jpeg(const Bytes& segments) {
    return "\xFF\xD8" + segments + "\xFF\xDA" + zeros(64) + "\xFF\xD9";
}

// A Photoshop image resource. `name` is the whole name field.
inline Bytes resource(unsigned id, const Bytes& data, const Bytes& name = zeros(2)) {
    return "8BIM" + be16(id) + name + be32(static_cast<std::uint32_t>(data.size())) + data + zeros(data.size() % 2);
}
inline Bytes psd(const Bytes& resources, unsigned channels = 3, unsigned mode = 3) {
    return "8BPS" + be16(1) + zeros(6) + be16(channels) + be32(10) + be32(10) + be16(8) + be16(mode) + be32(0) +
           be32(static_cast<std::uint32_t>(resources.size())) + resources;
}

// A settings packet with these lines after the declaration.
inline Bytes packet(const Bytes& lines, char quote = '\'') {
    return Bytes("<rdf:Description xmlns:tvtm=") + quote + "http://" + Bytes(Host) + "/tonalvista_settings01" + quote +
           ">" + lines + "</rdf:Description>\n";
}
inline Bytes element(const Bytes& name, const Bytes& value) {
    return "<tvtm:" + name + ">" + value + "</tvtm:" + name + ">\n";
}
inline Bytes attribute(const Bytes& name, const Bytes& value) {
    return " tvtm:" + name + "=\"" + value + "\"";
}
inline Bytes elementPacket(const Bytes& method, const Bytes& lines, const Bytes& version = "5.0") {
    return packet(element("Version", version) + element("Method", method) + lines);
}
inline Bytes lensPacket(const Bytes& property) {
    return "<rdf:Description xmlns:aux='http://ns.adobe.com/exif/1.0/aux/'>" + property + "</rdf:Description>";
}

} // namespace test
