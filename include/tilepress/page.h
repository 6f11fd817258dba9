#ifndef TILEPRESS_PAGE_H
#define TILEPRESS_PAGE_H

/** \file
 * Pages: bilevel pictures of any size that stay in Group 4 codes (ITU-T T.6) and are drawn, in part or in whole, at any
 * size, while they are decoded. Plain C99, for every language that can call C.
 *
 *     tp_page* page;
 *     if (tp_page_open(&info, tiles, count, &page) == TP_OK) {
 *         tp_page_render(page, &view, 1, NULL);
 *         tp_page_release(page);
 *     }
 *
 * Memory: what a function hands out is released by the function that its comment names, never by `free`. What the
 * caller hands in stays the caller's; only tiles given with TP_BORROW must outlive the call.
 *
 * Threads: there is no state but in pages, readers and encoders, no lock and no thread of the library's own. Any number
 * of threads may use one page at once; a reader or an encoder is one thread's at a time.
 *
 * Colours: "ink" is what is dark on paper. Codes have two colours of their own, coded white and coded black; which of
 * them is ink is said by the page's photometric interpretation.
 *
 * Records begin with their size in bytes as the caller knows it, so that later versions can add fields behind: set it
 * to `sizeof` and clear the rest before filling it in. Fields that a caller's record does not have are taken as 0.
 */

#include "tilepress/api.h"

#include <stddef.h>
#include <stdint.h>

TILEPRESS_C_BEGIN

/* --- versions and results ----------------------------------------------------------------------------------- */

/** The version of this header: major, minor and patch in a byte each, major highest of three. */
#define TP_VERSION 0x000200u
/** The version of the library that was loaded. The interface is the same where the major bytes agree and the library's
 *  minor byte is not below the header's. */
TILEPRESS_API uint32_t TILEPRESS_CALL tp_version(void);

/** How a call ended. Negative: nothing was done, or it was not finished. */
typedef int32_t tp_status;
enum {
    TP_OK = 0,
    TP_DAMAGED = 1, /**< finished, but parts of the page could not be decoded: see tp_damage */
    TP_E_ARGUMENT =
        -1,           /**< a null pointer, a size of 0, a rectangle outside the page, an unknown value, a wrong count */
    TP_E_MEMORY = -2, /**< memory ran out */
    TP_E_LIMIT = -3,  /**< a limit of tp_limits would be passed; nothing was allocated */
    TP_E_DAMAGED = -4,   /**< ended at damage, as TP_ON_DAMAGE_FAIL asks */
    TP_E_CANCELLED = -5, /**< the progress callback asked for the end */
    TP_E_TOO_LARGE =
        -6 /**< sizes that the codec does not hold: sides over 2^31 - 17 pixels, streams over 2^31 - 257 bytes */
};
/** A sentence in English; never null, not to be released. */
TILEPRESS_API const char* TILEPRESS_CALL tp_status_text(tp_status status);

/** What a call may use; checked before anything is allocated. 0: no limit. */
typedef struct tp_limits {
    uint64_t max_pixels; /**< of the page; of each picture */
    uint64_t max_bytes;  /**< of memory that the call or the object takes for itself, the caller's buffers left out */
} tp_limits;

/** Where and how a tile is damaged. */
typedef struct tp_damage {
    uint32_t tile;   /**< number of the tile or strip, row by row, from 0 */
    uint32_t row;    /**< first row of the tile that cannot be decoded, from 0; the tile's height for TP_LEFT_OVER */
    uint64_t byte;   /**< about where in the tile's bytes, from 0 */
    uint32_t kind;   /**< one of the values below */
    uint32_t column; /**< the tile's left column on the page */
    uint32_t top;    /**< the page's row that `row` is */
} tp_damage;
enum {
    TP_BAD_CODE = 1,    /**< bits that are no code, or a code of the extensions */
    TP_BACKWARDS = 2,   /**< a code that leads left of where the row already is */
    TP_PAST_END = 3,    /**< a code that leads past the end of the row */
    TP_OUT_OF_DATA = 4, /**< the bytes, or an end-of-block, ended before the rows did */
    TP_LEFT_OVER = 5    /**< all rows are good, but coded bytes follow them; only tp_page_verify reports it */
};

/** What happens to the rest of a damaged tile. Rows before the damage are drawn as they are in any case. */
enum {
    TP_ON_DAMAGE_FAIL = 0,  /**< the call ends with TP_E_DAMAGED; rows of pictures that were not reached are unset */
    TP_ON_DAMAGE_WHITE = 1, /**< paper */
    TP_ON_DAMAGE_KEEP = 2   /**< its last good row goes on */
};

/** Called now and then with how much is done, `done` of `total` rows of the page. Anything but 0 ends the call with
 *  TP_E_CANCELLED. */
typedef int32_t(TILEPRESS_CALL* tp_progress)(void* user, uint64_t done, uint64_t total);

/** How a walk over a page is made. A null pointer to it gives the zeros: fail on damage, no limits, no callback. */
typedef struct tp_options {
    uint32_t size;            /**< sizeof(tp_options) */
    uint32_t on_damage;       /**< TP_ON_DAMAGE_... */
    tp_limits limits;         /**< checked before anything is allocated */
    tp_progress progress;     /**< may be null */
    void* user;               /**< handed to it */
    tp_damage* damage;        /**< null, or room for `damage_capacity` records: the first that are found */
    uint32_t damage_capacity; /**< records that there is room for */
    uint32_t damage_count;    /**< out: how many damaged tiles there were, also those without a record */
} tp_options;

/** Memory for callers that have none of their own to hand in, as those of a WebAssembly module: `size` bytes, or null.
 */
TILEPRESS_API void* TILEPRESS_CALL tp_alloc(size_t size);
/** Releases what tp_alloc gave. Null is harmless. */
TILEPRESS_API void TILEPRESS_CALL tp_free(void* block);

/* --- pages -------------------------------------------------------------------------------------------------- */

/** A page: immutable, shared, counted. */
typedef struct tp_page tp_page;

/** A tile's or strip's coded bytes, in the order of a file, of any length. `data` null with size 0: a tile that is not
 *  there, which is paper. A size of 0 with data is a damaged tile. */
typedef struct tp_coded {
    const void* data; /**< the first byte */
    size_t size;      /**< bytes */
} tp_coded;

enum {
    TP_WHITE_IS_ZERO = 0, /**< coded black is ink: TIFF's photometric interpretation 0 */
    TP_BLACK_IS_ZERO = 1  /**< coded white is ink: 1 */
};
enum {
    TP_BORROW = 1 /**< the coded bytes are not copied; they must stay where they are until the page has ended */
};

/** What a page is. Tiles are numbered row by row; those at the right and at the bottom may reach beyond the page. A
 * page in strips has tiles as wide as itself. */
typedef struct tp_page_info {
    uint32_t size;       /**< sizeof(tp_page_info) */
    uint32_t width;      /**< in pixels */
    uint32_t height;     /**< in pixels */
    uint32_t tile_width; /**< 0: the page's width */
    uint32_t
        tile_height; /**< rows of a strip; 0, or more than the page has: all rows. Only the last strip may have fewer
                          rows than this in its codes, and then exactly those of the page; tiles always have all. */
    uint32_t fill_order;  /**< 1: the highest bit of a byte comes first; 2: the lowest. 0 is 1. */
    uint32_t photometric; /**< TP_WHITE_IS_ZERO or TP_BLACK_IS_ZERO */
    uint32_t flags;       /**< TP_BORROW or 0 */
    tp_limits limits;     /**< of the page and its copies of tiles */
} tp_page_info;

/** Makes a page of `count` tiles, which must be as many as the sizes say. Decodes nothing. `*page` is null on failure;
 * else it belongs to the caller, who ends it with tp_page_release. */
TILEPRESS_API tp_status TILEPRESS_CALL tp_page_open(const tp_page_info* info, const tp_coded* tiles, size_t count,
                                                    tp_page** page);
/** One more holder of the page; the page itself. Null stays null. */
TILEPRESS_API tp_page* TILEPRESS_CALL tp_page_retain(tp_page* page);
/** One holder less; the last one ends the page. Null is harmless. */
TILEPRESS_API void TILEPRESS_CALL tp_page_release(tp_page* page);
/** Fills in `*info`, of which the caller has set `size`, as the page was opened, zeros replaced by what they stand for.
 */
TILEPRESS_API tp_status TILEPRESS_CALL tp_page_describe(const tp_page* page, tp_page_info* info);
/** Bytes that the page holds: its copies of tiles and what preparing it added. */
TILEPRESS_API uint64_t TILEPRESS_CALL tp_page_memory(const tp_page* page);

/** Lays the page out anew in memory, in tiles of 512 by 512 and without pixels, so that every view costs what it shows
 * and not what lies above it. Pages in tiles of up to a million pixels need nothing and get nothing: TP_OK at once. At
 * most 1.5 times the coded bytes are added, and pages for which that does not suffice, because they have so few codes
 * that they are decoded soon enough, get nothing either. TP_DAMAGED: the page is damaged and stays as it is; the first
 * damage is told. Other threads may use the page meanwhile, and prepare it, too. Drawings and reports of damage are the
 * same before and after; on_damage is not looked at. */
TILEPRESS_API tp_status TILEPRESS_CALL tp_page_prepare(tp_page* page, tp_options* options);

/** Decodes every row, and says what is wrong with each tile: TP_OK or TP_DAMAGED. Behind the rows an end-of-block and
 * two bytes are no damage. on_damage is not looked at; memory is that of one tile's row. */
TILEPRESS_API tp_status TILEPRESS_CALL tp_page_verify(const tp_page* page, tp_options* options);

/* --- pictures of a page --------------------------------------------------------------------------------------- */

/** What a pixel of a picture is made of that has more than one pixel of the page. Where the picture is larger than the
 *  rectangle, pixels are repeated in every mode. */
enum {
    TP_GREY = 0, /**< its share of ink, on the curve of the library's grey reductions, which keeps thin lines dark */
    TP_COVERAGE = 1, /**< its share of ink, linear and rounded to nearest: the same darkness at every size */
    TP_INK = 2,      /**< ink if any of them is */
    TP_NEAREST = 3   /**< the top left one */
};
/** Pixels of a picture, and the bytes that a row takes at least. */
enum {
    TP_BITS =
        0, /**< 1 bit, 1 is ink, the highest bit of a byte is its first pixel; (width + 7) / 8 bytes, in which bits past
                the width are 0. With TP_GREY and TP_COVERAGE a pixel is ink where half of it or more is. */
    TP_GREY8 = 1, /**< a byte, 0 is ink and 255 paper; width bytes */
    TP_RGBA = 2,  /**< four bytes, red first; 4 * width bytes */
    TP_BGRA = 3   /**< four bytes, blue first */
};
enum {
    TP_INVERT = 1 /**< ink and paper change places in the picture, after the mode has chosen between them */
};

/** A picture: a rectangle of the page, how it is drawn, and the caller's pixels. */
typedef struct tp_view {
    uint32_t size;        /**< sizeof(tp_view) */
    uint32_t left;        /**< the first column of the rectangle of the page */
    uint32_t top;         /**< its first row */
    uint32_t width;       /**< its columns; width and height 0: all of the page from left and top on */
    uint32_t height;      /**< its rows */
    uint32_t out_width;   /**< columns of the picture, after it has been turned */
    uint32_t out_height;  /**< its rows */
    uint32_t mode;        /**< TP_GREY, ... */
    uint32_t format;      /**< TP_BITS, ... */
    uint32_t orientation; /**< 1 to 8 as TIFF's tag has it: 1 upright, 2 mirrored left to right, 3 upside down,
                               4 mirrored top to bottom, 5 transposed, 6 to be turned a quarter clockwise,
                               7 transposed along the other diagonal, 8 to be turned a quarter
                               counter-clockwise. 0 is 1. */
    uint32_t flags;       /**< TP_INVERT or 0 */
    uint32_t ink;         /**< colour of TP_RGBA and TP_BGRA as 0xAARRGGBB; both 0: opaque black and white */
    uint32_t paper;       /**< the other colour */
    void* pixels;         /**< the first row; any alignment */
    ptrdiff_t stride;     /**< bytes from a row to the next; negative for pictures from the bottom up */
} tp_view;

/** Draws `count` pictures of a page in one walk: each tile row under any of them is decoded once, and no tile that is
 *  under none. Every pixel of every picture is written, whatever was there; nothing else in their rows is. TP_DAMAGED:
 *  finished by the policy. Views may overlap on the page; their pixels must not.
 *
 *  Memory does not grow with the height of page or pictures: for each tile column two lists of a row's changes (8 bytes
 *  a pixel of its width at most) and 2 KB of codes where the tiles are borrowed (more only for rows of more codes, and
 *  all that follows of a damaged tile, with which limits reckon), for each picture up to 8 bytes a column of its
 *  rectangle and 30 bytes of its own, and 64 of its rows where it is turned. */
TILEPRESS_API tp_status TILEPRESS_CALL tp_page_render(const tp_page* page, const tp_view* views, size_t count,
                                                      tp_options* options);

/* --- rows as change lists ------------------------------------------------------------------------------------- */

/** Walks down a rectangle of a page, row by row, without pixels. */
typedef struct tp_reader tp_reader;

/** Makes a reader for a rectangle; width and height 0: all of the page from left and top on. The reader keeps the page,
 * and
 *  `*options` must stay as long as the reader. The caller ends it with tp_reader_close. */
TILEPRESS_API tp_status TILEPRESS_CALL tp_reader_open(tp_page* page, uint32_t left, uint32_t top, uint32_t width,
                                                      uint32_t height, tp_options* options, tp_reader** reader);
/** The next row: the columns, from 0 at the rectangle's left edge and increasing, at which the colour changes, coded
 * white coming before the first; `*changes` may begin with 0 and has no element at or past the width. Valid until the
 * next call. TP_DAMAGED: a tile of this row is damaged, and was filled in as the policy says. TP_E_ARGUMENT past the
 * last row. */
TILEPRESS_API tp_status TILEPRESS_CALL tp_reader_next(tp_reader* reader, const uint32_t** changes, uint32_t* count);
/** Ends the reader. Null is harmless. */
TILEPRESS_API void TILEPRESS_CALL tp_reader_close(tp_reader* reader);

/* --- coding --------------------------------------------------------------------------------------------------- */

/** Codes rows into strips or tiles, one after another. */
typedef struct tp_encoder tp_encoder;

/** Makes an encoder for rows of `width` pixels, which writes bytes in `fill_order` (1 or 2; 0 is 1). `limits` may be
 * null; its max_bytes bounds what the encoder holds. The caller ends it with tp_encoder_close. */
TILEPRESS_API tp_status TILEPRESS_CALL tp_encoder_open(uint32_t width, uint32_t fill_order, const tp_limits* limits,
                                                       tp_encoder** encoder);
/** Appends `count` packed rows, `stride` bytes apart, in which 1 is coded black and the highest bit of a byte is its
 * first pixel. On failure the strip is as after the last row that was appended. */
TILEPRESS_API tp_status TILEPRESS_CALL tp_encoder_add_bits(tp_encoder* encoder, const void* rows, ptrdiff_t stride,
                                                           uint32_t count);
/** Appends a row given by its changes as tp_reader_next gives them. TP_E_ARGUMENT for a list that does not increase or
 *  reaches the width. */
TILEPRESS_API tp_status TILEPRESS_CALL tp_encoder_add_changes(tp_encoder* encoder, const uint32_t* changes,
                                                              uint32_t count);
/** Ends the strip with an end-of-block. `*data` are its `*size` bytes, the encoder's own, valid until its next call;
 * the next row begins another strip. */
TILEPRESS_API tp_status TILEPRESS_CALL tp_encoder_finish(tp_encoder* encoder, const void** data, size_t* size);
/** Ends the encoder. Null is harmless. */
TILEPRESS_API void TILEPRESS_CALL tp_encoder_close(tp_encoder* encoder);

TILEPRESS_C_END

#endif
