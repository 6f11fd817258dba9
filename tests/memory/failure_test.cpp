// Memory that runs out anywhere: every allocation of every operation fails once, each in a run of its own.

#include "memory/injector.h"
#include "support/operations.h"
#include "support/pages.h"
#include "tilepress/page.h"
#include "tilepress/tilepress.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <numeric>
#include <vector>

using namespace support;

namespace {

/// Runs `operation`, which says whether it did all it should, with its n-th allocation failing, until it needs fewer.
/// It may do without those from `spare` on.
void failEach(const std::string& name, const std::function<bool()>& operation, long spare = 1000) {
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
    End()(image);
    return image != nullptr;
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

/// An image to work on; a compressed one's background is yet to be found, or white.
Owned<> imageOf(const std::string& kind) {
    Picture page(80, 5);
    std::fill_n(page.pixels.begin(), 150, 1);
    if (kind.starts_with("compressed")) {
        auto image = compressed(page, 40, 5);
        if (kind.ends_with("on white")) image->setBackgroundColor(0);
        return image;
    }
    if (kind == "bilevel") return Owned<>(CImg1::create(40, 30, 0, 1, ImgAlignByte));
    if (kind == "palette") return Owned<>(CImg8::create(40, 30, nullptr, ImgAlignByte));
    return Owned<>(CImg32::create(40, 30, RGBOrderRGB));
}

TEST(AllocationFailure, Transforms) {
    for (const std::string kind : {"bilevel", "palette", "RGB", "compressed", "compressed, on white"})
        for (std::size_t k = 0; k < operationsOn(*imageOf(kind)).size(); ++k) {
            const Owned<> image = imageOf(kind);
            const Operation operation = operationsOn(*image)[k];
            failEach(kind + ' ' + operation.name, [&] {
                imgRaise(ImgErrNone);
                const bool made = !operation.run().pixels.empty();
                const ImgErr code = CImgErr::get();
                CCITT_DisableG4Decode();  // which a walk that fails may leave enabled
                // Bilevel images say that it failed.
                if (operation.name == std::string("cut") && !kind.starts_with("compressed")) {
                    EXPECT_EQ(code, made || kind != "bilevel" ? ImgErrNone : ImgErrCreate) << kind;
                }
                return made && code == ImgErrNone;
            });
        }
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
    const auto made = [&](auto create, auto... last) {
        return create(30, 20, 10, 5, &tables[0], &tables[1], &tables[2], &tables[3], &tables[4], last...),
               all(5 + static_cast<int>(sizeof...(last)));
    };
    failEach("enlarge", [&] { return made(CreateRothEnlargeTables); });
    failEach(
        "reduce", [&] { return made(CreateRothReduceTables); }, 3);  // columns that nobody asked for
    failEach("reduce with columns", [&] { return made(CreateRothReduceTables2, &tables[5]); });
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

template <class Kind>
void failHandles() {
    failEach("create", [] {
        const Handle image(ImgNew(Kind::type));
        return image && Kind::create(image.get(), 40, 30);
    });
    const Handle image = handleOf<Kind>(Picture(40, 30));
    for (const Operation& operation : operationsOn(*image))
        failEach(operation.name, [&] { return !operation.run().pixels.empty(); });
}

TEST(AllocationFailure, Handles) {
    failHandles<Bits>();
    failHandles<Bytes8>();
    failHandles<Bytes24>();
    failHandles<Words32>();
}

TEST(AllocationFailure, CompressedHandles) {
    Bytes bytes = tilesOf(Picture(40, 4, 1), 40, 4)[0];
    const Handle image = compressedHandle({bytes}, 40, 4, 40, 4);
    const std::uint32_t counts[] = {static_cast<std::uint32_t>(bytes.size())};
    void* tiles[] = {bytes.data()};
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
    for (const Operation& operation : operationsOn(*image))
        failEach(operation.name, [&] { return !operation.run().pixels.empty(); });
    failEach("block", [&] {
        void* block = nullptr;
        std::uint32_t size = 0;
        TiffG4Serialize(image.get(), &block, &size);
        std::free(block);
        return block != nullptr && size > 0;
    });
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
    tp_view views[] = {viewOf(0, 0, 0, 0, 150, 100, TP_GREY, TP_RGBA),
                       viewOf(0, 0, 0, 0, 1700, 1200, TP_COVERAGE, TP_BITS),
                       viewOf(0, 0, 0, 0, 150, 102, TP_INK, TP_GREY8)};
    std::vector<Canvas> canvases;
    for (std::uint32_t k = 0; k < 3; ++k) {
        views[k].orientation = k + 4;
        canvases.emplace_back(views[k], 0, false);
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
