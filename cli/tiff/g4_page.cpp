#include "tiff/g4_page.h"

#include <fmt/format.h>

#include <algorithm>
#include <numeric>

namespace {

Rect wholeOf(const TiffPage& page) { return {0, 0, page.size.width, page.size.height}; }

/// Calls visit(k) for every tile that touches the rectangle, row by row.
template <class Visit>
void forTilesOf(const TiffPage& page, const Rect& rect, Visit visit) {
    const std::uint32_t left = rect.x / page.tile.width, right = (rect.x + rect.width - 1) / page.tile.width;
    const std::uint32_t top = rect.y / page.tile.height, bottom = (rect.y + rect.height - 1) / page.tile.height;
    for (std::uint32_t row = top; row <= bottom; ++row)
        for (std::uint32_t column = left; column <= right; ++column) visit(row * page.tilesAcross + column);
}

/// A tile or strip of paper.
std::vector<unsigned char> codedBlank(const TiffPage& page) {
    tp_encoder* opened = nullptr;
    requireDone(tp_encoder_open(page.tile.width, page.fillOrder, nullptr, &opened), "a blank tile");
    const EncoderHandle encoder(opened);
    const std::uint32_t black = 0;
    for (std::uint32_t row = 0; row < page.tile.height; ++row)
        requireDone(tp_encoder_add_changes(opened, &black, page.whiteIsZero() ? 0 : 1), "a blank tile");
    const void* data = nullptr;
    std::size_t size = 0;
    requireDone(tp_encoder_finish(opened, &data, &size), "a blank tile");
    const auto* const bytes = static_cast<const unsigned char*>(data);
    return {bytes, bytes + size};
}

}  // namespace

const char* reasonOf(const tp_damage& damage) {
    switch (damage.kind) {
    case TP_BACKWARDS: return "the row goes back";
    case TP_PAST_END: return "the row is longer than the tile is wide";
    case TP_OUT_OF_DATA: return "the data end";
    case TP_LEFT_OVER: return "coded data follow the last row";
    default: return "no such code";
    }
}

std::string describe(const TiffPage& page, const tp_damage& damage) {
    const std::string tile = fmt::format("{} {} of {}", page.tileName(), damage.tile + 1, page.tiles);
    const std::string row = damage.kind == TP_LEFT_OVER
                                ? ""
                                : fmt::format(", row {} of it (row {} of the page)", damage.row + 1, damage.top + 1);
    return fmt::format("{}{}, byte {}: {}", tile, row, damage.byte, reasonOf(damage));
}

G4Page::G4Page(PageSource& source, const TiffPage& page, Progress& progress)
    : G4Page(source, page, wholeOf(page), progress) {}

G4Page::G4Page(PageSource& source, const TiffPage& page, const Rect& part, Progress& progress)
    : what_(page), part_(part), name_(fmt::format("{}: page {}", source.name(), page.number)), tiles_(page.tiles) {
    page.requireSupported(source.name());
    // Tiles may share data, but not so that a small file fills the memory.
    if (!page.recoded && page.compressedBytes / 8 > source.bytes())
        throw Failure(Exit::unsupported, fmt::format("{}: the {}s overlap in the file", name_, page.tileName()));
    read(source, progress);
    page_ = open(false, tiles_);
}

void G4Page::read(PageSource& source, Progress& progress) {
    forTilesOf(what_, part_, [&](std::uint32_t k) { compressedBytes_ += source.tileBytes(k); });
    bytes_ = std::make_unique_for_overwrite<unsigned char[]>(compressedBytes_ + 1);
    unsigned char* to = bytes_.get();
    forTilesOf(what_, part_, [&](std::uint32_t k) {
        const std::uint64_t bytes = source.tileBytes(k);
        // What the file has lost must not look like what it leaves out: data without a byte are damaged.
        if (source.isEmpty(k)) return;
        source.readTile(k, to, bytes);
        tiles_[k] = {to, bytes};
        to += bytes;
        progress.show("reading", static_cast<std::uint64_t>(to - bytes_.get()), compressedBytes_ + 1);
    });
}

PageHandle G4Page::open(bool negative, const std::vector<tp_coded>& tiles) const {
    auto info = sized<tp_page_info>();
    info.width = what_.size.width;
    info.height = what_.size.height;
    info.tile_width = what_.tile.width;
    info.tile_height = what_.tile.height;
    info.fill_order = what_.fillOrder;
    info.photometric = what_.whiteIsZero() == negative ? TP_BLACK_IS_ZERO : TP_WHITE_IS_ZERO;
    info.flags = TP_BORROW;
    tp_page* opened = nullptr;
    requireDone(tp_page_open(&info, tiles.data(), tiles.size(), &opened), name_);
    return PageHandle(opened);
}

PageHandle G4Page::negative() {
    // What is left out is white on the negative too.
    std::vector<tp_coded> tiles = tiles_;
    forTilesOf(what_, part_, [&](std::uint32_t k) {
        if (tiles[k].data) return;
        if (blank_.empty()) blank_ = codedBlank(what_);
        tiles[k] = {blank_.data(), blank_.size()};
    });
    return open(true, tiles);
}

bool G4Page::reaches(const tp_damage& damage) const {
    const std::uint64_t tileTop = std::uint64_t{damage.tile / what_.tilesAcross} * what_.tile.height;
    const std::uint64_t tileEnd = std::min<std::uint64_t>(tileTop + what_.tile.height, what_.size.height);
    const std::uint64_t end = std::uint64_t{part_.y} + part_.height;
    return damage.top < end || end >= tileEnd;
}

std::vector<tp_damage> G4Page::damage() const {
    std::vector<tp_damage> found(16);
    auto options = sized<tp_options>();
    for (;;) {
        options.damage = found.data();
        options.damage_capacity = static_cast<std::uint32_t>(found.size());
        requireDone(tp_page_verify(page_.get(), &options), name_);
        const bool all = options.damage_count <= found.size();
        found.resize(options.damage_count);
        if (all) break;
    }
    std::erase_if(found, [this](const tp_damage& damage) { return !reaches(damage); });
    return found;
}

std::string G4Page::describeFirst(const std::vector<tp_damage>& damage) const {
    const auto first = std::ranges::min_element(damage, {}, &tp_damage::top);
    return fmt::format("{}: damaged Group 4 data: {}{}", name_, describe(what_, *first),
                       damage.size() > 1 ? fmt::format("; {} {}s are damaged", damage.size(), what_.tileName()) : "");
}

namespace {

constexpr ImgULong kWhite = 0x00FFFFFF;

/// A picture to draw into, white where nothing is drawn.
Picture blank(Size size, bool grey) {
    Picture picture = grey ? pictureOf(CImg32::create(size.width, size.height, RGBOrderRGB), true)
                           : pictureOf(CImg1::create(size.width, size.height, kWhite, 0xFF000000, ImgAlignNone));
    if (grey) std::fill_n(picture.rgb().peekData(), size.pixels(), kWhite);
    else std::fill_n(picture.bilevel().peekData(), std::size_t{picture.image->getBytesPerLine()} * size.height, 0);
    return picture;
}

tp_view viewOf(const Drawing& drawing, const Picture& picture) {
    auto view = sized<tp_view>();
    view.left = drawing.rect.x;
    view.top = drawing.rect.y;
    view.width = drawing.rect.width;
    view.height = drawing.rect.height;
    view.out_width = picture.size().width;
    view.out_height = picture.size().height;
    view.mode = drawing.mode == Mode::grey ? TP_GREY : drawing.mode == Mode::ink ? TP_INK : TP_NEAREST;
    view.format = picture.grey ? TP_BGRA : TP_BITS;
    view.orientation = drawing.orientation;
    view.paper = kWhite;
    view.pixels =
        picture.grey ? static_cast<void*>(picture.rgb().peekData()) : static_cast<void*>(picture.bilevel().peekData());
    view.stride = picture.grey ? std::ptrdiff_t{4} * view.out_width
                               : static_cast<std::ptrdiff_t>(picture.image->getBytesPerLine());
    return view;
}

/// Cells of a page, to learn how dark it is while it is drawn.
class Darkness {
public:
    explicit Darkness(const Rect& rect)
        : width_(std::min(rect.width, kMostCells)), height_(std::min(rect.height, kMostCells)),
          cells_(std::size_t{width_} * height_, 255) {}

    tp_view view(tp_view of) {
        of.out_width = width_;
        of.out_height = height_;
        of.mode = TP_COVERAGE;
        of.format = TP_GREY8;
        of.orientation = 1;
        of.pixels = cells_.data();
        of.stride = width_;
        return of;
    }
    /// Whether black is the ground: by the same share as for the library's images.
    bool isDark() const {
        const auto white = std::accumulate(cells_.begin(), cells_.end(), std::uint64_t{0});
        return static_cast<double>(white) < (1 - 0.55) * 255 * static_cast<double>(cells_.size());
    }

private:
    static constexpr std::uint32_t kMostCells = 64;
    std::uint32_t width_, height_;
    std::vector<unsigned char> cells_;
};

}  // namespace

Picture drawPage(G4Page& page, const Drawing& drawing, bool damaged, bool salvage) {
    const Size from = drawing.shownRect(), to = drawing.target;
    const bool reduces = to.width < from.width || to.height < from.height;
    Picture picture = blank(to, reduces && drawing.mode == Mode::grey);
    Darkness darkness(drawing.rect);
    tp_view views[2] = {viewOf(drawing, picture)};
    views[1] = darkness.view(views[0]);
    auto options = sized<tp_options>();
    options.on_damage = salvage ? TP_ON_DAMAGE_WHITE : TP_ON_DAMAGE_FAIL;
    const auto draw = [&](const tp_page* what, std::size_t count) {
        const tp_status status = tp_page_render(what, views, count, &options);
        if (status != TP_E_DAMAGED) requireDone(status, page.name());
    };
    if (!reduces || drawing.background != Background::black)
        draw(page.get(), reduces && drawing.background == Background::automatic ? 2 : 1);
    // On a black ground what is white is what must not be lost. A damaged page's ground is not known.
    if (reduces && (drawing.background == Background::black ||
                    (drawing.background == Background::automatic && !damaged && darkness.isDark()))) {
        views[0].flags = TP_INVERT;
        draw(page.negative().get(), 1);
    }
    return picture;
}
