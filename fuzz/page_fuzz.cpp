// Whatever a page's description, its tiles and a caller's views are, every call of the page interface ends in a status
// and within the caller's rows; a picture is the same in one walk with others, and once the page has been laid out
// anew.

#include "input.h"
#include "tilepress/page.h"

#include <algorithm>

namespace {

struct Picture {
    tp_view view{};
    std::vector<unsigned char> pixels;

    /// One byte is a guard, and none of them is what was there.
    void clear(unsigned char fill) {
        pixels.assign(pixels.size(), fill);
        view.pixels = pixels.data();
    }
};

std::uint32_t upTo(Input& in, std::uint32_t most) { return in.upTo(std::max<std::uint32_t>(most, 1)); }

Picture pictureFrom(Input& in, const tp_page_info& info) {
    Picture picture;
    tp_view& view = picture.view;
    view.size = sizeof view;
    view.left = in.below(std::max<std::uint32_t>(info.width, 1));
    view.top = in.below(std::max<std::uint32_t>(info.height, 1));
    // Now and then past the page, which is refused.
    view.width = upTo(in, info.width - std::min(info.width, view.left) + (in.u8() == 0));
    view.height = upTo(in, info.height - std::min(info.height, view.top));
    view.out_width = upTo(in, in.u8() < 128 ? view.width : 300);
    view.out_height = upTo(in, in.u8() < 128 ? view.height : 300);
    const std::uint32_t how = in.u16();
    view.mode = how % 4;
    view.format = how / 4 % 4;
    view.orientation = how / 16 % 9;
    view.flags = how / 256 % 2;
    view.paper = how;
    const std::size_t width = view.out_width;
    const std::size_t row = view.format == TP_BITS ? (width + 7) / 8 : view.format == TP_GREY8 ? width : 4 * width;
    picture.pixels.resize(row * view.out_height);
    view.stride = static_cast<std::ptrdiff_t>(row);
    return picture;
}

tp_status drawn(const tp_page* page, std::vector<Picture>& pictures, unsigned char fill, std::uint32_t onDamage) {
    std::vector<tp_view> views;
    for (Picture& picture : pictures) {
        picture.clear(fill);
        views.push_back(picture.view);
    }
    tp_options options{};
    tp_damage damage[2];
    options.size = sizeof options;
    options.on_damage = onDamage;
    options.damage = damage;
    options.damage_capacity = 2;
    const tp_status status = tp_page_render(page, views.data(), views.size(), &options);
    PROMISE((status == TP_DAMAGED || status == TP_E_DAMAGED) == (options.damage_count > 0));
    return status;
}

/// All pictures at once, twice over other pixels, and each alone.
void draw(const tp_page* page, std::vector<Picture>& pictures, std::uint32_t onDamage,
          std::vector<std::vector<unsigned char>>* expected) {
    const tp_status status = drawn(page, pictures, 0x55, onDamage);
    if (status < 0) return;
    std::vector<Picture> again = pictures;
    PROMISE(drawn(page, again, 0xAA, onDamage) == status);
    for (std::size_t k = 0; k < pictures.size(); ++k) {
        PROMISE(again[k].pixels == pictures[k].pixels);
        std::vector<Picture> alone{pictures[k]};
        PROMISE(drawn(page, alone, 0x33, onDamage) >= 0 && alone[0].pixels == pictures[k].pixels);
        if (expected->size() == k) expected->push_back(pictures[k].pixels);
        PROMISE((*expected)[k] == pictures[k].pixels);
    }
}

void read(tp_page* page, const tp_view& view) {
    tp_options options{};
    options.size = sizeof options;
    options.on_damage = TP_ON_DAMAGE_KEEP;
    tp_reader* reader = nullptr;
    if (tp_reader_open(page, view.left, view.top, view.width, view.height, &options, &reader) != TP_OK) return;
    tp_encoder* encoder = nullptr;
    PROMISE(tp_encoder_open(view.width, 1, nullptr, &encoder) == TP_OK);
    for (std::uint32_t y = 0; y < view.height; ++y) {
        const std::uint32_t* changes = nullptr;
        std::uint32_t count = 0;
        PROMISE(tp_reader_next(reader, &changes, &count) >= 0);
        PROMISE(tp_encoder_add_changes(encoder, changes, count) == TP_OK);  // they increase, below the width
    }
    tp_encoder_close(encoder);
    tp_reader_close(reader);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input in(data, size);
    tp_page_info info{};
    info.size = sizeof info;
    const bool large = in.u8() >= 200;  // so large that it can be laid out anew
    info.width = in.upTo(large ? 3000 : 200);
    info.height = in.upTo(large ? 1200 : 60);
    info.tile_width = in.u8() < 128 ? 0 : in.upTo(250);
    info.tile_height = in.u8() < 128 ? 0 : in.upTo(70);
    info.fill_order = in.u8() % 16 % 4;
    info.photometric = in.u8() % 16 % 3;
    info.flags = in.u8() % 2 * TP_BORROW;
    info.limits.max_bytes = in.u8() < 250 ? 0 : in.u16();
    const std::uint32_t onDamage = in.below(3), count = in.below(4);
    std::vector<Picture> pictures;
    for (std::uint32_t k = 0; k < count; ++k) pictures.push_back(pictureFrom(in, info));

    const std::uint32_t tileWidth = info.tile_width ? info.tile_width : info.width,
                        tileHeight = info.tile_height ? info.tile_height : info.height;
    const std::size_t tiles = std::size_t{(info.width - 1) / tileWidth + 1} * ((info.height - 1) / tileHeight + 1);
    if (tiles > 5000) return 0;  // nothing but time would be found
    std::vector<std::unique_ptr<unsigned char[]>> bytes;
    std::vector<tp_coded> coded;
    for (std::size_t k = 0; k < tiles; ++k) {
        const auto tile = in.bytes(in.u8() < 8 ? 0 : in.left() / (tiles - k));
        bytes.push_back(tile.empty() ? exactly<unsigned char>(0) : exactly(tile));
        coded.push_back({in.u8() < 4 && tile.empty() ? nullptr : bytes.back().get(), tile.size()});
    }
    tp_page* page = nullptr;
    if (tp_page_open(&info, coded.data(), coded.size(), &page) != TP_OK) {
        PROMISE(page == nullptr);
        return 0;
    }
    std::vector<std::vector<unsigned char>> expected;
    draw(page, pictures, onDamage, &expected);
    const tp_status verified = tp_page_verify(page, nullptr), prepared = tp_page_prepare(page, nullptr);
    PROMISE(prepared != TP_DAMAGED || verified == TP_DAMAGED);
    draw(page, pictures, onDamage, &expected);
    for (const Picture& picture : pictures) read(page, picture.view);
    PROMISE(tp_page_verify(page, nullptr) == verified);
    tp_page_release(page);
    return 0;
}
