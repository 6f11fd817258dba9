/* A picture into a Group 4 strip and back, by the codec's plain functions.
 *
 * The strip is what a TIFF file with FillOrder 1 holds. The decoder reads 16-bit words, so the bytes of each pair are
 * exchanged between the two.
 */
#include <tilepress/ccitt.h>
#include <tilepress/support.h>

#include <stdio.h>
#include <string.h>

enum { kWidth = 24, kHeight = 8, kRowBytes = kWidth / 8 };

/* Room for one byte more: change detection borrows the byte after a row. */
static uint8_t picture[kHeight * kRowBytes + 1] = {0x7C, 0x10, 0x7C, 0x44, 0x38, 0x44, 0x44, 0x6C,
                                                   0x44, 0x7C, 0xC6, 0x7C, 0x40, 0x6C, 0x44, 0x40,
                                                   0x38, 0x44, 0x40, 0x10, 0x7C, 0x00, 0x00, 0x00};

/* Paints the black runs of a changing-element list. */
static void paint(uint8_t* row, const int32_t* changes) {
    int32_t i, column;
    memset(row, 0, kRowBytes);
    for (i = 1; changes[i] <= kWidth; i += 2)
        for (column = changes[i]; column < changes[i + 1]; ++column)
            row[(column - 1) / 8] |= (uint8_t)(0x80 >> (column - 1) % 8);
}

static int decode(uint8_t* strip, int32_t length, uint8_t* rows) {
    int32_t reference[kWidth + 4] = {0, kWidth + 1, kWidth + 1, kWidth + 1}, coding[kWidth + 4];
    int32_t count = 4, bytePosition = 0, bitPosition = 1, row, i;
    uint16_t words[256];
    if (length > (int32_t)sizeof words) return 0;
    for (i = 0; i < length; ++i) ((uint8_t*)words)[i ^ 1] = strip[i];
    for (row = 0; row < kHeight; ++row) {
        if (cit_decode_tiff_gr4(reference, count, kWidth, words, &bytePosition, &bitPosition, NULL, coding, &count,
                                (length + 1) / 2 * 2) != 0)
            return 0;
        paint(rows + row * kRowBytes, coding);
        memcpy(reference, coding, (size_t)count * sizeof *coding);
    }
    return 1;
}

static void print(const uint8_t* rows) {
    int row, column;
    for (row = 0; row < kHeight; ++row, putchar('\n'))
        for (column = 0; column < kWidth; ++column)
            putchar(rows[row * kRowBytes + column / 8] & 0x80 >> column % 8 ? '#' : '.');
}

int main(void) {
    uint8_t* strip = NULL;
    uint8_t decoded[kHeight * kRowBytes];
    int32_t length;
    int good;

    cit_enable_detect_changes();
    if (!cit_enable_encode_gr4() || !cit_enable_decode_gr4()) return 1;
    length = create_g4_tiff_strip(picture, &strip, kWidth, kRowBytes, kHeight);
    good = length > 0 && decode(strip, length, decoded) && memcmp(decoded, picture, sizeof decoded) == 0;
    MemFree(0, strip); /* or free, in a program on the same C run-time library */
    cit_disable_decode_gr4();
    cit_disable_encode_gr4();
    cit_disable_detect_changes();
    if (!good) return 1;
    printf("%d bytes as %d:\n", (int)sizeof decoded, (int)length);
    print(decoded);
    return 0;
}
