/**
 * @file
 * Image metadata for HDR photo applications.
 *
 * The library reads the metadata of source photographs (JPEG, TIFF, PSD) into one record, keeps an
 * application's processing settings as an XMP packet, writes result images as TIFF files with that
 * metadata, and measures HDR buffers.
 *
 * Conventions that hold for every function:
 *
 * - Threads. The library keeps no state between calls: no start-up, no globals, no locks. Every
 *   function may run on any number of threads at once, as long as the calls do not share a record,
 *   a buffer that is written, a stream or an output file.
 * - Ownership. Records, buffers and streams belong to the caller; no pointer is kept after a call.
 *   A function that takes a path opens and closes the file itself; one that takes a stream works
 *   from its current position and leaves it open. A stream must be seekable and opened in binary.
 * - Results. Negative values are failures, listed at each function. No exception leaves the library,
 *   errno is not part of any result, and nothing depends on the process locale. A line that goes to
 *   stderr is quoted without the line feed at its end.
 * - Null pointers. An argument may be null only where its description says so. Anywhere else a null
 *   pointer gives the result listed for it, and nothing is touched.
 * - Sizes. Offsets, lengths and counts are signed 32-bit numbers of bytes unless said otherwise, so
 *   files beyond 2 GiB are outside of what positions can describe.
 * - Floating point. The default environment is taken for granted: rounding to nearest, and subnormal
 *   numbers that are not flushed to zero.
 * - Texts are bytes (char), never examined for an encoding. Numbers in files that the library
 *   writes are little-endian.
 */
#ifndef TVMETA_H
#define TVMETA_H

#include <stdint.h>
#include <stdio.h>
#include <time.h>

#define TVMETA_VERSION_MAJOR 1 /**< version of this header; incremented for incompatible changes */
#define TVMETA_VERSION_MINOR 1 /**< incremented for additions */
#define TVMETA_VERSION_PATCH 0 /**< incremented for bug fixes */

#if defined(TVMETA_STATIC)
#define TVMETA_API
#elif defined(_WIN32) && defined(TVMETA_BUILDING)
#define TVMETA_API __declspec(dllexport)
#elif defined(_WIN32)
#define TVMETA_API __declspec(dllimport)
#else
#define TVMETA_API __attribute__((visibility("default")))
#endif

#if defined(__cplusplus) && (__cplusplus >= 201103L || (defined(_MSVC_LANG) && _MSVC_LANG >= 201103L))
#define TVMETA_NOEXCEPT noexcept
#else
#define TVMETA_NOEXCEPT
#endif

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Gives the version of the library at run time, which may differ from that of the header.
 *
 * @return the version, such as "1.1.0": static text, never null.
 */
TVMETA_API const char* tvmeta_version(void) TVMETA_NOEXCEPT;

/** @defgroup records Records
 *  @{ */

/** Kind of source file, as getExifData() and get_exif_data() take it. Any other value means a TIFF file
 * whose ImageDescription and Photoshop resources are not looked into (a camera's raw file). */
enum { FILE_TYPE_TIFF = 0, FILE_TYPE_JPEG = 1, FILE_TYPE_PSD = 2 };

/**
 * The metadata of one source photograph. A field for which the source holds nothing is zero (an empty
 * text). Offsets and lengths describe places in the source file. Rationals are numerator, denominator
 * pairs as they stand in the file. 516 bytes, no pointers: it may be copied as it is.
 */
typedef struct ExifInfo {
    int32_t exposureSource;           /**< 2: exposure came from the image description; else 0 */
    float exposureTime;               /**< seconds */
    float fNumber;                    /**< f-number */
    int32_t isoSpeed;                 /**< ISO speed */
    float focalLength;                /**< millimetres */
    int32_t focalLength35mm;          /**< millimetres in 35 mm film terms */
    float focalPlaneXResolution;      /**< pixels per focalPlaneResolutionUnit */
    int32_t focalPlaneResolutionUnit; /**< EXIF code: 2 inch, 3 centimetre */
    char model[64];                   /**< camera model, at most 63 characters */
    char dateTimeOriginal[20];        /**< "YYYY:MM:DD HH:MM:SS" */
    int32_t thumbnailWidth;           /**< pixels; Photoshop thumbnail only */
    int32_t thumbnailHeight;          /**< pixels; Photoshop thumbnail only */
    int32_t thumbnailRowBytes;        /**< bytes per row; Photoshop thumbnail only */
    int32_t thumbnailLength;          /**< bytes of the embedded JPEG thumbnail */
    int32_t thumbnailOffset;          /**< its absolute file offset */
    int32_t orientation;              /**< TIFF orientation code, 1 to 8 in valid files */
    int32_t iptcLength;               /**< bytes of the IPTC block */
    int32_t iptcOffset;               /**< its offset, as the directory or the resource gives it */
    char gpsLatitudeRef;              /**< 'N' or 'S' */
    uint32_t gpsLatitude[6];          /**< degrees, minutes, seconds */
    char gpsLongitudeRef;             /**< 'E' or 'W' */
    uint32_t gpsLongitude[6];         /**< degrees, minutes, seconds */
    uint8_t gpsAltitudeRef;           /**< 0 above sea level, 1 below */
    uint32_t gpsAltitude[2];          /**< metres */
    uint32_t gpsTimeStamp[6];         /**< hours, minutes, seconds (UTC) */
    char gpsDateStamp[11];            /**< "YYYY:MM:DD" */
    int32_t xmpLength;                /**< JPEG: length field of the XMP segment (packet + 31 bytes);
                                         TIFF: bytes of the packet */
    int32_t xmpOffset;                /**< offset of the packet */
    char lens[256];                   /**< lens name from the XMP packet of a JPEG */
} ExifInfo;

/**
 * Metadata as the writers take it: rationals as numerator, denominator pairs. A rational counts as
 * present when both of its numbers are above zero, an integer when it is above zero, a text when its
 * first byte is not zero. Texts need no terminator when they fill their field. 224 bytes.
 */
typedef struct MetadataBuf {
    int32_t exposureTime[2];          /**< seconds */
    int32_t fNumber[2];               /**< f-number */
    int32_t isoSpeed;                 /**< ISO speed */
    int32_t exposureSource;           /**< as in ExifInfo */
    int32_t focalLength[2];           /**< millimetres */
    int32_t focalLength35mm;          /**< millimetres in 35 mm film terms */
    int32_t focalPlaneXResolution[2]; /**< pixels per focalPlaneResolutionUnit */
    int32_t focalPlaneResolutionUnit; /**< EXIF code: 2 inch, 3 centimetre */
    int32_t thumbnailOffset;          /**< offsets and lengths: places in the source file, as in ExifInfo */
    int32_t thumbnailLength;          /**< bytes */
    int32_t iptcOffset;               /**< as in ExifInfo */
    int32_t iptcLength;               /**< bytes */
    int32_t orientation;              /**< of the source; the writers take an orientation of their own */
    int32_t xmpOffset;                /**< as in ExifInfo */
    int32_t xmpLength;                /**< as in ExifInfo */
    char model[64];                   /**< camera model */
    char dateTimeOriginal[20];        /**< "YYYY:MM:DD HH:MM:SS" */
    char lens[64];                    /**< lens name */
} MetadataBuf;

/** GPS position as the writers take it: the words of the source, tested as signed numbers. 96 bytes. */
typedef struct GpsBuf {
    int32_t latitude[6];  /**< degrees, minutes, seconds */
    int32_t longitude[6]; /**< degrees, minutes, seconds */
    int32_t altitude[2];  /**< metres */
    int32_t timeStamp[6]; /**< hours, minutes, seconds (UTC) */
    char latitudeRef;     /**< 'N' or 'S'; 0 absent */
    char longitudeRef;    /**< 'E' or 'W'; 0 absent */
    uint8_t altitudeRef;  /**< 0 above sea level (not written), 1 below */
    char dateStamp[11];   /**< "YYYY:MM:DD" */
} GpsBuf;

/** The image handed to buf2tif(). 32 bytes. */
typedef struct TifImageInfo {
    int32_t width;       /**< pixels per row, at least 1 */
    int32_t height;      /**< rows, 0 or more */
    int32_t channels;    /**< interleaved samples per source pixel, 1 to 4; a 2nd or 4th is not written */
    int32_t bitsCode;    /**< 8, 16: unsigned integers; 32: IEEE float; 3216: 16-bit IEEE float */
    int32_t resolution;  /**< dots per inch */
    int32_t iccLength;   /**< bytes of the ICC profile; 0 none */
    int32_t pixelMode;   /**< 0: samples are written as they are; 1: 16-bit samples become 8-bit ones */
    int32_t orientation; /**< TIFF orientation code; anything but 1 to 8 is written as 1 */
} TifImageInfo;

/** @}
 *  @defgroup settings Settings
 *  @{ */

/** Slots of a SettingsValues. */
#define SETTINGS_SLOTS 18

/** The processing settings of one run: slots whose meaning depends on the method (constants below).
 * Functions take a pointer to slot 0 and touch only the slots of the method they are given. */
typedef float SettingsValues[SETTINGS_SLOTS];

/** Method codes of a settings packet, and the parser's special requests. */
typedef enum SettingsMethod {
    METHOD_DETECT = -1, /**< request: which method does the packet hold? */
    METHOD_NONE = 0,    /**< a packet whose method name is unknown; in the writers: no settings */
    METHOD_DETAILS_ENHANCER = 1,
    METHOD_TONE_COMPRESSOR = 2,
    METHOD_CONTRAST_OPTIMIZER = 3,
    METHOD_FUSION_ADJUST = 10,
    METHOD_FUSION_INTENSIVE = 11,
    METHOD_FUSION_REAL_ESTATE = 15,
    MODE_LENS = 100 /**< request: the lens name of the packet */
} SettingsMethod;

/** Slots of METHOD_DETAILS_ENHANCER. */
enum {
    DETAILS_ENHANCER_LUMINOSITY = 0,
    DETAILS_ENHANCER_STRENGTH = 1,
    DETAILS_ENHANCER_COLOR_SATURATION = 2,
    DETAILS_ENHANCER_WHITE_CLIP = 3,
    DETAILS_ENHANCER_BLACK_CLIP = 4,
    DETAILS_ENHANCER_SMOOTHING_LEVEL = 5, /**< 0 very high, 1 high, 2 medium, 3 low, 4 very low */
    DETAILS_ENHANCER_MICROCONTRAST = 6,
    DETAILS_ENHANCER_MICROSMOOTHING = 7,
    DETAILS_ENHANCER_GAMMA = 8, /**< slider s of 0 to 100 for the gamma 2^((50 - s) / 50) */
    DETAILS_ENHANCER_HIGHLIGHTS_SMOOTHING = 9,
    DETAILS_ENHANCER_SHADOWS_SMOOTHING = 10,
    DETAILS_ENHANCER_SHADOWS_CLIPPING = 11,
    DETAILS_ENHANCER_COLOR_TEMPERATURE = 12,
    DETAILS_ENHANCER_SATURATION_HIGHLIGHTS = 13,
    DETAILS_ENHANCER_SATURATION_SHADOWS = 14,
    DETAILS_ENHANCER_IS_PANO_360 = 15,    /**< 1 yes, 0 no */
    DETAILS_ENHANCER_SMOOTHING_MODE = 16, /**< 0 light: SMOOTHING_LEVEL; 1 slider: SMOOTHING_SLIDER */
    DETAILS_ENHANCER_SMOOTHING_SLIDER = 17
};

/** Slots of METHOD_TONE_COMPRESSOR. */
enum {
    TONE_COMPRESSOR_BRIGHTNESS = 0,
    TONE_COMPRESSOR_COMPRESSION = 1,
    TONE_COMPRESSOR_CONTRAST = 2,
    TONE_COMPRESSOR_WHITE_CLIP = 3,
    TONE_COMPRESSOR_BLACK_CLIP = 4,
    TONE_COMPRESSOR_COLOR_TEMPERATURE = 12,
    TONE_COMPRESSOR_SATURATION = 13
};

/** Slots of METHOD_CONTRAST_OPTIMIZER. */
enum {
    CONTRAST_OPTIMIZER_STRENGTH = 0,
    CONTRAST_OPTIMIZER_TONE_COMPRESSION = 1,
    CONTRAST_OPTIMIZER_LIGHTING_EFFECT = 2,
    CONTRAST_OPTIMIZER_WHITE_CLIP = 3, /**< clip c for the packet's v: c = 10 (v / 10)^3.0639... */
    CONTRAST_OPTIMIZER_BLACK_CLIP = 4, /**< as the white clip */
    CONTRAST_OPTIMIZER_MIDTONE = 8,
    CONTRAST_OPTIMIZER_COLOR_TEMPERATURE = 12,
    CONTRAST_OPTIMIZER_SATURATION = 13,
    CONTRAST_OPTIMIZER_IS_PANO_360 = 15 /**< 1 yes, 0 no */
};

/** Slots of METHOD_FUSION_ADJUST. */
enum {
    FUSION_ADJUST_ACCENTUATION = 0,
    FUSION_ADJUST_BLENDING_POINT = 1,
    FUSION_ADJUST_SHADOWS = 2,
    FUSION_ADJUST_SATURATION = 3,
    FUSION_ADJUST_WHITE_CLIP = 4,
    FUSION_ADJUST_BLACK_CLIP = 5,
    FUSION_ADJUST_MIDTONES_ADJUSTMENT = 6,
    FUSION_ADJUST_IS_PANO_360 = 7, /**< 1 yes, 0 no */
    FUSION_ADJUST_SHARPNESS = 8
};

/** Slots of METHOD_FUSION_INTENSIVE. */
enum { FUSION_INTENSIVE_STRENGTH = 0, FUSION_INTENSIVE_SATURATION = 1, FUSION_INTENSIVE_RADIUS = 2 };

/** Slots of METHOD_FUSION_REAL_ESTATE. */
enum {
    FUSION_REAL_ESTATE_DEPTH_HIGHLIGHTS = 0,
    FUSION_REAL_ESTATE_HIGHLIGHTS = 1,
    FUSION_REAL_ESTATE_SHADOWS = 2,
    FUSION_REAL_ESTATE_SATURATION = 3,
    FUSION_REAL_ESTATE_IS_PANO_360 = 7, /**< 1 yes, 0 no */
    FUSION_REAL_ESTATE_LOCAL_CONTRAST = 8
};

/** How a packet stores the value of a parameter. */
enum {
    TVMETA_NUMBER = 0,         /**< a number with one decimal */
    TVMETA_FRACTION = 1,       /**< a number with six decimals */
    TVMETA_GAMMA = 2,          /**< a gamma with two decimals; the slot is a slider position */
    TVMETA_CLIP = 3,           /**< a clip value with three decimals; the slot is on a power curve */
    TVMETA_SMOOTHING_MODE = 4, /**< "Light" (slot value 0) or "Slider" (1) */
    TVMETA_SMOOTHING = 5,      /**< Light: a word of "Very High", "High", "Medium", "Low", "Very Low" for slot values
                                  0 to 4; Slider: a number with one decimal in DETAILS_ENHANCER_SMOOTHING_SLIDER */
    TVMETA_YES_NO = 6          /**< "Yes" (slot value 1) or "No" (0) */
};

/** One parameter of a method, as tvmeta_parameter() describes it. */
typedef struct tvmeta_Parameter {
    const char* name; /**< local name of the property: "Strength" for tvtm:Strength. Static text */
    int32_t slot;     /**< slot of SettingsValues, 0 to 17 */
    int32_t kind;     /**< TVMETA_NUMBER to TVMETA_YES_NO */
} tvmeta_Parameter;

/**
 * Names a method.
 *
 * @param method  method code.
 * @return the name as a packet contains it, such as "Details Enhancer": static text; null if the code names no method.
 */
TVMETA_API const char* tvmeta_method_name(int32_t method) TVMETA_NOEXCEPT;

/**
 * Describes one parameter of a method, in the order in which a packet lists them.
 *
 * @param method  method code.
 * @param index  0 for the first parameter.
 * @param out  receives the description. May be null: only the result is wanted.
 * @retval >0  the number of parameters of the method; index is below it
 * @retval 0  the code names no method, or it has no parameter of that index; out is unchanged
 */
TVMETA_API int32_t tvmeta_parameter(int32_t method, int32_t index, tvmeta_Parameter* out) TVMETA_NOEXCEPT;

/** @}
 *  @defgroup bytes Metadata record and byte-order readers
 *  @{ */

/**
 * Sets every field of a record to zero. getExifData() does this itself.
 *
 * @param info  record to clear. Null: nothing happens.
 */
TVMETA_API void init_exifInfo(ExifInfo* info) TVMETA_NOEXCEPT;

/**
 * Reads a 16-bit number from a stream in the byte order of a TIFF structure.
 *
 * @param stream  advances by the bytes of the number, less only at its end. Null: as at its end.
 * @param byteOrder  0x4949 in its low 16 bits ("II" read big-endian): little-endian; else big-endian.
 * @return the number; there is no failure. At the end of the file a byte missing from a 16-bit number
 *   counts as 0xFF, one missing from a 32-bit number as -1 times its weight (0xFEFEFEFF for all four).
 * @standard TIFF 6.0, section 2.
 */
TVMETA_API uint16_t fgetmi2(FILE* stream, int32_t byteOrder) TVMETA_NOEXCEPT;

/** Reads a 32-bit number from a stream in the byte order of a TIFF structure. @copydetails fgetmi2 */
TVMETA_API int32_t fgetmi4(FILE* stream, int32_t byteOrder) TVMETA_NOEXCEPT;

/**
 * Reads a big-endian 16-bit number from a stream, as JPEG and Photoshop files hold it.
 *
 * @param stream  as for fgetmi2().
 * @return as for fgetmi2().
 */
TVMETA_API uint16_t fgetm2(FILE* stream) TVMETA_NOEXCEPT;

/** Reads a big-endian 32-bit number from a stream, as JPEG and Photoshop files hold it. @copydetails fgetm2 */
TVMETA_API int32_t fgetm4(FILE* stream) TVMETA_NOEXCEPT;

/** @}
 *  @defgroup reading Metadata reading
 *  @{ */

/** Results of tvmeta_file_type() beside the file types. */
enum { TVMETA_FILE_UNREADABLE = -1, TVMETA_FILE_UNKNOWN = -2 };

/**
 * Detects the type of a photograph by its first four bytes.
 *
 * @param path  file to read, zero-terminated. Null: TVMETA_FILE_UNREADABLE.
 * @retval FILE_TYPE_JPEG  the file starts with FF D8
 * @retval FILE_TYPE_PSD  the file starts with "8BPS"
 * @retval FILE_TYPE_TIFF  the file starts with "II" 42 or "MM" 42; camera raw files are often TIFF files too
 * @retval TVMETA_FILE_UNREADABLE  the file cannot be opened or read, or is a directory
 * @retval TVMETA_FILE_UNKNOWN  the file starts with other bytes (BigTIFF included), or is shorter
 */
TVMETA_API int32_t tvmeta_file_type(const char* path) TVMETA_NOEXCEPT;

/**
 * Reads the metadata of a source photograph into a record.
 *
 * @param path  file to read, zero-terminated. Null: -1.
 * @param fileType  FILE_TYPE_TIFF, FILE_TYPE_JPEG or FILE_TYPE_PSD; any other value reads a TIFF file
 *   without its ImageDescription and Photoshop resources.
 * @param info  cleared first, whatever the result, then filled. Null: -1.
 * @retval 1  the walk completed; the record holds what was found, which may be nothing
 * @retval -1  the file cannot be opened; a JPEG without its start-of-image marker, with a segment length
 *   below 2 ("invalid marker" goes to stderr) or with five fill bytes in a row or its end where a marker
 *   must stand ("too many padding bytes" goes to stderr); a PSD of less than 4 bytes or whose image
 *   resources end, break or run backwards before the EXIF resource
 * @retval -2  a JPEG without an APP1 segment before its image data; a PSD without "8BPS"; no TIFF
 *   byte-order mark where the TIFF structure must begin
 * @retval -3  a PSD of 2 channels or fewer or not in RGB; a TIFF magic number other than 42
 * @retval -10  a JPEG whose chain of segments breaks after the EXIF segment; the record is filled
 * @failure the record is cleared, but for what was found before: the lens name and the XMP fields of a
 *   JPEG whose EXIF data turn out to be none, and the whole record when it is the last pass over a JPEG's
 *   segments that fails (-10, and -1 from a broken segment behind the EXIF data).
 * @limits the first three image directories are read; at most 2^20 entries of EXIF and GPS directories
 *   and 64 MiB of description and Photoshop payloads, further ones are passed over. In a JPEG only the
 *   first APP1 segment can be the EXIF data, and only the next one, within ten markers, the XMP packet,
 *   whose place is kept only if it holds processing settings. Elsewhere its place is kept in any case.
 * @standard TIFF 6.0, EXIF 2.3, JPEG (ITU-T T.81), XMP storage in files, Photoshop file format.
 */
TVMETA_API int32_t getExifData(const char* path, int32_t fileType, ExifInfo* info) TVMETA_NOEXCEPT;

/**
 * Reads an EXIF directory into a record.
 *
 * @param stream  stands at the directory's entry count; afterwards at the end of its last entry. Null: 1.
 * @param ignored  not used; pass 0.
 * @param byteOrder  as for fgetmi2().
 * @param tiffBase  file offset of the TIFF header, to which the directory's offsets are added modulo 2^32.
 * @param info  gets the values found; other fields stay as they are. Null: 1.
 * @retval 1  always
 * @limits a directory entry that lies beyond the end of the file yields the end-of-file values of
 *   fgetmi2() and fgetmi4(); offsets before the start of the file leave the stream where it is.
 * @standard EXIF 2.3, section 4.6.
 */
TVMETA_API int32_t parse_exif_data(FILE* stream, int32_t ignored, int32_t byteOrder, int32_t tiffBase,
                                   ExifInfo* info) TVMETA_NOEXCEPT;

/** Reads a GPS directory into a record. @copydetails parse_exif_data */
TVMETA_API int32_t parse_gps_data(FILE* stream, int32_t ignored, int32_t byteOrder, int32_t tiffBase,
                                  ExifInfo* info) TVMETA_NOEXCEPT;

/**
 * Reads exposure time and ISO speed from an ImageDescription text of comma-separated fields, where
 * field 8 is the exposure ("1/250s") and fields 9 to 11 hold colour values ("R30", "G30", "B30").
 *
 * @param stream  stands at the text; its position afterwards is undefined. Null: -1.
 * @param size  bytes of text; a zero byte ends it earlier.
 * @param info  gets exposureTime, isoSpeed and exposureSource if the text has that layout. Null: -1.
 * @retval >=0  the last colour value read (0: none; it can also be negative, since characters other
 *   than digits count by their distance from '0')
 * @retval -1  size is below 1 or more than the file holds, or memory is short; nothing is changed
 * @limits tokens of up to 6 characters; an ISO speed beyond 32 bits saturates.
 */
TVMETA_API int32_t parse_image_description(FILE* stream, int32_t size, ExifInfo* info) TVMETA_NOEXCEPT;

/**
 * Finds the JPEG thumbnail (resource 0x040C) and the IPTC block (0x0404) in Photoshop image resources.
 *
 * @param stream  stands at the resources; its position afterwards is undefined. Null: -4.
 * @param size  bytes of resources; what the file does not hold counts as zeros.
 * @param info  gets the thumbnail and IPTC fields of the last match of each. Null: -4.
 * @retval length  compressed size of the last thumbnail found, as the file states it, unchecked
 * @retval 1  there is none
 * @retval -4  no memory; nothing is changed
 * @limits resources with a name are not recognised as IPTC.
 * @standard Photoshop file format, image resources.
 */
TVMETA_API int32_t parse_photoshop_data(FILE* stream, int32_t size, ExifInfo* info) TVMETA_NOEXCEPT;

/**
 * Names the colour space of an ICC version 2 profile from its 'desc' element.
 *
 * @param size  bytes of the profile.
 * @param profile  the profile. Null: -1.
 * @param name  32 bytes, cleared first. Null: -1.
 * @retval 4,9,12  bytes of the name, when the description names "sRGB", "Adobe RGB" or "ProPhoto RGB"
 * @retval 32  any other description: its first 32 bytes, without a terminator of their own
 * @retval -1  fewer than 49 bytes, or no description found; name is all zero
 * @standard ICC.1:2001-04, textDescriptionType.
 */
TVMETA_API int32_t get_profile_name(int32_t size, const unsigned char* profile, char name[32]) TVMETA_NOEXCEPT;

/**
 * Copies the IPTC block of a source file, as ExifInfo locates it.
 *
 * @param path  file to read, zero-terminated. Null: -1.
 * @param count,offset  bytes to copy and where they start in the file.
 * @param buffer  count bytes. Null: -1.
 * @retval count  the block was copied and begins with the dataset marker 0x1C
 * @retval 0  count is 0 or less (whatever the pointers are), or the region does not end before the last
 *   byte of the file, or offset is negative; the buffer is untouched
 * @retval -1  the file cannot be opened or measured, is empty or a directory, or fewer bytes could be read
 * @retval -2  the first byte is not 0x1C; the bytes have been copied
 * @standard IPTC-IIM 4.1, section 1.5.
 */
TVMETA_API int32_t read_iptc(const char* path, int32_t count, int32_t offset, unsigned char* buffer) TVMETA_NOEXCEPT;

/**
 * Finds a tag in the directories of a little-endian TIFF file, so that its entry can be patched.
 *
 * @param stream  stands at the start of the file; its position afterwards is undefined. Null: -3.
 * @param tag  tag to look for.
 * @param count,value  get the entry's count and value (or value offset). Null: -3.
 * @retval >0  file offset of the first entry with that tag
 * @retval -1  no directory has it; or the chain of directories is a loop, or has more than 2^16 directories
 *   or 2^22 entries, and none of those searched has it
 * @retval -2  the file does not begin with "II" and 42, or a directory is empty
 * @retval -3  the offset of a directory is 2^31 or more
 * @failure count and value are untouched.
 * @standard TIFF 6.0, section 2.
 */
TVMETA_API int32_t get_tif_tag(FILE* stream, int32_t tag, int32_t* count, int32_t* value) TVMETA_NOEXCEPT;

/**
 * Gives the seconds from a date and time, as EXIF writes it, to a reference time.
 *
 * @param text  "YYYY:MM:DD HH:MM:SS", zero-terminated, taken as local time of the process; numbers out of
 *   their range carry over as in mktime. Null: -1.
 * @param reference  calendar time to count to.
 * @param seconds  gets reference minus the text's time. Null: -1.
 * @retval 1  done
 * @retval -1  the text does not hold six numbers in that form, or one that does not fit its field of
 *   struct tm; seconds is untouched
 * @limits a time that mktime cannot represent counts as one second before 1970 (UTC).
 * @standard EXIF 2.3, DateTimeOriginal.
 */
TVMETA_API int32_t time_from_datetime(const char* text, time_t reference, float* seconds) TVMETA_NOEXCEPT;

/** @}
 *  @defgroup settings_reading Settings reading
 *  @{ */

/**
 * Reads the processing settings, their method or the lens name out of an XMP text.
 *
 * @param method  METHOD_DETECT, MODE_LENS, or the method whose slots are wanted.
 * @param length  bytes of buffer, counting its terminating zero.
 * @param buffer  the text. Null: -3.
 * @param lens  MODE_LENS only: at least 64 bytes, cleared by the caller; gets the name, at most 63 bytes,
 *   without a terminator. May be null in other modes; null with MODE_LENS: -3.
 * @param settings  method codes only: gets the slots whose tags are found, the others stay. May be null
 *   in other modes; null with a method code: -3.
 * @retval 1,2,3,10,11,15  METHOD_DETECT: the method found
 * @retval >=47  method code: offset of the method tag; the slots were read
 * @retval >=0  MODE_LENS: the offset of the end of the name; without a name, the offset where the search
 *   stopped: 64 bytes after the start of the value, or earlier where no end can be before the terminator
 * @retval 0  METHOD_DETECT and method codes: no settings declaration; METHOD_DETECT: also an unknown
 *   method name
 * @retval -3  length is below 1, or the last byte is not zero
 * @retval -5  no method tag behind a readable version, a method other than the one asked for, or a
 *   request that is none of the above
 * @failure lens and settings are untouched.
 * @limits the text is searched byte by byte, not parsed as XML; values are not checked for range.
 * @standard ISO 16684-1, serialisation in RDF; XMP additional properties, EXIF auxiliary.
 */
TVMETA_API int32_t get_settings_from_xmp(int32_t method, int32_t length, const char* buffer, char* lens,
                                         float* settings) TVMETA_NOEXCEPT;

/**
 * Reads a settings file, such as write_xmp() makes.
 *
 * @param path  file to read, zero-terminated. Null: -1.
 * @param method  METHOD_DETECT or a method code.
 * @param settings  as for get_settings_from_xmp(). May be null with METHOD_DETECT; else null: -3.
 * @retval 1,2,3,10,11,15  METHOD_DETECT: the method found
 * @retval >=47  method code: offset of the method tag; the slots were read
 * @retval 0  an empty file, no settings declaration; METHOD_DETECT: also an unknown method name
 * @retval -1  the file cannot be opened or measured, is a directory, or is larger than 2^31 - 2 bytes
 * @retval -2  fewer bytes than its size could be read
 * @retval -4  no memory
 * @retval -5  as get_settings_from_xmp(); also: method is MODE_LENS, and the file is not opened
 * @failure settings is untouched.
 */
TVMETA_API int32_t read_xmp(const char* path, int32_t method, float* settings) TVMETA_NOEXCEPT;

/**
 * Reads a region of a file and tells which method the settings packet in it holds.
 *
 * @param path  file to read, zero-terminated. Null: -1.
 * @param count,offset  bytes to read and where they start.
 * @param buffer  count + 1 bytes, cleared by the caller; gets the bytes. Null: -3.
 * @retval 1,2,3,10,11,15  the method
 * @retval 0  no settings declaration or an unknown method name; or the region does not end before the
 *   last byte of the file or starts before its first
 * @retval -1  the file cannot be opened or measured, is empty, or is a directory
 * @retval -3  count is negative, or the byte at offset count of buffer is not zero
 * @retval -5  no method tag behind a readable version
 * @failure the buffer is untouched on 0 for the region, on -1, and on -3 for a negative count.
 */
TVMETA_API int32_t extract_xmp(const char* path, int32_t count, int32_t offset, char* buffer) TVMETA_NOEXCEPT;

/**
 * Counts the settings declarations in an XMP text.
 *
 * @param length  bytes of buffer, counting its terminating zero.
 * @param buffer  the text. Null: -3.
 * @retval >=0  the number of declarations
 * @retval -3  length is below 1 or the last byte is not zero
 */
TVMETA_API int32_t tvsettings_occurences_in_xmp(int32_t length, const char* buffer) TVMETA_NOEXCEPT;

/** @}
 *  @defgroup settings_writing Settings writing
 *  @{ */

/**
 * Writes a settings packet to memory, in two passes: one that measures it, one that writes it.
 *
 * @param pass  0 measures; any other value writes, and is the number at the end of the namespace URI (1
 *   if it is below 1).
 * @param method  method code, or method code + 200 for the settings description without the packet around
 *   it. 0 or less: no settings description. A code that names no method: a description without parameters.
 * @param settings  the slots of the method. May be null if the method reads no slot (a code that names no
 *   method); else null: 0.
 * @param lensLength  above 0 asks for a description with the lens name.
 * @param lens  its text, zero-terminated, written as it stands. May be null when lensLength is 0 or less;
 *   else null: 0.
 * @param out  as many bytes as the measuring pass gave for the same other arguments (one more for each
 *   digit of pass beyond two). May be null when measuring; else null: 0. No terminating zero is written.
 * @retval >0  the length of the packet
 * @retval 0  the lens name is longer than 2^31 - 65537 bytes; nothing is written
 * @standard ISO 16684-1, serialisation in RDF.
 */
TVMETA_API int32_t embed_xmp(int32_t pass, int32_t method, const float* settings, int32_t lensLength, const char* lens,
                             char* out) TVMETA_NOEXCEPT;

/**
 * Writes a settings file: one packet, nothing else.
 *
 * @param path  file to create or overwrite, zero-terminated. Null: -1.
 * @param method  method code.
 * @param settings  the slots of the method. Null: -2.
 * @retval 1  written
 * @retval -1  the file cannot be opened for writing
 * @retval -2  not a method code; no file is touched
 * @retval -3  the packet cannot be written, or the file cannot be closed without an error; the file is
 *   left incomplete
 * @retval -4  no memory; no file is touched
 */
TVMETA_API int32_t write_xmp(const char* path, int32_t method, const float* settings) TVMETA_NOEXCEPT;

/**
 * Inserts a settings description into an XMP packet in memory, in two passes as embed_xmp().
 *
 * @param pass  0 measures the description; any other value inserts it and is passed on to embed_xmp().
 * @param method  method code.
 * @param settings  the slots of the method. May be null if the method reads no slot; else null: -1.
 * @param dataLength  bytes of the packet. Not used when measuring.
 * @param shift  bytes by which the text behind the insertion point moves: the result of the measuring
 *   pass (one more for each digit of pass beyond two). Not used when measuring.
 * @param buffer  the packet, with room for dataLength + shift bytes; changed in place. May be null when
 *   measuring; else null: -1.
 * @retval >0  bytes of the description
 * @retval -1  fewer than 3 bytes follow the insertion point, dataLength or shift is negative, or method
 *   exceeds 2^31 - 201
 * @retval -4  no memory
 * @retval <=-34  an opening was not found: -dataLength, or -34 (too short for an xmpmeta opening), or
 *   minus the 65 bytes of an RDF opening and the offset after the xmpmeta opening; -2^31 where
 *   that does not fit 32 bits
 * @failure the buffer is untouched.
 */
TVMETA_API int32_t insert_xmp(int32_t pass, int32_t method, const float* settings, int32_t dataLength, int32_t shift,
                              char* buffer) TVMETA_NOEXCEPT;

/** @}
 *  @defgroup writing Metadata and image writing
 *  @{ */

/**
 * Converts a metadata record into the writers' records.
 *
 * @param info  record to convert. Null: 0.
 * @param metadata,gps  get the values. Clear both before the first conversion: a rational whose float is
 *   not above zero leaves its field as it was. Null: 0.
 * @return the numerator in metadata->exposureTime afterwards.
 * @limits v of 1 or more becomes trunc(100 v) / 100, less becomes 100 / trunc(100 / v); numbers beyond
 *   2147483647 saturate. The lens name is cut to 64 bytes.
 */
TVMETA_API int32_t metadataBufFromExifInfo(const ExifInfo* info, MetadataBuf* metadata, GpsBuf* gps) TVMETA_NOEXCEPT;

/**
 * Reads a photograph and converts its record in one step: getExifData(), then metadataBufFromExifInfo().
 *
 * @param path,fileType  as for getExifData().
 * @param metadata,gps  as for metadataBufFromExifInfo(). Null: 0.
 * @return as metadataBufFromExifInfo(); a file that cannot be read is converted as an empty record.
 */
TVMETA_API int32_t get_exif_data(const char* path, int32_t fileType, MetadataBuf* metadata,
                                 GpsBuf* gps) TVMETA_NOEXCEPT;

/**
 * Sizes the EXIF and GPS directories of a result and derives the camera make from the model.
 *
 * @param metadata,gps  what is to be written.
 * @param exifCount,exifBytes  get the entries of the EXIF directory (0 to 5) and the bytes of its values.
 * @param gpsCount,gpsBytes  get the same for the GPS directory (0 to 9 entries).
 * @param modelCount,makeCount,dateCount,gpsDateCount  get the TIFF ASCII counts of the texts, terminator
 *   included; 0 for an empty text.
 * @param lensCount  gets the bytes of lens text for the settings packet.
 * @param make  64 bytes, cleared first; gets the camera make.
 * @retval >=0  exifCount + gpsCount
 * @retval 0  also: an argument is null, and nothing is touched
 */
TVMETA_API int32_t get_exif_count(const MetadataBuf* metadata, int32_t* exifCount, int32_t* exifBytes,
                                  const GpsBuf* gps, int32_t* gpsCount, int32_t* gpsBytes, int32_t* modelCount,
                                  int32_t* makeCount, int32_t* dateCount, int32_t* gpsDateCount, int32_t* lensCount,
                                  char* make) TVMETA_NOEXCEPT;

/**
 * Saves an image as an uncompressed little-endian TIFF file of one strip, with its metadata.
 *
 * @param pixels  rows of interleaved samples in machine byte order. May be null when the height is 0.
 * @param info  the image.
 * @param rowPitch  distance between the starts of two source rows, in bytes (pixelMode 0) or 16-bit
 *   samples (pixelMode 1); negative for bottom-up buffers, with pixels at the first row to be written.
 * @param icc  info->iccLength bytes of ICC profile; left out when its header says that it is not for RGB.
 * @param metadata,gps  camera, exposure, date, lens and position to be written.
 * @param iptcLength,iptc  IPTC block, stored padded with zeros to a multiple of 4 bytes; 0 none.
 * @param method,settings  processing settings for the XMP packet; METHOD_NONE: none.
 * @param xmpLength,xmp  XMP packet of the caller; 0: none. It is used if it contains processing settings,
 *   or if method is 0 or less; otherwise a packet is made from settings and lens. Its last byte should
 *   be zero. That byte is not stored, unless method is 0 and it is not zero. A packet that is used and
 *   of which nothing is left to be stored gives a file without XMP.
 * @param path  file to create or overwrite, zero-terminated.
 * @retval >=0  rows in the last block written (the height when the image fits in one block of 1 MiB)
 * @retval -1  the file cannot be opened ("Could not open for writing file:", two blanks and the path go to
 *   stderr), or no memory for the directory or, before the file is touched, for the XMP packet
 * @retval -2  the header cannot be written
 * @retval -3  pixels cannot be written
 * @retval -4  no memory for pixels
 * @retval -6  bad arguments, before the file is touched: a field of info outside of what TifImageInfo
 *   lists, pixelMode 1 with a bitsCode other than 8, a negative length, a null pointer (icc, iptc, xmp and
 *   settings may be null when nothing is announced for them), or a file that would exceed 2^31 - 1 bytes
 * @retval -12  the directory cannot be written, or the file cannot be closed without an error
 * @failure the file, once it was opened, is left incomplete.
 * @limits memory for one block of about 1 MiB (one row if it is larger) and for the metadata. Values may
 *   start at odd offsets. The product of resolution and 1000 wraps modulo 2^32.
 * @standard TIFF 6.0; EXIF 2.3; XMP storage in files; IPTC-IIM in tag 33723.
 */
TVMETA_API int32_t buf2tif(const void* pixels, const TifImageInfo* info, int32_t rowPitch, const unsigned char* icc,
                           const MetadataBuf* metadata, const GpsBuf* gps, int32_t iptcLength,
                           const unsigned char* iptc, int32_t method, const float* settings, int32_t xmpLength,
                           const char* xmp, const char* path) TVMETA_NOEXCEPT;

/**
 * Writes make, model, orientation, EXIF and GPS data as a TIFF structure in memory: what follows the
 * EXIF identifier in a JPEG APP1 segment.
 *
 * @param exifCount,exifBytes,gpsCount,gpsBytes,modelCount,makeCount,dateCount,gpsDateCount  as
 *   get_exif_count() gives them for the same records; they fix the layout.
 * @param orientation  TIFF orientation code; anything but 1 to 8 is written as 1.
 * @param metadata,gps  what is to be written. Null: -1.
 * @param make  64 bytes, the text of get_exif_count(). Null: -1.
 * @param buffer  zero-filled, of the block's size: 14 + 12 N, plus the counts of make and model above 4,
 *   plus 2 + 12 n + 4 + value bytes for each directory of n > 0 entries; N counts orientation, make, model
 *   and directories. Null: -1.
 * @retval size  the block's size
 * @retval -1  nothing to describe (make, model, EXIF and GPS counts all 0), or a block beyond 2^31 - 1
 *   bytes; the buffer is untouched
 * @limits nothing is read beyond a record's field or written beyond the block, whatever the counts.
 * @standard TIFF 6.0; EXIF 2.3.
 */
TVMETA_API int32_t write_exif_buf(int32_t exifCount, int32_t exifBytes, int32_t gpsCount, int32_t gpsBytes,
                                  int32_t modelCount, int32_t makeCount, int32_t dateCount, int32_t gpsDateCount,
                                  int32_t orientation, const MetadataBuf* metadata, const GpsBuf* gps, const char* make,
                                  unsigned char* buffer) TVMETA_NOEXCEPT;

/**
 * Replaces the ICC profile of a little-endian TIFF file in place: appends the new profile, then repoints
 * the directory entry.
 *
 * @param length  bytes of the new profile; 0 gives an empty profile.
 * @param profile  the new profile. May be null if length is 0; else null: -2.
 * @param path  file to change, zero-terminated. Null: -1.
 * @retval length  the profile was replaced
 * @retval 0  no ICC profile entry, or not a little-endian TIFF file; the file is unchanged
 * @retval -1  the file cannot be opened for reading or for update ("Can not open input file for reading" or
 *   "Can not open input file for update" goes to stderr), or it changed, or the path came to lead to another
 *   file, after it was searched; the file is unchanged
 * @retval -2  a negative length, or a file that would exceed 2^31 - 1 bytes; the file is unchanged. Or a seek,
 *   a write or the close fails
 * @failure the old profile stays in force if the new one cannot be written; the part that was written stays
 *   at the end of the file. The entry is patched last, by one write of eight bytes: only if that write or
 *   the close fails, the entry may be old, new or incomplete.
 * @limits the bytes of the old profile stay in the file. The data is not forced to the disk. An entry that
 *   the end of the file cuts short is completed over the first bytes of the new profile, in a file that was
 *   broken before.
 * @standard TIFF 6.0; ICC.1 annex B.4.
 */
TVMETA_API int32_t update_tif_profile(int32_t length, const unsigned char* profile, const char* path) TVMETA_NOEXCEPT;

/**
 * Adds a keyword to an IPTC block: behind its last keyword, else behind its last record-2 dataset, else
 * (an empty block) behind a new record version.
 *
 * @param length  bytes of the existing block.
 * @param block  the existing block. May be null when length is 0; else null: -1.
 * @param keywordLength  bytes of the keyword.
 * @param keyword  the keyword. May be null when keywordLength is 0; else null: -1.
 * @param out  length + 5 + keywordLength bytes (7 more when length is 0), not overlapping block: the new
 *   block. Null: -1.
 * @retval >0  offset of the new dataset in out
 * @retval -1  the dataset to follow runs past the end of the block; a negative length; a block of 1 to 4
 *   bytes; a keyword longer than 32767 bytes
 * @failure out is untouched.
 * @limits record-2 datasets are found by their first bytes, not by walking the block.
 * @standard IPTC-IIM 4.1, datasets 2:00 and 2:25.
 */
TVMETA_API int32_t add_iptc_keyword(int32_t length, const unsigned char* block, int32_t keywordLength,
                                    const char* keyword, unsigned char* out) TVMETA_NOEXCEPT;

/** @}
 *  @defgroup hdr HDR statistics
 *  @{ */

/**
 * Measures the luminance of an HDR image: smallest positive, largest and mean value.
 *
 * @param width,height  pixels per row and rows; 0 or less: no pixels.
 * @param pixels  per row four planes of width bytes: blue, green and red mantissas, then the exponent e; a
 *   pixel's luminance is ((19 b + 183 g + 54 r) >> 8) * 2^(e - 128), and e = 0 means no pixel. May be
 *   null when there are no pixels; else null: -4.
 * @param results  3 floats: minimum (99999997952 if no value is positive), maximum (0 if none is), mean of
 *   the pixels whose e is not 0 (0 if there is none). Null: -4.
 * @retval height  done (0 when it is negative)
 * @retval -4  a null pointer; results is untouched
 * @limits values beyond float become infinity. Values are summed in row order in double precision.
 * @standard luminance weights of ITU-R BT.709.
 */
TVMETA_API int32_t hdrMinMax(int32_t width, int32_t height, const unsigned char* pixels,
                             float results[3]) TVMETA_NOEXCEPT;

/** @} */

#ifdef __cplusplus
}
#endif

#endif
