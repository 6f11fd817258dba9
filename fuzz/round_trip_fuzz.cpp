// What is coded decodes to the same pixels: strips of the exported builders, and rows coded one by one.

#include "input.h"
#include "tilepress/ccitt.h"

#include <algorithm>

namespace {

/// The strip's rows against the pixels it was made from.
void checkStrip(std::uint8_t* strip, std::int32_t length, std::uint32_t width, std::size_t rowBytes,
                std::uint32_t height, const unsigned char* rows) {
    const std::size_t padded = (std::size_t(length) + 1) / 2 * 2;
    auto words = exactly<unsigned char>(padded);
    std::memcpy(words.get(), strip, std::size_t(length));
    for (std::size_t i = 0; i < padded; i += 2) std::swap(words[i], words[i + 1]);
    auto reference = exactly<std::int32_t>(width + 4), coding = exactly<std::int32_t>(width + 4);
    auto found = exactly<std::uint32_t>(width + 4);
    auto decoded = exactly<std::int32_t>(width + 4);
    std::fill_n(reference.get() + 1, 3, static_cast<std::int32_t>(width) + 1);
    std::int32_t count = 4, next = 0, byte = 0, bit = 1;
    auto row = exactly<unsigned char>(rowBytes + 1);
    for (std::uint32_t y = 0; y < height; ++y) {
        PROMISE(cit_decode_tiff_gr4(reference.get(), count, static_cast<std::int32_t>(width),
                                    reinterpret_cast<std::uint16_t*>(words.get()), &byte, &bit, nullptr, coding.get(),
                                    &next, static_cast<std::int32_t>(padded)) == 0);
        std::memcpy(row.get(), rows + y * rowBytes, rowBytes);
        std::uint32_t changes = 0;
        cit_detect_changes(width, row.get(), static_cast<std::int32_t>(width) + 4, found.get(), &changes);
        PROMISE(changes == static_cast<std::uint32_t>(next));
        for (std::uint32_t i = 0; i < changes; ++i) PROMISE(found[i] == static_cast<std::uint32_t>(coding[i]));
        std::int32_t bits = 0, again = 0, codeByte = 0, codeBit = 1;
        const std::size_t codeWords = (7 * width + 18 + 15) / 16;
        const auto code = exactly<std::uint16_t>(codeWords);
        cit_encode_gr4(reference.get(), count, coding.get(), next, code.get(), &bits);
        PROMISE(cit_decode_tiff_gr4(reference.get(), count, static_cast<std::int32_t>(width), code.get(), &codeByte,
                                    &codeBit, nullptr, decoded.get(), &again,
                                    static_cast<std::int32_t>(2 * codeWords)) == 0);
        PROMISE(8 * codeByte + codeBit - 1 == bits && again == next &&
                std::equal(coding.get(), coding.get() + next, decoded.get()));
        reference.swap(coding);
        count = next;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input in(data, size);
    const std::uint32_t width = in.u8() < 220 ? in.upTo(150) : in.upTo(9000), height = in.upTo(24), pad = in.below(4);
    const std::size_t rowBytes = (width + 7) / 8 + pad;
    std::vector<unsigned char> pixels = in.rest();
    pixels.resize(rowBytes * height);  // one byte more than the rows, as change detection asks for
    auto rows = exactly<unsigned char>(pixels.size() + 1);
    std::memcpy(rows.get(), pixels.data(), pixels.size());
    cit_enable_encode_gr4();
    cit_enable_encode_gr4_tmp();
    cit_enable_detect_changes();
    cit_enable_detect_changes_tmp();
    cit_enable_decode_gr4();
    std::uint8_t *strip = nullptr, *twin = nullptr;
    const auto w = static_cast<std::int32_t>(width), stride = static_cast<std::int32_t>(rowBytes),
               h = static_cast<std::int32_t>(height);
    const std::int32_t length = create_g4_tiff_strip(rows.get(), &strip, w, stride, h);
    if (length > 0) {
        PROMISE(create_g4_tiff_strip_tmp(rows.get(), &twin, w, stride, h) == length &&
                std::memcmp(strip, twin, std::size_t(length)) == 0);
        PROMISE(std::memcmp(rows.get(), pixels.data(), pixels.size()) == 0);
        checkStrip(strip, length, width, rowBytes, height, rows.get());
    }
    std::free(strip);
    std::free(twin);
    cit_disable_encode_gr4();
    cit_disable_encode_gr4_tmp();
    cit_disable_detect_changes();
    cit_disable_detect_changes_tmp();
    cit_disable_decode_gr4();
    return 0;
}
