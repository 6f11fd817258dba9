// Data and blocks that cross the library's boundary.
#include <tilepress/ImgHandle.h>
#include <tilepress/tilepress.h>

#include <gtest/gtest.h>

TEST(ExportedData, TheErrorCellIsOneForLibraryAndProgram) {
    CImgErr::sm_errcode = ImgErrNone;
    const ImgULong before = CImgErr::sm_errtotal;
    CImg1* image = CImg1::create(8, 8, 0, 1, ImgAlignByte);
    ASSERT_TRUE(image);
    unsigned char byte = 0;
    EXPECT_EQ(image->dupData(&byte, 1), ImgErrCreate);
    EXPECT_EQ(CImgErr::sm_errcode, ImgErrCreate);
    EXPECT_EQ(CImgErr::sm_errtotal, before + 1);
    imgRaise(ImgErrDecode);
    EXPECT_EQ(image->getLastError(), ImgErrDecode);
    delete image;
}

TEST(ExportedData, BlocksOfTheLibrarysHeapBecomePixels) {
    void* block = nullptr;
    EXPECT_EQ(MemAllocate(0, 8, 0, &block), 0);
    static_cast<unsigned char*>(block)[0] = 0x80;
    ImgHandle* image = ImgNew(ImgTypeBilevel);
    EXPECT_EQ(ImgCreateBilevel(image, 8, 8, 8, block), 1u);
    ImgHandle* turned = image->mirror(image, 2);
    EXPECT_EQ(*static_cast<unsigned char*>(turned->data), 0x01);
    turned->free(&turned, nullptr);
    EXPECT_TRUE(image->free(&image, block) == block);
    EXPECT_EQ(MemFree(0, block), 0);
}
