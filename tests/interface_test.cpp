#include "model/image_kinds.h"
#include "support/layout.h"
#include "tilepress/TileIterators.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>

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
    std::unique_ptr<CImg1> image(CImg1::create(10, 3, 0x111111, 0x222222, ImgAlignDword));
    image->setBackgroundColor(1);
    const auto record = layout::read<layout::Bilevel>(*image);
    EXPECT_EQ(record.type, 1u);
    EXPECT_EQ(record.bitsPerSample, 1u);
    EXPECT_EQ(record.samplesPerPixel, 1u);
    EXPECT_EQ(record.bytesPerLine, 4u);
    EXPECT_EQ(record.totalBytes, 12u);
    EXPECT_EQ(record.right, 9u);
    EXPECT_EQ(record.bottom, 2u);
    EXPECT_EQ(record.tileWidth, 10u);
    EXPECT_EQ(record.tileHeight, 3u);
    EXPECT_EQ(record.backgroundColor, 1u);
    EXPECT_TRUE(record.backgroundKnown);
    EXPECT_EQ(record.numberOfTiles, 1u);
    EXPECT_EQ(record.pixels, image->peekData());
    EXPECT_EQ(record.padBits, 22u);
    EXPECT_EQ(record.alignment, 32u);
    EXPECT_EQ(record.foreground, 0x222222u);
    EXPECT_EQ(record.background, 0x111111u);
}

TEST(Interface, FieldsOfColourImages) {
    std::unique_ptr<CImg8> palette(CImg8::create(10, 3, nullptr, ImgAlignDword));
    const auto record = layout::read<layout::Palette>(*palette);
    EXPECT_EQ(record.rows, palette->peekDataArray());
    EXPECT_EQ(record.padBytes, 2u);
    EXPECT_EQ(record.rowBytes, 12u);
    EXPECT_EQ(record.alignment, 32u);
    EXPECT_EQ(record.colorMap, palette->getColorMap());
    std::unique_ptr<CImg32> rgb(CImg32::create(10, 3, RGBOrderBGR));
    EXPECT_EQ(layout::read<layout::Rgb>(*rgb).order, 1u);
}

TEST(Interface, BareObjectsReadAsUnset) {
    std::unique_ptr<CImg1> bilevel(CImg1::create());
    const auto marked = layout::read<layout::Bilevel>(*bilevel);
    for (uint32_t field : {marked.bitsPerSample, marked.bytesPerLine, marked.totalBytes, marked.left, marked.bottom,
                           marked.tileWidth, marked.numberOfTiles, marked.padBits, marked.foreground})
        EXPECT_EQ(field, 0xDEADBEEFu);
    EXPECT_EQ(marked.alignment, 0u);
    EXPECT_EQ(bilevel->peekData(), nullptr);
    EXPECT_EQ(bilevel->getWidth(), 1u);

    std::unique_ptr<CImg8> palette(CImg8::create());
    std::unique_ptr<CImg32> rgb(CImg32::create());
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
    EXPECT_TRUE(Base::areTileExtentsValid(128, 64, 64, 64));
    EXPECT_FALSE(Base::areTileExtentsValid(130, 64, 64, 64));
    EXPECT_FALSE(Base::areTileExtentsValid(64, 65, 64, 64));
    EXPECT_TRUE(Base::areTileExtentsValid(20001, 64, 20000, 64));
    EXPECT_TRUE(Base::areTileExtentsValid(10001, 64, 10000, 64));
    EXPECT_FALSE(Base::areTileExtentsValid(5001, 64, 5000, 64));
    EXPECT_FALSE(Base::areTileExtentsValid(64, 64, 0, 64));
    EXPECT_FALSE(Base::areTileExtentsValid(64, 64, 64, 0));
}

template <class Image>
static void expectPlaceholders(Image* image) {
    IImg* const self = image;
    EXPECT_EQ(self->applyFilter(), self);
    EXPECT_EQ(self->sxfm(), self);
    EXPECT_FALSE(self->stream(image));
    EXPECT_FALSE(self->writeTIFF());
    self->drawArc();
    self->drawSpline();
}

TEST(Interface, PlaceholdersReturnTheImageItselfKept) {
    std::unique_ptr<CImg1> bilevel(CImg1::create(8, 8, 0, 1, ImgAlignNone));
    std::unique_ptr<CImg8> palette(CImg8::create(8, 8, nullptr, ImgAlignNone));
    std::unique_ptr<CImg32> rgb(CImg32::create(8, 8, RGBOrderRGB));
    std::unique_ptr<CImg1G4> compressed(CImg1G4::create(8, 8, 8, 8, 0, 1, ImgAlignNone));
    expectPlaceholders(bilevel.get());
    expectPlaceholders(palette.get());
    expectPlaceholders(rgb.get());
    expectPlaceholders(compressed.get());
    EXPECT_EQ(palette->invert(), palette.get());
    EXPECT_EQ(rgb->invert(), rgb.get());
    EXPECT_EQ(compressed->invert(), compressed.get());
    RasOpXfmAttr attr{};
    EXPECT_EQ(bilevel->doRasOp(RasOpFill, false, 0, 1), bilevel.get());
    EXPECT_EQ(compressed->doRasOp(RasOpFill, false, 0, 1), compressed.get());
    EXPECT_EQ(compressed->doRasOp(RasOpCopy, attr, *compressed), compressed.get());
    compressed->releaseData();
}

// --- what workers ask first ---

TEST(Guards, ARectangleMustBeOrderedAndInside) {
    using tilepress::inside;
    std::unique_ptr<CImg1> image(CImg1::create(100, 10, 0, 1, ImgAlignNone));
    EXPECT_TRUE(inside(*image, image->getRect()));
    EXPECT_TRUE(inside(*image, ImgRect(99, 9, 99, 9)));
    EXPECT_FALSE(inside(*image, ImgRect(0, 0, 100, 9)));
    EXPECT_FALSE(inside(*image, ImgRect(0, 0, 99, 10)));
    EXPECT_FALSE(inside(*image, ImgRect(50, 0, 20, 9)));
    EXPECT_FALSE(inside(*image, ImgRect(0, 9, 20, 0)));
    EXPECT_FALSE(inside(*image, ImgRect(0, 9)));
    EXPECT_FALSE(inside(*image, ImgRect(-5, 0, -1, 9)));
}

TEST(Guards, PixelsMustCoverTheExtents) {
    using tilepress::hasPixels;
    std::unique_ptr<CImg1> bilevel(CImg1::create(10, 3, 0, 1, ImgAlignNone));
    std::unique_ptr<CImg8> palette(CImg8::create(10, 3, nullptr, ImgAlignDword));
    std::unique_ptr<CImg32> rgb(CImg32::create(10, 3, RGBOrderRGB));
    EXPECT_TRUE(hasPixels(*bilevel) && hasPixels(*palette) && hasPixels(*rgb));
    for (const auto& [width, height, fits] : {std::tuple{16u, 3u, true}, {17u, 3u, false}, {10u, 4u, false}}) {
        bilevel->setExtents(width, height);
        EXPECT_EQ(hasPixels(*bilevel), fits) << width << " x " << height;
    }
    for (const auto& [width, height, fits] : {std::tuple{12u, 3u, true}, {13u, 3u, false}, {10u, 4u, false}}) {
        palette->setExtents(width, height);
        EXPECT_EQ(hasPixels(*palette), fits) << width << " x " << height;
    }
    bilevel->setExtents(10, 3);
    palette->setExtents(10, 3);
    for (void* block : {static_cast<void*>(bilevel->ownData()), static_cast<void*>(palette->ownData()),
                        static_cast<void*>(rgb->ownData())})
        std::free(block);
    EXPECT_FALSE(hasPixels(*bilevel) || hasPixels(*palette) || hasPixels(*rgb));
    palette.reset(CImg8::create());
    EXPECT_FALSE(hasPixels(*palette));
}

TEST(Guards, AnEmptyImageLikeAnother) {
    std::unique_ptr<CImg1> bilevel(CImg1::create(10, 3, 7, 8, ImgAlignDword));
    std::unique_ptr<CImg1> like(tilepress::createLike(*bilevel, 20, 5));
    EXPECT_EQ(like->getWidth(), 20u);
    EXPECT_EQ(like->getBackgroundInterpretation(), 7u);
    EXPECT_EQ(like->getForegroundInterpretation(), 8u);
    EXPECT_EQ(like->getAlignment(), ImgAlignDword);
    std::unique_ptr<CImg32> rgb(CImg32::create(1, 1, RGBOrderBGR)), likeRgb(tilepress::createLike(*rgb, 2, 2));
    EXPECT_EQ(likeRgb->getRGBOrder(), RGBOrderBGR);
    ColorMap map(3, 255);
    std::unique_ptr<CImg8> palette(CImg8::create(3, 1, &map, ImgAlignDword)),
        likeMap(tilepress::createLike(*palette, 2, 2));
    EXPECT_EQ(likeMap->getColorMap()->count, 3);
    EXPECT_EQ(likeMap->getBytesPerLine(), 4u);
}
