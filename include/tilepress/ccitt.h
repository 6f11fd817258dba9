#ifndef TILEPRESS_CCITT_H
#define TILEPRESS_CCITT_H

/** \file
 * The Group 4 codec (ITU-T T.6, run codes of ITU-T T.4) as plain functions.
 *
 * There are three families, each with tables of its own that the caller builds
 * before use and releases afterwards: CCITT_ (also used by the compressed image
 * class), cit_, and cit_..._tmp (encoding only). Nothing is locked and nothing
 * counts references: one disable ends a family for all its users.
 *
 * A row is a changing-element list: 0, then the columns (from 1) where the colour
 * changes, starting from white, then width + 1 three times; its count includes all of them.
 */

#include "tilepress/api.h"

/** \typedef ImgErrResult
 * ImgErr of the classes, in C an integer of its size: 0 for success. */
#ifdef __cplusplus
#  include "tilepress/ImgErr.h"
typedef ImgErr ImgErrResult;
#else
typedef int32_t ImgErrResult;
#endif

TILEPRESS_C_BEGIN

/** Builds the class family's decoding tables; 0, or 6 when memory runs out. Harmless when already built. */
TILEPRESS_API ImgErrResult TILEPRESS_CALL CCITT_EnableG4Decode(void);
/** Releases them; nothing when there are none. */
TILEPRESS_API void TILEPRESS_CALL CCITT_DisableG4Decode(void);
/** Builds the plain family's decoding tables: 1, or 0 when memory runs out. */
TILEPRESS_API int16_t TILEPRESS_CALL cit_enable_decode_gr4(void);
/** Releases them; nothing when there are none. */
TILEPRESS_API void TILEPRESS_CALL cit_disable_decode_gr4(void);

/**
 * Decodes one row against the previous one.
 *
 * \param referenceLine,referenceCount  the previous row; for the first row all white: 0 and three times width + 1
 * \param width         pixels in the row
 * \param data          the coded data, read as 16-bit little-endian words, bit 15 first
 * \param bytePosition,bitPosition  in: the row's first bit (coded byte from 0, bit 1 to 8, 1 the highest); out: just
 * after the row's last. On failure bytePosition is unchanged, and bitPosition is 8 larger when bytePosition is odd.
 * \param reserved      not read
 * \param codingLine    receives the row: room for width + 4 elements
 * \param codingCount   receives its count
 * \param dataLength    bytes available from data; reads past them give zero bits. 0 or less: unknown, reads are not
 * bounded. \return 0 decoded; 1 the row passed its end, or only zeros follow an end-of-block; 2 invalid run code; 5
 * extension code; 6 invalid mode code
 */
TILEPRESS_API int16_t TILEPRESS_CALL CCITT_G4Decode(int32_t* referenceLine, int32_t referenceCount, int32_t width,
                                                    uint16_t* data, int32_t* bytePosition, int32_t* bitPosition,
                                                    uint8_t* reserved, int32_t* codingLine, int32_t* codingCount,
                                                    int32_t dataLength);
/** The same decoder on the plain family's tables. */
TILEPRESS_API int16_t TILEPRESS_CALL cit_decode_tiff_gr4(int32_t* referenceLine, int32_t referenceCount, int32_t width,
                                                         uint16_t* data, int32_t* bytePosition, int32_t* bitPosition,
                                                         uint8_t* reserved, int32_t* codingLine, int32_t* codingCount,
                                                         int32_t dataLength);

/** \{
 * A family's change detection, which finds nothing before it is enabled. Nothing asks for that of CCITT_. */
TILEPRESS_API void TILEPRESS_CALL CCITT_EnableDetectChanges(void);
TILEPRESS_API void TILEPRESS_CALL CCITT_DisableDetectChanges(void);
TILEPRESS_API void TILEPRESS_CALL cit_enable_detect_changes(void);
TILEPRESS_API void TILEPRESS_CALL cit_disable_detect_changes(void);
TILEPRESS_API void TILEPRESS_CALL cit_enable_detect_changes_tmp(void);
TILEPRESS_API void TILEPRESS_CALL cit_disable_detect_changes_tmp(void);
/** \} */

/**
 * Turns a packed row (first pixel in bit 7, 1 black) into its changing-element list.
 * The byte just after the row's last must be writable; after the call it is as before.
 *
 * \param maxChanges  room in `changes`: width + 4 always suffices
 * \param count       receives the count, or 0 when the list does not fit
 */
TILEPRESS_API void TILEPRESS_CALL cit_detect_changes(uint32_t width, uint8_t* row, int32_t maxChanges,
                                                     uint32_t* changes, uint32_t* count);
/** The same. */
TILEPRESS_API void TILEPRESS_CALL cit_detect_changes_tmp(uint32_t width, uint8_t* row, int32_t maxChanges,
                                                         uint32_t* changes, uint32_t* count);

/** \{
 * A family's encoding tables: building gives 1, or 0 when memory runs out; releasing does nothing when there are none.
 * Nothing asks for those of CCITT_. */
TILEPRESS_API void TILEPRESS_CALL CCITT_EnableG4Encode(void);
TILEPRESS_API void TILEPRESS_CALL CCITT_DisableG4Encode(void);
TILEPRESS_API int16_t TILEPRESS_CALL cit_enable_encode_gr4(void);
TILEPRESS_API void TILEPRESS_CALL cit_disable_encode_gr4(void);
TILEPRESS_API int16_t TILEPRESS_CALL cit_enable_encode_gr4_tmp(void);
TILEPRESS_API void TILEPRESS_CALL cit_disable_encode_gr4_tmp(void);
/** \} */

/**
 * Codes one row against the previous one into 16-bit words, first bit in bit 15: the form that the decoder reads.
 * At most 7 bits a pixel and 18 more are written, rounded up to whole words. `bits` receives their number; 0 for
 * lists that are not rows of one width, or when the tables are missing.
 */
TILEPRESS_API void TILEPRESS_CALL cit_encode_gr4(int32_t* referenceLine, int32_t referenceCount, int32_t* codingLine,
                                                 int32_t codingCount, uint16_t* words, int32_t* bits);
/** The same on the alternate family's tables. */
TILEPRESS_API void TILEPRESS_CALL cit_encode_gr4_tmp(int32_t* referenceLine, int32_t referenceCount,
                                                     int32_t* codingLine, int32_t codingCount, uint16_t* words,
                                                     int32_t* bits);

/**
 * Codes rows into one strip, end-of-block included: a plain byte stream as TIFF stores it, with
 * the bytes of every pair exchanged against what the decoder reads.
 *
 * \param rows         packed rows, bytesPerRow apart, first pixel in bit 7, 1 black
 * \param output       receives the strip, which the caller releases with free; null on failure
 * \param bytesPerRow  at most 4095
 * \return the strip's bytes; 0 on failure: no memory, a row longer than bytesPerRow, or one with more than 7996 changes
 */
TILEPRESS_API int32_t TILEPRESS_CALL create_g4_tiff_strip(uint8_t* rows, uint8_t** output, int32_t width,
                                                          int32_t bytesPerRow, int32_t rowCount);
/** The same on the alternate family's tables; says on the standard error stream why it failed. */
TILEPRESS_API int32_t TILEPRESS_CALL create_g4_tiff_strip_tmp(uint8_t* rows, uint8_t** output, int32_t width,
                                                              int32_t bytesPerRow, int32_t rowCount);

TILEPRESS_C_END

#endif
