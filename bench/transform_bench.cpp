// Uncompressed pictures beside Leptonica's: the same pixels on both sides.

#include "benches.h"
#include "peers.h"
#include "report.h"
#include "results.h"

#include "tilepress/CImg32.h"
#include "tilepress/CImg8.h"

namespace bench {
namespace {

using Ours = std::function<IImg*(IImg&)>;
using Peers = std::function<PixPtr(PIX*)>;

/// One kind of picture on both sides, and the last results.
struct Picture {
    PagePtr page;
    std::shared_ptr<IImg> image;
    std::shared_ptr<PIX> pix;
    Result ours;
    PixPtr peer;
};
using PicturePtr = std::shared_ptr<Picture>;

Pair pairOf(const PicturePtr& picture, std::string operation, const char* peerName, Ours ours, Peers peer) {
    Pair pair{std::move(operation), picture->page->name, peerName, picture->page->pixels(), {}, {}, {}};
    pair.ours = [picture, ours] {
        picture->ours.reset();
        picture->ours.reset(ours(*picture->image));
    };
    pair.peer = [picture, peer] {
        picture->peer.reset();
        picture->peer = peer(picture->pix.get());
    };
    return pair;
}

// --- 1 bit ------------------------------------------------------------------------

PicturePtr bilevel(const PagePtr& page) {
    const auto picture = std::make_shared<Picture>();
    const Bitmap& bitmap = page->bitmap;
    picture->page = page;
    picture->image.reset(CImg1::create(bitmap.width, bitmap.height, const_cast<unsigned char*>(bitmap.bits.data()),
                                       static_cast<ImgULong>(bitmap.bits.size()), 0xFFFFFF, 0, ImgAlignNone));
    picture->pix = toPix(bitmap);
    return picture;
}

/// A pair whose results are the same pixels.
void addExact(const PicturePtr& picture, const char* operation, const char* peerName, Ours ours, Peers peer) {
    Pair pair = pairOf(picture, operation, peerName, ours, peer);
    // On a dark page ours takes white for ink.
    if (blackShare(picture->page->bitmap) <= 0.55)
        pair.same = [picture] { return alike(bitmapOf(picture->ours), toBitmap(picture->peer.get())); };
    addPair(std::move(pair));
}

void addOther(const PicturePtr& picture, const char* operation, const char* peerName, Ours ours, Peers peer) {
    addPair(pairOf(picture, operation, peerName, ours, peer));
}

/// Beside another operation of ours.
void addOwn(const PicturePtr& picture, const char* operation, const char* peerName, Ours ours, Ours other) {
    Pair pair = pairOf(picture, operation, peerName, ours, {});
    const auto last = std::make_shared<Result>();
    pair.peer = [picture, other, last] {
        last->reset();
        last->reset(other(*picture->image));
    };
    addPair(std::move(pair));
}

/// The whole cells of the picture, reduced.
Ours reducing(std::uint32_t factor, ImgULong depth) {
    return [factor, depth](IImg& image) {
        const ImgULong width = image.getWidth() / factor, height = image.getHeight() / factor;
        ImgScaleAttr attr{depth};
        const ImgRect rect(static_cast<int>(width * factor), static_cast<int>(height * factor));
        return image.scale(rect, width, height, attr);
    };
}

Ours scaling(double factor) {
    return [factor](IImg& image) {
        ImgScaleAttr attr{1};
        return image.scale(image.getRect(), static_cast<ImgULong>(image.getWidth() * factor),
                           static_cast<ImgULong>(image.getHeight() * factor), attr);
    };
}

Peers sampling(float factor) {
    return [factor](PIX* pix) { return PixPtr(pixScaleBinary(pix, factor, factor)); };
}

void addBilevelScaling(const PicturePtr& picture) {
    addExact(picture, "ink quarter, 1 bit", "pixReduceRankBinaryCascade", reducing(4, 1),
             [](PIX* pix) { return PixPtr(pixReduceRankBinaryCascade(pix, 1, 1, 0, 0)); });
    addExact(picture, "ink third, 1 bit", "cells joined", reducing(3, 1), inkThird);
    addExact(picture, "ink tenth, 1 bit", "cells joined", reducing(10, 1), inkTenth);
    addOther(picture, "ink third, 1 bit", "pixScaleBinary, samples only", reducing(3, 1), sampling(1 / 3.0f));
    addOther(picture, "ink tenth, 1 bit", "pixScaleBinary, samples only", reducing(10, 1), sampling(1 / 10.0f));
    addOther(picture, "ink by 2.7, 1 bit", "pixScaleBinary, samples only", scaling(1 / 2.7), sampling(1 / 2.7f));
    addOther(picture, "ink by 2.7, 1 bit", "halves joined, then samples", scaling(1 / 2.7), [](PIX* pix) {
        const PixPtr half(pixReduceRankBinary2(pix, 1, nullptr));
        return PixPtr(pixScaleBinary(half.get(), 2 / 2.7f, 2 / 2.7f));
    });
    addOwn(picture, "ink by 2.7, 1 bit", "our ink quarter", scaling(1 / 2.7), reducing(4, 1));
    addExact(picture, "enlarge by 2, 1 bit", "pixExpandBinaryPower2", scaling(2),
             [](PIX* pix) { return PixPtr(pixExpandBinaryPower2(pix, 2)); });
    addOther(picture, "enlarge by 3, 1 bit", "pixScaleBinary", scaling(3), sampling(3));
    addOther(picture, "enlarge by 1.37, 1 bit", "pixScaleBinary", scaling(1.37), sampling(1.37f));
    addOther(picture, "grey tenth, 1 bit", "pixScaleToGray", reducing(10, 32),
             [](PIX* pix) { return PixPtr(pixScaleToGray(pix, 0.1f)); });
    addOther(picture, "grey tenth, 1 bit", "pixScaleToGrayMipmap", reducing(10, 32),
             [](PIX* pix) { return PixPtr(pixScaleToGrayMipmap(pix, 0.1f)); });
    addOther(picture, "grey tenth, 1 bit", "pixScaleToGray8", reducing(10, 32),
             [](PIX* pix) { return PixPtr(pixScaleToGray8(pix)); });
    addOther(picture, "grey eighth, 1 bit", "pixScaleToGray8", reducing(8, 32),
             [](PIX* pix) { return PixPtr(pixScaleToGray8(pix)); });
}

/// A picture eight columns wider than the page, and the page laid into it at column 5.
struct Raster {
    PicturePtr page;
    std::shared_ptr<CImg1> image;
    std::shared_ptr<PIX> pix;
    Result ours;
    PixPtr peer;
};

std::shared_ptr<Raster> rasterOf(const PicturePtr& page, bool patterned) {
    const auto raster = std::make_shared<Raster>();
    Bitmap bitmap(page->page->bitmap.width + 8, page->page->bitmap.height);
    for (std::size_t k = 0; patterned && k < bitmap.bits.size(); ++k)
        bitmap.bits[k] = static_cast<unsigned char>(k * 2654435761u >> 16);
    bitmap.clearSpareBits();
    raster->page = page;
    raster->image.reset(CImg1::create(bitmap.width, bitmap.height, bitmap.bits.data(),
                                      static_cast<ImgULong>(bitmap.bits.size()), 0xFFFFFF, 0, ImgAlignNone));
    raster->pix = toPix(bitmap);
    return raster;
}

void lay(PIX* under, int column, PIX* over, int operation) {
    pixRasterop(under, column, 0, pixGetWidth(over), pixGetHeight(over), operation, over, 0, 0);
}

void addRasterInPlace(const PicturePtr& page, const char* operation, ImgULong column, bool transparent) {
    const auto raster = rasterOf(page, false);
    Pair pair{operation, page->page->name, "pixRasterop", page->page->pixels(), {}, {}, {}};
    pair.ours = [raster, column, transparent] {
        RasOpXfmAttr attr{0, 0, column, 0, transparent, 0};
        raster->image->doRasOpInPlace(RasOpCopy, attr, *raster->page->image);
    };
    const int code = transparent ? PIX_SRC | PIX_DST : PIX_SRC;
    pair.peer = [raster, column, code] {
        lay(raster->pix.get(), static_cast<int>(column), raster->page->pix.get(), code);
    };
    // Copying, the library treats the pixels of the first and last bytes by a rule of its own; joining, it drops what a
    // row's last byte moves out of itself.
    const Bitmap& bitmap = page->page->bitmap;
    bool drops = false;
    for (std::size_t y = 0; y < bitmap.height; ++y)
        drops = drops || (bitmap.row(y)[bitmap.rowBytes() - 1] & ((1u << column) - 1)) != 0;
    if (transparent && !drops)
        pair.same = [raster] { return alike(bitmapOf(*raster->image), toBitmap(raster->pix.get())); };
    addPair(std::move(pair));
}

/// Of what the page covers, ours joins only the first byte of a row; from the second on the page stands alone.
void addRasterAnd(const PicturePtr& page) {
    const auto raster = rasterOf(page, true);
    Pair pair{"and into a copy, 1 bit", page->page->name, "pixCopy, pixRasterop", page->page->pixels(), {}, {}, {}};
    pair.ours = [raster] {
        RasOpXfmAttr attr{0, 0, 5, 0, false, 0};
        raster->ours.reset();
        raster->ours.reset(raster->image->doRasOp(RasOpAnd, attr, *raster->page->image));
    };
    pair.peer = [raster] {
        raster->peer.reset();
        raster->peer.reset(pixCopy(nullptr, raster->pix.get()));
        lay(raster->peer.get(), 5, raster->page->pix.get(), PIX_SRC & PIX_DST);
    };
    addPair(std::move(pair));
}

// --- 8 and 32 bits ----------------------------------------------------------------

/// Pixels whose values tell their places apart, in bytes.
Bytes pattern(std::size_t size) {
    Bytes bytes(size);
    for (std::size_t k = 0; k < size; ++k) bytes[k] = static_cast<unsigned char>(k * 2654435761u >> 13);
    return bytes;
}

PicturePtr palette(const PagePtr& page) {
    const auto picture = std::make_shared<Picture>();
    const std::uint32_t width = page->bitmap.width, height = page->bitmap.height;
    Bytes bytes = pattern(std::size_t{width} * height);
    ColorMap greys(256, 255);
    for (int k = 0; k < 256; ++k) greys.entries[k] = {k, k, k};
    picture->page = page;
    picture->image.reset(
        CImg8::create(width, height, bytes.data(), static_cast<ImgULong>(bytes.size()), &greys, ImgAlignNone));
    picture->pix = toPix(bytes.data(), width, height, 8);
    return picture;
}

PicturePtr rgb(const PagePtr& page) {
    const auto picture = std::make_shared<Picture>();
    const std::uint32_t width = page->bitmap.width, height = page->bitmap.height;
    Bytes bytes = pattern(std::size_t{width} * height * 4);
    std::vector<ImgULong> pixels(std::size_t{width} * height);
    std::memcpy(pixels.data(), bytes.data(), bytes.size());
    picture->page = page;
    picture->image.reset(
        CImg32::create(width, height, pixels.data(), static_cast<ImgULong>(bytes.size()), RGBOrderRGB));
    picture->pix = toPix(bytes.data(), width, height, 32);
    return picture;
}

/// Rows of both sides, whatever their padding.
bool alikeDeep(IImg& image, PIX* pix) {
    if (image.getWidth() != static_cast<ImgULong>(pixGetWidth(pix)) ||
        image.getHeight() != static_cast<ImgULong>(pixGetHeight(pix)))
        return false;
    const bool wide = image.getType() == ImageTypeRGB;
    const PixPtr peer(wide ? pixClone(pix) : pixEndianByteSwapNew(pix));
    for (std::size_t y = 0; y < image.getHeight(); ++y) {
        const void* const row = wide ? static_cast<void*>(static_cast<CImg32&>(image).peekDataArray()[y])
                                     : static_cast<void*>(static_cast<CImg8&>(image).peekDataArray()[y]);
        const std::size_t words = static_cast<std::size_t>(pixGetWpl(peer.get()));
        if (std::memcmp(row, pixGetData(peer.get()) + y * words, image.getWidth() * (wide ? 4 : 1)) != 0) return false;
    }
    return true;
}

// --- turning, of every kind -------------------------------------------------------

void addTurn(const PicturePtr& picture, const char* operation, const char* kind, const char* peerName, Ours ours,
             Peers peer) {
    Pair pair = pairOf(picture, std::string(operation) + ", " + kind, peerName, ours, peer);
    pair.same = [picture] {
        if (!picture->ours) return false;
        if (picture->image->getType() != ImageTypeBilevel) return alikeDeep(*picture->ours, picture->peer.get());
        return alike(bitmapOf(picture->ours), toBitmap(picture->peer.get()));
    };
    addPair(std::move(pair));
}

void addTurns(const PicturePtr& picture, const char* kind) {
    addTurn(
        picture, "turn left", kind, "pixRotate90", [](IImg& image) { return image.rotate(90); },
        [](PIX* pix) { return PixPtr(pixRotate90(pix, -1)); });
    addTurn(
        picture, "turn right", kind, "pixRotate90", [](IImg& image) { return image.rotate(270); },
        [](PIX* pix) { return PixPtr(pixRotate90(pix, 1)); });
    addTurn(
        picture, "turn by 180", kind, "pixRotate180", [](IImg& image) { return image.rotate(180); },
        [](PIX* pix) { return PixPtr(pixRotate180(nullptr, pix)); });
    addTurn(
        picture, "mirror columns", kind, "pixFlipLR", [](IImg& image) { return image.mirror(ImgMirY); },
        [](PIX* pix) { return PixPtr(pixFlipLR(nullptr, pix)); });
    addTurn(
        picture, "mirror rows", kind, "pixFlipTB", [](IImg& image) { return image.mirror(ImgMirX); },
        [](PIX* pix) { return PixPtr(pixFlipTB(nullptr, pix)); });
    // Both keep the picture's size and turn it about its middle by three shears; each rounds these its own way.
    for (const int degrees : {7, 20})
        addPair(pairOf(
            picture, "shear by " + std::to_string(degrees) + ", " + kind, "pixRotate3Shear",
            [degrees](IImg& image) { return image.rotate(degrees); },
            [degrees](PIX* pix) {
                const float angle = -static_cast<float>(degrees) * 3.14159265f / 180;
                return PixPtr(
                    pixRotate3Shear(pix, pixGetWidth(pix) / 2, pixGetHeight(pix) / 2, angle, L_BRING_IN_WHITE));
            }));
}

// --- nearest pixels, and other kinds ----------------------------------------------

void addNearest(const PicturePtr& picture, const std::string& kind) {
    struct {
        const char* name;
        double factor;
    } const scales[] = {{"reduce by 2.7, ", 1 / 2.7}, {"enlarge by 2, ", 2}, {"enlarge by 1.37, ", 1.37}};
    for (const auto& scale : scales)
        addPair(pairOf(picture, scale.name + kind, "pixScaleBySampling", scaling(scale.factor),
                       [factor = static_cast<float>(scale.factor)](PIX* pix) {
                           return PixPtr(pixScaleBySampling(pix, factor, factor));
                       }));
}

/// What no diffusion of errors can do without: each pixel's error comes of its neighbour's.
struct Chain {
    PagePtr page;
    int last = 0;

    void run() {
        int right = 0;
        for (std::size_t k = 0, count = static_cast<std::size_t>(page->pixels()); k < count; ++k) {
            const int value = static_cast<int>(page->bitmap.bits[k >> 3]) + right;
            right = (value < 128 ? value : value - 255) * 7 >> 4;
        }
        last = right;
    }
};

void addDithering(const PicturePtr& picture, const char* operation, const char* peerName, Peers peer) {
    const auto dither = [](IImg& image) { return CImg1::create(image, 0xFFFFFF, 0, ImgAlignNone); };
    addOther(picture, operation, peerName, dither, peer);
    Pair pair = pairOf(picture, operation, "dependency chain", dither, {});
    const auto chain = std::make_shared<Chain>(Chain{picture->page});
    pair.peer = [chain] { chain->run(); };
    addPair(std::move(pair));
}

void addConversions(const PicturePtr& bits, const PicturePtr& bytes, const PicturePtr& pixels) {
    addOther(
        bits, "1 bit to palette", "pixConvert1To8",
        [](IImg& image) { return CImg8::create(image, nullptr, ImgAlignNone); },
        [](PIX* pix) { return PixPtr(pixConvert1To8(nullptr, pix, 255, 0)); });
    addOther(
        bits, "1 bit to RGB", "pixConvert1To32", [](IImg& image) { return CImg32::create(image, RGBOrderRGB); },
        [](PIX* pix) { return PixPtr(pixConvert1To32(nullptr, pix, 0xFFFFFFFF, 0)); });
    addOther(
        bytes, "palette to RGB", "pixRemoveColormap", [](IImg& image) { return CImg32::create(image, RGBOrderRGB); },
        [](PIX* pix) {
            const PixPtr coloured(pixClone(pix));
            pixSetColormap(coloured.get(), pixcmapCreateLinear(8, 256));
            PixPtr result(pixRemoveColormap(coloured.get(), REMOVE_CMAP_TO_FULL_COLOR));
            pixDestroyColormap(coloured.get());
            return result;
        });
    addDithering(bytes, "dither palette", "pixDitherToBinary", [](PIX* pix) { return PixPtr(pixDitherToBinary(pix)); });
    addDithering(pixels, "dither RGB", "luminance, pixDitherToBinary", [](PIX* pix) {
        const PixPtr grey(pixConvertRGBToLuminance(pix));
        return PixPtr(pixDitherToBinary(grey.get()));
    });
}

}  // namespace

void addTransformPairs(const PagePtr& page) {
    const PicturePtr picture = bilevel(page);
    addTurns(picture, "1 bit");
    addBilevelScaling(picture);
    addRasterInPlace(picture, "copy at column 5, 1 bit", 5, false);
    addRasterInPlace(picture, "or at column 5, 1 bit", 5, true);
    addRasterInPlace(picture, "or at column 0, 1 bit", 0, true);
    addRasterAnd(picture);
    const PicturePtr bytes = palette(page), pixels = rgb(page);
    addTurns(bytes, "palette");
    addTurns(pixels, "RGB");
    addNearest(bytes, "palette");
    addNearest(pixels, "RGB");
    addConversions(picture, bytes, pixels);
}

}  // namespace bench
