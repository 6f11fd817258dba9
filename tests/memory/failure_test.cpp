// Memory that runs out anywhere: every allocation of every operation fails once, each in a run of its own.

#include "memory/injector.h"
#include "support/coded.h"
#include "tilepress/page.h"
#include "tilepress/tilepress.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <numeric>
#include <vector>

namespace {

/// Runs `operation`, which says whether it did all it should, with its n-th allocation failing, until it needs fewer.
/// It may do without those from `spare` on.
void failEach(const char* name, const std::function<bool()>& operation, long spare = 1000) {
    for (long n = 1;; ++n) {
        ASSERT_LT(n, 200) << name;
        heap::failAt(n);
        const bool done = operation(), failed = heap::failed();
        heap::failAt(0);
        EXPECT_TRUE(done != failed || (done && n > spare)) << name << ": allocation " << n;
        if (!failed) return;
    }
}

// --- images ------------------------------------------------------------------------------------

/// Ends an image or a handle; whether there was one.
template <class Image>
bool end(Image* image) {
    support::End()(image);
    return image != nullptr;
}

ImgErr lastOf(ImgErr code) {
    imgRaise(ImgErrNone);
    return code;
}

TEST(AllocationFailure, Factories) {
    unsigned char bytes[600] = {};
    ImgULong words[200] = {};
    unsigned char* tiles[] = {bytes, bytes, bytes, bytes};
    ImgULong lengths[] = {4, 4, 0, 4};
    ColorMap map(4, 255);
    CImg1* const bits = CImg1::create(20, 10, 0, 1, ImgAlignByte);
    CImg32* const rgb = CImg32::create(20, 10, RGBOrderRGB);
    failEach("bilevel", [&] { return end(CImg1::create(20, 10, 0, 1, ImgAlignByte)); });
    failEach("bilevel with data", [&] { return end(CImg1::create(20, 10, bytes, 30, 0, 1, ImgAlignByte)); });
    failEach("palette", [&] { return end(CImg8::create(20, 10, &map, ImgAlignByte)); });
    failEach("palette with data", [&] { return end(CImg8::create(20, 10, bytes, 200, nullptr, ImgAlignByte)); });
    failEach("RGB", [&] { return end(CImg32::create(20, 10, RGBOrderRGB)); });
    failEach("RGB with data", [&] { return end(CImg32::create(20, 10, words, 800, RGBOrderRGB)); });
    failEach("RGB from 24 bits",
             [&] { return end(CImg32::createFrom24(20, 10, bytes, 600, ImgAlignByte, RGBOrderRGB, RGBOrderRGB)); });
    failEach("grid", [&] { return end(CImg1G4::create(20, 10, 10, 5, 0, 1, ImgAlignByte)); });
    // A tile that cannot be copied is white. Under valgrind, whose own new does not come by, those are 9 to 11.
    failEach(
        "tiles", [&] { return end(CImg1G4::create(20, 10, 10, 5, tiles, lengths, 0, 1, ImgAlignByte)); }, 8);
    failEach("palette of bilevel", [&] { return end(CImg8::create(*bits, nullptr, ImgAlignByte)); });
    failEach("RGB of bilevel", [&] { return end(CImg32::create(*bits, RGBOrderRGB)); });
    failEach("clone", [&] { return end(rgb->clone()); });
    failEach("tile iterator", [&] {
        Img32TileIterator* iterator = rgb->getTileIterator(8, 8, CImg32::UNCOMPRESSED);
        delete iterator;
        return iterator != nullptr;
    });
    failEach("colour map", [] {
        const ColorMap own(4, 255);
        EXPECT_EQ(own.count + own.capacity, own.entries ? 8 : 0);
        return own.entries != nullptr;
    });
    // Pixels given to an image that has none, and in place of those that it has.
    CImg8* const palette = CImg8::create(20, 10, &map, ImgAlignByte);
    failEach("bilevel refilled", [&] { return std::free(bits->ownData()), bits->dupData(bytes, 30) == ImgErrNone; });
    failEach("palette refilled",
             [&] { return std::free(palette->ownData()), palette->dupData(bytes, 200) == ImgErrNone; });
    failEach("RGB refilled", [&] { return std::free(rgb->ownData()), rgb->dupData(words, 800) == ImgErrNone; });
    failEach("palette replaced", [&] {
        unsigned char* data = bytes;
        return palette->dupData(bytes, 200) == ImgErrNone && palette->transferData(&data, 200) == ImgErrNone;
    });
    failEach("RGB replaced", [&] {
        ImgULong* data = words;
        return rgb->dupData(words, 800) == ImgErrNone && rgb->transferData(&data, 800) == ImgErrNone;
    });
    for (IImg* image : {static_cast<IImg*>(bits), static_cast<IImg*>(palette), static_cast<IImg*>(rgb)}) end(image);
}

TEST(AllocationFailure, Transforms) {
    ImgScaleAttr grey{32}, ink{1};
    RasOpXfmAttr place{};
    ColorMap map(256, 255);
    for (IImg* image : {static_cast<IImg*>(CImg1::create(40, 30, 0, 1, ImgAlignByte)),
                        static_cast<IImg*>(CImg8::create(40, 30, &map, ImgAlignByte)),
                        static_cast<IImg*>(CImg32::create(40, 30, RGBOrderRGB))}) {
        const ImgRect all = image->getRect();
        const bool palette = image->getType() == ImageTypePalette;
        failEach("enlarge", [&] { return end(image->scale(all, 100, 70, ink)); });
        failEach("double", [&] { return end(image->scale(all, 80, 60, ink)); });
        failEach("reduce", [&] { return end(image->scale(all, 15, 10, ink)); });
        failEach("grey", [&] { return end(image->scale(all, 15, 10, grey)); });
        failEach("one way each", [&] { return end(image->scale(all, 100, 10, ink)); });
        failEach("mirror", [&] { return end(image->mirror(ImgMirX)); });
        failEach("right angle", [&] { return end(image->rotate(90)); });
        failEach("any angle", [&] { return end(image->rotate(200)); });
        // Bilevel images say that it failed.
        const ImgErr code = image->getType() == ImageTypeBilevel ? ImgErrCreate : ImgErrNone;
        failEach("part", [&] {
            imgRaise(ImgErrNone);
            const bool done = end(image->getSubImage(ImgRect(3, 3, 20, 20)));
            EXPECT_EQ(CImgErr::get(), done ? ImgErrNone : code);
            return done;
        });
        if (!palette) failEach("combined", [&] { return end(image->doRasOp(RasOpCopy, place, *image)); });
        end(image);
    }
}

TEST(AllocationFailure, CompressedImages) {
    auto bytes = support::exchanged(
        support::bits("001" + support::runText(10, false) + support::runText(20, true) + "1 111 111 111 111"));
    unsigned char* tiles[] = {bytes.data(), bytes.data()};
    ImgULong lengths[] = {static_cast<ImgULong>(bytes.size()), static_cast<ImgULong>(bytes.size())};
    CImg1G4* const page = CImg1G4::create(80, 5, 40, 5, tiles, lengths, 0, 1, ImgAlignNone);
    ASSERT_TRUE(page);
    ImgScaleAttr grey{32}, ink{1};
    const ImgRect all = page->getRect();
    /// A walk that fails may leave the decoder enabled.
    const auto walk = [](IImg* image) {
        const bool good = CImgErr::get() != ImgErrDecode && CImgErr::get() != ImgErrCreate;
        CCITT_DisableG4Decode();
        return static_cast<int>(end(image)) & static_cast<int>(good);
    };
    for (int known = 0; known < 2; ++known) {
        if (known) page->setBackgroundColor(0);
        failEach("grey", [&] { return lastOf(ImgErrNone), walk(page->scale(all, 20, 2, grey)); });
        failEach("ink", [&] { return lastOf(ImgErrNone), walk(page->scale(all, 20, 2, ink)); });
        failEach("enlarged", [&] { return lastOf(ImgErrNone), walk(page->scale(all, 200, 20, ink)); });
        failEach("part", [&] { return lastOf(ImgErrNone), walk(page->getSubImage(ImgRect(10, 1, 60, 3))); });
        failEach("turned", [&] { return lastOf(ImgErrNone), walk(page->rotate(90)); });
        failEach("any angle", [&] { return lastOf(ImgErrNone), walk(page->rotate(20)); });
    }
    end(page);
}

// --- plain functions ------------------------------------------------------------------------------

TEST(AllocationFailure, Codec) {
    failEach("class decoder", [] {
        const bool good = CCITT_EnableG4Decode() == ImgErrNone;
        CCITT_DisableG4Decode();
        return good;
    });
    failEach("plain decoder", [] {
        const bool good = cit_enable_decode_gr4();
        cit_disable_decode_gr4();
        return good;
    });
    std::vector<unsigned char> rows(41, 0x3C);
    failEach("strip", [&] {
        std::uint8_t* strip = nullptr;
        const bool enabled = cit_enable_encode_gr4();
        cit_enable_detect_changes();
        const bool good = create_g4_tiff_strip(rows.data(), &strip, 64, 8, 5) > 0;
        EXPECT_EQ(good, strip != nullptr);
        std::free(strip);
        cit_disable_detect_changes();
        cit_disable_encode_gr4();
        return enabled && good;
    });
}

TEST(AllocationFailure, Tables) {
    ImgULong* tables[6] = {};
    const auto all = [&](int count) {
        bool good = true;
        for (int i = 0; i < count; ++i) {
            good = good && tables[i];
            std::free(tables[i]);
            tables[i] = nullptr;
        }
        return good;
    };
    failEach("pair", [&] { return CreateRothTables(&tables[0], &tables[1], 30, 20, 10, 5), all(2); });
    failEach("enlarge", [&] {
        return CreateRothEnlargeTables(30, 20, 10, 5, &tables[0], &tables[1], &tables[2], &tables[3], &tables[4]),
               all(5);
    });
    failEach(
        "reduce",
        [&] {
            return CreateRothReduceTables(30, 20, 10, 5, &tables[0], &tables[1], &tables[2], &tables[3], &tables[4]),
                   all(5);
        },
        3);  // columns that nobody asked for
    failEach("reduce with columns", [&] {
        return CreateRothReduceTables2(30, 20, 10, 5, &tables[0], &tables[1], &tables[2], &tables[3], &tables[4],
                                       &tables[5]),
               all(6);
    });
    failEach("greys", [] {
        unsigned char* greys = nullptr;
        CreateGreyMapping(50, &greys, 0);
        std::free(greys);
        return greys != nullptr;
    });
    failEach("reversed bytes", [] {
        std::uint8_t* table = create_reverse_byte_table();
        std::free(table);
        return table != nullptr;
    });
}

// --- handles ----------------------------------------------------------------------------------------

ImgHandle* handle(std::uint32_t type) {
    ImgHandle* const image = ImgNew(type);
    if (!image) return nullptr;
    const bool made = type == ImgTypeBilevel    ? ImgCreateBilevel(image, 40, 30, 32, nullptr)
                      : type == ImgTypePalette8 ? ImgCreatePalette8(image, 40, 30, 32, nullptr, nullptr)
                      : type == ImgTypeRGB24    ? ImgCreateRGB24(image, 40, 30, 32, nullptr)
                                                : ImgCreateRGB32(image, 40, 30, 0, nullptr);
    if (made) return image;
    end(image);
    return nullptr;
}

TEST(AllocationFailure, Handles) {
    const std::int32_t corners[] = {2, 20, 2, 1, 30, 1, 30, 20};
    const ImgRasOp1Desc fill{ImgRasFill, 0, 0, 0, 0, 0};
    ImgRasOp2Desc combine{};
    combine.op = ImgRasOr;
    for (std::uint32_t type : {ImgTypeBilevel, ImgTypePalette8, ImgTypeRGB24, ImgTypeRGB32}) {
        failEach("create", [&] { return end(handle(type)); });
        ImgHandle* const image = handle(type);
        const ImgConvertDesc other{type == ImgTypeBilevel ? 2u : 1u, 1, nullptr};
        failEach("clone", [&] { return end(image->clone(image)); });
        failEach("render", [&] { return end(image->render(image, 100, 10, nullptr, 0, 0, 32)); });
        failEach("rotate", [&] { return end(image->rotate(image, 200)); });
        failEach("right angle", [&] { return end(image->rotate(image, 90)); });
        failEach("mirror", [&] { return end(image->mirror(image, 1)); });
        failEach("part", [&] { return end(image->subImage(image, corners)); });
        failEach("convert", [&] { return end(image->convert(image, &other)); });
        failEach("fill", [&] { return end(image->rasOp1(image, &fill, 1)); });
        combine.scaleFirst = 1;
        for (double degrees : {90, 0}) {
            ImgSetMirFlag(ImgSetRotation(image, degrees), 1);
            failEach("render turned", [&] { return end(image->render(image, 30, 40, nullptr, 0, 0, 32)); });
        }
        failEach("combine", [&] { return end(image->rasOp2(image, &combine, image)); });
        combine.scaleFirst = 0;
        combine.placed = 1;
        failEach("paste", [&] { return end(image->rasOp2(image, &combine, image)); });
        combine.placed = 0;
        end(image);
    }
}

TEST(AllocationFailure, CompressedHandles) {
    auto bytes = support::exchanged(
        support::bits("001" + support::runText(10, false) + support::runText(30, true) + "11 11 11"));
    const std::uint32_t counts[] = {static_cast<std::uint32_t>(bytes.size())};
    void* tiles[] = {bytes.data()};
    const ImgConvertDesc colour{4, 1, nullptr};
    ImgHandle* image = ImgNew(ImgTypeTiffG4);
    ASSERT_TRUE(ImgCreateTiffG4(image, 40, 4, 40, 4, counts, tiles));
    failEach(
        "create",
        [&] {
            ImgHandle* other = ImgNew(ImgTypeTiffG4);
            const bool made = other && ImgCreateTiffG4(other, 40, 4, 40, 4, counts, tiles);
            if (made) other->free(&other, tiles);
            std::free(other);
            return made;
        },
        5);  // buffers that nothing reads
    failEach("render", [&] { return end(image->render(image, 20, 2, nullptr, 0, 0, 8)); });
    failEach("enlarge", [&] { return end(image->render(image, 90, 20, nullptr, 0, 0, 8)); });
    failEach("one way each", [&] { return end(image->render(image, 90, 2, nullptr, 0, 0, 8)); });
    failEach("convert", [&] { return end(image->convert(image, &colour)); });
    failEach("block", [&] {
        void* block = nullptr;
        std::uint32_t size = 0;
        TiffG4Serialize(image, &block, &size);
        std::free(block);
        return block != nullptr && size > 0;
    });
    image->free(&image, tiles);
}

// --- pages -------------------------------------------------------------------------------------

bool isDone(tp_status status) {
    EXPECT_TRUE(status == TP_OK || status == TP_E_MEMORY) << status;
    return status == TP_OK;
}

/// Rows with a few marks, enough of them to be laid out anew, as one strip that the encoder keeps.
tp_status code(tp_encoder* encoder, const void*& strip, std::size_t& size) {
    for (std::uint32_t y = 0; y < 1100; ++y) {
        const std::uint32_t changes[] = {y % 7, 30 + y % 40, 700 + y / 50, 1100, 1590};
        if (const tp_status status = tp_encoder_add_changes(encoder, changes, 5); status != TP_OK) return status;
    }
    return tp_encoder_finish(encoder, &strip, &size);
}

TEST(AllocationFailure, Pages) {
    tp_encoder* encoder = nullptr;
    ASSERT_EQ(tp_encoder_open(1600, 1, nullptr, &encoder), TP_OK);
    tp_coded strip{};
    ASSERT_EQ(code(encoder, strip.data, strip.size), TP_OK);
    failEach("encode", [] {
        tp_encoder* other = nullptr;
        const void* data = nullptr;
        std::size_t size = 0;
        const bool done = isDone(tp_encoder_open(1600, 1, nullptr, &other)) && isDone(code(other, data, size));
        tp_encoder_close(other);
        return done;
    });
    tp_page_info info{};
    info.size = sizeof info;
    info.width = 1600;
    info.height = 1100;
    tp_page* page = nullptr;
    const auto open = [&](std::uint32_t flags) {
        tp_page_release(page);
        info.flags = flags;
        return isDone(tp_page_open(&info, &strip, 1, &page));
    };
    failEach("open borrowed", [&] { return open(TP_BORROW); });
    std::vector<unsigned char> pixels(9000000);
    tp_view views[3]{};
    for (std::uint32_t k = 0; k < 3; ++k) {
        views[k].size = sizeof views[k];
        views[k].out_width = k == 1 ? 1700 : 150;
        views[k].out_height = k == 1 ? 1200 : 100 + k;
        views[k].orientation = k + 4;
        views[k].mode = k;
        views[k].format = k == 0 ? TP_RGBA : k == 1 ? TP_BITS : TP_GREY8;
        views[k].pixels = pixels.data() + 3000000 * k;
        views[k].stride = 1700;
        failEach("render", [&] { return isDone(tp_page_render(page, views + k, 1, nullptr)); });
    }
    failEach("render several", [&] { return isDone(tp_page_render(page, views, 3, nullptr)); });
    const auto verify = [&] { return isDone(tp_page_verify(page, nullptr)); };
    failEach("verify borrowed", verify);
    failEach("open", [&] { return open(0); });
    failEach("verify", verify);
    failEach("read", [&] {
        tp_reader* reader = nullptr;
        const bool done = isDone(tp_reader_open(page, 0, 0, 0, 0, nullptr, &reader));
        tp_reader_close(reader);
        return done;
    });
    failEach("prepare", [&] { return isDone(tp_page_prepare(page, nullptr)); });
    tp_encoder_close(encoder);

    // A row of more codes than are copied at once.
    std::vector<std::uint32_t> changes(9999);
    std::iota(changes.begin(), changes.end(), 1);
    ASSERT_EQ(tp_encoder_open(10000, 1, nullptr, &encoder), TP_OK);
    ASSERT_EQ(tp_encoder_add_changes(encoder, changes.data(), 9999), TP_OK);
    ASSERT_EQ(tp_encoder_finish(encoder, &strip.data, &strip.size), TP_OK);
    info.width = 10000, info.height = 1;
    ASSERT_TRUE(open(TP_BORROW));
    failEach("verify a long row", verify);
    failEach("render a long row", [&] { return isDone(tp_page_render(page, views + 2, 1, nullptr)); });
    tp_page_release(page);
    tp_encoder_close(encoder);
}

}  // namespace
