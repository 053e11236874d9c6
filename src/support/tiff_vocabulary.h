// Support: the names of the tags and field types that readers and writers share.
//
// Standards: TIFF 6.0 (section 2, appendix A), EXIF 2.32 (sections 4.6.2 to 4.6.6), XMP storage in files, ICC.1
// annex B.4.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tvmeta {

// The byte-order marks "II" and "MM", read as big-endian numbers, and the number that follows them.
inline constexpr std::uint16_t LittleEndianMark = 0x4949;
inline constexpr std::uint16_t BigEndianMark = 0x4D4D;
inline constexpr std::uint16_t TiffMagic = 42;
inline constexpr std::uint16_t BigTiffMagic = 43;

inline constexpr std::size_t TiffHeaderSize = 8;
inline constexpr std::size_t DirectoryEntrySize = 12;
inline constexpr std::size_t EntryValueSize = 4;

namespace tiff_type {
inline constexpr std::uint16_t Byte = 1;
inline constexpr std::uint16_t Ascii = 2;
inline constexpr std::uint16_t Short = 3;
inline constexpr std::uint16_t Long = 4;
inline constexpr std::uint16_t Rational = 5;
inline constexpr std::uint16_t Undefined = 7;
inline constexpr std::uint16_t SignedRational = 10;
inline constexpr std::uint16_t Ifd = 13;
inline constexpr std::uint16_t Long8 = 16; // BigTIFF
inline constexpr std::uint16_t Ifd8 = 18;
} // namespace tiff_type

namespace tiff_tag {
inline constexpr std::uint16_t NewSubfileType = 254;
inline constexpr std::uint16_t ImageWidth = 256;
inline constexpr std::uint16_t ImageLength = 257;
inline constexpr std::uint16_t BitsPerSample = 258;
inline constexpr std::uint16_t Compression = 259;
inline constexpr std::uint16_t PhotometricInterpretation = 262;
inline constexpr std::uint16_t ImageDescription = 270;
inline constexpr std::uint16_t Make = 271;
inline constexpr std::uint16_t Model = 272;
inline constexpr std::uint16_t StripOffsets = 273;
inline constexpr std::uint16_t Orientation = 274;
inline constexpr std::uint16_t SamplesPerPixel = 277;
inline constexpr std::uint16_t RowsPerStrip = 278;
inline constexpr std::uint16_t StripByteCounts = 279;
inline constexpr std::uint16_t XResolution = 282;
inline constexpr std::uint16_t YResolution = 283;
inline constexpr std::uint16_t PlanarConfiguration = 284;
inline constexpr std::uint16_t ResolutionUnit = 296;
inline constexpr std::uint16_t Software = 305;
inline constexpr std::uint16_t DateTime = 306;
inline constexpr std::uint16_t Artist = 315;
inline constexpr std::uint16_t SubIfds = 330;
inline constexpr std::uint16_t SampleFormat = 339;
inline constexpr std::uint16_t JpegInterchangeFormat = 513;
inline constexpr std::uint16_t JpegInterchangeFormatLength = 514;
inline constexpr std::uint16_t Xmp = 700;
inline constexpr std::uint16_t Rating = 18246;
inline constexpr std::uint16_t Copyright = 33432;
inline constexpr std::uint16_t Iptc = 33723;
inline constexpr std::uint16_t Photoshop = 34377;
inline constexpr std::uint16_t ExifIfd = 34665;
inline constexpr std::uint16_t IccProfile = 34675;
inline constexpr std::uint16_t GpsIfd = 34853;
inline constexpr std::uint16_t XpTitle = 40091;
inline constexpr std::uint16_t XpAuthor = 40093;
inline constexpr std::uint16_t XpKeywords = 40094;
inline constexpr std::uint16_t CameraSerialNumber = 50735; // DNG
} // namespace tiff_tag

// In the first directory of RW2 files.
namespace rw2_tag {
inline constexpr std::uint16_t TopBorder = 4;
inline constexpr std::uint16_t LeftBorder = 5;
inline constexpr std::uint16_t BottomBorder = 6;
inline constexpr std::uint16_t RightBorder = 7;
inline constexpr std::uint16_t IsoSpeed = 23;
inline constexpr std::uint16_t Jpeg = 46;
} // namespace rw2_tag

namespace exif_tag {
inline constexpr std::uint16_t ExposureTime = 33434;
inline constexpr std::uint16_t FNumber = 33437;
inline constexpr std::uint16_t ExposureProgram = 34850;
inline constexpr std::uint16_t IsoSpeedRatings = 34855;
inline constexpr std::uint16_t StandardOutputSensitivity = 34865;
inline constexpr std::uint16_t RecommendedExposureIndex = 34866;
inline constexpr std::uint16_t IsoSpeed = 34867;
inline constexpr std::uint16_t ExifVersion = 36864;
inline constexpr std::uint16_t DateTimeOriginal = 36867;
inline constexpr std::uint16_t DateTimeDigitized = 36868;
inline constexpr std::uint16_t OffsetTimeOriginal = 36881;
inline constexpr std::uint16_t OffsetTimeDigitized = 36882;
inline constexpr std::uint16_t ShutterSpeedValue = 37377;
inline constexpr std::uint16_t ApertureValue = 37378;
inline constexpr std::uint16_t ExposureBiasValue = 37380;
inline constexpr std::uint16_t MaxApertureValue = 37381;
inline constexpr std::uint16_t MeteringMode = 37383;
inline constexpr std::uint16_t Flash = 37385;
inline constexpr std::uint16_t FocalLength = 37386;
inline constexpr std::uint16_t MakerNote = 37500;
inline constexpr std::uint16_t SubSecTimeOriginal = 37521;
inline constexpr std::uint16_t SubSecTimeDigitized = 37522;
inline constexpr std::uint16_t FlashpixVersion = 40960;
inline constexpr std::uint16_t ColorSpace = 40961;
inline constexpr std::uint16_t PixelXDimension = 40962;
inline constexpr std::uint16_t PixelYDimension = 40963;
inline constexpr std::uint16_t InteroperabilityIfd = 40965;
inline constexpr std::uint16_t FocalPlaneXResolution = 41486;
inline constexpr std::uint16_t FocalPlaneResolutionUnit = 41488;
inline constexpr std::uint16_t ExposureIndex = 41493;
inline constexpr std::uint16_t ExposureMode = 41986;
inline constexpr std::uint16_t WhiteBalance = 41987;
inline constexpr std::uint16_t FocalLengthIn35mmFilm = 41989;
inline constexpr std::uint16_t BodySerialNumber = 42033;
inline constexpr std::uint16_t LensModel = 42036;
} // namespace exif_tag

namespace gps_tag {
inline constexpr std::uint16_t VersionId = 0;
inline constexpr std::uint16_t LatitudeRef = 1;
inline constexpr std::uint16_t Latitude = 2;
inline constexpr std::uint16_t LongitudeRef = 3;
inline constexpr std::uint16_t Longitude = 4;
inline constexpr std::uint16_t AltitudeRef = 5;
inline constexpr std::uint16_t Altitude = 6;
inline constexpr std::uint16_t TimeStamp = 7;
inline constexpr std::uint16_t DateStamp = 29;
} // namespace gps_tag

} // namespace tvmeta
