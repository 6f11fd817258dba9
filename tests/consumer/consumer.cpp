// A program outside the tree: headers found as installed, the library linked as
// installed, C++11 being enough.
#include <tilepress/tilepress.h>

#include <cstdio>

int main() {
    CImg1* page = CImg1::create(10, 4, 0xFFFFFF, 0, ImgAlignByte);
    if (!page) return 1;
    page->peekData()[0] = 0x80;  // the pixel at the top left
    IImg* turned = page->mirror(ImgMirY);
    const bool moved = turned && static_cast<CImg1*>(turned)->peekData()[1] == 0x40;
    std::printf("%u x %u, %s\n", static_cast<unsigned>(page->getWidth()), static_cast<unsigned>(page->getHeight()),
                moved ? "mirrored" : "not mirrored");
    delete turned;
    delete page;
    return moved && CCITT_EnableG4Decode() == ImgErrNone ? 0 : 1;
}
