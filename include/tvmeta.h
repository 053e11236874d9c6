/**
 * @file
 * Image metadata for HDR photo applications.
 *
 * The library reads the metadata of photographs (JPEG, TIFF, PSD) into one record, writes result images as
 * TIFF files with that metadata, stores an application's processing settings as an XMP packet, patches ICC
 * profiles and IPTC keywords, and measures HDR images.
 *
 * Save an image with the camera data of a photograph:
 *
 *     ExifInfo photo;
 *     MetadataBuf metadata = {0};
 *     GpsBuf gps = {0};
 *     TifImageInfo image = {1024, 768, 3, 8, 300, 0, 0, 1};
 *     if (getExifData("photo.jpg", FILE_TYPE_JPEG, &photo) != GET_EXIF_OK) {
 *         return 1;
 *     }
 *     metadataBufFromExifInfo(&photo, &metadata, &gps);
 *     return buf2tif(pixels, &image, 1024 * 3, NULL, &metadata, &gps, 0, NULL, METHOD_NONE, NULL, 0, NULL,
 *                    "result.tif") < 0;
 *
 * Conventions for every function:
 *
 * - Threads: the library has no state, no start-up and no locks. Functions may run on any number of threads
 *   at once if the calls do not share a record, a buffer that is written, a stream or an output file.
 * - Ownership: records, buffers and streams belong to the caller. No pointer is kept after a call. A function
 *   with a path argument opens and closes the file itself. A function with a stream argument starts at the
 *   stream's position and leaves the stream open; the stream must be seekable and opened in binary mode.
 * - Results: each function lists all of its results. Negative results are failures, except numbers that are read
 *   from a file (fgetmi4(), fgetm4(), parse_image_description(), parse_photoshop_data()) or from a record that was
 *   not cleared (metadataBufFromExifInfo()). No exception leaves the library, errno is not part of a result, and
 *   nothing depends on the locale of the process.
 * - Messages: a few failures also print one line to stderr. The line is quoted at the result.
 * - Null pointers: an argument may be null only where its description says so. Elsewhere a null pointer gives
 *   the result listed for it; outputs are as after any other failure.
 * - Sizes: offsets, lengths and counts are signed 32-bit numbers of bytes unless stated otherwise. Positions
 *   in files beyond 2 GiB cannot be expressed.
 * - Paths: zero-terminated; UTF-8 on Windows, bytes for the system elsewhere. Name regular files: a FIFO that no
 *   program writes to (or, for an output file, reads) makes a function wait for ever. tvmeta_open() refuses one.
 * - Read errors: functions that read photographs, and update_tif_profile() in its search for the entry, treat a
 *   failed read as the end of the file, unless their results say otherwise. tvmeta_read_photo() reports it.
 * - Streams: a FILE pointer requires that caller and library use the same C runtime.
 * - Floating point: the default environment is assumed (round to nearest, subnormal numbers not flushed).
 * - Texts: bytes; their encoding is not examined. Numbers in written files are little-endian.
 */
#ifndef TVMETA_H
#define TVMETA_H

#include <stdint.h>
#include <stdio.h>
#include <time.h>

#define TVMETA_VERSION_MAJOR 1 /**< version of this header; incremented for incompatible changes */
#define TVMETA_VERSION_MINOR 2 /**< incremented for additions */
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
 * Returns the version of the library at run time, which may differ from that of the header.
 *
 * @return the version, such as "1.1.0": static text, never null.
 */
TVMETA_API const char* tvmeta_version(void) TVMETA_NOEXCEPT;

/** @defgroup records Records
 *  @{ */

/** File types of photographs. Functions treat any other value as a TIFF file whose ImageDescription and
 * Photoshop resources are not read (a camera raw file). */
enum { FILE_TYPE_TIFF = 0, FILE_TYPE_JPEG = 1, FILE_TYPE_PSD = 2 };

/** The metadata of one photograph. A field that the photograph lacks is zero (an empty text). Rationals are pairs
 * of numerator and denominator, as in the file. 516 bytes, no pointers: it may be copied.
 *
 * An offset from a directory (TIFF tags 700 and 33723) counts from the TIFF header: in a TIFF file from the start
 * of the file, but not in a JPEG or PSD file. tvmeta_read_photo() gives positions in the file for all of them. */
typedef struct ExifInfo {
    int32_t exposureSource;           /**< 2: the image description has plausible values; else 0 */
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
    int32_t thumbnailOffset;          /**< absolute file offset of the thumbnail */
    int32_t orientation;              /**< TIFF orientation code, 1 to 8 in valid files */
    int32_t iptcLength;               /**< bytes of the IPTC block */
    int32_t iptcOffset;               /**< Photoshop resource: absolute file offset of the block;
                                         tag 33723: offset from the TIFF header */
    char gpsLatitudeRef;              /**< 'N' or 'S' */
    uint32_t gpsLatitude[6];          /**< degrees, minutes, seconds */
    char gpsLongitudeRef;             /**< 'E' or 'W' */
    uint32_t gpsLongitude[6];         /**< degrees, minutes, seconds */
    uint8_t gpsAltitudeRef;           /**< 0 above sea level, 1 below */
    uint32_t gpsAltitude[2];          /**< metres */
    uint32_t gpsTimeStamp[6];         /**< hours, minutes, seconds (UTC) */
    char gpsDateStamp[11];            /**< "YYYY:MM:DD" */
    int32_t xmpLength;                /**< XMP segment of a JPEG: its length field (packet + 31 bytes);
                                         tag 700: bytes of the packet */
    int32_t xmpOffset;                /**< XMP segment: absolute file offset of the packet;
                                         tag 700: offset from the TIFF header */
    char lens[256];                   /**< lens name from the XMP packet of a JPEG */
} ExifInfo;

/** Metadata for the writers: rationals as pairs of numerator and denominator. A rational is present if both
 * numbers are above zero, an integer if it is above zero, a text if its first byte is not zero. A text that
 * fills its field needs no terminator. 224 bytes. */
typedef struct MetadataBuf {
    int32_t exposureTime[2];          /**< seconds */
    int32_t fNumber[2];               /**< f-number */
    int32_t isoSpeed;                 /**< ISO speed */
    int32_t exposureSource;           /**< as in ExifInfo */
    int32_t focalLength[2];           /**< millimetres */
    int32_t focalLength35mm;          /**< millimetres in 35 mm film terms */
    int32_t focalPlaneXResolution[2]; /**< pixels per focalPlaneResolutionUnit */
    int32_t focalPlaneResolutionUnit; /**< EXIF code: 2 inch, 3 centimetre */
    int32_t thumbnailOffset;          /**< offsets and lengths refer to the photograph, as in ExifInfo */
    int32_t thumbnailLength;          /**< bytes */
    int32_t iptcOffset;               /**< as in ExifInfo */
    int32_t iptcLength;               /**< bytes */
    int32_t orientation;              /**< of the photograph; writers have an argument of their own */
    int32_t xmpOffset;                /**< as in ExifInfo */
    int32_t xmpLength;                /**< as in ExifInfo */
    char model[64];                   /**< camera model */
    char dateTimeOriginal[20];        /**< "YYYY:MM:DD HH:MM:SS" */
    char lens[64];                    /**< lens name */
} MetadataBuf;

/** GPS position for the writers: the words of the photograph as signed numbers. 96 bytes. */
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

/** The image that buf2tif() writes. 32 bytes. */
typedef struct TifImageInfo {
    int32_t width;       /**< pixels per row, at least 1 */
    int32_t height;      /**< rows, 0 or more */
    int32_t channels;    /**< interleaved samples per source pixel, 1 to 4; a 2nd or 4th is not written */
    int32_t bitsCode;    /**< 8, 16: unsigned integers; 32: IEEE float; 3216: 16-bit IEEE float */
    int32_t resolution;  /**< dots per inch */
    int32_t iccLength;   /**< bytes of the ICC profile; 0 none */
    int32_t pixelMode;   /**< 0: samples are written unchanged; 1: 16-bit samples are written as 8-bit */
    int32_t orientation; /**< TIFF orientation code; other values than 1 to 8 are written as 1 */
} TifImageInfo;

/** Slots of a SettingsValues. */
#define SETTINGS_SLOTS 18

/** The processing settings of one run. What a slot contains depends on the method (constants at the settings
 * functions). Functions receive a pointer to slot 0 and access only the slots of the method. */
typedef float SettingsValues[SETTINGS_SLOTS];

/** @}
 *  @defgroup reading Read a photograph
 *  @{ */

/** Results of tvmeta_file_type() besides the file types. */
enum { TVMETA_FILE_UNREADABLE = -1, TVMETA_FILE_UNKNOWN = -2 };

/**
 * Detects the type of a photograph by its first four bytes.
 *
 * @param path  file to read. Null: -1.
 * @retval 0  FILE_TYPE_TIFF: starts with "II" 42 or "MM" 42, which includes most camera raw files
 * @retval 1  FILE_TYPE_JPEG: starts with FF D8
 * @retval 2  FILE_TYPE_PSD: starts with "8BPS"
 * @retval -1  TVMETA_FILE_UNREADABLE: the file cannot be opened or read, or is a directory
 * @retval -2  TVMETA_FILE_UNKNOWN: starts with other bytes (such as BigTIFF), or is too short for any of these
 */
TVMETA_API int32_t tvmeta_file_type(const char* path) TVMETA_NOEXCEPT;

/** Results of getExifData(). */
enum {
    GET_EXIF_OK = 1,
    GET_EXIF_UNREADABLE = -1,
    GET_EXIF_WRONG_SIGNATURE = -2,
    GET_EXIF_UNSUPPORTED = -3,
    GET_EXIF_BROKEN_CHAIN = -10
};

/**
 * Reads the metadata of a photograph into a record.
 *
 * @param path  file to read. Null: -1.
 * @param fileType  FILE_TYPE_TIFF, FILE_TYPE_JPEG or FILE_TYPE_PSD. You must pass the file type;
 *   tvmeta_file_type() detects it. Any other value reads a TIFF file without its ImageDescription and
 *   Photoshop resources.
 * @param info  receives the metadata; cleared first, whatever the result. Null: -1.
 * @retval 1  GET_EXIF_OK: the record contains what was found, which may be nothing
 * @retval -1  GET_EXIF_UNREADABLE: the file cannot be opened. JPEG: no start-of-image marker; a segment length
 *   below 2 ("invalid marker"); five bytes FF in a row, or the end of the file, where a marker is expected
 *   ("too many padding bytes"). PSD: shorter than 4 bytes; the image resources end, break or point backwards
 *   before the EXIF resource
 * @retval -2  GET_EXIF_WRONG_SIGNATURE: a JPEG without an APP1 segment before its image data; a PSD without
 *   "8BPS"; no TIFF byte-order mark at the start of the TIFF structure; a path that leads to a folder, with
 *   the file type of a TIFF file (on Windows -1)
 * @retval -3  GET_EXIF_UNSUPPORTED: a PSD with fewer than 3 channels or not in RGB; a TIFF magic number other
 *   than 42
 * @retval -10  GET_EXIF_BROKEN_CHAIN: the chain of JPEG segments breaks, or has fill bytes, before the first APP13
 *   segment and the image data
 * @failure the record is cleared, with two exceptions. A JPEG whose EXIF segment contains no TIFF structure
 *   keeps the lens name and the XMP fields. If only the search for the Photoshop segment of a JPEG fails (-10,
 *   or -1 for an invalid marker), the record is complete apart from that segment. An invalid marker among the
 *   ten that are searched for the XMP packet is found earlier: the record is cleared.
 * @limits a read error counts as the end of the file, so the result can be 1 with a partial record. Three image
 *   directories; 2^20 entries of EXIF and GPS directories; 64 MiB of ImageDescription and Photoshop payloads,
 *   and the rest of the payload that exceeds them. Anything beyond is skipped. In a JPEG only the first APP1
 *   segment can contain EXIF data, and only the next APP1 within ten markers the XMP packet; its position is
 *   recorded only if it contains processing settings. TIFF and PSD files: the position of the packet in
 *   tag 700 is always recorded; an XMP resource of a PSD is not read.
 * @standard TIFF 6.0; EXIF 2.3; JPEG (ITU-T T.81); XMP storage in files; Photoshop file format.
 */
TVMETA_API int32_t getExifData(const char* path, int32_t fileType, ExifInfo* info) TVMETA_NOEXCEPT;

/**
 * Reads a photograph and converts its record for the writers: getExifData(), then metadataBufFromExifInfo().
 *
 * @param path,fileType  as for getExifData().
 * @param metadata,gps  as for metadataBufFromExifInfo(). Null: 0.
 * @return as metadataBufFromExifInfo(). Whatever getExifData() leaves in the record is converted: nothing if the
 *   file cannot be opened, a part of the metadata after a read error.
 */
TVMETA_API int32_t get_exif_data(const char* path, int32_t fileType, MetadataBuf* metadata,
                                 GpsBuf* gps) TVMETA_NOEXCEPT;

/** Results of read_iptc() besides the count. */
enum { READ_IPTC_OUTSIDE = 0, READ_IPTC_UNREADABLE = -1, READ_IPTC_NOT_IPTC = -2 };

/**
 * Copies the IPTC block of a photograph. In a JPEG or PSD file the offset of tag 33723 in ExifInfo counts from the
 * TIFF header, not from the start of the file.
 *
 * @param path  file to read. Null: -1.
 * @param count,offset  size of the region and its start in the file.
 * @param buffer  receives count bytes. May be null if count is 0 or less; else null: -1.
 * @retval count  the block was copied, and starts with the dataset marker 0x1C
 * @retval 0  READ_IPTC_OUTSIDE: count is 0 or less, offset is negative, or the region does not end before the
 *   last byte of the file
 * @retval -1  READ_IPTC_UNREADABLE: the file cannot be opened or measured, is empty or a directory, or fewer
 *   bytes could be read
 * @retval -2  READ_IPTC_NOT_IPTC: the first byte is not 0x1C
 * @failure the buffer is unchanged on 0; on -2 it contains the bytes; on -1 those that could be read.
 * @standard IPTC-IIM 4.1, section 1.5.
 */
TVMETA_API int32_t read_iptc(const char* path, int32_t count, int32_t offset, unsigned char* buffer) TVMETA_NOEXCEPT;

/** Results of extract_xmp() besides those of get_settings_from_xmp(). */
enum { EXTRACT_XMP_OUTSIDE = 0, EXTRACT_XMP_UNREADABLE = -1 };

/**
 * Reads a region of a file, and detects the method of the settings packet in it.
 *
 * @param path  file to read. Null: -1.
 * @param count,offset  size of the region and its start in the file.
 * @param buffer  receives count bytes; count + 1 bytes, cleared by the caller. Null: -3.
 * @retval 1,2,3,10,11,15  the method
 * @retval 0  EXTRACT_XMP_OUTSIDE: offset is negative, or the region does not end before the last byte of the
 *   file. XMP_NO_SETTINGS: no settings declaration, or an unknown method name
 * @retval -1  EXTRACT_XMP_UNREADABLE: the file cannot be opened or measured, is empty, or is a directory
 * @retval -3  XMP_NOT_TERMINATED: count is negative (and neither -1 nor 0 applies), or the byte of buffer at
 *   offset count is not zero
 * @retval -5  XMP_OTHER_METHOD: no method tag after a readable version
 * @failure the buffer is unchanged if the region is outside of the file, on -1, and on -3 for a negative count.
 *   Bytes that cannot be read stay as they were, which is no failure.
 */
TVMETA_API int32_t extract_xmp(const char* path, int32_t count, int32_t offset, char* buffer) TVMETA_NOEXCEPT;

/** Results of get_profile_name() besides the length of the name. */
enum { PROFILE_NAME_NOT_FOUND = -1 };

/**
 * Names the colour space of an ICC version 2 profile by its 'desc' element.
 *
 * @param size  bytes of the profile.
 * @param profile  the profile. Null: -1.
 * @param name  receives the name; 32 bytes, cleared first. Null: -1.
 * @retval 4,9,12  length of the name: the description contains "sRGB", "Adobe RGB" or "ProPhoto RGB"
 * @retval 32  any other description: its first 32 bytes, without a terminator of their own
 * @retval -1  PROFILE_NAME_NOT_FOUND: fewer than 49 bytes, or no description
 * @failure name is all zero.
 * @standard ICC.1:2001-04, textDescriptionType.
 */
TVMETA_API int32_t get_profile_name(int32_t size, const unsigned char* profile, char name[32]) TVMETA_NOEXCEPT;

/** Results of time_from_datetime(). */
enum { DATETIME_OK = 1, DATETIME_INVALID = -1 };

/**
 * Computes the seconds from a date and time, as EXIF writes them, to a reference time.
 *
 * @param text  "YYYY:MM:DD HH:MM:SS", zero-terminated, as local time of the process. Numbers out of range
 *   carry over as in mktime. Null: -1.
 * @param reference  calendar time to count to.
 * @param seconds  receives reference minus the time of the text. Null: -1.
 * @retval 1  DATETIME_OK
 * @retval -1  DATETIME_INVALID: the text does not contain six numbers in that form, or one does not fit its
 *   field of struct tm
 * @failure seconds is unchanged.
 * @limits single precision: about a minute for today's dates with reference 0. A time that mktime cannot
 *   represent counts as one second before 1970 (UTC).
 * @standard EXIF 2.3, DateTimeOriginal.
 */
TVMETA_API int32_t time_from_datetime(const char* text, time_t reference, float* seconds) TVMETA_NOEXCEPT;

/** @}
 *  @defgroup writing Save a result
 *  @{ */

/**
 * Converts the record of a photograph into the records of the writers.
 *
 * @param info  record to convert. Null: 0.
 * @param metadata,gps  receive the values. Clear both before the first conversion: a value that is not above
 *   zero leaves its rational unchanged. Null: 0.
 * @return the numerator of metadata->exposureTime after the conversion.
 * @limits a value of 1 or more becomes hundredths: 2.5 is 250 / 100. A value below 1 becomes 100 over hundredths of
 *   its reciprocal: 0.5 is 100 / 200. Further digits are cut, so binary rounding can show: 2.8 is 279 / 100.
 *   Numbers above 2147483647 become 2147483647. The lens name is cut to 64 bytes.
 */
TVMETA_API int32_t metadataBufFromExifInfo(const ExifInfo* info, MetadataBuf* metadata, GpsBuf* gps) TVMETA_NOEXCEPT;

/** Results of buf2tif() besides the number of rows. */
enum {
    BUF2TIF_CANNOT_OPEN = -1,
    BUF2TIF_NO_MEMORY = -1,
    BUF2TIF_HEADER_FAILED = -2,
    BUF2TIF_PIXELS_FAILED = -3,
    BUF2TIF_NO_PIXEL_MEMORY = -4,
    BUF2TIF_BAD_ARGUMENTS = -6,
    BUF2TIF_DIRECTORY_FAILED = -12
};

/**
 * Saves an image with its metadata as an uncompressed little-endian TIFF file of one strip.
 *
 * @param pixels  rows of interleaved samples in machine byte order. May be null if the height is 0; else
 *   null: -6.
 * @param info  the image. Null: -6.
 * @param rowPitch  distance between the starts of two source rows, in bytes (pixelMode 0) or 16-bit samples
 *   (pixelMode 1); negative for bottom-up buffers, with pixels at the first row to be written.
 * @param icc  ICC profile of info->iccLength bytes. Left out if its header names a colour space other than
 *   RGB. May be null if iccLength is 0; else null: -6.
 * @param metadata,gps  camera, exposure, date, lens and position. Null: -6.
 * @param iptcLength,iptc  IPTC block; length 0: none. Stored with zeros up to a multiple of 4 bytes. The
 *   pointer may be null if the length is 0; else null: -6.
 * @param method,settings  processing settings for the XMP packet; METHOD_NONE: none. settings may be null if
 *   the method reads no slot; else null: -6.
 * @param xmpLength,xmp  XMP packet of the caller; length 0: none. **Count the terminating zero: pass
 *   (int32_t)strlen(xmp) + 1.** The packet is used if method is 0 or less, or if it contains processing settings.
 *   Settings are found only if the last byte is zero: with a method and a length of strlen(xmp), the packet is
 *   lost. Otherwise a packet is made from settings and lens. The last byte is not stored, unless method is 0 and
 *   the byte is not zero. A used packet of which no byte is left gives a file without XMP. The pointer may be
 *   null if the length is 0; else null: -6.
 * @param path  file to create or overwrite. Null: -6.
 * @retval >=0  rows in the last block written (the height if the image with all channels fits in one block of 1 MiB)
 * @retval -1  BUF2TIF_CANNOT_OPEN: the file cannot be opened ("Could not open for writing file:", two spaces
 *   and the path). BUF2TIF_NO_MEMORY: no memory for the XMP packet or the directory; the file is unchanged
 * @retval -2  BUF2TIF_HEADER_FAILED: the header cannot be written
 * @retval -3  BUF2TIF_PIXELS_FAILED: pixels cannot be written
 * @retval -4  BUF2TIF_NO_PIXEL_MEMORY: no memory for pixels; the file is unchanged
 * @retval -6  BUF2TIF_BAD_ARGUMENTS: a field of info outside of what TifImageInfo lists, pixelMode 1 with a
 *   bitsCode other than 8, a negative length, or a file that would exceed 2^31 - 1 bytes. The file is unchanged
 * @retval -12  BUF2TIF_DIRECTORY_FAILED: the directory cannot be written, or the close reports an error
 * @failure a file that was opened is left incomplete.
 * @limits memory for one block of about 1 MiB (or one row, if larger) and for the metadata. Values may start
 *   at odd offsets. The product of resolution and 1000 wraps modulo 2^32.
 * @standard TIFF 6.0; EXIF 2.3; XMP storage in files; IPTC-IIM in tag 33723.
 */
TVMETA_API int32_t buf2tif(const void* pixels, const TifImageInfo* info, int32_t rowPitch, const unsigned char* icc,
                           const MetadataBuf* metadata, const GpsBuf* gps, int32_t iptcLength,
                           const unsigned char* iptc, int32_t method, const float* settings, int32_t xmpLength,
                           const char* xmp, const char* path) TVMETA_NOEXCEPT;

/**
 * Computes the sizes of the EXIF and GPS directories of a result, and derives the camera make from the model.
 *
 * @param metadata,gps  values to be written. Null: 0.
 * @param exifCount,exifBytes  receive the entries of the EXIF directory (0 to 5) and the bytes of its values.
 *   Null: 0.
 * @param gpsCount,gpsBytes  receive the same for the GPS directory (0 to 9 entries). Null: 0.
 * @param modelCount,makeCount,dateCount,gpsDateCount,lensCount  receive the sizes of the texts, terminator included;
 *   0 for an empty text. A model or lens of 64 bytes has 63, without a terminator; any GPS date has 11. Null: 0.
 * @param make  receives the camera make; 64 bytes, cleared first. Null: 0.
 * @return exifCount + gpsCount. 0 also for a null argument; nothing is changed then.
 */
TVMETA_API int32_t get_exif_count(const MetadataBuf* metadata, int32_t* exifCount, int32_t* exifBytes,
                                  const GpsBuf* gps, int32_t* gpsCount, int32_t* gpsBytes, int32_t* modelCount,
                                  int32_t* makeCount, int32_t* dateCount, int32_t* gpsDateCount, int32_t* lensCount,
                                  char* make) TVMETA_NOEXCEPT;

/** Results of write_exif_buf() besides the size. */
enum { WRITE_EXIF_NOTHING = -1 };

/**
 * Writes make, model, orientation, EXIF and GPS data as a TIFF structure in memory: the data after the EXIF
 * identifier of a JPEG APP1 segment.
 *
 * @param exifCount,exifBytes,gpsCount,gpsBytes,modelCount,makeCount,dateCount,gpsDateCount  results of
 *   get_exif_count() for the same records; they determine the layout.
 * @param orientation  TIFF orientation code; other values than 1 to 8 are written as 1.
 * @param metadata,gps  values to be written. Null: -1.
 * @param make  text of get_exif_count(), 64 bytes. Null: -1.
 * @param buffer  receives the block; filled with zeros, of the size of the block. Add: 14 bytes; 12 bytes for the
 *   orientation and for each of make, model, EXIF and GPS whose count is above 0; makeCount and modelCount where
 *   they are above 4; for EXIF and for GPS, if their count n is above 0, 6 + 12 n + their value bytes. Null: -1.
 * @retval size  bytes of the block
 * @retval -1  WRITE_EXIF_NOTHING: make, model, EXIF and GPS counts are all 0 or less, or the block would exceed
 *   2^31 - 1 bytes
 * @failure the buffer is unchanged.
 * @limits reads only within the fields of the records and writes only within the block, whatever the counts.
 * @standard TIFF 6.0; EXIF 2.3.
 */
TVMETA_API int32_t write_exif_buf(int32_t exifCount, int32_t exifBytes, int32_t gpsCount, int32_t gpsBytes,
                                  int32_t modelCount, int32_t makeCount, int32_t dateCount, int32_t gpsDateCount,
                                  int32_t orientation, const MetadataBuf* metadata, const GpsBuf* gps, const char* make,
                                  unsigned char* buffer) TVMETA_NOEXCEPT;

/** @}
 *  @defgroup settings Processing settings
 *  @{ */

/** Method codes of a settings packet, and special requests of the parser. */
typedef enum SettingsMethod {
    METHOD_DETECT = -1, /**< request: the method of the packet */
    METHOD_NONE = 0,    /**< a packet with an unknown method name; for writers: no settings */
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
    DETAILS_ENHANCER_GAMMA = 8, /**< slider position: 0 is gamma 2, 50 gamma 1, 100 gamma 0.5; between them, position
                                   s is gamma 2^((50 - s) / 50) */
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
    CONTRAST_OPTIMIZER_WHITE_CLIP = 3, /**< 0 to 10. The packet has another scale: its value v is slot
                                          10 (v / 10)^3.0639 */
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
 * Returns the name of a method.
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

/** Bytes that tvmeta_setting_text() may write, including the terminating zero. */
#define TVMETA_SETTING_TEXT_SIZE 64

/**
 * Writes the value of one parameter as people read it: the text that a packet contains, without its padding, such as
 * "70.5", "1.20", "Very High" or "No".
 *
 * @param method,index  as for tvmeta_parameter().
 * @param settings  slots of the method. Null: 0.
 * @param text  receives the text and a terminating zero; TVMETA_SETTING_TEXT_SIZE bytes. Null: 0.
 * @retval >0  length of the text
 * @retval 0  the code names no method, or it has no parameter of that index
 * @failure text is unchanged.
 */
TVMETA_API int32_t tvmeta_setting_text(int32_t method, int32_t index, const float* settings,
                                       char text[TVMETA_SETTING_TEXT_SIZE]) TVMETA_NOEXCEPT;

/** Results of tvmeta_setting_value(). */
enum {
    TVMETA_SETTING_OK = 1,
    TVMETA_SETTING_UNKNOWN = 0,
    TVMETA_SETTING_INVALID = -1,
    TVMETA_SETTING_TOO_SMALL = -2,
    TVMETA_SETTING_TOO_LARGE = -3
};

/**
 * Sets one parameter to the value of a text, as people type it. The slot receives the value that is read back from a
 * packet: a number is rounded to the decimals of its kind. A text of tvmeta_setting_text() that is accepted gives the
 * same text again.
 *
 * @param method,index  as for tvmeta_parameter().
 * @param text  the text, zero-terminated. A number is decimal, with a point and an exponent if needed ("7", "-0.5",
 *   "1e3"), not "inf" or "nan". A word is spelled as at TVMETA_SMOOTHING_MODE and the following kinds. Nothing may
 *   precede or follow. Null: the default, which is 1.00 for a gamma, 0 for other numbers, the word of slot value 0.
 * @param settings  slots of the method, of which one is set. TVMETA_SMOOTHING depends on the smoothing mode in them,
 *   so set the mode first. Null: -1.
 * @retval 1  TVMETA_SETTING_OK: the slot is set
 * @retval 0  TVMETA_SETTING_UNKNOWN: the code names no method, or it has no parameter of that index
 * @retval -1  TVMETA_SETTING_INVALID: not a number or word of the parameter, or a gamma or clip below 0
 * @retval -2  TVMETA_SETTING_TOO_SMALL: a gamma that a packet contains as 0.00
 * @retval -3  TVMETA_SETTING_TOO_LARGE: a gamma above 10000, or a number whose slot is beyond the range of a float
 * @failure settings is unchanged.
 * @limits the ranges of the application's sliders are not checked.
 */
TVMETA_API int32_t tvmeta_setting_value(int32_t method, int32_t index, const char* text,
                                        float* settings) TVMETA_NOEXCEPT;

/** Results of get_settings_from_xmp(), and of functions that use it. */
enum { XMP_NO_SETTINGS = 0, XMP_NOT_TERMINATED = -3, XMP_OTHER_METHOD = -5 };

/**
 * Reads the processing settings, their method, or the lens name from an XMP text.
 *
 * @param method  METHOD_DETECT, MODE_LENS, or the method whose slots are wanted.
 * @param length  bytes of buffer, including its terminating zero.
 * @param buffer  the text. Null: -3.
 * @param lens  MODE_LENS only: receives the name, at most 63 bytes, without a terminator; at least 64 bytes,
 *   cleared by the caller. May be null in other modes; null with MODE_LENS: -3.
 * @param settings  method codes only: receives the slots whose tags are found; the others are unchanged. May
 *   be null in other modes; null with a method code: -3.
 * @retval 1,2,3,10,11,15  METHOD_DETECT: the method
 * @retval >=47  method code: offset of the method tag; the slots were read
 * @retval >=0  MODE_LENS: offset of the end of the name. Without a name, the offset where the search ended: 64 bytes
 *   into a value without an end, or near the end of the text
 * @retval 0  XMP_NO_SETTINGS: no settings declaration; METHOD_DETECT: also an unknown method name
 * @retval -3  XMP_NOT_TERMINATED: length is below 1, or the last byte is not zero
 * @retval -5  XMP_OTHER_METHOD: no method tag after a readable version, a method other than the requested one,
 *   or an unknown request
 * @failure lens and settings are unchanged.
 * @limits the text is searched byte by byte, not parsed as XML. Values are not checked for their range.
 * @standard ISO 16684-1, serialisation in RDF; XMP additional properties, EXIF auxiliary.
 */
TVMETA_API int32_t get_settings_from_xmp(int32_t method, int32_t length, const char* buffer, char* lens,
                                         float* settings) TVMETA_NOEXCEPT;

/**
 * Counts the settings declarations in an XMP text.
 *
 * @param length  bytes of buffer, including its terminating zero.
 * @param buffer  the text. Null: -3.
 * @retval >=0  the number of declarations
 * @retval -3  XMP_NOT_TERMINATED: length is below 1, or the last byte is not zero
 */
TVMETA_API int32_t tvsettings_occurences_in_xmp(int32_t length, const char* buffer) TVMETA_NOEXCEPT;

/** Results of read_xmp() besides those of get_settings_from_xmp(). */
enum { READ_XMP_UNREADABLE = -1, READ_XMP_SHORT_READ = -2, READ_XMP_NO_MEMORY = -4 };

/**
 * Reads a settings file, as write_xmp() writes it.
 *
 * @param path  file to read. Null: -1.
 * @param method  METHOD_DETECT or a method code.
 * @param settings  as for get_settings_from_xmp(). Null with a method code: -3. May be null otherwise.
 * @retval 1,2,3,10,11,15  METHOD_DETECT: the method
 * @retval >=47  method code: offset of the method tag; the slots were read
 * @retval 0  XMP_NO_SETTINGS: an empty file, or no settings declaration; METHOD_DETECT: also an unknown method
 *   name
 * @retval -1  READ_XMP_UNREADABLE: the file cannot be opened or measured, is a directory, or is larger than
 *   2^31 - 2 bytes
 * @retval -2  READ_XMP_SHORT_READ: fewer bytes than the size of the file could be read
 * @retval -4  READ_XMP_NO_MEMORY
 * @retval -5  XMP_OTHER_METHOD: as get_settings_from_xmp(); also for MODE_LENS, if the file can be read
 * @failure settings is unchanged.
 */
TVMETA_API int32_t read_xmp(const char* path, int32_t method, float* settings) TVMETA_NOEXCEPT;

/** Results of write_xmp(). */
enum {
    WRITE_XMP_OK = 1,
    WRITE_XMP_CANNOT_OPEN = -1,
    WRITE_XMP_NO_METHOD = -2,
    WRITE_XMP_FAILED = -3,
    WRITE_XMP_NO_MEMORY = -4
};

/**
 * Writes a settings file: one packet and nothing else.
 *
 * @param path  file to create or overwrite. Null: -1.
 * @param method  method code.
 * @param settings  slots of the method. Null: -2.
 * @retval 1  WRITE_XMP_OK
 * @retval -1  WRITE_XMP_CANNOT_OPEN: the file cannot be opened for writing
 * @retval -2  WRITE_XMP_NO_METHOD: not a method code
 * @retval -3  WRITE_XMP_FAILED: the packet cannot be written, or the close reports an error
 * @retval -4  WRITE_XMP_NO_MEMORY
 * @failure the file is incomplete on -3, and unchanged otherwise.
 */
TVMETA_API int32_t write_xmp(const char* path, int32_t method, const float* settings) TVMETA_NOEXCEPT;

/** Result of embed_xmp() without a packet. */
enum { EMBED_XMP_NOTHING = 0 };

/**
 * Writes a settings packet to memory. Call it twice: first to measure the packet, then to write it.
 *
 * @param pass  0 measures. Any other value writes, and is the number at the end of the namespace URI (1 if it
 *   is below 1).
 * @param method  method code, or method code + 200 for the settings description without the packet around it.
 *   0 or less: no settings description. A code that names no method: a description without parameters.
 * @param settings  slots of the method. May be null if the method reads no slot; else null: 0.
 * @param lensLength  above 0: adds a description with the lens name.
 * @param lens  lens name, zero-terminated, written unchanged. May be null if lensLength is 0 or less; else
 *   null: 0.
 * @param out  receives the packet, without a terminating zero. Its size is the result of the measuring pass
 *   for the same arguments (one more for each digit of pass beyond two). May be null when measuring; else
 *   null: 0.
 * @retval >0  bytes of the packet
 * @retval 0  EMBED_XMP_NOTHING: the lens name is longer than 2^31 - 65537 bytes
 * @failure nothing is written.
 * @standard ISO 16684-1, serialisation in RDF.
 */
TVMETA_API int32_t embed_xmp(int32_t pass, int32_t method, const float* settings, int32_t lensLength, const char* lens,
                             char* out) TVMETA_NOEXCEPT;

/** Results of insert_xmp() besides lengths. */
enum { INSERT_XMP_BAD_ARGUMENTS = -1, INSERT_XMP_NOTHING_FOLLOWS = -1, INSERT_XMP_NO_MEMORY = -4 };

/**
 * Inserts a settings description into an XMP packet in memory. Call it twice, as embed_xmp().
 *
 * @param pass  0 measures the description. Any other value inserts it, and is passed on to embed_xmp().
 * @param method  method code.
 * @param settings  slots of the method. May be null if the method reads no slot; else null: -1.
 * @param dataLength  bytes of the packet. Not used when measuring.
 * @param shift  distance by which the text after the insertion point moves: the result of the measuring pass
 *   (one more for each digit of pass beyond two). Not used when measuring.
 * @param buffer  the packet, changed in place; dataLength + shift bytes. May be null when measuring; else
 *   null: -1.
 * @retval >0  bytes of the description
 * @retval -1  INSERT_XMP_BAD_ARGUMENTS: dataLength or shift is negative, or method exceeds 2^31 - 201.
 *   INSERT_XMP_NOTHING_FOLLOWS: fewer than 3 bytes follow the insertion point
 * @retval -4  INSERT_XMP_NO_MEMORY
 * @retval <=-34  an opening was not found: -dataLength; or -34 if the data is too short for an xmpmeta opening;
 *   or minus the sum of the offset after the xmpmeta opening and the 65 bytes of an RDF opening; -2^31 if that
 *   does not fit 32 bits
 * @failure the buffer is unchanged.
 */
TVMETA_API int32_t insert_xmp(int32_t pass, int32_t method, const float* settings, int32_t dataLength, int32_t shift,
                              char* buffer) TVMETA_NOEXCEPT;

/** @}
 *  @defgroup patching Patch a file
 *  @{ */

/** Results of update_tif_profile() besides the length. */
enum { UPDATE_PROFILE_NO_ENTRY = 0, UPDATE_PROFILE_CANNOT_OPEN = -1, UPDATE_PROFILE_FAILED = -2 };

/**
 * Replaces the ICC profile of a little-endian TIFF file in place: appends the new profile, then repoints the
 * directory entry.
 *
 * @param length  bytes of the new profile; 0 gives an empty profile. The result is then 0 too, also without an
 *   entry: pass 0 only if you need not know.
 * @param profile  the new profile. May be null if length is 0; else null: -2.
 * @param path  file to change. Null: -1.
 * @retval length  the profile was replaced
 * @retval 0  UPDATE_PROFILE_NO_ENTRY: no ICC profile entry, or not a little-endian TIFF file
 * @retval -1  UPDATE_PROFILE_CANNOT_OPEN: the file cannot be opened ("Can not open input file for reading", or
 *   "Can not open input file for update"), or the file or the target of the path changed during the call
 * @retval -2  UPDATE_PROFILE_FAILED: a negative length, an entry beyond 2^31 - 1, a file that would exceed
 *   2^31 - 1 bytes, or a seek, a write or the close fails
 * @failure the file is unchanged on 0 and -1, and on -2 for arguments and sizes. If the new profile cannot be
 *   written, the old one stays in force, and the part that was written stays at the end of the file. The entry
 *   is patched last, by one write of eight bytes: if that write or the close fails, the entry is old, new or
 *   incomplete.
 * @limits the bytes of the old profile stay in the file. The data is not forced to the disk. If the entry
 *   itself is cut short by the end of the file, it is completed and the new profile follows it, but the offset
 *   in the entry is the old size of the file.
 * @standard TIFF 6.0; ICC.1 annex B.4.
 */
TVMETA_API int32_t update_tif_profile(int32_t length, const unsigned char* profile, const char* path) TVMETA_NOEXCEPT;

/** Results of add_iptc_keyword() besides the offset. */
enum { ADD_KEYWORD_REJECTED = -1 };

/**
 * Adds a keyword to an IPTC block: after its last keyword; without keywords, after its last dataset of record
 * 2, or else after its first dataset; in an empty block, after a new record version.
 *
 * @param length  bytes of the block.
 * @param block  the block. May be null if length is 0; else null: -1.
 * @param keywordLength  bytes of the keyword.
 * @param keyword  the keyword. May be null if keywordLength is 0; else null: -1.
 * @param out  receives the new block of length + 5 + keywordLength bytes (7 more if length is 0); must not
 *   overlap block. Null: -1.
 * @retval >0  offset of the new dataset in out
 * @retval -1  ADD_KEYWORD_REJECTED: the preceding dataset ends after the block, a length is negative, the block
 *   has 1 to 4 bytes, or the keyword has more than 32767 bytes
 * @failure out is unchanged.
 * @limits datasets of record 2 are found by their first bytes; the block is not walked. A keyword at the start of the
 *   block does not count as one, and an empty dataset at its end is not seen.
 * @standard IPTC-IIM 4.1, datasets 2:00 and 2:25.
 */
TVMETA_API int32_t add_iptc_keyword(int32_t length, const unsigned char* block, int32_t keywordLength,
                                    const char* keyword, unsigned char* out) TVMETA_NOEXCEPT;

/** @}
 *  @defgroup hdr HDR statistics
 *  @{ */

/** Result of hdrMinMax() for null pointers. */
enum { HDR_BAD_ARGUMENTS = -4 };

/**
 * Measures the luminance of an HDR image: smallest positive value, largest value, mean.
 *
 * @param width,height  pixels per row and rows; 0 or less: no pixels.
 * @param pixels  for each row, four planes of width bytes: the mantissas of blue, green and red, then the
 *   exponents. The luminance of a pixel with exponent e is ((19 b + 183 g + 54 r) >> 8) * 2^(e - 128); e = 0
 *   means no light. May be null if there are no pixels; else null: -4.
 * @param results  receives 3 floats: the minimum (99999997952 if no positive value is below it), the maximum (0 if no
 *   value is positive), and the mean of the pixels whose exponent is not 0 (0 if there are none). Null: -4.
 * @retval height  success (0 if the height is negative)
 * @retval -4  HDR_BAD_ARGUMENTS: a null pointer
 * @failure results is unchanged.
 * @limits values beyond float become infinity. Values are summed in row order in double precision.
 * @standard luminance weights of ITU-R BT.709.
 */
TVMETA_API int32_t hdrMinMax(int32_t width, int32_t height, const unsigned char* pixels,
                             float results[3]) TVMETA_NOEXCEPT;

/** @}
 *  @defgroup lowlevel Low-level readers
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
 * @param stream  advances by the bytes of the number, fewer only at the end of the file. A read error counts as the
 *   end. Null: as at the end.
 * @param byteOrder  0x4949 in its low 16 bits ("II" as a big-endian number): little-endian. Other values:
 *   big-endian.
 * @return the number; there is no failure. At the end of the file, a missing byte counts as 0xFF in a 16-bit
 *   number, and as -1 times its weight in a 32-bit number (0xFEFEFEFF for all four).
 * @standard TIFF 6.0, section 2.
 */
TVMETA_API uint16_t fgetmi2(FILE* stream, int32_t byteOrder) TVMETA_NOEXCEPT;

/** Reads a 32-bit number from a stream in the byte order of a TIFF structure. @copydetails fgetmi2 */
TVMETA_API int32_t fgetmi4(FILE* stream, int32_t byteOrder) TVMETA_NOEXCEPT;

/**
 * Reads a big-endian 16-bit number from a stream, as in JPEG and Photoshop files.
 *
 * @param stream  as for fgetmi2().
 * @return as for fgetmi2().
 */
TVMETA_API uint16_t fgetm2(FILE* stream) TVMETA_NOEXCEPT;

/** Reads a big-endian 32-bit number from a stream, as in JPEG and Photoshop files. @copydetails fgetm2 */
TVMETA_API int32_t fgetm4(FILE* stream) TVMETA_NOEXCEPT;

/**
 * Reads an EXIF directory into a record.
 *
 * @param stream  at the entry count of the directory; afterwards at the end of the last entry. Null: 1.
 * @param ignored  not used; pass 0.
 * @param byteOrder  as for fgetmi2().
 * @param tiffBase  file offset of the TIFF header, added to the offsets of the directory modulo 2^32.
 * @param info  receives the values found; other fields are unchanged. Null: 1.
 * @retval 1  always
 * @limits an entry beyond the end of the file, or one that cannot be read, has the end-of-file values of fgetmi2()
 *   and fgetmi4(). An offset before the start of the file leaves the stream where it is.
 * @standard EXIF 2.3, section 4.6.
 */
TVMETA_API int32_t parse_exif_data(FILE* stream, int32_t ignored, int32_t byteOrder, int32_t tiffBase,
                                   ExifInfo* info) TVMETA_NOEXCEPT;

/** Reads a GPS directory into a record. @copydetails parse_exif_data */
TVMETA_API int32_t parse_gps_data(FILE* stream, int32_t ignored, int32_t byteOrder, int32_t tiffBase,
                                  ExifInfo* info) TVMETA_NOEXCEPT;

/** Result of parse_image_description() without a text. */
enum { PARSE_DESCRIPTION_UNREADABLE = -1 };

/**
 * Reads exposure time and ISO speed from an ImageDescription text of comma-separated fields: field 8 is the
 * exposure ("1/250s"), fields 9 to 11 are colour values ("R30", "G30", "B30").
 *
 * @param stream  at the text; its position afterwards is undefined. Null: -1.
 * @param size  bytes of the text; a zero byte ends it earlier.
 * @param info  receives exposureTime, isoSpeed and exposureSource if the text has that layout. Null: -1.
 * @retval >=0  the last colour value (0: none). It can be negative too: characters other than digits count by
 *   their distance from '0'
 * @retval -1  PARSE_DESCRIPTION_UNREADABLE: size is below 1 or more than the file contains, a read fails, or there
 *   is no memory
 * @failure info is unchanged.
 * @limits tokens of up to 6 characters; an ISO speed beyond 32 bits saturates.
 */
TVMETA_API int32_t parse_image_description(FILE* stream, int32_t size, ExifInfo* info) TVMETA_NOEXCEPT;

/** Results of parse_photoshop_data() besides the size of a thumbnail. */
enum { PARSE_PHOTOSHOP_NO_THUMBNAIL = 1, PARSE_PHOTOSHOP_NO_MEMORY = -4 };

/**
 * Finds the JPEG thumbnail (resource 0x040C) and the IPTC block (0x0404) in Photoshop image resources.
 *
 * @param stream  at the resources; its position afterwards is undefined. Null: -4.
 * @param size  bytes of the resources; bytes that the file lacks, or that cannot be read, count as zeros.
 * @param info  receives the thumbnail and IPTC fields of the last match of each. Null: -4.
 * @retval length  compressed size of the last thumbnail as stated in the file, unchecked
 * @retval 1  PARSE_PHOTOSHOP_NO_THUMBNAIL
 * @retval -4  PARSE_PHOTOSHOP_NO_MEMORY
 * @failure info is unchanged.
 * @limits resources with a name are not recognised as IPTC.
 * @standard Photoshop file format, image resources.
 */
TVMETA_API int32_t parse_photoshop_data(FILE* stream, int32_t size, ExifInfo* info) TVMETA_NOEXCEPT;

/** Results of get_tif_tag() besides the offset. */
enum { TIF_TAG_NOT_FOUND = -1, TIF_TAG_NOT_TIFF = -2, TIF_TAG_SEEK_FAILED = -3 };

/**
 * Finds a tag in the directories of a little-endian TIFF file, so that its entry can be patched.
 *
 * @param stream  at the start of the file; its position afterwards is undefined. Null: -3.
 * @param tag  tag to find.
 * @param count,value  receive the count of the entry and its value or value offset. Null: -3.
 * @retval >0  file offset of the first entry with that tag; past the end of the file an entry counts as tag 65535
 * @retval -1  TIF_TAG_NOT_FOUND: no directory has it; or the chain of directories is a loop, or has more than
 *   2^16 directories or 2^22 entries, and none of those searched has it; or its first entry is beyond 2^31 - 1
 * @retval -2  TIF_TAG_NOT_TIFF: the file does not start with "II" and 42, or a directory is empty
 * @retval -3  TIF_TAG_SEEK_FAILED: the offset of a directory is 2^31 or more, or the file ends before the end of a
 *   directory
 * @failure count and value are unchanged.
 * @limits a read error counts as the end of the file.
 * @standard TIFF 6.0, section 2.
 */
TVMETA_API int32_t get_tif_tag(FILE* stream, int32_t tag, int32_t* count, int32_t* value) TVMETA_NOEXCEPT;

/** @} */

#ifdef __cplusplus
}
#endif

#endif
