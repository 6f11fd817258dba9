// What is kept when memory runs out, and what is released.

#include "memory/injector.h"
#include "support/handles.h"
#include "tilepress/CImg1G4.h"
#include "tilepress/Rothstein.h"
#include "tilepress/ccitt.h"

#include <cstdlib>
#include <vector>

namespace support {
namespace {

TEST(OutOfMemory, KeptAFailedEnableIsFollowedByOneWithoutTables) {
    heap::failAt(1);
    EXPECT_EQ(CCITT_EnableG4Decode(), ImgErrCreate);
    EXPECT_EQ(CCITT_EnableG4Decode(), ImgErrNone);
    std::int32_t reference[] = {0, 9, 9, 9}, coding[12], count = 0, byte = 0, bit = 1;
    std::uint16_t data[] = {0x8000};
    EXPECT_EQ(CCITT_G4Decode(reference, 4, 8, data, &byte, &bit, nullptr, coding, &count, 2), 6);
    imgRaise(ImgErrNone);
    CImg1G4* const page = CImg1G4::create(8, 8, 8, 8, 0, 1, ImgAlignNone);
    CImg1* const picture = CImg1::create(8, 8, 0, 1, ImgAlignNone);
    EXPECT_TRUE(page->uncompress(picture, page->getRect()));
    EXPECT_EQ(CImgErr::get(), ImgErrNone) << "walks need nothing that is enabled";
    page->releaseData();
    delete page;
    delete picture;
    CCITT_DisableG4Decode();
    EXPECT_EQ(CCITT_EnableG4Decode(), ImgErrNone);
    EXPECT_EQ(CCITT_G4Decode(reference, 4, 8, data, &byte, &bit, nullptr, coding, &count, 2), 0);
    CCITT_DisableG4Decode();
}

SUITE_FOR(ImageMemory, PixelKinds);

TYPED_TEST(ImageMemory, EndsWithTheImageButForAPalettesMapKept) {
    TypeParam* const image = blank<TypeParam>(8, 8).release();
    if constexpr (!std::is_same_v<TypeParam, CImg1>) {
        auto* block = image->peekData();
        heap::watch({block, image->peekDataArray()});
        EXPECT_EQ(image->transferData(&block, image->getTotalBytes()), ImgErrNone);
        EXPECT_TRUE(heap::released(0) && heap::released(1)) << "what is replaced";
    }
    ColorMap* map = nullptr;
    if constexpr (std::is_same_v<TypeParam, CImg8>) map = image->getColorMap();
    void* rows = image->peekData();
    if constexpr (!std::is_same_v<TypeParam, CImg1>) rows = image->peekDataArray();
    heap::watch({image->peekData(), rows, map});
    delete image;
    EXPECT_TRUE(heap::released(0));
    EXPECT_TRUE(heap::released(1));
    EXPECT_FALSE(heap::released(2));
    delete map;
}

SUITE_FOR(HandleMemory, HandleKinds);

TYPED_TEST(HandleMemory, KeptFailingRowTablesReleaseTheCallersBlock) {
    bool created = false, lost = false;
    for (int n = 1; !created && n < 10; ++n) {
        const Handle image(ImgNew(TypeParam::type));
        void* block = __real_malloc(64);
        heap::watch({block});
        heap::failAt(n);
        created = TypeParam::create(image.get(), 4, 4, block);
        heap::failAt(0);
        if (heap::released(0)) lost = true;
        else if (!created) __real_free(block);
    }
    EXPECT_TRUE(created);
    EXPECT_EQ(lost, TypeParam::type != ImgTypeBilevel) << "bilevel images have no row table";
}

TEST(HandleMemory, KeptClonesOfUnalignedRowsAreClear) {
    const Handle image(ImgNew(ImgTypeBilevel));
    ASSERT_TRUE(ImgCreateBilevel(image.get(), 16, 2, 0, nullptr));
    static_cast<std::uint8_t*>(image->data)[0] = 0xFF;
    const Handle copy(image->clone(image.get()));
    ASSERT_TRUE(copy);
    EXPECT_EQ(static_cast<std::uint8_t*>(copy->data)[0], 0);
}

TEST(RothsteinMemory, KeptListsAreReleasedInPart) {
    std::vector<rothstein_code_struct*> nodes;
    for (int i = 0; i < 4; ++i) {
        nodes.push_back(static_cast<rothstein_code_struct*>(__real_calloc(1, sizeof(rothstein_code_struct))));
        nodes.back()->payload = __real_malloc(1);
    }
    for (std::size_t i = 0; i < 4; ++i) nodes[i]->next = nodes[(i + 1) % 4];
    void* const payloads[] = {nodes[0]->payload, nodes[1]->payload, nodes[2]->payload, nodes[3]->payload};
    heap::watch({nodes[0], nodes[1], nodes[2], nodes[3], payloads[0], payloads[1], payloads[2], payloads[3]});
    DestroyRothsteinList(nodes[0]);
    const bool expected[8] = {true, false, false, false, true, false, true, true};
    for (std::size_t i = 0; i < 8; ++i) {
        EXPECT_EQ(heap::released(i), expected[i]) << i;
        if (!heap::released(i)) __real_free(heap::watchedBlock(i));
    }
    rothstein_code_struct last{};
    for (rothstein_code_struct* next : {static_cast<rothstein_code_struct*>(nullptr), &last}) {
        auto* const head = static_cast<rothstein_code_struct*>(__real_calloc(1, sizeof(rothstein_code_struct)));
        head->next = next;
        DestroyRothsteinList(head);  // a list without a ring ends too
    }
}

}  // namespace
}  // namespace support
