/* The DLL without its import library: loaded by name, its functions by theirs. Decodes one strip.
 *
 *     load_library [path\tilepress.dll]
 *
 * Either of the two DLLs will do: the plain functions are the same in both.
 */
#include <stdint.h>
#include <stdio.h>
#include <string.h>
#include <windows.h>

typedef int16_t(__cdecl* Enable)(void);
typedef void(__cdecl* Disable)(void);
typedef int16_t(__cdecl* Decode)(int32_t* reference, int32_t referenceCount, int32_t width, uint16_t* data,
                                 int32_t* bytePosition, int32_t* bitPosition, uint8_t* reserved, int32_t* coding,
                                 int32_t* codingCount, int32_t dataLength);

enum { kWidth = 20, kHeight = 10 };

/* Ten columns black, ten white: one horizontal code, nine rows of vertical ones, the end of the block. */
static const uint8_t strip[] = {0x26, 0xA1, 0x3F, 0xFF, 0xFF, 0xFC, 0x00, 0x40, 0x04};

static int decode(Decode decodeRow) {
    int32_t reference[kWidth + 4] = {0, kWidth + 1, kWidth + 1, kWidth + 1}, coding[kWidth + 4];
    int32_t count = 4, bytePosition = 0, bitPosition = 1;
    uint16_t words[(sizeof strip + 1) / 2] = {0};
    size_t i;
    int row, column;
    for (i = 0; i < sizeof strip; ++i) ((uint8_t*)words)[i ^ 1] = strip[i]; /* the decoder reads 16-bit words */
    for (row = 0; row < kHeight; ++row) {
        int black = 0;
        const int32_t* change = coding + 1;
        if (decodeRow(reference, count, kWidth, words, &bytePosition, &bitPosition, NULL, coding, &count, sizeof words))
            return 0;
        for (column = 1; column <= kWidth; ++column) {
            for (; *change == column; ++change) black = !black;
            putchar(black ? '#' : '.');
        }
        putchar('\n');
        memcpy(reference, coding, (size_t)count * sizeof *coding);
    }
    return 1;
}

static FARPROC find(HMODULE library, const char* name) {
    FARPROC function = GetProcAddress(library, name);
    if (!function) fprintf(stderr, "no %s in the library\n", name);
    return function;
}

int main(int argc, char** argv) {
    HMODULE library = LoadLibraryA(argc > 1 ? argv[1] : "tilepress.dll");
    int good = 0;
    if (!library) {
        fprintf(stderr, "cannot load the library: error %lu\n", GetLastError());
        return 1;
    }
    {
        /* By way of void(*)(void), from which a function pointer may be converted to any other. */
        Enable enable = (Enable)(void (*)(void))find(library, "cit_enable_decode_gr4");
        Disable disable = (Disable)(void (*)(void))find(library, "cit_disable_decode_gr4");
        Decode decodeRow = (Decode)(void (*)(void))find(library, "cit_decode_tiff_gr4");
        if (enable && disable && decodeRow && enable()) {
            good = decode(decodeRow);
            disable();
        }
    }
    FreeLibrary(library);
    return good ? 0 : 1;
}
