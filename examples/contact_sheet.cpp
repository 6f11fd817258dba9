// A page in every guise on one sheet: turned, mirrored, in ink, in grey, inverted, with lines drawn on it.
//
//     contact_sheet <page.pbm >sheet.ppm
//
// Shows how the uncompressed kinds work together: pictures of all depths become RGB images and are
// pasted into one.

#include <tilepress/tilepress.h>

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

namespace {

using Bilevel = std::unique_ptr<CImg1>;
using Picture = std::unique_ptr<IImg>;

constexpr ImgULong kWhite = 0x00FFFFFF, kBlack = 0xFF000000, kGround = 0x00C0A080;
constexpr ImgULong kCell = 360, kMargin = 12, kColumns = 4;

/// A raw PBM file ("P4") without comments.
Bilevel readPbm(std::FILE* file) {
    unsigned width = 0, height = 0;
    if (std::fscanf(file, "P4 %u %u", &width, &height) != 2) return nullptr;
    std::fgetc(file);
    Bilevel image(CImg1::create(width, height, kWhite, kBlack, ImgAlignNone));
    if (!image || std::fread(image->peekData(), 1, image->getTotalBytes(), file) != image->getTotalBytes())
        return nullptr;
    return image;
}

/// The image within a cell of the sheet, in colour, reduced so that no line is lost.
std::unique_ptr<CImg32> thumbnail(IImg& image, ImgULong depth) {
    const ImgULong longer = image.getWidth() > image.getHeight() ? image.getWidth() : image.getHeight();
    ImgScaleAttr attr{depth};
    const Picture small(image.scale(static_cast<double>(kCell) / longer, attr));
    if (!small) return nullptr;
    // Scaled and sheared bilevel images do not keep the colour of their 0 bits.
    if (small->getType() == ImageTypeBilevel) static_cast<CImg1&>(*small).setBackgroundInterpretation(kWhite);
    return std::unique_ptr<CImg32>(CImg32::create(*small, RGBOrderRGB));
}

/// Pastes pictures from left to right and top to bottom.
class Sheet {
public:
    explicit Sheet(ImgULong rows)
        : image(
              CImg32::create(kColumns * (kCell + kMargin) + kMargin, rows * (kCell + kMargin) + kMargin, RGBOrderRGB)) {
        if (image) image->doRasOpInPlace(RasOpFill, false, 0, kGround);
    }
    void add(IImg* picture, ImgULong depth = 1) {
        const Picture owned(picture);
        const std::unique_ptr<CImg32> small(picture ? thumbnail(*picture, depth) : nullptr);
        const ImgULong row = count / kColumns, column = count % kColumns;
        RasOpXfmAttr place{0, kMargin + row * (kCell + kMargin), kMargin + column * (kCell + kMargin), 0, false, 0};
        if (image && small) image->doRasOpInPlace(RasOpCopy, place, *small);
        ++count;
    }
    bool write(std::FILE* file) const {
        if (!image) return false;
        std::fprintf(file, "P6\n%lu %lu\n255\n", static_cast<unsigned long>(image->getWidth()),
                     static_cast<unsigned long>(image->getHeight()));
        std::vector<unsigned char> bytes;
        for (ImgULong i = 0; i < image->getTotalBytes() / 4; ++i)
            for (int shift : {0, 8, 16}) bytes.push_back(static_cast<unsigned char>(image->peekData()[i] >> shift));
        return std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
    }

private:
    std::unique_ptr<CImg32> image;
    ImgULong count = 0;
};

CImg1* withLines(const CImg1& page) {
    CImg1* const copy = static_cast<CImg1*>(page.clone());
    if (!copy) return nullptr;
    const int right = static_cast<int>(page.getWidth()) - 1, bottom = static_cast<int>(page.getHeight()) - 1;
    for (int i = 0; i <= 12; ++i) {
        IntPtT left{0, bottom * i / 12}, top{right * i / 12, 0}, far{right, bottom - bottom * i / 12};
        copy->drawLines(&left, &far, false);
        copy->drawLines(&top, &far, false);
    }
    return copy;
}

}  // namespace

int main() {
    const Bilevel page = readPbm(stdin);
    if (!page) {
        std::fputs("contact_sheet: give a raw PBM file as standard input\n", stderr);
        return 1;
    }
    Sheet sheet(2);
    sheet.add(page->clone());      // ink
    sheet.add(page->clone(), 32);  // grey
    sheet.add(page->rotate(90));
    sheet.add(page->rotate(7.5));
    sheet.add(page->mirror(ImgMirX));
    sheet.add(page->mirror(ImgMirY));
    // Shown, not foreground: a scaled picture always has its ink set, so the colours are exchanged instead.
    if (CImg1* const inverted = static_cast<CImg1*>(page->clone())) {
        inverted->setBackgroundColor(0);
        inverted->invert();
        sheet.add(inverted, 32);
    }
    sheet.add(withLines(*page));
    return sheet.write(stdout) ? 0 : 1;
}
