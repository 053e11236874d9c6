// Metadata: markers and signatures of JPEG segments, and identifiers of Photoshop resources (ITU-T T.81 table B.1,
// EXIF 2.32 section 4.7, XMP storage in files, ICC.1 annex B.4, CIPA DC-007).
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace tvmeta::jpeg {

namespace marker {
inline constexpr int Prefix = 0xFF;
inline constexpr int StartOfImage = 0xD8;
inline constexpr int EndOfImage = 0xD9;
inline constexpr int StartOfScan = 0xDA;
inline constexpr int App1 = 0xE1;
inline constexpr int App2 = 0xE2;
inline constexpr int App13 = 0xED;

constexpr bool endsHeader(int code) {
    return code == EndOfImage || code == StartOfScan;
}

// TEM and the restart markers have no segment.
constexpr bool isAlone(int code) {
    return code == 0x01 || (code >= 0xD0 && code <= 0xD7);
}

// The frame headers, without the tables between their numbers.
constexpr bool startsFrame(int code) {
    return code >= 0xC0 && code <= 0xCF && code != 0xC4 && code != 0xC8 && code != 0xCC;
}
} // namespace marker

using namespace std::string_view_literals;
inline constexpr std::string_view ExifSignature = "Exif\0\0"sv;
inline constexpr std::string_view XmpSignature = "http://ns.adobe.com/xap/1.0/\0"sv;
inline constexpr std::string_view ExtendedXmpSignature = "http://ns.adobe.com/xmp/extension/\0"sv;
inline constexpr std::string_view IccSignature = "ICC_PROFILE\0"sv;
inline constexpr std::string_view MultiPictureSignature = "MPF\0"sv;
inline constexpr std::string_view PhotoshopSignature = "Photoshop 3.0\0"sv;

} // namespace tvmeta::jpeg

// Photoshop image resources, in Photoshop files, JPEG segments and TIFF tags. A resource is a signature, an identifier,
// a name, a data size and the data.
namespace tvmeta::photoshop {

inline constexpr std::array<unsigned char, 4> Signature = {'8', 'B', 'I', 'M'};

inline constexpr std::uint16_t IptcBlock = 0x0404;
inline constexpr std::uint16_t Thumbnail = 0x040C;
inline constexpr std::uint16_t IccProfile = 0x040F;
inline constexpr std::uint16_t ExifData = 0x0422;
inline constexpr std::uint16_t Xmp = 0x0424;

} // namespace tvmeta::photoshop
