// Whatever the bits and the row before are, a row decodes to the same status, place and list by every way there is,
// and nothing outside the callers' arrays is touched.

#include "input.h"
#include "support/decoders.h"
#include "tilepress/ccitt.h"

namespace {

/// A row against any numbers at all, from any place.
void decodeAgainstAnything(Input& in, std::uint32_t rowWidth) {
    const std::uint32_t count = in.below(40);
    const auto reference = exactly<std::int32_t>(count), coding = exactly<std::int32_t>(rowWidth + 4);
    for (std::uint32_t i = 0; i < count; ++i)
        reference[i] = static_cast<std::int32_t>(in.u8() < 200 ? in.below(2 * rowWidth + 3) : in.u32());
    auto byte = static_cast<std::int32_t>(in.u16()) - 16, bit = static_cast<std::int32_t>(in.below(40)) - 8;
    std::int32_t codingCount = 0;
    const std::int32_t length = 2 * static_cast<std::int32_t>(in.below(64));
    auto data = exactly<unsigned char>(std::size_t(length) + 2);
    for (std::int32_t i = 0; i < length; ++i) data[std::size_t(i)] = static_cast<unsigned char>(in.u8());
    cit_decode_tiff_gr4(reference.get(), static_cast<std::int32_t>(count), static_cast<std::int32_t>(rowWidth),
                        reinterpret_cast<std::uint16_t*>(data.get()), &byte, &bit, nullptr, coding.get(), &codingCount,
                        length > 0 ? length : 2);
    PROMISE(codingCount <= static_cast<std::int32_t>(rowWidth) + 4);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    cit_enable_decode_gr4();
    Input in(data, size);
    const std::uint32_t kind = in.u8(), width = in.u8() < 200 ? in.upTo(200) : in.upTo(6000);
    if (kind % 4 == 0) {
        decodeAgainstAnything(in, width);
    } else {
        std::vector<unsigned char> words = in.rest();
        words.resize((words.size() + 2) / 2 * 2);
        for (const auto how : {tilepress::g4::Decoding::classic, tilepress::g4::Decoding::standard})
            PROMISE(support::rowsDecodedAlike(static_cast<std::int32_t>(width), words, 64, how) >= 0);
    }
    cit_disable_decode_gr4();
    return 0;
}
