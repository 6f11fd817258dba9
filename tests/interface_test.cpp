#include "model/image_kinds.h"
#include "support/layout.h"
#include "support/pictures.h"
#include "tilepress/TileIterators.h"

#include <functional>

using namespace support;

// --- records ---

TEST(Interface, RecordSizes) {
    EXPECT_EQ(sizeof(ImgRect), 16u);
    EXPECT_EQ(sizeof(RasOpXfmAttr), 24u);
    EXPECT_EQ(sizeof(Img1G4Tile), sizeof(layout::Tile));
    EXPECT_EQ(sizeof(CImg1G4), sizeof(layout::Compressed));
    if (sizeof(void*) != 4) return;
    EXPECT_EQ(sizeof(CImg), 60u);
    EXPECT_EQ(sizeof(CImg1), 80u);
    EXPECT_EQ(sizeof(CImg8), 80u);
    EXPECT_EQ(sizeof(CImg32), 68u);
    EXPECT_EQ(sizeof(CImg1G4), 120u);
    EXPECT_EQ(sizeof(Img1G4Tile), 40u);
    EXPECT_EQ(sizeof(Img32TileIterator), 84u);
}

TEST(Interface, FieldsOfABilevelImage) {
    Owned<CImg1> image(CImg1::create(10, 3, 0x111111, 0x222222, ImgAlignDword));
    image->setBackgroundColor(1);
    const auto record = layout::read<layout::Bilevel>(*image);
    const uint32_t fields[] = {record.type,       record.bitsPerSample,   record.samplesPerPixel, record.bytesPerLine,
                               record.totalBytes, record.right,           record.bottom,          record.tileWidth,
                               record.tileHeight, record.backgroundColor, record.numberOfTiles,   record.padBits,
                               record.alignment,  record.foreground,      record.background};
    const uint32_t expected[] = {1, 1, 1, 4, 12, 9, 2, 10, 3, 1, 1, 22, 32, 0x222222, 0x111111};
    for (std::size_t i = 0; i < std::size(fields); ++i) EXPECT_EQ(fields[i], expected[i]) << i;
    EXPECT_TRUE(record.backgroundKnown);
    EXPECT_EQ(record.pixels, image->peekData());
    EXPECT_EQ(image->getTop() + image->getLeft(), 0u);
    EXPECT_EQ(image->getBottom(), 2u);
    EXPECT_EQ(image->getRight(), 9u);
}

TEST(Interface, FieldsOfColourImages) {
    const auto palette = blank<CImg8>(10, 3, ImgAlignDword);
    const auto record = layout::read<layout::Palette>(*palette);
    EXPECT_EQ(record.rows, palette->peekDataArray());
    EXPECT_EQ(record.padBytes, 2u);
    EXPECT_EQ(record.rowBytes, 12u);
    EXPECT_EQ(record.alignment, 32u);
    EXPECT_EQ(record.colorMap, palette->getColorMap());
    const auto rgb = blank<CImg32>(10, 3);
    EXPECT_EQ(layout::read<layout::Rgb>(*rgb).order, 1u);
    for (IImg* image : {static_cast<IImg*>(palette.get()), static_cast<IImg*>(rgb.get())}) {
        EXPECT_EQ(image->getNumberOfTiles(), 1u);
        EXPECT_EQ(image->getBitsPerSample(), 8u);
        EXPECT_EQ(image->getSamplesPerPixel(), image->getType() == ImageTypeRGB ? 4u : 1u);
    }
}

TEST(Interface, BareObjectsReadAsUnset) {
    const Owned<CImg1> bilevel(CImg1::create());
    const auto marked = layout::read<layout::Bilevel>(*bilevel);
    for (uint32_t field :
         {marked.bitsPerSample, marked.bytesPerLine, marked.totalBytes, marked.left, marked.bottom, marked.tileWidth,
          marked.numberOfTiles, marked.padBits, marked.foreground, static_cast<uint32_t>(bilevel->getTop())})
        EXPECT_EQ(field, 0xDEADBEEFu);
    EXPECT_EQ(marked.alignment, 0u);
    EXPECT_EQ(bilevel->peekData(), nullptr);
    EXPECT_EQ(bilevel->getWidth(), 1u);

    const Owned<CImg8> palette(CImg8::create());
    const Owned<CImg32> rgb(CImg32::create());
    EXPECT_EQ(palette->getWidthInTiles() + palette->getHeightInTiles() + rgb->getWidthInTiles(), 0u);
    unsigned char byte = 0, *data = &byte;
    EXPECT_EQ(bilevel->transferData(&data, 1), ImgErrCreate);
    EXPECT_EQ(palette->dupData(&byte, 1), ImgErrCreate);
    EXPECT_EQ(data, &byte);
}

// --- base ---

TEST(Interface, TileGridsDivideToWithinATenThousandth) {
    struct Base : CImg {
        using CImg::areTileExtentsValid;
    };
    struct Case {
        ImgULong width, height, tileWidth, tileHeight;
        bool valid;
    };
    for (const Case& c : {Case{128, 64, 64, 64, true}, Case{130, 64, 64, 64, false}, Case{64, 65, 64, 64, false},
                          Case{20001, 64, 20000, 64, true}, Case{10001, 64, 10000, 64, true},
                          Case{5001, 64, 5000, 64, false}, Case{64, 64, 0, 64, false}, Case{64, 64, 64, 0, false}})
        EXPECT_EQ(Base::areTileExtentsValid(c.width, c.height, c.tileWidth, c.tileHeight), c.valid)
            << c.width << ' ' << c.height << ' ' << c.tileWidth;
    const auto image = blank<CImg1>(2, 2);
    image->setExtents(4294967295u, 4294967295u);  // of tiles that stay 2 x 2
    EXPECT_EQ(image->getWidthInTiles(), 2147483648u);
    EXPECT_EQ(image->getHeightInTiles(), 2147483648u);
}

TEST(Interface, PlaceholdersReturnTheImageItselfKept) {
    const auto bilevel = blank<CImg1>(8, 8);
    const auto palette = blank<CImg8>(8, 8);
    const auto rgb = blank<CImg32>(8, 8);
    const Owned<CImg1G4> compressed(CImg1G4::create(8, 8, 8, 8, 0, 1, ImgAlignNone));
    for (IImg* image : {static_cast<IImg*>(bilevel.get()), static_cast<IImg*>(palette.get()),
                        static_cast<IImg*>(rgb.get()), static_cast<IImg*>(compressed.get())}) {
        EXPECT_EQ(image->applyFilter(), image);
        EXPECT_EQ(image->sxfm(), image);
        EXPECT_FALSE(image->stream(image));
        EXPECT_FALSE(image->writeTIFF());
        image->drawArc();
        image->drawSpline();
        if (image != bilevel.get()) {
            EXPECT_EQ(image->invert(), image);
        }
    }
    RasOpXfmAttr attr{};
    EXPECT_EQ(compressed->doRasOp(RasOpFill, false, 0, 1), compressed.get());
    EXPECT_EQ(compressed->doRasOp(RasOpCopy, attr, *compressed), compressed.get());
}

// --- what workers ask first ---

TEST(Guards, PixelsMustCoverTheExtents) {
    using tilepress::hasPixels;
    const auto bilevel = blank<CImg1>(10, 3);
    const auto palette = blank<CImg8>(10, 3, ImgAlignDword);
    const auto rgb = blank<CImg32>(10, 3);
    for (const auto& [width, height, fits] : {std::tuple{16u, 3u, true}, {17u, 3u, false}, {10u, 4u, false}}) {
        bilevel->setExtents(width, height);
        EXPECT_EQ(hasPixels(*bilevel), fits) << width << " x " << height;
        palette->setExtents(width > 10 ? width - 4 : width, height);
        EXPECT_EQ(hasPixels(*palette), fits) << width << " x " << height;
    }
    bilevel->setExtents(10, 3);
    palette->setExtents(10, 3);
    const auto expectOnlyWithBlock = [](auto& image) {
        EXPECT_TRUE(hasPixels(image));
        std::free(image.ownData());
        EXPECT_FALSE(hasPixels(image));
    };
    expectOnlyWithBlock(*bilevel);
    expectOnlyWithBlock(*palette);
    expectOnlyWithBlock(*rgb);
    EXPECT_FALSE(hasPixels(*Owned<CImg8>(CImg8::create())));
}
