/**
 * @file
 * Any photograph, from any source; results that keep its metadata; exposure brackets.
 *
 * Print the camera of any photograph, a raw file for example:
 *
 *     tvmeta_Source source;
 *     tvmeta_Photo photo = {0};
 *     photo.recordSize = sizeof photo;
 *     if (tvmeta_open("photo.cr3", &source) == TVMETA_OK) {
 *         if (tvmeta_read_photo(&source, &photo) == TVMETA_OK) {
 *             printf("%s %s\n", photo.make, photo.model);
 *         }
 *         tvmeta_close(&source);
 *     }
 *
 * Conventions: those of tvmeta.h, and
 *
 * - Growing records: a record that starts with recordSize may get more fields at its end in a later version. Set
 *   recordSize to the sizeof of the record; the library touches no byte beyond it. tvmeta_Source, tvmeta_Block,
 *   tvmeta_Rational, tvmeta_Tag, tvmeta_Dataset, tvmeta_Loss and tvmeta_BracketMember never grow.
 * - Sizes: positions and sizes are signed 64-bit numbers of bytes.
 * - Results: a status, or a size, number or mask. Negative ones are failures and have the values of TVMETA_READ_FAILED
 *   and below.
 * - Messages: nothing is printed.
 * - Texts of records and of tvmeta_read_text() are UTF-8. A text of a file that is not UTF-8 is read as ISO 8859-1.
 */
#ifndef TVMETA_PHOTO_H
#define TVMETA_PHOTO_H

#include "tvmeta.h"

#ifdef __cplusplus
extern "C" {
#endif

/** @defgroup status Status
 *  @{ */

/** Results of the functions of this header. */
enum {
    TVMETA_OK = 0,            /**< success */
    TVMETA_READ_FAILED = -1,  /**< the source or the system reports an error */
    TVMETA_UNKNOWN_KIND = -2, /**< the file is of no kind that the library knows */
    TVMETA_REFUSED_KIND = -3, /**< the file or block is recognised, but not supported */
    TVMETA_BROKEN = -4,       /**< the file is damaged; the output contains what was found */
    TVMETA_NO_MEMORY = -5,    /**< an allocation failed */
    TVMETA_BAD_ARGUMENT = -6, /**< a null pointer, or a number outside of what the function accepts */
    TVMETA_TOO_SMALL = -7,    /**< the buffer is too small; nothing was written to it */
    TVMETA_TOO_LARGE = -8,    /**< the result is larger than its format allows */
    TVMETA_WRITE_FAILED = -9  /**< the system reports an error for an output file */
};

/**
 * Describes a status in English, such as "the source cannot be read".
 *
 * @param status  one of the numbers above.
 * @return static text without a full stop, never null. "unknown status" for other numbers.
 */
TVMETA_API const char* tvmeta_status_text(int32_t status) TVMETA_NOEXCEPT;

/** @}
 *  @defgroup sources Sources
 *  @{ */

/** Bytes that can be read at any position: a file, memory, or anything of the application, such as an archive or a
 * network connection. The library keeps no copy after a call.
 *
 * Several threads may read one source at once if its `read` may be called on several threads at once. That is true of
 * the sources that tvmeta_open() and tvmeta_memory() make. */
typedef struct tvmeta_Source {
    void* context; /**< passed to the functions below; otherwise unused */
    int64_t size;  /**< number of bytes, 0 to 2^62 */
    /** Copies `count` bytes from `position` on to `buffer`, and returns their number. A smaller number means that the
     * source ends there. A negative number, or one above `count`, is an error: the function that reads the source
     * returns TVMETA_READ_FAILED. The library asks only for bytes inside of the source, at least one. It calls `read`
     * on the thread of its own caller. No exception may leave it. */
    int64_t (*read)(void* context, int64_t position, void* buffer, int64_t count);
    void (*close)(void* context); /**< called by tvmeta_close(); may be null */
} tvmeta_Source;

/**
 * Opens a file as a source. On POSIX systems, makes two system calls and no allocation.
 *
 * @param path  regular file to read. Null: -6.
 * @param source  receives the source; all zero on failure. Close it with tvmeta_close(). Null: -6.
 * @retval 0  TVMETA_OK
 * @retval -1  TVMETA_READ_FAILED: there is no such file, it may not be read, or it is a directory, a FIFO or a
 *   device. The call does not wait for the other end of a FIFO
 * @retval -6  TVMETA_BAD_ARGUMENT
 * @limits a file that grows later has the size that it had; one that shrinks ends early. The file is not
 *   inherited by programs that the process starts.
 */
TVMETA_API int32_t tvmeta_open(const char* path, tvmeta_Source* source) TVMETA_NOEXCEPT;

/**
 * Makes a source of bytes in memory.
 *
 * @param bytes  the file; must not change while the source is used. Null if size is above 0: -6.
 * @param size  bytes of the file, not negative.
 * @param source  receives the source; all zero on failure. It need not be closed. Null: -6.
 * @retval 0  TVMETA_OK
 * @retval -6  TVMETA_BAD_ARGUMENT: also a negative size
 */
TVMETA_API int32_t tvmeta_memory(const void* bytes, int64_t size, tvmeta_Source* source) TVMETA_NOEXCEPT;

/**
 * Closes a source and clears the record, so that closing it again does nothing.
 *
 * @param source  source of tvmeta_open() or tvmeta_memory(), one of your own, or one that failed to open. May be null.
 */
TVMETA_API void tvmeta_close(tvmeta_Source* source) TVMETA_NOEXCEPT;

/** @}
 *  @defgroup photograph A photograph
 *  @{ */

/** Formats of files, by their first bytes. */
enum {
    TVMETA_FORMAT_UNKNOWN,      /**< no format that the library knows */
    TVMETA_FORMAT_JPEG,         /**< JPEG, also with several pictures (MPO) */
    TVMETA_FORMAT_TIFF,         /**< TIFF, and raw files with its structure: DNG, CR2, NEF, NRW, ARW, PEF, SRW, 3FR */
    TVMETA_FORMAT_BIGTIFF,      /**< TIFF with 64-bit offsets */
    TVMETA_FORMAT_PSD,          /**< Photoshop files, PSD and PSB */
    TVMETA_FORMAT_ORF,          /**< raw files that start with "IIRO", "IIRS" or "MMOR" */
    TVMETA_FORMAT_RW2,          /**< raw files that start with "II" and 85 */
    TVMETA_FORMAT_RAF,          /**< raw files that start with "FUJIFILMCCD-RAW" */
    TVMETA_FORMAT_CR3,          /**< raw files of boxes with the brand "crx " */
    TVMETA_FORMAT_HEIF,         /**< HEIF: HEIC, HIF */
    TVMETA_FORMAT_AVIF,         /**< HEIF with the brand "avif" or "avis" first */
    TVMETA_FORMAT_JXL,          /**< JPEG XL, in boxes or as a codestream alone */
    TVMETA_FORMAT_PNG,          /**< PNG */
    TVMETA_FORMAT_WEBP,         /**< WebP */
    TVMETA_FORMAT_REFUSED = 100 /**< this number and above: X3F, CRW, MRW, IIQ, GIF, MP4, ... tvmeta_format_name()
                                     has the name */
};

/**
 * Names a format.
 *
 * @param format  `format` of a record.
 * @return the name, such as "JPEG" or "MP4": static text, never null. "unknown" for TVMETA_FORMAT_UNKNOWN and for
 *   numbers that are no format.
 */
TVMETA_API const char* tvmeta_format_name(int32_t format) TVMETA_NOEXCEPT;

/** Fields of tvmeta_Photo: bits of its masks, counted from the lowest. */
enum {
    TVMETA_SIZE,              /**< width and height */
    TVMETA_ORIENTATION,       /**< orientation */
    TVMETA_MAKE,              /**< make */
    TVMETA_MODEL,             /**< model */
    TVMETA_LENS,              /**< lens */
    TVMETA_SERIAL_NUMBER,     /**< serialNumber */
    TVMETA_EXPOSURE_TIME,     /**< exposureTime */
    TVMETA_F_NUMBER,          /**< fNumber */
    TVMETA_ISO_SPEED,         /**< isoSpeed */
    TVMETA_EXPOSURE_BIAS,     /**< exposureBias */
    TVMETA_EXPOSURE_MODE,     /**< exposureMode */
    TVMETA_EXPOSURE_PROGRAM,  /**< exposureProgram */
    TVMETA_METERING_MODE,     /**< meteringMode */
    TVMETA_FLASH,             /**< flash */
    TVMETA_WHITE_BALANCE,     /**< whiteBalance */
    TVMETA_FOCAL_LENGTH,      /**< focalLength */
    TVMETA_FOCAL_LENGTH_35MM, /**< focalLength35mm */
    TVMETA_CAPTURE_TIME,      /**< captureTime */
    TVMETA_SUB_SECOND,        /**< captureNanoseconds and subSecondDigits */
    TVMETA_UTC_OFFSET,        /**< utcOffset */
    TVMETA_LATITUDE,          /**< latitude */
    TVMETA_LONGITUDE,         /**< longitude */
    TVMETA_ALTITUDE,          /**< altitude */
    TVMETA_GPS_TIME           /**< gpsTime */
};

/** 1 if the record that the pointer names has a field, such as TVMETA_ISO_SPEED; else 0. */
#define TVMETA_HAS(photo, field) (((photo)->present >> (field)) & 1)

/** A fraction with the terms of the file, not reduced: 32-bit numbers, signed or not. If the file's denominator is
 * negative, both signs are changed. 0/0 in a field that is not present. 16 bytes. */
typedef struct tvmeta_Rational {
    int64_t numerator;   /**< may be negative */
    int64_t denominator; /**< above zero in a field that is present */
} tvmeta_Rational;

/** Blocks of a photograph: indices of `blocks`, and arguments of tvmeta_read_block(). */
enum {
    TVMETA_EXIF,      /**< EXIF data as one TIFF structure. Files that are such a structure themselves (TIFF and its raw
                           files) or have several (CR3, RW2) have no such block: see tvmeta_list_tags() */
    TVMETA_XMP,       /**< XMP packet, joined with the extended packet of a JPEG */
    TVMETA_IPTC,      /**< IPTC-IIM datasets */
    TVMETA_ICC,       /**< ICC profile */
    TVMETA_THUMBNAIL, /**< JPEG of the EXIF data, of Photoshop resources, or of CR3 */
    TVMETA_PREVIEW,   /**< largest JPEG of a raw or TIFF file, or preview that follows the image of a JPEG file */
    TVMETA_BLOCKS     /**< number of blocks */
};

/** Where a block is. 24 bytes. */
typedef struct tvmeta_Block {
    int64_t position;     /**< in the source; -1 if the block is in several pieces or compressed. 0 if absent */
    int64_t size;         /**< bytes, of all pieces together; 0: the photograph has no such block */
    int32_t pieces;       /**< segments, chunks or extents that tvmeta_read_block() joins */
    int32_t isCompressed; /**< 1: inside of PNG iCCP, iTXt, zTXt or JPEG XL brob; named, but not read. Then size is
                               that of the compressed data */
} tvmeta_Block;

/** The metadata of one photograph. A field without its bit in `present` is zero (an empty text). No pointers: the
 * record may be copied.
 *
 * EXIF tags are read from the EXIF directory, else from the first image directory. Of several entries with one tag the
 * first counts. A value that means "unknown" (0/0, an exposure time of 0, blanks, a date of zeros) is absent. */
typedef struct tvmeta_Photo {
    uint32_t recordSize; /**< sizeof of this record; set by the caller, 48 to 65536 */
    int32_t format;      /**< TVMETA_FORMAT_JPEG, ... */
    uint64_t present;    /**< fields that have a value: use TVMETA_HAS() */
    uint64_t derived;    /**< those of them that were computed from another value: exposureTime, fNumber, isoSpeed */
    uint64_t damaged;    /**< fields whose value in the file is unreadable, impossible, or (texts) cut to fit. They
                              may be present from another tag, or cut */
    int64_t brokenAt;    /**< position of the first damage of the container; -1: none was found */
    int32_t width;       /**< pixels of the main image, before it is turned. TIFF: of the widest image that is neither
                              reduced nor a mask; of two such pages at the start, of the first. RAF: of its preview.
                              RW2: inside of the sensor's borders */
    int32_t height;      /**< see width */
    int32_t orientation; /**< TIFF orientation code of the main image, 1 to 8. HEIF and AVIF: from irot and imir, if
                              the image has one. JPEG XL: from its codestream. Else tag 274, never that of a
                              thumbnail */
    char make[64];       /**< maker of the camera */
    char model[64];      /**< camera model */
    char lens[128]; /**< EXIF lens model, else aux:Lens or exifEX:LensModel in the first 64 KiB of the XMP packet */
    char serialNumber[64];        /**< of the body; in DNG files also tag 50735 */
    tvmeta_Rational exposureTime; /**< seconds, above zero; derived from ShutterSpeedValue (APEX), or from the
                                     description of a TIFF file */
    tvmeta_Rational fNumber;      /**< f-number, above zero; derived from ApertureValue (APEX) */
    tvmeta_Rational focalLength;  /**< millimetres, above zero */
    tvmeta_Rational exposureBias; /**< EV, may be 0 or negative */
    int32_t isoSpeed; /**< ISO speed, tag 34855. If that is missing, 0 or 65535: tag 34867, 34866 or 34865, in RW2 files
                           also tag 23; derived from ExposureIndex, or from the description of a TIFF file */
    int32_t exposureMode;    /**< EXIF code: 0 auto, 1 manual, 2 automatic bracket */
    int32_t exposureProgram; /**< EXIF code: 1 manual, 2 normal, 3 aperture priority, 4 shutter priority, ... */
    int32_t meteringMode;    /**< EXIF code: 2 centre-weighted, 3 spot, 5 pattern, ... */
    int32_t flash;           /**< EXIF flags: bit 0 is set if the flash fired */
    int32_t whiteBalance;    /**< EXIF code: 0 auto, 1 manual */
    int32_t focalLength35mm; /**< millimetres in 35 mm film terms */
    int64_t captureTime;     /**< seconds from 1970-01-01 00:00:00 to DateTimeOriginal (else DateTimeDigitized), by the
                                clock of the camera: UTC is this minus 60 * utcOffset */
    int32_t captureNanoseconds; /**< sub-seconds of captureTime, 0 to 999999999 */
    int32_t subSecondDigits;    /**< digits that the sub-seconds have in the file, 1 to 9; further ones are ignored */
    int32_t utcOffset;          /**< offset of captureTime from UTC, minutes, positive in the east */
    double latitude;            /**< degrees, north positive, -90 to 90 */
    double longitude;           /**< degrees, east positive, -180 to 180 */
    double altitude;            /**< metres above sea level, negative below */
    int64_t gpsTime;            /**< seconds from 1970-01-01 00:00:00 UTC, without a fraction */
    tvmeta_Block blocks[TVMETA_BLOCKS]; /**< places of the blocks, by TVMETA_EXIF, ... */
} tvmeta_Photo;

/**
 * Reads the metadata of a photograph, whatever its format.
 *
 * @param source  the file. Null, or a source without `read` or of an impossible size: -6.
 * @param photo  receives the record. Set recordSize before: of a smaller record the first fields are filled, the rest
 * of a larger one is zeroed. Null, or recordSize below 48 or above 65536: -6.
 * @retval 0  TVMETA_OK: read completely. The photograph may have no metadata: check the fields
 * @retval -1  TVMETA_READ_FAILED: the record may lack values
 * @retval -2  TVMETA_UNKNOWN_KIND
 * @retval -3  TVMETA_REFUSED_KIND: `format` says which
 * @retval -4  TVMETA_BROKEN: the container or a directory is damaged or cut short; `brokenAt` says where. The record
 * has what was found
 * @retval -5  TVMETA_NO_MEMORY: the record may lack values
 * @retval -6  TVMETA_BAD_ARGUMENT. The record has no values, or is unchanged if recordSize is wrong
 * @limits bounded work and memory for any bytes; about 160 KiB of stack: see docs/limits.md.
 * @standard EXIF 2.32; TIFF 6.0; XMP (ISO 16684-1, XMP storage in files); ISO/IEC 14496-12, 23008-12, 18181-2; PNG; RFC
 * 9649; CIPA DC-007.
 */
TVMETA_API int32_t tvmeta_read_photo(const tvmeta_Source* source, tvmeta_Photo* photo) TVMETA_NOEXCEPT;

/** @}
 *  @defgroup blocks Blocks, texts and tags
 *  @{ */

/**
 * Copies a block, with its pieces joined.
 *
 * @param source  the file. Null, or a source without `read` or of an impossible size: -6.
 * @param photo  record of tvmeta_read_photo() for the same source; may be null. A block in one piece is then read at
 * the place in the record without another search. A record whose recordSize leaves out `blocks` is ignored.
 * @param block  TVMETA_EXIF to TVMETA_PREVIEW; any other number: TVMETA_BAD_ARGUMENT.
 * @param buffer  receives the bytes; null to get the size alone.
 * @param capacity  bytes of the buffer, not negative.
 * @retval >=0  bytes of the block; 0: there is none
 * @retval -1  TVMETA_READ_FAILED
 * @retval -2  TVMETA_UNKNOWN_KIND
 * @retval -3  TVMETA_REFUSED_KIND: a file of a refused format, or a compressed block
 * @retval -4  TVMETA_BROKEN: the source ends inside of the block
 * @retval -5  TVMETA_NO_MEMORY
 * @retval -6  TVMETA_BAD_ARGUMENT
 * @retval -7  TVMETA_TOO_SMALL
 * @failure the buffer may contain a part of the block, except for TVMETA_TOO_SMALL.
 */
TVMETA_API int64_t tvmeta_read_block(const tvmeta_Source* source, const tvmeta_Photo* photo, int32_t block,
                                     void* buffer, int64_t capacity) TVMETA_NOEXCEPT;

/** Texts of tvmeta_read_text(): XMP property, IPTC dataset, tag. */
enum {
    TVMETA_TEXT_TITLE,       /**< dc:title, 2:05, 40091 */
    TVMETA_TEXT_DESCRIPTION, /**< dc:description, 2:120, 270 */
    TVMETA_TEXT_ARTIST,      /**< dc:creator (the first), 2:80, 315 or 40093 */
    TVMETA_TEXT_COPYRIGHT,   /**< dc:rights, 2:116, 33432 */
    TVMETA_TEXT_KEYWORD,     /**< dc:subject, 2:25, 40094: a list */
    TVMETA_TEXT_RATING,      /**< xmp:Rating as it is in the packet, or 18246: a number such as "5" or "-1" */
    TVMETA_TEXT_SOFTWARE     /**< xmp:CreatorTool, 305 */
};

/**
 * Copies a descriptive text: from the XMP packet if it has the property, else from the IPTC block, else from a tag of
 * the first image directory. All keywords come from the same one of them.
 *
 * The packet is searched for the property with its usual prefix; of alternative languages the first counts. White space
 * at both ends of a text is removed, and empty texts count as absent.
 *
 * @param source  the file. Null, or a source without `read` or of an impossible size: -6.
 * @param photo  may be null; not used in this version.
 * @param text  TVMETA_TEXT_TITLE, ...; any other number: TVMETA_BAD_ARGUMENT.
 * @param index  number of the keyword, from 0 on, not negative. Other texts have the number 0 alone.
 * @param buffer  receives as much of the text as fits, in whole characters, without a terminator; may be null.
 * @param capacity  bytes of the buffer, not negative.
 * @retval >=0  bytes of the whole text, which may be more than fit; 0: there is none, or no keyword of that number
 * @retval -1  TVMETA_READ_FAILED
 * @retval -2  TVMETA_UNKNOWN_KIND
 * @retval -3  TVMETA_REFUSED_KIND
 * @retval -5  TVMETA_NO_MEMORY
 * @retval -6  TVMETA_BAD_ARGUMENT
 * @limits packets and blocks that are compressed or above 64 MiB are not searched, nor packets in UTF-16 or UTF-32.
 *   Tags: the first 64 KiB of a text. Each call reads the file again, and passes over the keywords before `index`.
 */
TVMETA_API int64_t tvmeta_read_text(const tvmeta_Source* source, const tvmeta_Photo* photo, int32_t text, int32_t index,
                                    char* buffer, int64_t capacity) TVMETA_NOEXCEPT;

/** Directories of tvmeta_Tag. */
enum {
    TVMETA_IMAGE,            /**< first directory of a TIFF structure */
    TVMETA_THUMBNAIL_IMAGE,  /**< second one in the chain: the thumbnail of EXIF data, or a page */
    TVMETA_EXIF_DIRECTORY,   /**< EXIF */
    TVMETA_GPS_DIRECTORY,    /**< GPS */
    TVMETA_INTEROPERABILITY, /**< interoperability */
    TVMETA_SUB_IMAGE         /**< child of the first one (SubIFDs), or a later one in the chain */
};

/** One entry of a directory. 32 bytes. */
typedef struct tvmeta_Tag {
    int32_t directory;       /**< TVMETA_IMAGE, ... */
    uint16_t tag;            /**< number of the tag */
    uint16_t type;           /**< field type of TIFF, BigTIFF or EXIF 3.0 */
    uint64_t count;          /**< number of items, as in the file */
    int64_t position;        /**< of the value in the source; -1 if it is outside of the structure, or of a type that no
                                  standard has */
    int32_t isBigEndian;     /**< byte order of the value: 1 big-endian, 0 little-endian */
    int32_t directoryNumber; /**< number of the directory in the photograph, from 0 on */
} tvmeta_Tag;

/**
 * Lists the entries of all directories, one directory after the other: the first image directory, those that it points
 * to in the order of its entries, the next one in the chain, then in the same way those that these point to. Maker
 * notes are one entry.
 *
 * @param source  the file. Null, or a source without `read` or of an impossible size: -6.
 * @param photo  may be null; not used in this version.
 * @param tags  receives the first entries. Null if capacity is above 0: -6.
 * @param capacity  entries that fit, not negative.
 * @retval >=0  number of entries, which may be more than fit
 * @retval -1  TVMETA_READ_FAILED
 * @retval -2  TVMETA_UNKNOWN_KIND
 * @retval -3  TVMETA_REFUSED_KIND
 * @retval -5  TVMETA_NO_MEMORY
 * @retval -6  TVMETA_BAD_ARGUMENT
 * @limits up to 131,072 entries; up to four structures, of each up to 32 directories, four of them in the chain.
 */
TVMETA_API int64_t tvmeta_list_tags(const tvmeta_Source* source, const tvmeta_Photo* photo, tvmeta_Tag* tags,
                                    int64_t capacity) TVMETA_NOEXCEPT;

/**
 * Converts a record for buf2tif() and write_exif_buf(). Fractions stay as they are in the file. One whose terms exceed
 * 31 bits is reduced, or else replaced by a near one. Positions, heights and times near zero, which the writers would
 * omit, become the smallest fraction.
 *
 * Fields that the writers' records lack (make, serial number, bias, offset, ...) are not converted: tvmeta_save_tiff()
 * keeps them.
 *
 * @param photo  record of tvmeta_read_photo(), of the size of this version or more. Null, or smaller: -6.
 * @param metadata,gps  receive the values; cleared first. Null: -6.
 * @retval 0  TVMETA_OK: all values were converted as they are
 * @retval >0  mask of fields that were changed to fit or left out, bits as in `present`: a longer text, an ISO speed
 * above 65535, an altitude beyond 2,000 km, a fraction, a time outside of the years 1 to 9999
 * @retval -6  TVMETA_BAD_ARGUMENT
 */
TVMETA_API int64_t tvmeta_writer_records(const tvmeta_Photo* photo, MetadataBuf* metadata, GpsBuf* gps) TVMETA_NOEXCEPT;

/** @}
 *  @defgroup datasets IPTC blocks
 *  @{ */

/** One dataset of an IPTC block. 24 bytes. */
typedef struct tvmeta_Dataset {
    int32_t record;   /**< 1: envelope; 2: application, with the texts */
    int32_t number;   /**< of the dataset in its record: 25 is a keyword */
    int64_t position; /**< of the value in the block */
    int64_t size;     /**< bytes of the value */
} tvmeta_Dataset;

/**
 * Lists the datasets of an IPTC block, such as that of tvmeta_read_block(), in their order.
 *
 * @param block  the block; may be null if size is 0.
 * @param size  bytes of the block, not negative.
 * @param datasets  receives the first datasets. Null if capacity is above 0: -6.
 * @param capacity  datasets that fit, not negative.
 * @retval >=0  number of datasets, which may be more than fit. The list ends where no dataset starts (padding, for
 * example), and before one that is cut short.
 * @retval -6  TVMETA_BAD_ARGUMENT
 * @standard IPTC-IIM 4.1, section 1.5
 */
TVMETA_API int64_t tvmeta_list_datasets(const void* block, int64_t size, tvmeta_Dataset* datasets,
                                        int64_t capacity) TVMETA_NOEXCEPT;

/**
 * Copies an IPTC block and adds the keywords that it lacks, after its last keyword. If keywords are added, a block
 * without record 2 gets one, of version 4. If a keyword that is added is not ASCII, the block is declared as UTF-8; but
 * if the block is declared in another encoding, or has texts in one, such keywords are left out.
 *
 * @param block  the block; may be null if size is 0, which makes a new one.
 * @param size  bytes of the block, 0 to 2^31 - 1. More: -8.
 * @param keywords  UTF-8, 1 to 32767 bytes each, each with a terminator; anything else: -6. May be null if count is 0.
 * @param count  number of keywords, not negative.
 * @param buffer  receives the new block; must not overlap the old one. Null: the size is measured.
 * @param capacity  bytes of the buffer, not negative.
 * @param leftOut  receives the number of keywords that are left out; may be null. Not written for -5, -6 and -8.
 * @retval >=0  bytes of the new block
 * @retval -5  TVMETA_NO_MEMORY
 * @retval -6  TVMETA_BAD_ARGUMENT
 * @retval -7  TVMETA_TOO_SMALL: nothing was written to the buffer
 * @retval -8  TVMETA_TOO_LARGE
 * @standard IPTC-IIM 4.1
 */
TVMETA_API int64_t tvmeta_add_keywords(const void* block, int64_t size, const char* const* keywords, int64_t count,
                                       void* buffer, int64_t capacity, int64_t* leftOut) TVMETA_NOEXCEPT;

/** @}
 *  @defgroup results Results
 *  @{ */

/**
 * A result and its photograph. Clear the record, set recordSize, and fill in what you have: members that are 0 or null
 * mean what is said here. Everything is borrowed for the call.
 */
typedef struct tvmeta_Result {
    uint32_t recordSize;         /**< sizeof(tvmeta_Result); members of later versions must be 0 */
    int32_t width;               /**< Pixels, 1 or more. tvmeta_build_exif(): 0 writes no size */
    int32_t height;              /**< Rows, 0 or more */
    int32_t channels;            /**< 1 to 4 of a pixel in memory; the second of 2 and the fourth are not written */
    int32_t bitsCode;            /**< 8, 16, 32 (float) or 3216 (half float), as in TifImageInfo */
    int32_t pixelMode;           /**< 0; or 1 with bitsCode 8: `pixels` have 16 bits, of which the high 8 are written */
    int32_t resolution;          /**< Dots per inch, up to 2147483; 0: the photograph's, else 300 */
    int32_t orientation;         /**< 1 to 8 as in EXIF; others: 1 */
    const char* path;            /**< The file to write; replaced if it exists. Not used by tvmeta_build_exif() */
    const void* pixels;          /**< The first row. May be null if height is 0 */
    int64_t rowPitch;            /**< Bytes from a row to the next; may be negative or 0, in all pixel modes */
    const void* icc;             /**< ICC profile of the pixels; may be null. The photograph's is never used */
    int64_t iccSize;             /**< Bytes, up to 2^31 - 1, as of the next two */
    const void* iptc;            /**< IPTC block; null: the photograph's */
    int64_t iptcSize;            /**< Bytes */
    const char* xmp;             /**< XMP packet; null: the photograph's, its sizes and orientation corrected */
    int64_t xmpSize;             /**< Bytes without a terminator */
    const char* const* keywords; /**< UTF-8, 1 to 32767 bytes each; added to IPTC and to dc:subject of XMP, unless they
                                      have it. One above 256 bytes is always added to XMP */
    int32_t keywordCount;        /**< 0: keywords may be null */
    int32_t method;              /**< METHOD_NONE, or the method whose settings are added to the packet */
    const float* settings;       /**< SETTINGS_SLOTS values; may be null for METHOD_NONE */
    const char* software;        /**< Text of Software; null: the photograph's, else of floats
                                      "Tonalvista 32-bit Float Output" */
    const char* modifyDate;      /**< "YYYY:MM:DD HH:MM:SS"; null: no modification time is written */
    const tvmeta_Source* photo;  /**< Any photograph of tvmeta_read_photo(); null: none */
} tvmeta_Result;

/** tvmeta_Loss.reason. */
enum {
    TVMETA_LOSS_BROKEN = 1,     /**< Outside of the file, of an unknown type, an offset (type 13), of 64 bits (types 16
                                     to 18), or beyond the limit of 64 MiB; of block TVMETA_EXIF: the file is damaged, and
                                     may have had more */
    TVMETA_LOSS_PRIVATE = 2,    /**< An unknown tag of a raw format or a program in the image directory */
    TVMETA_LOSS_MAKER_NOTE = 3, /**< A maker note that is of no format that can be moved, see tvmeta_save_tiff(), or
                                   that of a CR3 file */
    TVMETA_LOSS_BLOCK = 4,      /**< A block that is compressed or unreadable, a packet into which the settings cannot
                                     be inserted, or a profile for another number of channels */
    TVMETA_LOSS_XMP_LEFT = 5,   /**< A property (its tag) or the keywords (0) of XMP are unchanged: the packet has them
                                     several times, or in a form that is not edited */
    TVMETA_LOSS_CLAMPED = 6     /**< Keywords beyond ASCII are not in the IPTC block, which has another encoding */
};

/**
 * Something of the photograph that is true of the result but missing in it. Values that describe the photograph's own
 * pixels or file are no loss.
 */
typedef struct tvmeta_Loss {
    int32_t directory; /**< As in tvmeta_Tag; of a block -1 - TVMETA_XMP and so on */
    int32_t tag;       /**< Of the directory; of a block: see the reason, else 0 */
    int32_t reason;    /**< TVMETA_LOSS_... */
} tvmeta_Loss;

/**
 * Writes an uncompressed TIFF file with everything of the photograph that is true of the result: the entries of its
 * image, EXIF, GPS and interoperability directories, byte for byte in little-endian order, its XMP packet and its IPTC
 * block. A maker note is kept if its offsets count from its own start: Nikon type 3, Olympus and OM System, Fujifilm,
 * Apple, and Pentax notes that start with "PENTAX ". Files of 4 GiB and more are BigTIFF.
 *
 * The photograph is read before the file is opened: it may be the same file.
 *
 * @param result  the result. Null, or members outside of what they accept: -6.
 * @param losses  receives the first losses; may be null if capacity is 0.
 * @param capacity  losses that fit, not negative.
 * @retval >=0  number of losses, which may be more than fit
 * @retval -1,-2,-3  TVMETA_READ_FAILED, TVMETA_UNKNOWN_KIND or TVMETA_REFUSED_KIND of the photograph. Damaged ones are
 * no failure: what they have is kept.
 * @retval -5  TVMETA_NO_MEMORY
 * @retval -6  TVMETA_BAD_ARGUMENT
 * @retval -8  TVMETA_TOO_LARGE: a block above 2^31 - 1 bytes
 * @retval -9  TVMETA_WRITE_FAILED: the file cannot be opened, or is incomplete. With any other failure it is untouched.
 * @limits values of up to 64 MiB together are kept; of the photograph's XMP and IPTC, 64 MiB each.
 * @standard TIFF 6.0, EXIF 2.32
 */
TVMETA_API int32_t tvmeta_save_tiff(const tvmeta_Result* result, tvmeta_Loss* losses, int32_t capacity) TVMETA_NOEXCEPT;

/**
 * Builds the directories of tvmeta_save_tiff() alone: a little-endian TIFF structure without pixels, profile, XMP and
 * IPTC. Of the members that describe those, width and height have an effect, and on ColorSpace icc, channels and
 * bitsCode; the numbers of the pixels are not checked. An EXIF segment of a JPEG has room for 65,527 bytes.
 *
 * @param result  the result. Null, or members outside of what they accept: -6.
 * @param buffer  receives the block. Null: the size is measured.
 * @param capacity  bytes of the buffer, not negative.
 * @param losses  receives the first losses; may be null if lossCapacity is 0.
 * @param lossCapacity  losses that fit, not negative.
 * @param lossCount  receives the number of losses; may be null. Not written for -6 and -8.
 * @retval >0  bytes of the block
 * @retval -1,-2,-3  as of tvmeta_save_tiff()
 * @retval -5  TVMETA_NO_MEMORY
 * @retval -6  TVMETA_BAD_ARGUMENT
 * @retval -7  TVMETA_TOO_SMALL: nothing was written to the buffer
 * @retval -8  TVMETA_TOO_LARGE: a block above 2^31 - 1 bytes
 */
TVMETA_API int64_t tvmeta_build_exif(const tvmeta_Result* result, void* buffer, int64_t capacity, tvmeta_Loss* losses,
                                     int32_t lossCapacity, int32_t* lossCount) TVMETA_NOEXCEPT;

/** @}
 *  @defgroup brackets Brackets
 *  @{ */

/**
 * What tvmeta_find_brackets() needs of one file. Make it with tvmeta_shot(), or fill it in. captureTime to exposureMode
 * count only if their bit in `present` is set; exposureTime, fNumber, isoSpeed and focalLength only if they are also
 * positive and finite.
 */
typedef struct tvmeta_Shot {
    uint32_t recordSize;        /**< sizeof(tvmeta_Shot) of the caller, equal in all records of an array */
    int32_t format;             /**< TVMETA_FORMAT_... */
    const char* folder;         /**< Path of the folder; may be null. Borrowed: no copy is made. */
    const char* name;           /**< Name of the file without its folder; may be null. Borrowed. */
    uint64_t camera;            /**< A number for make and model, equal for equal texts */
    uint64_t serialNumber;      /**< A number for the serial number of the body; 0: unknown */
    uint64_t present;           /**< Bits (1 << TVMETA_EXPOSURE_TIME and so on), as in tvmeta_Photo */
    int64_t captureTime;        /**< As in tvmeta_Photo */
    int32_t captureNanoseconds; /**< As in tvmeta_Photo; present: TVMETA_SUB_SECOND */
    int32_t utcOffset;          /**< As in tvmeta_Photo */
    float exposureTime;         /**< Seconds */
    float fNumber;              /**< Aperture */
    float isoSpeed;             /**< As in tvmeta_Photo */
    float exposureBias;         /**< Stops */
    float focalLength;          /**< Millimetres */
    int32_t exposureMode;       /**< As in tvmeta_Photo */
    int32_t width;              /**< Pixels. Width, height and orientation are compared, whatever they are. */
    int32_t height;             /**< Rows */
    int32_t orientation;        /**< As in tvmeta_Photo */
    int32_t hidesBrackets;      /**< 1: of a maker whose cameras do not record exposure mode 2 for brackets (Nikon) */
} tvmeta_Shot;

/**
 * Makes the record for tvmeta_find_brackets() from that of tvmeta_read_photo().
 *
 * @param photo  record of tvmeta_read_photo(); its recordSize says how much of it is read. Null, or a recordSize below
 * 4: -6.
 * @param folder  path of the folder; may be null. Files of one folder must have the same text.
 * @param name  name of the file without its folder; may be null. Both texts must live as long as the record.
 * @param shot  set its recordSize; all other members within that size are written. Null, or a recordSize below 4: -6.
 * @retval 0  TVMETA_OK
 * @retval -6  TVMETA_BAD_ARGUMENT: nothing is written
 */
TVMETA_API int32_t tvmeta_shot(const tvmeta_Photo* photo, const char* folder, const char* name,
                               tvmeta_Shot* shot) TVMETA_NOEXCEPT;

/** How to group. What is given here takes precedence over all evidence. */
typedef struct tvmeta_BracketOptions {
    uint32_t recordSize; /**< sizeof(tvmeta_BracketOptions) */
    int32_t count;       /**< Photographs of every set, 2 or more; below 2: found by the evidence */
    double gap; /**< Longest pause in a set, seconds from the end of an exposure to the next; negative, NaN: learnt */
} tvmeta_BracketOptions;

/** tvmeta_BracketSet.confidence */
enum {
    TVMETA_BY_CAMERA = 1, /**< The camera recorded that it varied the exposure */
    TVMETA_BY_PATTERN,    /**< The same series of exposures occurs again */
    TVMETA_BY_GUESS,      /**< Looks like a series, once */
    TVMETA_BY_COUNT       /**< Divided by tvmeta_BracketOptions.count */
};

/** tvmeta_BracketSet.evidence; tvmeta_evidence_text() describes it. */
enum {
    TVMETA_EVIDENCE_MARK_BIAS = 1, /**< Exposure mode 2, divided where the exposure bias repeats */
    TVMETA_EVIDENCE_MARK_EXPOSURE, /**< Exposure mode 2 with a constant bias, divided where the exposure repeats */
    TVMETA_EVIDENCE_BIAS,          /**< Automatic exposure with a bias in regular steps */
    TVMETA_EVIDENCE_REPEATED,      /**< Exposures that repeat, shot after shot */
    TVMETA_EVIDENCE_SERIES,        /**< Exposures in regular steps, set by hand */
    TVMETA_EVIDENCE_DIFFERENT,     /**< Different exposures without a longer pause */
    TVMETA_EVIDENCE_COUNT          /**< The number of photographs that the caller gave */
};

/**
 * Describes evidence in English, in lower case, such as "exposure mode 2, bias varies".
 *
 * @return Static text; "" for other numbers.
 */
TVMETA_API const char* tvmeta_evidence_text(int32_t evidence) TVMETA_NOEXCEPT;

/** The place of one file. */
typedef struct tvmeta_BracketMember {
    int64_t set;    /**< Index of its set; -1: none */
    int64_t place;  /**< Place of its photograph in the set, from 0, in order of capture; 0 without a set */
    int64_t leader; /**< Index of the file that represents the photograph: itself, or the raw file or original */
    double offset;  /**< Stops from the middle exposure of the set, positive for brighter; 0 if unknown */
} tvmeta_BracketMember;

/** One set. */
typedef struct tvmeta_BracketSet {
    uint32_t recordSize;   /**< sizeof(tvmeta_BracketSet); the first record's is that of all */
    int32_t confidence;    /**< TVMETA_BY_... */
    int64_t shots;         /**< Photographs; a raw file and its JPEG are one */
    int64_t expectedShots; /**< Photographs of the complete set; above `shots` if some are missing. 0: unknown */
    double longestPause; /**< Longest pause between two of its exposures, seconds, at least 0; 1 s less than measured if
                            a time has no fraction */
    int32_t evidence;    /**< TVMETA_EVIDENCE_... */
    int32_t reserved;    /**< 0 */
} tvmeta_BracketSet;

/**
 * Groups photographs into exposure brackets. Reads no file. Takes n log n time, with a count up to 100 times that,
 * and some 190 bytes per file during the call.
 *
 * Files become photographs. In one folder, files of one camera and second are one photograph if their names differ in
 * the extension only, or if one name continues the other with a character that is not a digit and time and exposure are
 * equal. The file with the shortest name represents the photograph; of several the raw file, else the HEIF file, else
 * the JPEG file.
 *
 * Photographs become sequences, in order of capture time with its fraction, then of names. A sequence is of one camera
 * (make, model, serial number), format, exposure mode and, within 1 %, focal length. It is in one folder, or continues
 * in the next folder of a card (100CANON, 101CANON) with the next file number. It ends with a pause of more than 30 s
 * plus the exposure before it. Except in exposure mode 2, pauses are up to 2 s where the size or the orientation
 * changes. Pauses are measured from the end of an exposure; they may be 1 s longer if one of both times has no
 * fraction. The UTC offset counts if all photographs of the camera have one, fractions if not all are 0.
 *
 * A sequence becomes sets by the evidence that it has:
 * - Exposure mode 2: a bias that repeats starts a new set; where the bias is constant, an exposure that repeats does.
 *   Pauses are up to 5 s, in regular sets up to 15 s, plus the exposure before (noise reduction).
 * - Exposure mode 0: a set is regular in its bias, or goes one way, and its exposures follow the bias. With
 *   `hidesBrackets` it is evidence of the camera if the pauses are up to 2 s, or up to 15 s in equal steps and an order
 *   of cameras; then two or more exposures in any steps are a set, too, if their times have fractions and no pause is
 *   above 0.7 s, and two with a pause of up to 15 s if the camera has no other set, three or more such pairs are equal
 *   and they are three quarters of all. Else it is a guess if the pauses are up to 2 s or the range is 1.8 EV or more.
 *   A constant bias gives no set.
 * - Exposure mode 1, or none: different exposures with pauses of up to 2 s, a guess unless they repeat; and series of
 * at least 1.8 EV that are regular or go one way, set by the exposure time alone, or four and more in regular steps
 * over 3 EV. Their longest pause is learnt. A series that occurs again in one of the next 16 sets is no guess. In mode
 * 1 also a regular bias that the exposures follow.
 *
 * A set is regular if it has three to 16 exposures in equal steps, from one end or the middle outward, or the middle
 * before the others, and no pause is much longer than the others. It goes one way if it has four or more, each at least
 * 0.5 EV from the one before, from one end to the other.
 *
 * Exposures within 1/6 EV are equal. Equal exposures (bursts, focus and white balance brackets) are no set. An f-number
 * or an ISO speed that is absent counts as constant if it is absent in the whole sequence. In exposure mode 1 and 2,
 * where the numbers of the exposure are equal and the bias varies, the bias is the exposure. Photographs without
 * capture time are in no set, nor are those without exposure time except in exposure mode 2 with a bias.
 *
 * With a count, sequences of any exposure mode are divided into sets of that size, also photographs without exposure;
 * those without time follow each other by name. Known exposures that are all equal are no set.
 *
 * @param shots  `count` records, each of the size that shots[0].recordSize names, in any order; may be null if count is
 * 0. A recordSize below its own size: -6.
 * @param count  number of files, not negative.
 * @param options  may be null: all is found.
 * @param members  room for `count` records; all are written. May be null if count is 0.
 * @param sets  room for `count` records of the size that sets[0].recordSize names, which must be set; may be null if
 * count is 0. Receives the sets in order of capture; each record's own recordSize too.
 * @retval >=0  number of sets
 * @retval -5  TVMETA_NO_MEMORY: nothing is written
 * @retval -6  TVMETA_BAD_ARGUMENT: nothing is written
 */
TVMETA_API int64_t tvmeta_find_brackets(const tvmeta_Shot* shots, int64_t count, const tvmeta_BracketOptions* options,
                                        tvmeta_BracketMember* members, tvmeta_BracketSet* sets) TVMETA_NOEXCEPT;

/** @} */

#ifdef __cplusplus
}
#endif

#endif
