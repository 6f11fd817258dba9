/* An image as a handle: made, drawn on, turned, enlarged, written as PBM.
 *
 *     handles >turned.pbm
 */
#include <tilepress/ImgHandle.h>

#include <stdio.h>

#if defined(_WIN32)
#  include <fcntl.h>
#  include <io.h>
#endif

/* Rows of a bilevel image with byte alignment are a PBM file's rows. */
static int writePbm(ImgHandle* image) {
    const Img1Header* header = (const Img1Header*)image->header;
    const size_t bytes = (size_t)header->bytesPerLine * ImgGetHeight(image);
    printf("P4\n%u %u\n", (unsigned)ImgGetWidth(image), (unsigned)ImgGetHeight(image));
    return fwrite(image->data, 1, bytes, stdout) == bytes && fflush(stdout) == 0;
}

static void end(ImgHandle* image) {
    if (image) image->free(&image, NULL);
}

int main(void) {
    ImgHandle *page = ImgNew(ImgTypeBilevel), *turned = NULL, *large = NULL;
    int good = page && ImgCreateBilevel(page, 16, 24, 8, NULL);
#if defined(_WIN32)
    _setmode(_fileno(stdout), _O_BINARY);
#endif
    if (good) {
        uint8_t* pixels = (uint8_t*)page->data;
        int row;
        for (row = 0; row < 24; ++row) pixels[2 * row] = 0xC0; /* a bar along the left edge */
        pixels[0] = pixels[2] = pixels[1] = pixels[3] = 0xFF;  /* and one along the top */
        turned = page->rotate(page, 90);                       /* counter-clockwise */
        large = turned ? turned->render(turned, 96, 64, NULL, 0, 0, 8) : NULL;
        good = large && writePbm(large);
    }
    end(large);
    end(turned);
    end(page);
    return good ? 0 : 1;
}
