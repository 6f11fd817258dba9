// One handle combined into another.

#include "handles/operations.h"
#include "kernels/paste_rows.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace tilepress::handles {
namespace {

// --- whole images -----------------------------------------------------------------------

void combineBytes(std::uint32_t op, unsigned char* dst, const unsigned char* src, std::size_t count) {
    if (op == ImgRasAnd) pasteAligned<PasteAnd>(dst, src, count);
    else if (op == ImgRasOr) pasteAligned<PasteOr>(dst, src, count);
    else pasteAligned<PasteSet>(dst, src, count);
}

/// Rows without what pads them; the other kinds are one run of bytes.
template <class Kind>
void combinePixels(std::uint32_t op, const ImgHandle& to, const ImgHandle& from) {
    using Pixel = typename Kind::Pixel;
    if (!hasRows<Kind>(&to) || !hasRows<Kind>(&from)) return;
    const auto dst = areaOf<Kind>(to), src = areaOf<Kind>(from);
    for (std::size_t y = 0; y < dst.height; ++y)
        combineBytes(op, reinterpret_cast<unsigned char*>(dst[y]), reinterpret_cast<const unsigned char*>(src[y]),
                     dst.width * sizeof(Pixel));
}
template <>
void combinePixels<Palette8>(std::uint32_t op, const ImgHandle& to, const ImgHandle& from) {
    combineBytes(op, Palette8::block(to), Palette8::block(from),
                 std::min(blockBytes<Palette8>(to), blockBytes<Palette8>(from)));
}
template <>
void combinePixels<Bilevel>(std::uint32_t op, const ImgHandle& to, const ImgHandle& from) {
    // Kept: bilevel images have no copy, they are ORed.
    combineBytes(op == ImgRasCopy ? std::uint32_t{ImgRasOr} : op, Bilevel::block(to), Bilevel::block(from),
                 std::min(blockBytes<Bilevel>(to), blockBytes<Bilevel>(from)));
}

template <class Kind>
ImgHandle* combined(const ImgHandle& source, const ImgRasOp2Desc& desc, ImgHandle* destination) {
    if (widthOf(source) != widthOf(*destination) || heightOf(source) != heightOf(*destination) ||
        alignmentOf<Kind>(source) != alignmentOf<Kind>(*destination))
        return nullptr;
    ImgHandle* const target = targetOf<Kind>(destination, desc);
    if (target) combinePixels<Kind>(desc.op, *target, source);
    return target;
}

// --- at a position ----------------------------------------------------------------------

/// Bottom up, as positions are compared: corner 1 becomes the top left, corner 3 the bottom right.
ImgQuad flipped(ImgQuad quad) {
    std::swap(quad.y0, quad.y1);
    std::swap(quad.y2, quad.y3);
    return quad;
}

void pastePixels(const ImgHandle& to, std::uint32_t x, std::uint32_t y, const ImgHandle& from, Bilevel) {
    const BitArea dst = areaOf<Bilevel>(to), src = areaOf<Bilevel>(from);
    const PackedBlock block{dst.rows.first, blockBytes<Bilevel>(to), static_cast<std::size_t>(dst.rows.stride)};
    // Kept: whole bytes overwrite; moved ones are ORed into the first byte and overwrite from the second on.
    const auto paste = x % 8 == 0 ? pasteRows<PasteSet> : pasteRows<PasteOr>;
    paste(block, x, y, src.rows.first, static_cast<std::size_t>(src.rows.stride), src.height);
}
template <class Kind>
void pastePixels(const ImgHandle& to, std::uint32_t x, std::uint32_t y, const ImgHandle& from, Kind) {
    const auto dst = areaOf<Kind>(to), src = areaOf<Kind>(from);
    for (std::size_t row = 0; row < src.height; ++row)
        std::memmove(dst[y + row] + x, src[row], src.width * sizeof(typename Kind::Pixel));
}

/// Kept: the operation's code makes no difference here.
template <class Kind>
ImgHandle* pasted(const ImgHandle& source, const ImgRasOp2Desc& desc, ImgHandle* destination) {
    if (!hasRows<Kind>(&source) || !hasRows<Kind>(destination)) return nullptr;
    ImgQuad position = quadsOf(source).dstQuad;
    if (desc.position) std::memcpy(&position, desc.position, sizeof position);
    position = flipped(position);
    const ImgQuad whole = flipped(quadsOf(*destination).srcQuad);
    const std::int64_t x = position.x1, y = position.y1;
    if (position.x3 > whole.x3 || position.y3 > whole.y3 || x < 0 || y < 0 ||
        x + widthOf(source) > widthOf(*destination) || y + heightOf(source) > heightOf(*destination))
        return nullptr;
    ImgHandle* const target = targetOf<Kind>(destination, desc);
    if (target) pastePixels(*target, static_cast<std::uint32_t>(x), static_cast<std::uint32_t>(y), source, Kind());
    return target;
}

// --- any ----------------------------------------------------------------------------------

template <class Kind>
ImgHandle* rasOp2(ImgHandle* source, ImgRasOp2Desc* desc, ImgHandle* destination) {
    if (!source || !source->header || !desc || !isImage<Kind>(destination)) return nullptr;
    Temporary scaled;
    if (desc->scaleFirst == 1) {
        desc->placed = 0;
        if (!source->render) return nullptr;
        scaled.reset(source->render(source, widthOf(*destination), heightOf(*destination), source->header,
                                    desc->renderArg1, desc->renderArg2, alignmentOf<Kind>(*destination)));
        source = scaled.get();
    }
    if (!isImage<Kind>(source) || desc->op < ImgRasAnd || desc->op > ImgRasCopy) return nullptr;
    return desc->placed == 1 ? pasted<Kind>(*source, *desc, destination) : combined<Kind>(*source, *desc, destination);
}

}  // namespace
}  // namespace tilepress::handles

using namespace tilepress::handles;

ImgHandle* Img1RasOp2(ImgHandle* source, ImgRasOp2Desc* desc, ImgHandle* destination) {
    return rasOp2<Bilevel>(source, desc, destination);
}
ImgHandle* Img8RasOp2(ImgHandle* source, ImgRasOp2Desc* desc, ImgHandle* destination) {
    return rasOp2<Palette8>(source, desc, destination);
}
ImgHandle* Img24RasOp2(ImgHandle* source, ImgRasOp2Desc* desc, ImgHandle* destination) {
    return rasOp2<Colour24>(source, desc, destination);
}
ImgHandle* Img32RasOp2(ImgHandle* source, ImgRasOp2Desc* desc, ImgHandle* destination) {
    return rasOp2<Colour32>(source, desc, destination);
}
