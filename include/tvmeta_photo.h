/**
 * @file
 * Any photograph, from any source; results that keep its metadata; exposure brackets.
 *
 * Conventions: those of tvmeta.h, and
 * - every record that may grow starts with recordSize, which the caller sets to its sizeof; the library touches no byte
 *   beyond it. tvmeta_Source, tvmeta_Block, tvmeta_Rational, tvmeta_Tag and tvmeta_Loss never grow;
 * - positions and sizes are 64-bit; results are a status (int32_t) or a size or count (int64_t), negative for failures;
 * - nothing is printed, nothing is kept after a call, no call needs a lock.
 */
#ifndef TVMETA_PHOTO_H
#define TVMETA_PHOTO_H

#include "tvmeta.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Status of every function below ---- */
enum {
    TVMETA_OK = 0,
    TVMETA_READ_FAILED = -1,  /* the source or the system reports an error */
    TVMETA_UNKNOWN_KIND = -2, /* no kind of photograph */
    TVMETA_REFUSED_KIND = -3, /* recognised, not supported; the record names it in `format` */
    TVMETA_BROKEN = -4,       /* `brokenAt` is set; the record has what was found before */
    TVMETA_NO_MEMORY = -5,
    TVMETA_BAD_ARGUMENT = -6,
    TVMETA_TOO_SMALL = -7, /* the buffer; nothing was written to it */
    TVMETA_TOO_LARGE = -8, /* a result beyond what its format can express */
    TVMETA_WRITE_FAILED = -9
};
TVMETA_API const char* tvmeta_status_text(int32_t status) TVMETA_NOEXCEPT;

/* ---- Sources ---- */

/* Bytes that can be read at any position. `read` returns the bytes read, fewer than count only at the end, negative for
 * an error; it runs on the caller's thread and must not throw. `close` may be null. A source of tvmeta_open() or
 * tvmeta_memory() can be read by several threads at once. */
typedef struct tvmeta_Source {
    void* context;
    int64_t size;
    int64_t (*read)(void* context, int64_t position, void* buffer, int64_t count);
    void (*close)(void* context);
} tvmeta_Source;

/* Regular files only: a FIFO, a device or a directory is TVMETA_READ_FAILED at once. */
TVMETA_API int32_t tvmeta_open(const char* path, tvmeta_Source* source) TVMETA_NOEXCEPT;
TVMETA_API int32_t tvmeta_memory(const void* bytes, int64_t size, tvmeta_Source* source) TVMETA_NOEXCEPT;
TVMETA_API void tvmeta_close(tvmeta_Source* source) TVMETA_NOEXCEPT; /* twice is harmless */

/* ---- A photograph ---- */

enum { /* tvmeta_Photo.format */
       TVMETA_FORMAT_UNKNOWN,
       TVMETA_FORMAT_JPEG,
       TVMETA_FORMAT_TIFF, /* and DNG, CR2, NEF, NRW, ARW, PEF, SRW */
       TVMETA_FORMAT_BIGTIFF,
       TVMETA_FORMAT_PSD, /* and PSB */
       TVMETA_FORMAT_ORF,
       TVMETA_FORMAT_RW2,
       TVMETA_FORMAT_RAF,
       TVMETA_FORMAT_CR3,
       TVMETA_FORMAT_HEIF, /* HEIC, HIF */
       TVMETA_FORMAT_AVIF,
       TVMETA_FORMAT_JXL,
       TVMETA_FORMAT_PNG,
       TVMETA_FORMAT_WEBP,
       TVMETA_FORMAT_REFUSED = 100 /* and above: X3F, CRW, MRW, IIQ, 3FR, GIF, MP4, ... */
};
TVMETA_API const char* tvmeta_format_name(int32_t format) TVMETA_NOEXCEPT;

/* Numbers of fields, for the masks of a record. */
enum {
    TVMETA_SIZE,
    TVMETA_ORIENTATION,
    TVMETA_MAKE,
    TVMETA_MODEL,
    TVMETA_LENS,
    TVMETA_SERIAL_NUMBER,
    TVMETA_EXPOSURE_TIME,
    TVMETA_F_NUMBER,
    TVMETA_ISO_SPEED,
    TVMETA_EXPOSURE_BIAS,
    TVMETA_EXPOSURE_MODE,
    TVMETA_EXPOSURE_PROGRAM,
    TVMETA_METERING_MODE,
    TVMETA_FLASH,
    TVMETA_WHITE_BALANCE,
    TVMETA_FOCAL_LENGTH,
    TVMETA_FOCAL_LENGTH_35MM,
    TVMETA_CAPTURE_TIME,
    TVMETA_SUB_SECOND,
    TVMETA_UTC_OFFSET,
    TVMETA_LATITUDE,
    TVMETA_LONGITUDE,
    TVMETA_ALTITUDE,
    TVMETA_GPS_TIME
};
#define TVMETA_HAS(photo, field) (((photo)->present >> (field)) & 1)

typedef struct tvmeta_Rational {
    int64_t numerator; /* as in the file: 32-bit, signed or unsigned */
    int64_t denominator;
} tvmeta_Rational;

enum { TVMETA_EXIF, TVMETA_XMP, TVMETA_IPTC, TVMETA_ICC, TVMETA_THUMBNAIL, TVMETA_PREVIEW, TVMETA_BLOCKS };

/* Where a block is. Thumbnail and preview: JPEG only. EXIF: only where one TIFF structure is embedded. */
typedef struct tvmeta_Block {
    int64_t position; /* in the source; -1 if in several pieces or compressed */
    int64_t size;     /* after joining; 0 absent */
    int32_t pieces;
    int32_t isCompressed; /* PNG iCCP and iTXt, JXL brob: named, not read */
} tvmeta_Block;

typedef struct tvmeta_Photo {
    uint32_t recordSize;
    int32_t format;
    uint64_t present;      /* fields with a value */
    uint64_t derived;      /* of them, those computed from APEX values, an exposure index or a description */
    uint64_t damaged;      /* fields that the file has, but unreadable or impossible */
    int64_t brokenAt;      /* -1: nothing is broken */
    int32_t width, height; /* of the main image, before orientation */
    int32_t orientation;   /* of the main image */
    char make[64], model[64], lens[128],
        serialNumber[64]; /* UTF-8, terminated; a longer text is cut and marked damaged */
    tvmeta_Rational exposureTime, fNumber, focalLength, exposureBias;
    int32_t isoSpeed, exposureMode, exposureProgram, meteringMode, flash, whiteBalance, focalLength35mm;
    int64_t captureTime;        /* seconds since 1970-01-01 00:00:00 by the camera's clock, as if it were UTC */
    int32_t captureNanoseconds; /* sub-second */
    int32_t subSecondDigits;
    int32_t utcOffset;          /* minutes east of UTC */
    double latitude, longitude; /* degrees */
    double altitude;            /* metres above sea level */
    int64_t gpsTime;            /* seconds since 1970 UTC */
    tvmeta_Block blocks[TVMETA_BLOCKS];
} tvmeta_Photo;

TVMETA_API int32_t tvmeta_read_photo(const tvmeta_Source* source, tvmeta_Photo* photo) TVMETA_NOEXCEPT;

/* Copies a block, joined. A null buffer gives its size. */
TVMETA_API int64_t tvmeta_read_block(const tvmeta_Source* source, const tvmeta_Photo* photo, int32_t block,
                                     void* buffer, int64_t capacity) TVMETA_NOEXCEPT;

enum {
    TVMETA_TEXT_TITLE,
    TVMETA_TEXT_DESCRIPTION,
    TVMETA_TEXT_ARTIST,
    TVMETA_TEXT_COPYRIGHT,
    TVMETA_TEXT_KEYWORD,
    TVMETA_TEXT_RATING,
    TVMETA_TEXT_SOFTWARE
};

/* A text for people, UTF-8: from XMP, else IPTC, else EXIF. `index` counts keywords; beyond the last: 0. */
TVMETA_API int64_t tvmeta_read_text(const tvmeta_Source* source, const tvmeta_Photo* photo, int32_t text, int32_t index,
                                    char* buffer, int64_t capacity) TVMETA_NOEXCEPT;

enum {
    TVMETA_IMAGE,
    TVMETA_THUMBNAIL_IMAGE,
    TVMETA_EXIF_DIRECTORY,
    TVMETA_GPS_DIRECTORY,
    TVMETA_INTEROPERABILITY,
    TVMETA_SUB_IMAGE
};

typedef struct tvmeta_Tag { /* 32 bytes */
    int32_t directory;
    uint16_t tag, type;
    uint64_t count;
    int64_t position; /* of the value, in the source */
    int32_t isBigEndian;
    int32_t directoryNumber; /* of the directory in the photograph, from 0 */
} tvmeta_Tag;

/* All entries. Returns their number, also if there is room for fewer. */
TVMETA_API int64_t tvmeta_list_tags(const tvmeta_Source* source, const tvmeta_Photo* photo, tvmeta_Tag* tags,
                                    int64_t capacity) TVMETA_NOEXCEPT;

/* The records of buf2tif() and write_exif_buf(), with the file's own fractions. Result: TVMETA_OK, or a positive mask
 * of fields that had to be clamped. */
TVMETA_API int64_t tvmeta_writer_records(const tvmeta_Photo* photo, MetadataBuf* metadata, GpsBuf* gps) TVMETA_NOEXCEPT;

/* ---- A result ---- */

typedef struct tvmeta_Result {
    uint32_t recordSize;
    int32_t width, height, channels, bitsCode, pixelMode; /* as in TifImageInfo */
    int32_t resolution;                                   /* dots per inch; 0: the photograph's, else 300 */
    int32_t orientation;
    const char* path;
    const void* pixels;
    int64_t rowPitch; /* bytes; may be negative */
    const void* icc;
    int64_t iccSize;
    const void* iptc; /* null: the photograph's */
    int64_t iptcSize;
    const char* xmp; /* null: the photograph's, with its sizes and orientation corrected */
    int64_t xmpSize;
    const char* const* keywords; /* added to IPTC, and to dc:subject where the text is certain */
    int32_t keywordCount;
    int32_t method; /* METHOD_NONE: no settings */
    const float* settings;
    const char* software;       /* null: the photograph's */
    const char* modifyDate;     /* "YYYY:MM:DD HH:MM:SS"; null: none is written */
    const tvmeta_Source* photo; /* null: no photograph */
} tvmeta_Result;

enum { /* tvmeta_Loss.reason */
       TVMETA_LOSS_BROKEN = 1,
       TVMETA_LOSS_PRIVATE,
       TVMETA_LOSS_MAKER_NOTE,
       TVMETA_LOSS_BLOCK,
       TVMETA_LOSS_XMP_LEFT,
       TVMETA_LOSS_CLAMPED
};

/* Something that the photograph has, that is true of the result, and that the result has not. Values that describe the
 * photograph's own pixels or file are no loss. */
typedef struct tvmeta_Loss {
    int32_t directory; /* as in tvmeta_Tag, or -1 - block */
    int32_t tag;
    int32_t reason;
} tvmeta_Loss;

/* A TIFF file; BigTIFF above 4 GiB. Returns the number of losses (of which `capacity` are stored), or a status. */
TVMETA_API int32_t tvmeta_save_tiff(const tvmeta_Result* result, tvmeta_Loss* losses, int32_t capacity) TVMETA_NOEXCEPT;

/* The directories alone, as an EXIF block. A null buffer gives its size. `lossCount` may be null. */
TVMETA_API int64_t tvmeta_build_exif(const tvmeta_Result* result, void* buffer, int64_t capacity, tvmeta_Loss* losses,
                                     int32_t lossCapacity, int32_t* lossCount) TVMETA_NOEXCEPT;

/* ---- Brackets ---- */

/**
 * What tvmeta_find_brackets() needs of one file. Make it with tvmeta_shot(), or fill it in. captureTime to exposureMode
 * count only if their bit in `present` is set; exposureTime, fNumber, isoSpeed and focalLength only if they are
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
    float fNumber;
    float isoSpeed;
    float exposureBias; /**< Stops */
    float focalLength;  /**< Millimetres */
    int32_t exposureMode;
    int32_t width; /**< Pixels. Width, height and orientation are compared, whatever they are. */
    int32_t height;
    int32_t orientation;
    int32_t hidesBrackets; /**< 1: of a maker whose cameras do not record exposure mode 2 for brackets (Nikon) */
} tvmeta_Shot;

/**
 * Makes the record for tvmeta_find_brackets() from that of tvmeta_read_photo().
 *
 * @param photo   Its recordSize says how much of it is read.
 * @param folder  Path of the folder, may be null. Files of one folder must have the same text.
 * @param name    Name of the file without its folder, may be null. Both texts must live as long as the record.
 * @param shot    Set its recordSize; all other members within that size are written.
 * @return TVMETA_OK, or TVMETA_BAD_ARGUMENT (nothing is written): a null pointer, or a recordSize below its own size.
 */
TVMETA_API int32_t tvmeta_shot(const tvmeta_Photo* photo, const char* folder, const char* name,
                               tvmeta_Shot* shot) TVMETA_NOEXCEPT;

/** How to group. What is given here wins over all evidence. */
typedef struct tvmeta_BracketOptions {
    uint32_t recordSize; /**< sizeof(tvmeta_BracketOptions) */
    int32_t count;       /**< Photographs of every set, 2 or more; 0 or less: found */
    double gap; /**< Longest pause in a set, seconds from the end of an exposure to the next; negative, NaN: learnt */
} tvmeta_BracketOptions;

/** tvmeta_BracketSet.confidence */
enum {
    TVMETA_BY_CAMERA = 1, /**< The camera recorded that it varied the exposure */
    TVMETA_BY_PATTERN,    /**< The same series of exposures occurs again */
    TVMETA_BY_GUESS,      /**< Looks like a series, once */
    TVMETA_BY_COUNT       /**< Divided by tvmeta_BracketOptions.count */
};

/** tvmeta_BracketSet.evidence; tvmeta_evidence_text() has words for it. */
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
 * Words for people, English, in lower case: "exposure mode 2, bias varies".
 *
 * @return A constant text; "" for other numbers.
 */
TVMETA_API const char* tvmeta_evidence_text(int32_t evidence) TVMETA_NOEXCEPT;

/** The place of one file. */
typedef struct tvmeta_BracketMember {
    int64_t set;    /**< Index of its set; -1: none */
    int64_t place;  /**< Place of its photograph in the set, from 0, in order of capture; 0 without a set */
    int64_t leader; /**< Index of the file that speaks for the photograph: itself, or the raw file or original */
    double offset;  /**< Stops from the middle exposure of the set, positive for brighter; 0 if unknown */
} tvmeta_BracketMember;

/** One set. */
typedef struct tvmeta_BracketSet {
    uint32_t recordSize;   /**< sizeof(tvmeta_BracketSet); the first record's is that of all */
    int32_t confidence;    /**< TVMETA_BY_... */
    int64_t shots;         /**< Photographs; a raw file and its JPEG are one */
    int64_t expectedShots; /**< Above `shots`: some are missing. 0: unknown */
    double longestPause;   /**< Seconds between two of its exposures, at least 0; with whole-second clocks 1 less */
    int32_t evidence;      /**< TVMETA_EVIDENCE_... */
    int32_t reserved;
} tvmeta_BracketSet;

/**
 * Groups photographs into exposure brackets. Reads no file. Takes n log n time, and some 160 bytes per file during the
 * call.
 *
 * Files become photographs. In one folder, files of one camera and second are one photograph if their names differ in
 * the extension only, or if one name continues the other with a character that is not a digit and time and exposure are
 * equal. The raw file speaks for the photograph, else the HEIF file, else the JPEG file.
 *
 * Photographs become sequences, in order of capture time with its fraction, then of names. A sequence is of one camera
 * (make, model, serial number), format, exposure mode and, within 1 %, focal length. It is in one folder, or goes on in
 * the next folder of a card (100CANON, 101CANON) with the next file number. It ends with a pause of more than 30 s plus
 * the exposure before it. Except in exposure mode 2, pauses are up to 2 s where the size or the orientation changes.
 * Pauses are measured from the end of an exposure; they may be 1 s longer if one of both times has no fraction. The UTC
 * offset counts if all photographs of the camera have one, fractions if not all are 0.
 *
 * A sequence becomes sets by the evidence that it has:
 * - Exposure mode 2: a bias that repeats starts a new set; where the bias is constant, an exposure that repeats does.
 *   Pauses are up to 5 s plus the exposure before (noise reduction), and up to 15 s more than it in regular sets.
 * - Exposure mode 0: a set is regular in its bias, and its exposures follow the bias. With `hidesBrackets` it is
 *   evidence of the camera if the pauses are up to 2 s, or up to 15 s in an order of cameras; everything else is a
 *   guess. A constant bias gives no set.
 * - Exposure mode 1, or none: exposures that repeat, with pauses of up to 2 s; and, at any pause, series that are
 * regular or go one way, set by the exposure time alone, or four and more in regular steps over 3 EV. A set is regular
 * if it has three to 16 exposures in equal steps, from one end or the middle outward, or the middle before the others,
 * and no pause is much longer than the others.
 *
 * Exposures within 1/6 EV are equal. Equal exposures (bursts, focus and white balance brackets) are no set. An f-number
 * or an ISO speed that is absent counts as constant if it is absent in the whole sequence. In exposure mode 1 and 2,
 * where the numbers of the exposure are equal and the bias varies, the bias is the exposure. Photographs without
 * capture time are in no set, nor are those without exposure time except in exposure mode 2 with a bias.
 *
 * With a count, sequences of any exposure mode are divided into sets of that size, also photographs without exposure;
 * those without time follow each other by name. Known exposures that are all equal are no set.
 *
 * @param shots    `count` records, each of the size that shots[0].recordSize names; may be null if `count` is 0.
 * @param count    Number of files; any order.
 * @param options  May be null: all is found.
 * @param members  Room for `count` records; all are written. May be null if `count` is 0.
 * @param sets     Room for `count` records of the size that sets[0].recordSize names, which must be set; may be null if
 *                 `count` is 0. The sets found are written, in order of capture; each record's own recordSize too.
 * @return The number of sets; or TVMETA_BAD_ARGUMENT (a null pointer, a negative count, a recordSize below its own
 *         size) or TVMETA_NO_MEMORY, and nothing is written.
 */
TVMETA_API int64_t tvmeta_find_brackets(const tvmeta_Shot* shots, int64_t count, const tvmeta_BracketOptions* options,
                                        tvmeta_BracketMember* members, tvmeta_BracketSet* sets) TVMETA_NOEXCEPT;

#ifdef __cplusplus
}
#endif

#endif
