// What a page's descriptions, limits and damaged tiles lead to.

#include "support/pages.h"

#include <cstddef>
#include <string>

namespace support {
namespace {

const std::string kEnd = kEndOfBlockText;

/// A page of a strip of four rows.
struct Strip : PageSource {
    explicit Strip(std::string_view rows) : PageSource(Picture(8, 4), 0, 0) {
        tiles = {bits(rows)};
        tiles[0].reserve(1);  // a place, also without bytes
    }
};

/// Two white pixels, two black ones, four white ones.
const std::string kFirstRow = "001 0111 11  1";

struct Options : tp_options {
    tp_damage records[4]{};

    explicit Options(std::uint32_t policy = TP_ON_DAMAGE_FAIL) : tp_options{} {
        size = sizeof(tp_options);
        on_damage = policy;
        damage = records;
        damage_capacity = 4;
    }
};

TEST(PageDamage, IsToldByKindRowAndByte) {
    struct Case {
        std::string rows;
        std::uint32_t kind, row;
        std::uint64_t byte;
    };
    const std::string filler(24, '0');
    for (const Case& c : std::initializer_list<Case>{
             {kFirstRow + "1 1 1  1 1 1  1 1 1" + kEnd, 0, 0, 0},
             {kFirstRow + "1 1 1  1 1 1  1 1 1", 0, 0, 0},
             {kFirstRow + "1 1 1  0000001111 1111", TP_BAD_CODE, 2, 1},
             {kFirstRow + "0000000 11111", TP_BAD_CODE, 1, 1},
             {kFirstRow + "1 0000010 1", TP_BACKWARDS, 1, 1},
             {kFirstRow + "1 1 1  001 10011 11", TP_PAST_END, 2, 1},
             {kFirstRow + "1 1 1" + kEnd, TP_OUT_OF_DATA, 2, 1},
             {kFirstRow, TP_OUT_OF_DATA, 1, 1},
             {"", TP_OUT_OF_DATA, 0, 0},
             {kFirstRow + "1 1 1  1 1 1  1 1 1" + kEnd + "10101010 10101010", 0, 0, 0},
             {kFirstRow + "1 1 1  1 1 1  1 1 1" + kEnd + filler + "10101010", TP_LEFT_OVER, 4, 6}}) {
        const Strip strip(c.rows);
        const Page page = strip.open();
        Options options;
        EXPECT_EQ(tp_page_verify(page.get(), &options), c.kind ? TP_DAMAGED : TP_OK) << c.rows;
        ASSERT_EQ(options.damage_count, c.kind ? 1u : 0u) << c.rows;
        EXPECT_EQ(options.records[0].kind, c.kind) << c.rows;
        EXPECT_EQ(options.records[0].row, c.row) << c.rows;
        EXPECT_EQ(options.records[0].top, c.row) << c.rows;
        EXPECT_EQ(options.records[0].byte, c.byte) << c.rows;

        // Drawing tells the same but for what follows the rows.
        const bool broken = c.kind != 0 && c.kind != TP_LEFT_OVER;
        for (std::uint32_t top : {0u, 3u}) {
            tp_view view = viewOf(0, top, 8, 4 - top, 8, 4, TP_NEAREST, TP_BITS);
            Canvas canvas(view, 0, false);
            Options drawn;
            EXPECT_EQ(tp_page_render(page.get(), &view, 1, &drawn), broken ? TP_E_DAMAGED : TP_OK) << c.rows;
            EXPECT_EQ(drawn.damage_count, broken ? 1u : 0u) << c.rows;
            EXPECT_EQ(drawn.records[0].row, broken ? c.row : 0u) << c.rows;
        }
    }
}

TEST(PageDamage, IsPlacedOnThePage) {
    PageSource source(Picture(16, 8), 8, 4);
    source.tiles[3] = bits("1 1 0000001111 1111");
    const Page page = source.open();
    for (std::uint32_t left : {0u, 8u, 16u}) {  // drawn, from the second column on, and verified
        tp_view view = viewOf(left % 16, 4, 16 - left % 16, 4, 8, 4, TP_NEAREST, TP_BITS);
        Canvas canvas(view, 0, false);
        Options options;
        EXPECT_EQ(left == 16 ? tp_page_verify(page.get(), &options) : tp_page_render(page.get(), &view, 1, &options),
                  left == 16 ? TP_DAMAGED : TP_E_DAMAGED);
        const tp_damage& damage = options.records[0];
        EXPECT_EQ(std::tuple(damage.tile, damage.row, damage.column, damage.top), std::tuple(3u, 2u, 8u, 6u)) << left;
    }
}

TEST(PageDamage, PoliciesFillTheRestOfATile) {
    for (std::uint32_t photometric : {0u, 1u})
        for (std::uint32_t policy : {TP_ON_DAMAGE_WHITE, TP_ON_DAMAGE_KEEP}) {
            Strip strip(kFirstRow + "1 1 1  0000001111 1111");
            strip.info.photometric = photometric;
            const Page page = strip.open();
            tp_view view = viewOf(0, 0, 0, 0, 8, 4, TP_NEAREST, TP_BITS);
            Canvas canvas(view, 0, false);
            Options options(policy);
            EXPECT_EQ(tp_page_render(page.get(), &view, 1, &options), TP_DAMAGED);
            const auto good = static_cast<unsigned char>(photometric ? 0xCF : 0x30);
            const auto rest = static_cast<unsigned char>(policy == TP_ON_DAMAGE_KEEP ? good : 0);
            EXPECT_EQ(canvas.pixels(), (Bytes{good, good, rest, rest}));

            tp_reader* reader = nullptr;
            ASSERT_EQ(tp_reader_open(page.get(), 2, 1, 6, 2, &options, &reader), TP_OK);
            const std::uint32_t* changes = nullptr;
            std::uint32_t count = 0;
            ASSERT_EQ(tp_reader_next(reader, &changes, &count), TP_OK);
            EXPECT_EQ(std::vector<std::uint32_t>(changes, changes + count), (std::vector<std::uint32_t>{0, 2}));
            EXPECT_EQ(tp_reader_next(reader, &changes, &count), TP_DAMAGED);
            EXPECT_EQ(count, policy == TP_ON_DAMAGE_KEEP ? 2u : photometric);
            EXPECT_EQ(tp_reader_next(reader, &changes, &count), TP_E_ARGUMENT) << "past the last row";
            tp_reader_close(reader);
        }
}

TEST(PageDamage, TilesThatAreNotThereArePaperAndEmptyOnesAreDamaged) {
    for (std::uint32_t photometric : {0u, 1u}) {
        Strip strip("");
        strip.info.photometric = photometric;
        const tp_coded none{nullptr, 0}, empty{"", 0}, wrong{nullptr, 1};
        tp_page* made = nullptr;
        EXPECT_EQ(tp_page_open(&strip.info, &wrong, 1, &made), TP_E_ARGUMENT);
        for (const tp_coded* tile : {&none, &empty}) {
            ASSERT_EQ(tp_page_open(&strip.info, tile, 1, &made), TP_OK);
            const Page page(made);
            tp_view view = viewOf(0, 0, 0, 0, 8, 4, TP_INK, TP_BITS);
            Canvas canvas(view, 0, false);
            Options options(TP_ON_DAMAGE_WHITE);
            EXPECT_EQ(tp_page_render(page.get(), &view, 1, &options), tile == &none ? TP_OK : TP_DAMAGED);
            EXPECT_EQ(canvas.pixels(), Bytes(4, 0));
            EXPECT_EQ(tp_page_verify(page.get(), nullptr), tile == &none ? TP_OK : TP_DAMAGED);
        }
    }
}

TEST(PageDamage, TheLastStripEndsWithThePage) {
    // Strips of three rows on a page of four; the last may have one row or, as a tile would, three.
    for (const char* last : {"1", "1 1 1"}) {
        Strip strip("");
        strip.info.tile_height = 3;
        strip.tiles = {bits("1 1 1" + kEnd), bits(last + kEnd)};
        EXPECT_EQ(tp_page_verify(strip.open().get(), nullptr), TP_OK) << last;
    }
}

TEST(PageArguments, AreCheckedBeforeAnythingIsAllocated) {
    struct Case {
        tp_status status;
        void (*change)(tp_page_info&);
    };
    for (const Case& c :
         std::initializer_list<Case>{{TP_E_ARGUMENT, [](tp_page_info& i) { i.size = 3; }},
                                     {TP_E_ARGUMENT, [](tp_page_info& i) { i.width = 0; }},
                                     {TP_E_ARGUMENT, [](tp_page_info& i) { i.fill_order = 3; }},
                                     {TP_E_ARGUMENT, [](tp_page_info& i) { i.photometric = 2; }},
                                     {TP_E_ARGUMENT, [](tp_page_info& i) { i.flags = 2; }},
                                     {TP_E_ARGUMENT, [](tp_page_info& i) { i.tile_height = 2; }},
                                     {TP_E_TOO_LARGE, [](tp_page_info& i) { i.width = 0xFFFFFFFF; }},
                                     {TP_E_LIMIT, [](tp_page_info& i) { i.limits.max_pixels = 31; }},
                                     {TP_E_LIMIT, [](tp_page_info& i) { i.limits.max_bytes = 100; }},
                                     {TP_OK, [](tp_page_info& i) { i.limits.max_pixels = 32; }},
                                     {TP_OK, [](tp_page_info& i) { i.size = offsetof(tp_page_info, fill_order); }}}) {
        Strip strip("1 1 1 1");
        c.change(strip.info);
        Page page;
        EXPECT_EQ(strip.open(page), c.status);
        EXPECT_EQ(page != nullptr, c.status == TP_OK);
    }
}

TEST(PageArguments, OfViewsAreCheckedBeforeAnyPixelIsWritten) {
    struct Case {
        tp_status status;
        void (*change)(tp_view&, tp_options&);
    };
    const Page page = Strip("1 1 1 1").open();
    for (const Case& c : std::initializer_list<Case>{
             {TP_E_ARGUMENT, [](tp_view&v, tp_options&) { v.left = 8; }},
             {TP_E_ARGUMENT, [](tp_view&v, tp_options&) { v.width = 9; }},
             {TP_E_ARGUMENT, [](tp_view&v, tp_options&) { v.width = 0; }},
             {TP_E_ARGUMENT, [](tp_view&v, tp_options&) { v.out_height = 0; }},
             {TP_E_ARGUMENT, [](tp_view&v, tp_options&) { v.mode = 4; }},
             {TP_E_ARGUMENT, [](tp_view&v, tp_options&) { v.format = 4; }},
             {TP_E_ARGUMENT, [](tp_view&v, tp_options&) { v.orientation = 9; }},
             {TP_E_ARGUMENT, [](tp_view&v, tp_options&) { v.flags = 2; }},
             {TP_E_ARGUMENT, [](tp_view&v, tp_options&) { v.pixels = nullptr; }},
             {TP_E_ARGUMENT, [](tp_view&v, tp_options&) { v.stride = 7; }},
             {TP_E_ARGUMENT, [](tp_view&v, tp_options&) { v.size -= 8; }},
             {TP_E_ARGUMENT, [](tp_view&, tp_options&o) { o.on_damage = 3; }},
             {TP_E_ARGUMENT, [](tp_view&, tp_options&o) { o.size = 0; }},
             {TP_E_TOO_LARGE, [](tp_view&v, tp_options&) { v.out_width = 1u << 31, v.stride = PTRDIFF_MAX; }},
             {TP_E_LIMIT, [](tp_view&, tp_options&o) { o.limits.max_pixels = 31; }},
             {TP_E_LIMIT, [](tp_view&, tp_options&o) { o.limits.max_bytes = 500; }},
             {TP_E_CANCELLED,
              [](tp_view&, tp_options&o) { o.progress = [](void*, std::uint64_t, std::uint64_t) { return 1; }; }},
             {TP_OK, [](tp_view&, tp_options&o) {
                  o.limits = {32, 100000};
              }}}) {
        tp_view views[2] = {viewOf(0, 0, 8, 4, 8, 4, TP_GREY, TP_GREY8), viewOf(0, 0, 8, 4, 8, 4, TP_GREY, TP_GREY8)};
        Canvas first(views[0], 0, false), second(views[1], 0, false);
        Options options;
        c.change(views[1], options);
        EXPECT_EQ(tp_page_render(page.get(), views, 2, &options), c.status);
        const bool draws = c.status == TP_OK || c.status == TP_E_CANCELLED;
        EXPECT_EQ(first.pixels() == Bytes(32, Canvas::kGuard), !draws);
    }
    EXPECT_EQ(tp_page_render(nullptr, nullptr, 0, nullptr), TP_E_ARGUMENT);
    EXPECT_EQ(tp_page_render(page.get(), nullptr, 0, nullptr), TP_OK);
    EXPECT_EQ(tp_version() >> 16, TP_VERSION >> 16);
    EXPECT_STRNE(tp_status_text(TP_E_LIMIT), tp_status_text(12345));
    tp_free(tp_alloc(0));
}

}  // namespace
}  // namespace support
