#include "ccitt/decode_family.h"
#include "ccitt/decode_row.h"
#include "foundation/heap.h"
#include "tilepress/support.h"
#include "tilepress/ccitt.h"

#include <cstdlib>
#include <cstring>

namespace tilepress::g4 {
namespace {

/// The tables of one family, absent or built.
struct DecodeFamily {
    DecodeTables* tables;

    bool build() {
        release();
        auto* block = allocate<DecodeTables>(1);
        if (!block) return false;
        *block = kDecodeTables;
        tables = block;
        return true;
    }
    void release() {
        std::free(tables);
        tables = nullptr;
    }
};

// Apart: one family's disable must not pull tables from under another.
DecodeFamily classFamily, plainFamily;
bool classMarked;         // enabled, whether or not its tables could be built
bool plainExchangesPairs;  // asked at each enable; nothing decodes by it

std::int16_t decodeExported(const DecodeFamily& family, const std::int32_t* referenceLine, std::int32_t referenceCount,
                            std::int32_t width, const std::uint16_t* data, std::int32_t* bytePosition,
                            std::int32_t* bitPosition, std::int32_t* codingLine, std::int32_t* codingCount,
                            std::int32_t dataLength) {
    if (!bytePosition || !bitPosition) return kRowPastEnd;
    std::int64_t bit = 8 * std::int64_t{*bytePosition} + *bitPosition - 1;
    // Kept: from here on the bit counts within its 16-bit word, also when the row fails.
    if (*bytePosition & 1)
        *bitPosition = static_cast<std::int32_t>(static_cast<std::uint32_t>(*bitPosition) + 8);
    if (!family.tables) return kRowInvalidMode;
    if (!referenceLine || !data || !codingLine || !codingCount) return kRowPastEnd;
    const CodedData in{reinterpret_cast<const unsigned char*>(data), dataLength > 0 ? dataLength : -1, true};
    const RowStatus status =
        decodeRow(*family.tables, in, bit, {referenceLine, referenceCount}, width, codingLine, *codingCount);
    if (status == kRowDecoded) {
        *bytePosition = static_cast<std::int32_t>(bit >> 3);
        *bitPosition = static_cast<std::int32_t>(bit & 7) + 1;
    }
    return status;
}

}  // namespace

const DecodeTables* classDecodeTables() { return classFamily.tables; }
const DecodeTables* plainDecodeTables() { return plainFamily.tables; }

}  // namespace tilepress::g4

using namespace tilepress::g4;

ImgErr CCITT_EnableG4Decode() {
    // Kept: after a failed build the next enable succeeds, without tables, until a disable.
    if (classMarked) return ImgErrNone;
    classMarked = true;
    return classFamily.build() ? ImgErrNone : ImgErrCreate;
}

void CCITT_DisableG4Decode() {
    classFamily.release();
    classMarked = false;
}

std::int16_t cit_enable_decode_gr4() {
    plainExchangesPairs = osh_get_sys_parms()->byteOrder == 2;
    return plainFamily.build() ? 1 : 0;
}

void cit_disable_decode_gr4() { plainFamily.release(); }

std::int16_t CCITT_G4Decode(std::int32_t* referenceLine, std::int32_t referenceCount, std::int32_t width,
                            std::uint16_t* data, std::int32_t* bytePosition, std::int32_t* bitPosition, std::uint8_t*,
                            std::int32_t* codingLine, std::int32_t* codingCount, std::int32_t dataLength) {
    return decodeExported(classFamily, referenceLine, referenceCount, width, data, bytePosition, bitPosition,
                          codingLine, codingCount, dataLength);
}

std::int16_t cit_decode_tiff_gr4(std::int32_t* referenceLine, std::int32_t referenceCount, std::int32_t width,
                                 std::uint16_t* data, std::int32_t* bytePosition, std::int32_t* bitPosition,
                                 std::uint8_t*, std::int32_t* codingLine, std::int32_t* codingCount,
                                 std::int32_t dataLength) {
    return decodeExported(plainFamily, referenceLine, referenceCount, width, data, bytePosition, bitPosition,
                          codingLine, codingCount, dataLength);
}
