/*
 * tvmeta: image metadata for HDR photo applications.
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
 *   errno is not part of any result, and nothing depends on the process locale.
 * - Null pointers. An argument may be null only where its description says so. Anywhere else a null
 *   pointer gives the result listed for it, and nothing is touched.
 * - Sizes. Offsets, lengths and counts are signed 32-bit numbers of bytes unless said otherwise, so
 *   files beyond 2 GiB are outside of what positions can describe.
 * - Texts are bytes (char *), never examined for an encoding. Numbers in files that the library
 *   writes are little-endian.
 */
#ifndef TVMETA_H
#define TVMETA_H

#include <stdint.h>
#include <stdio.h>
#include <time.h>

#define TVMETA_VERSION_MAJOR 1
#define TVMETA_VERSION_MINOR 0
#define TVMETA_VERSION_PATCH 0

#if defined(TVMETA_STATIC)
#define TVMETA_API
#elif defined(_WIN32) && defined(TVMETA_BUILDING)
#define TVMETA_API __declspec(dllexport)
#elif defined(_WIN32)
#define TVMETA_API __declspec(dllimport)
#else
#define TVMETA_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
#define TVMETA_NOEXCEPT noexcept
extern "C" {
#else
#define TVMETA_NOEXCEPT
#endif

/* ---- Records ------------------------------------------------------------------------------- */

/* Kind of source file, as getExifData and get_exif_data take it. Any other value means a TIFF file
 * whose ImageDescription and Photoshop resources are not looked into (a camera's raw file). */
enum { FILE_TYPE_TIFF = 0, FILE_TYPE_JPEG = 1, FILE_TYPE_PSD = 2 };

/*
 * The metadata of one source photograph. A field for which the source holds nothing is zero (an empty
 * text). Offsets and lengths describe places in the source file. Rationals are numerator, denominator
 * pairs as they stand in the file. 516 bytes, no pointers: it may be copied as it is.
 */
typedef struct ExifInfo {
    int32_t exposureSource;           /* 2: exposure came from the image description; else 0 */
    float exposureTime;               /* seconds */
    float fNumber;                    /* f-number */
    int32_t isoSpeed;                 /* ISO speed */
    float focalLength;                /* millimetres */
    int32_t focalLength35mm;          /* millimetres in 35 mm film terms */
    float focalPlaneXResolution;      /* pixels per focalPlaneResolutionUnit */
    int32_t focalPlaneResolutionUnit; /* EXIF code: 2 inch, 3 centimetre */
    char model[64];                   /* camera model, at most 63 characters */
    char dateTimeOriginal[20];        /* "YYYY:MM:DD HH:MM:SS" */
    int32_t thumbnailWidth;           /* pixels; Photoshop thumbnail only */
    int32_t thumbnailHeight;          /* pixels; Photoshop thumbnail only */
    int32_t thumbnailRowBytes;        /* bytes per row; Photoshop thumbnail only */
    int32_t thumbnailLength;          /* bytes of the embedded JPEG thumbnail */
    int32_t thumbnailOffset;          /* its absolute file offset */
    int32_t orientation;              /* TIFF orientation code, 1 to 8 in valid files */
    int32_t iptcLength;               /* bytes of the IPTC block */
    int32_t iptcOffset;               /* its offset, as the directory or the resource gives it */
    char gpsLatitudeRef;              /* 'N' or 'S' */
    uint32_t gpsLatitude[6];          /* degrees, minutes, seconds */
    char gpsLongitudeRef;             /* 'E' or 'W' */
    uint32_t gpsLongitude[6];         /* degrees, minutes, seconds */
    uint8_t gpsAltitudeRef;           /* 0 above sea level, 1 below */
    uint32_t gpsAltitude[2];          /* metres */
    uint32_t gpsTimeStamp[6];         /* hours, minutes, seconds (UTC) */
    char gpsDateStamp[11];            /* "YYYY:MM:DD" */
    int32_t xmpLength;                /* JPEG: length field of the XMP segment (packet + 31 bytes);
                                         TIFF: bytes of the packet */
    int32_t xmpOffset;                /* offset of the packet */
    char lens[256];                   /* lens name from the XMP packet */
} ExifInfo;

/*
 * Metadata as the writers take it: rationals as numerator, denominator pairs. A rational counts as
 * present when both of its numbers are above zero, an integer when it is above zero, a text when its
 * first byte is not zero. Texts need no terminator when they fill their field. 224 bytes.
 */
typedef struct MetadataBuf {
    int32_t exposureTime[2]; /* seconds */
    int32_t fNumber[2];
    int32_t isoSpeed;
    int32_t exposureSource; /* as in ExifInfo */
    int32_t focalLength[2]; /* millimetres */
    int32_t focalLength35mm;
    int32_t focalPlaneXResolution[2];
    int32_t focalPlaneResolutionUnit;
    int32_t thumbnailOffset; /* offsets and lengths: places in the source file */
    int32_t thumbnailLength;
    int32_t iptcOffset;
    int32_t iptcLength;
    int32_t orientation; /* of the source; the writers take an orientation of their own */
    int32_t xmpOffset;
    int32_t xmpLength;
    char model[64];
    char dateTimeOriginal[20]; /* "YYYY:MM:DD HH:MM:SS" */
    char lens[64];
} MetadataBuf;

/* GPS position as the writers take it: the words of the source, tested as signed numbers. 96 bytes. */
typedef struct GpsBuf {
    int32_t latitude[6];  /* degrees, minutes, seconds */
    int32_t longitude[6]; /* degrees, minutes, seconds */
    int32_t altitude[2];  /* metres */
    int32_t timeStamp[6]; /* hours, minutes, seconds (UTC) */
    char latitudeRef;     /* 'N' or 'S'; 0 absent */
    char longitudeRef;    /* 'E' or 'W'; 0 absent */
    uint8_t altitudeRef;  /* 0 above sea level (not written), 1 below */
    char dateStamp[11];   /* "YYYY:MM:DD" */
} GpsBuf;

/* The image handed to buf2tif. 32 bytes. */
typedef struct TifImageInfo {
    int32_t width;       /* pixels per row, at least 1 */
    int32_t height;      /* rows, 0 or more */
    int32_t channels;    /* interleaved samples per source pixel, 1 to 4; a 2nd or 4th is not written */
    int32_t bitsCode;    /* 8, 16: unsigned integers; 32: IEEE float; 3216: 16-bit IEEE float */
    int32_t resolution;  /* dots per inch */
    int32_t iccLength;   /* bytes of the ICC profile; 0 none */
    int32_t pixelMode;   /* 0: samples are written as they are; 1: 16-bit samples become 8-bit ones */
    int32_t orientation; /* TIFF orientation code; anything but 1 to 8 is written as 1 */
} TifImageInfo;

/* ---- Settings ------------------------------------------------------------------------------ */

/* The processing settings of one run: slots whose meaning depends on the method (constants below).
 * Functions take a pointer to slot 0 and touch only the slots of the method they are given. */
#define SETTINGS_SLOTS 18
typedef float SettingsValues[SETTINGS_SLOTS];

/* Method codes of a settings packet, and the parser's special requests. */
typedef enum SettingsMethod {
    METHOD_DETECT = -1, /* request: which method does the packet hold? */
    METHOD_NONE = 0,    /* a packet whose method name is unknown; in the writers: no settings */
    METHOD_DETAILS_ENHANCER = 1,
    METHOD_TONE_COMPRESSOR = 2,
    METHOD_CONTRAST_OPTIMIZER = 3,
    METHOD_FUSION_ADJUST = 10,
    METHOD_FUSION_INTENSIVE = 11,
    METHOD_FUSION_REAL_ESTATE = 15,
    MODE_LENS = 100 /* request: the lens name of the packet */
} SettingsMethod;

enum { /* Slots of METHOD_DETAILS_ENHANCER. */
       DETAILS_ENHANCER_LUMINOSITY = 0,
       DETAILS_ENHANCER_STRENGTH = 1,
       DETAILS_ENHANCER_COLOR_SATURATION = 2,
       DETAILS_ENHANCER_WHITE_CLIP = 3,
       DETAILS_ENHANCER_BLACK_CLIP = 4,
       DETAILS_ENHANCER_SMOOTHING_LEVEL = 5, /* 0 very high, 1 high, 2 medium, 3 low, 4 very low */
       DETAILS_ENHANCER_MICROCONTRAST = 6,
       DETAILS_ENHANCER_MICROSMOOTHING = 7,
       DETAILS_ENHANCER_GAMMA = 8, /* slider s of 0 to 100 for the gamma 2^((50 - s) / 50) */
       DETAILS_ENHANCER_HIGHLIGHTS_SMOOTHING = 9,
       DETAILS_ENHANCER_SHADOWS_SMOOTHING = 10,
       DETAILS_ENHANCER_SHADOWS_CLIPPING = 11,
       DETAILS_ENHANCER_COLOR_TEMPERATURE = 12,
       DETAILS_ENHANCER_SATURATION_HIGHLIGHTS = 13,
       DETAILS_ENHANCER_SATURATION_SHADOWS = 14,
       DETAILS_ENHANCER_IS_PANO_360 = 15,    /* 1 yes, 0 no */
       DETAILS_ENHANCER_SMOOTHING_MODE = 16, /* 0 light: SMOOTHING_LEVEL; 1 slider: SMOOTHING_SLIDER */
       DETAILS_ENHANCER_SMOOTHING_SLIDER = 17
};

enum { /* Slots of METHOD_TONE_COMPRESSOR. */
       TONE_COMPRESSOR_BRIGHTNESS = 0,
       TONE_COMPRESSOR_COMPRESSION = 1,
       TONE_COMPRESSOR_CONTRAST = 2,
       TONE_COMPRESSOR_WHITE_CLIP = 3,
       TONE_COMPRESSOR_BLACK_CLIP = 4,
       TONE_COMPRESSOR_COLOR_TEMPERATURE = 12,
       TONE_COMPRESSOR_SATURATION = 13
};

enum { /* Slots of METHOD_CONTRAST_OPTIMIZER. */
       CONTRAST_OPTIMIZER_STRENGTH = 0,
       CONTRAST_OPTIMIZER_TONE_COMPRESSION = 1,
       CONTRAST_OPTIMIZER_LIGHTING_EFFECT = 2,
       CONTRAST_OPTIMIZER_WHITE_CLIP = 3, /* clip c for the packet's v: c = 10 (v / 10)^3.0639... */
       CONTRAST_OPTIMIZER_BLACK_CLIP = 4, /* as the white clip */
       CONTRAST_OPTIMIZER_MIDTONE = 8,
       CONTRAST_OPTIMIZER_COLOR_TEMPERATURE = 12,
       CONTRAST_OPTIMIZER_SATURATION = 13,
       CONTRAST_OPTIMIZER_IS_PANO_360 = 15 /* 1 yes, 0 no */
};

enum { /* Slots of METHOD_FUSION_ADJUST. */
       FUSION_ADJUST_ACCENTUATION = 0,
       FUSION_ADJUST_BLENDING_POINT = 1,
       FUSION_ADJUST_SHADOWS = 2,
       FUSION_ADJUST_SATURATION = 3,
       FUSION_ADJUST_WHITE_CLIP = 4,
       FUSION_ADJUST_BLACK_CLIP = 5,
       FUSION_ADJUST_MIDTONES_ADJUSTMENT = 6,
       FUSION_ADJUST_IS_PANO_360 = 7, /* 1 yes, 0 no */
       FUSION_ADJUST_SHARPNESS = 8
};

enum { /* Slots of METHOD_FUSION_INTENSIVE. */
       FUSION_INTENSIVE_STRENGTH = 0,
       FUSION_INTENSIVE_SATURATION = 1,
       FUSION_INTENSIVE_RADIUS = 2
};

enum { /* Slots of METHOD_FUSION_REAL_ESTATE. */
       FUSION_REAL_ESTATE_DEPTH_HIGHLIGHTS = 0,
       FUSION_REAL_ESTATE_HIGHLIGHTS = 1,
       FUSION_REAL_ESTATE_SHADOWS = 2,
       FUSION_REAL_ESTATE_SATURATION = 3,
       FUSION_REAL_ESTATE_IS_PANO_360 = 7, /* 1 yes, 0 no */
       FUSION_REAL_ESTATE_LOCAL_CONTRAST = 8
};

/* ---- Metadata record and byte-order readers ------------------------------------------------ */

/*
 * Sets every field of a record to zero. getExifData does this itself.
 *
 * info: record to clear. Null: nothing happens.
 */
TVMETA_API void init_exifInfo(ExifInfo* info) TVMETA_NOEXCEPT;

/*
 * Read one number from a stream in the byte order of a TIFF structure.
 *
 * stream: advances by 2 (fgetmi2) or 4 (fgetmi4) bytes, less only at its end. Null: as at its end.
 * byteOrder: 0x4949 in its low 16 bits ("II" read big-endian) for little-endian; anything else means
 *   big-endian.
 * Result: the number; there is no failure. At the end of the file a byte missing from a 16-bit number
 *   counts as 0xFF, one missing from a 32-bit number as -1 times its weight (0xFEFEFEFF when all four
 *   are missing).
 * Standard: TIFF 6.0, section 2.
 */
TVMETA_API uint16_t fgetmi2(FILE* stream, int32_t byteOrder) TVMETA_NOEXCEPT;
TVMETA_API int32_t fgetmi4(FILE* stream, int32_t byteOrder) TVMETA_NOEXCEPT;

/*
 * Read one big-endian number from a stream, as JPEG and Photoshop files hold them. Otherwise as
 * fgetmi2 and fgetmi4.
 */
TVMETA_API uint16_t fgetm2(FILE* stream) TVMETA_NOEXCEPT;
TVMETA_API int32_t fgetm4(FILE* stream) TVMETA_NOEXCEPT;

/* ---- Metadata reading ---------------------------------------------------------------------- */

/*
 * Reads the metadata of a source photograph into a record.
 *
 * path: file to read, zero-terminated. Null: -1.
 * fileType: FILE_TYPE_TIFF, FILE_TYPE_JPEG or FILE_TYPE_PSD; any other value reads a TIFF file without
 *   its ImageDescription and Photoshop resources.
 * info: cleared first, whatever the result, then filled. Null: -1.
 * Result:
 *     1  the walk completed; the record holds what was found, which may be nothing
 *    -1  the file cannot be opened; a JPEG without its start-of-image marker, with a segment length
 *        below 2 ("invalid marker\n" goes to stderr) or with five fill bytes in a row or its end where
 *        a marker must stand ("too many padding bytes\n" goes to stderr); a PSD of less than 4 bytes
 *        or whose image resources end, break or run backwards before the EXIF resource
 *    -2  a JPEG without an APP1 segment before its image data; a PSD without "8BPS"; no TIFF byte-order
 *        mark where the TIFF structure must begin
 *    -3  a PSD of 2 channels or fewer or not in RGB; a TIFF magic number other than 42
 *   -10  a JPEG whose chain of segments breaks after the EXIF segment; the record is filled
 * On failure the record is cleared, but for what was found before: the lens name and the XMP fields of
 *   a JPEG whose EXIF data turn out to be none, and the whole record when it is the last pass over a
 *   JPEG's segments that fails (-10, and -1 from a broken segment behind the EXIF data).
 * Limits: the first three image directories are read; at most 2^20 entries of EXIF and GPS directories
 *   and 64 MiB of description and Photoshop payloads, further ones are passed over; only the first
 *   APP1 segment can be the EXIF data and only the next one, within ten markers, the XMP packet. The
 *   packet's place is kept only if it holds processing settings.
 * Standards: TIFF 6.0, EXIF 2.3, JPEG (ITU-T T.81), XMP part 3, Photoshop file format.
 */
TVMETA_API int32_t getExifData(const char* path, int32_t fileType, ExifInfo* info) TVMETA_NOEXCEPT;

/*
 * Read an EXIF (parse_exif_data) or GPS (parse_gps_data) directory into a record.
 *
 * stream: stands at the directory's entry count; afterwards at the end of its last entry. Null: 1.
 * ignored: not used; pass 0.
 * byteOrder: as for fgetmi2.
 * tiffBase: file offset of the TIFF header, to which the directory's offsets are added modulo 2^32.
 * info: gets the values found; other fields stay as they are. Null: 1.
 * Result: 1 always.
 * Limits: a directory entry that lies beyond the end of the file yields the end-of-file values of
 *   fgetmi2 and fgetmi4; offsets before the start of the file leave the stream where it is.
 * Standard: EXIF 2.3, section 4.6.
 */
TVMETA_API int32_t parse_exif_data(FILE* stream, int32_t ignored, int32_t byteOrder, int32_t tiffBase,
                                   ExifInfo* info) TVMETA_NOEXCEPT;
TVMETA_API int32_t parse_gps_data(FILE* stream, int32_t ignored, int32_t byteOrder, int32_t tiffBase,
                                  ExifInfo* info) TVMETA_NOEXCEPT;

/*
 * Reads exposure time and ISO speed from an ImageDescription text of comma-separated fields, where
 * field 8 is the exposure ("1/250s") and fields 9 to 11 hold colour values ("R30", "G30", "B30").
 *
 * stream: stands at the text; its position afterwards is undefined. Null: -1.
 * size: bytes of text; a zero byte ends it earlier.
 * info: gets exposureTime, isoSpeed and exposureSource if the text has that layout. Null: -1.
 * Result:
 *   0 or more  the last colour value read (0: none; it can also be negative, since characters other
 *              than digits count by their distance from '0')
 *          -1  size is below 1 or more than the file holds, or memory is short; nothing is changed
 * Limits: tokens of up to 6 characters; an ISO speed beyond 32 bits saturates.
 */
TVMETA_API int32_t parse_image_description(FILE* stream, int32_t size, ExifInfo* info) TVMETA_NOEXCEPT;

/*
 * Finds the JPEG thumbnail (resource 0x040C) and the IPTC block (0x0404) in Photoshop image resources.
 *
 * stream: stands at the resources; its position afterwards is undefined. Null: -4.
 * size: bytes of resources; what the file does not hold counts as zeros.
 * info: gets the thumbnail and IPTC fields of the last match of each. Null: -4.
 * Result:
 *   compressed size of the last thumbnail found; 1 when there is none
 *   -4  no memory; nothing is changed
 * Limits: resources with a name are not recognised as IPTC.
 * Standard: Photoshop file format, image resources.
 */
TVMETA_API int32_t parse_photoshop_data(FILE* stream, int32_t size, ExifInfo* info) TVMETA_NOEXCEPT;

/*
 * Names the colour space of an ICC version 2 profile from its 'desc' element.
 *
 * size: bytes of the profile.
 * profile: the profile. Null: -1.
 * name: 32 bytes, cleared first. Null: -1.
 * Result:
 *   4, 9, 12  bytes of the name, when the description names "sRGB", "Adobe RGB" or "ProPhoto RGB"
 *         32  any other description: its first 32 bytes, without a terminator of their own
 *         -1  no description found; name is all zero
 * Standard: ICC.1:2001-04, textDescriptionType.
 */
TVMETA_API int32_t get_profile_name(int32_t size, const unsigned char* profile, char name[32]) TVMETA_NOEXCEPT;

/*
 * Copies the IPTC block of a source file, as ExifInfo locates it.
 *
 * path: file to read, zero-terminated. Null: -1.
 * count, offset: bytes to copy and where they start in the file.
 * buffer: count bytes. Null: -1.
 * Result:
 *   count  the block was copied and begins with the dataset marker 0x1C
 *       0  count is 0 or less, or the region does not end before the last byte of the file, or offset
 *          is negative; the buffer is untouched
 *      -1  the file cannot be opened or measured, is empty, or gave fewer bytes than it should
 *      -2  the first byte is not 0x1C; the bytes have been copied
 * Standard: IPTC-IIM 4.1, section 1.5.
 */
TVMETA_API int32_t read_iptc(const char* path, int32_t count, int32_t offset, unsigned char* buffer) TVMETA_NOEXCEPT;

/*
 * Finds a tag in the directories of a little-endian TIFF file, so that its entry can be patched.
 *
 * stream: stands at the start of the file; its position afterwards is undefined. Null: -3.
 * tag: tag to look for.
 * count, value: get the entry's count and value (or value offset). Null: -3.
 * Result:
 *   0 or more  file offset of the first entry with that tag
 *          -1  no directory holds it; or the chain of directories comes back on itself, or holds more
 *              than 2^22 entries
 *          -2  the file does not begin with "II" and 42, or a directory is empty
 *          -3  a seek failed
 * On failure count and value are untouched.
 * Standard: TIFF 6.0, section 2.
 */
TVMETA_API int32_t get_tif_tag(FILE* stream, int32_t tag, int32_t* count, int32_t* value) TVMETA_NOEXCEPT;

/*
 * Gives the seconds from a date and time, as EXIF writes it, to a reference time.
 *
 * text: "YYYY:MM:DD HH:MM:SS", zero-terminated, taken as local time of the process; numbers out of
 *   their range carry over as in mktime. Null: -1.
 * reference: calendar time to count to.
 * seconds: gets reference minus the text's time. Null: -1.
 * Result:
 *    1  done
 *   -1  the text does not hold six numbers of at most 32 bits in that form; seconds is untouched
 * Standard: EXIF 2.3, DateTimeOriginal.
 */
TVMETA_API int32_t time_from_datetime(const char* text, time_t reference, float* seconds) TVMETA_NOEXCEPT;

/* ---- Settings reading ---------------------------------------------------------------------- */

/*
 * Reads the processing settings, their method or the lens name out of an XMP text.
 *
 * method: METHOD_DETECT, MODE_LENS, or the method whose slots are wanted.
 * length: bytes of buffer, counting its terminating zero.
 * buffer: the text. Null: -3.
 * lens: MODE_LENS only: at least 64 bytes, cleared by the caller; gets the name, at most 63 bytes,
 *   without a terminator. May be null in other modes; null with MODE_LENS: -3.
 * settings: method codes only: gets the slots whose tags are found, the others stay. May be null in
 *   other modes; null with a method code: -3.
 * Result:
 *   1, 2, 3, 10, 11, 15  METHOD_DETECT: the method found
 *            47 or more  method code: offset of the method tag; the slots were read
 *             0 or more  MODE_LENS: the offset where the search ended
 *                     0  no settings declaration; METHOD_DETECT: also an unknown method name
 *                    -3  length is below 1, or the last byte is not zero
 *                    -5  no method tag behind a readable version, a method other than the one asked
 *                        for, or a request that is none of the above
 * On failure lens and settings are untouched.
 * Limits: the text is searched byte by byte, not parsed as XML; values are not checked for range.
 * Standard: XMP part 1, serialisation in RDF; XMP part 2, EXIF auxiliary properties.
 */
TVMETA_API int32_t get_settings_from_xmp(int32_t method, int32_t length, const char* buffer, char* lens,
                                         float* settings) TVMETA_NOEXCEPT;

/*
 * Reads a settings file, such as write_xmp makes.
 *
 * path: file to read, zero-terminated. Null: -1.
 * method: METHOD_DETECT or a method code.
 * settings: as for get_settings_from_xmp. May be null with METHOD_DETECT.
 * Result: as get_settings_from_xmp gives it for the whole file (0 for an empty one), or
 *   -1  the file cannot be opened or measured, is a directory, or is larger than 2^31 - 2 bytes
 *   -2  fewer bytes than its size could be read
 *   -4  no memory
 *   -5  also: method is MODE_LENS; the file is not opened
 * On failure settings is untouched.
 */
TVMETA_API int32_t read_xmp(const char* path, int32_t method, float* settings) TVMETA_NOEXCEPT;

/*
 * Reads a region of a file and tells which method the settings packet in it holds.
 *
 * path: file to read, zero-terminated. Null: -1.
 * count, offset: bytes to read and where they start.
 * buffer: count + 1 bytes, cleared by the caller; gets the bytes. Null: -3.
 * Result:
 *   1, 2, 3, 10, 11, 15  the method
 *    0  no settings declaration or an unknown method name; or the region does not end before the last
 *       byte of the file or starts before its first
 *   -1  the file cannot be opened or measured, or is empty
 *   -3  count is negative, or the byte at offset count of buffer is not zero
 *   -5  no method tag behind a readable version
 * On 0 for the region, -1, and -3 for a negative count the buffer is untouched.
 */
TVMETA_API int32_t extract_xmp(const char* path, int32_t count, int32_t offset, char* buffer) TVMETA_NOEXCEPT;

/*
 * Counts the settings declarations in an XMP text.
 *
 * length: bytes of buffer, counting its terminating zero.
 * buffer: the text. Null: -3.
 * Result: the number of declarations, or -3 when length is below 1 or the last byte is not zero.
 */
TVMETA_API int32_t tvsettings_occurences_in_xmp(int32_t length, const char* buffer) TVMETA_NOEXCEPT;

/* ---- Settings writing ---------------------------------------------------------------------- */

/*
 * Writes a settings packet to memory, in two passes: one that measures it, one that writes it.
 *
 * pass: 0 measures; any other value writes, and is the number at the end of the namespace URI (1 if it
 *   is below 1).
 * method: method code, or method code + 200 for the settings description without the packet around it.
 *   0 or less: no settings description. A code that names no method: a description without parameters.
 * settings: the slots of the method. May be null when no settings description is asked for; else null: 0.
 * lensLength: above 0 asks for a description with the lens name.
 * lens: its text, zero-terminated, written as it stands. May be null when lensLength is 0 or less; else
 *   null: 0.
 * out: as many bytes as the measuring pass gave for the same other arguments (one more for each digit
 *   of pass beyond two). May be null when measuring; else null: 0. No terminating zero is written.
 * Result: the length of the packet.
 * Limits: a text longer than 2^31 - 1 bytes gives 0 and writes nothing.
 * Standard: XMP part 1, serialisation in RDF.
 */
TVMETA_API int32_t embed_xmp(int32_t pass, int32_t method, const float* settings, int32_t lensLength, const char* lens,
                             char* out) TVMETA_NOEXCEPT;

/*
 * Writes a settings file: one packet, nothing else.
 *
 * path: file to create or overwrite, zero-terminated. Null: -1.
 * method: method code.
 * settings: the slots of the method. Null: -2.
 * Result:
 *    1  written
 *   -1  the file cannot be opened for writing
 *   -2  not a method code; no file is touched
 *   -3  the packet could not be written whole; what was written of it stays
 *   -4  no memory; the file has been created or emptied
 */
TVMETA_API int32_t write_xmp(const char* path, int32_t method, const float* settings) TVMETA_NOEXCEPT;

/*
 * Inserts a settings description into an XMP packet in memory, in two passes as embed_xmp.
 *
 * pass: 0 measures the description; any other value inserts it and is passed on to embed_xmp.
 * method: method code.
 * settings: the slots of the method. Null: -1.
 * dataLength: bytes of the packet. Not used when measuring.
 * shift: bytes by which the text behind the insertion point moves: the result of the measuring pass
 *   (one more for each digit of pass beyond two). Not used when measuring.
 * buffer: the packet, with room for dataLength + shift bytes; changed in place. May be null when
 *   measuring; else null: -1.
 * Result:
 *   above 0  bytes of the description
 *        -1  fewer than 3 bytes follow the insertion point, or dataLength or shift is negative
 *        -4  no memory
 *   -dataLength, or -34 (too short for an xmpmeta opening), or minus the 65 bytes of an RDF opening and
 *             the offset behind the xmpmeta opening: one of the two openings was not found
 * On failure the buffer is untouched.
 */
TVMETA_API int32_t insert_xmp(int32_t pass, int32_t method, const float* settings, int32_t dataLength, int32_t shift,
                              char* buffer) TVMETA_NOEXCEPT;

/* ---- Metadata and image writing ------------------------------------------------------------ */

/*
 * Converts a metadata record into the writers' records.
 *
 * info: record to convert. Null: 0.
 * metadata, gps: get the values. Clear both before the first conversion: a rational whose float is not
 *   above zero leaves its field as it was. Null: 0.
 * Result: the numerator in metadata->exposureTime afterwards.
 * Limits: v of 1 or more becomes trunc(100 v) / 100, less becomes 100 / trunc(100 / v); numbers beyond
 *   2147483647 saturate. The lens name is cut to 64 bytes.
 */
TVMETA_API int32_t metadataBufFromExifInfo(const ExifInfo* info, MetadataBuf* metadata, GpsBuf* gps) TVMETA_NOEXCEPT;

/*
 * Reads a photograph and converts its record in one step: getExifData, then metadataBufFromExifInfo.
 *
 * path, fileType: as for getExifData.
 * metadata, gps: as for metadataBufFromExifInfo.
 * Result: as metadataBufFromExifInfo; a file that cannot be read is converted as an empty record.
 */
TVMETA_API int32_t get_exif_data(const char* path, int32_t fileType, MetadataBuf* metadata,
                                 GpsBuf* gps) TVMETA_NOEXCEPT;

/*
 * Sizes the EXIF and GPS directories of a result and derives the camera make from the model.
 *
 * metadata, gps: what is to be written.
 * exifCount, exifBytes: get the entries of the EXIF directory (0 to 5) and the bytes of its values.
 * gpsCount, gpsBytes: get the same for the GPS directory (0 to 9 entries).
 * modelCount, makeCount, dateCount, gpsDateCount: get the TIFF ASCII counts of the texts, terminator
 *   included; 0 for an empty text.
 * lensCount: gets the bytes of lens text for the settings packet.
 * make: 64 bytes, cleared first; gets the camera make.
 * Any null: 0, nothing is touched.
 * Result: exifCount + gpsCount.
 */
TVMETA_API int32_t get_exif_count(const MetadataBuf* metadata, int32_t* exifCount, int32_t* exifBytes,
                                  const GpsBuf* gps, int32_t* gpsCount, int32_t* gpsBytes, int32_t* modelCount,
                                  int32_t* makeCount, int32_t* dateCount, int32_t* gpsDateCount, int32_t* lensCount,
                                  char* make) TVMETA_NOEXCEPT;

/*
 * Saves an image as an uncompressed little-endian TIFF file of one strip, with its metadata.
 *
 * pixels: rows of interleaved samples in machine byte order. May be null when the height is 0.
 * info: the image.
 * rowPitch: distance between the starts of two source rows, in bytes (pixelMode 0) or 16-bit samples
 *   (pixelMode 1); negative for bottom-up buffers, with pixels at the first row to be written.
 * icc: info->iccLength bytes of ICC profile; left out when its header says that it is not for RGB.
 * metadata, gps: camera, exposure, date, lens and position to be written.
 * iptcLength, iptc: IPTC block, stored padded with zeros to a multiple of 4 bytes; 0 none.
 * method, settings: processing settings for the XMP packet; METHOD_NONE: none.
 * xmpLength, xmp: XMP packet of the caller; 0 or 1: none. Its last byte should be zero and is not
 *   stored. It is stored when it holds processing settings, or when method is 0 or less; otherwise a
 *   packet is made from settings and lens.
 * path: file to create or overwrite, zero-terminated.
 * icc, iptc, xmp, settings may be null when nothing is announced for them.
 * Result:
 *   0 or more  rows in the last block written (the height when the image fits in one block of 1 MiB)
 *          -1  the file cannot be opened ("Could not open for writing file:  %s\n" goes to stderr), or
 *              no memory for the directory
 *          -2  the header cannot be written
 *          -3  pixels cannot be written
 *          -4  no memory for pixels
 *          -6  bad arguments, before the file is touched: a field of info outside of what TifImageInfo
 *              lists, pixelMode 1 with a bitsCode other than 8, a negative length, a null pointer where
 *              data is announced, or a file that would exceed 2^31 - 1 bytes
 *         -12  the directory cannot be written, or the file cannot be closed without an error
 * On failure after the file was opened it is left incomplete.
 * Limits: memory for one block of about 1 MiB (one row if it is larger) and for the metadata. Values
 *   may start at odd offsets. resolution * 1000 wraps modulo 2^32.
 * Standards: TIFF 6.0; EXIF 2.3; XMP part 3; IPTC-IIM in tag 33723.
 */
TVMETA_API int32_t buf2tif(const void* pixels, const TifImageInfo* info, int32_t rowPitch, const unsigned char* icc,
                           const MetadataBuf* metadata, const GpsBuf* gps, int32_t iptcLength,
                           const unsigned char* iptc, int32_t method, const float* settings, int32_t xmpLength,
                           const char* xmp, const char* path) TVMETA_NOEXCEPT;

/*
 * Writes make, model, orientation, EXIF and GPS data as a TIFF structure in memory: what follows the
 * EXIF identifier in a JPEG APP1 segment.
 *
 * exifCount to gpsDateCount: as get_exif_count gives them for the same records; they fix the layout.
 * orientation: TIFF orientation code; anything but 1 to 8 is written as 1.
 * metadata, gps: what is to be written. Null: -1.
 * make: 64 bytes, the text of get_exif_count. Null: -1.
 * buffer: zero-filled, of the block's size: 14 + 12 N, plus the counts of make and model above 4, plus
 *   2 + 12 n + 4 + value bytes for each directory of n > 0 entries; N counts orientation, make, model
 *   and directories. Null: -1.
 * Result:
 *   the block's size
 *   -1  nothing to describe (make, model, EXIF and GPS counts all 0), or a block beyond 2^31 - 1 bytes;
 *       the buffer is untouched
 * Limits: nothing is read beyond a record's field or written beyond the block, whatever the counts.
 * Standards: TIFF 6.0; EXIF 2.3.
 */
TVMETA_API int32_t write_exif_buf(int32_t exifCount, int32_t exifBytes, int32_t gpsCount, int32_t gpsBytes,
                                  int32_t modelCount, int32_t makeCount, int32_t dateCount, int32_t gpsDateCount,
                                  int32_t orientation, const MetadataBuf* metadata, const GpsBuf* gps, const char* make,
                                  unsigned char* buffer) TVMETA_NOEXCEPT;

/*
 * Replaces the ICC profile of a little-endian TIFF file: appends the new one and repoints the entry.
 *
 * length, profile: the new profile. Null or a negative length: -2.
 * path: file to change, zero-terminated. Null: -1.
 * Result:
 *   length  replaced
 *        0  no ICC profile entry, or not a little-endian TIFF file; nothing is changed
 *       -1  the file cannot be opened ("Can not open input file for reading\n", "... for update\n" or
 *           "... for appending\n" goes to stderr), or its entry changed meanwhile
 *       -2  bad arguments, or a file that would exceed 2^31 - 1 bytes (nothing is changed); or a seek
 *           or a write failed
 * On a failed write the file stays as far as it was changed. The old profile's bytes stay in the file.
 * Limits: an entry that the end of the file cuts short is completed; the profile then lies that much
 *   behind the place that the entry gives, in a file that was broken before.
 * Standard: TIFF 6.0; ICC.1 annex B.4.
 */
TVMETA_API int32_t update_tif_profile(int32_t length, const unsigned char* profile, const char* path) TVMETA_NOEXCEPT;

/*
 * Adds a keyword to an IPTC block: behind its last keyword, else behind its last record-2 dataset, else
 * (an empty block) behind a new record version.
 *
 * length, block: the existing block. block may be null when length is 0; else null: -1.
 * keywordLength, keyword: the keyword. keyword may be null when keywordLength is 0; else null: -1.
 * out: length + 5 + keywordLength bytes (7 more when length is 0), not overlapping block: the new
 *   block. Null: -1.
 * Result:
 *   offset of the new dataset in out
 *   -1  the dataset to follow runs past the end of the block; a negative length; a block of 1 to 4
 *       bytes; a keyword longer than 32767 bytes
 * On failure out is untouched.
 * Limits: record-2 datasets are found by their first bytes, not by walking the block.
 * Standard: IPTC-IIM 4.1, datasets 2:00 and 2:25.
 */
TVMETA_API int32_t add_iptc_keyword(int32_t length, const unsigned char* block, int32_t keywordLength,
                                    const char* keyword, unsigned char* out) TVMETA_NOEXCEPT;

/* ---- HDR statistics ------------------------------------------------------------------------ */

/*
 * Measures the luminance of an HDR image: smallest positive, largest and mean value.
 *
 * width, height: pixels per row and rows; 0 or less: no pixels.
 * pixels: per row four planes of width bytes: blue, green and red mantissas, then the exponent e; a
 *   pixel's luminance is ((19 b + 183 g + 54 r) >> 8) * 2^(e - 128), and e = 0 means no pixel. May be
 *   null when there are no pixels; else null: -4.
 * results: 3 floats: minimum (99999997952 if no value is positive), maximum (0 if none is), mean of the
 *   pixels whose e is not 0 (0 if there is none). Null: -4.
 * Result:
 *   height (0 when it is negative)
 *   -4  no memory; results is untouched
 * Limits: values beyond float become infinity. Values are summed in row order in double precision.
 * Standard: luminance weights of ITU-R BT.709.
 */
TVMETA_API int32_t hdrMinMax(int32_t width, int32_t height, const unsigned char* pixels,
                             float results[3]) TVMETA_NOEXCEPT;

#ifdef __cplusplus
}
#endif

#endif
