// The exported functions on rows and strips, in families that are enabled and disabled apart.
//
// The tables are constants, so that an enabled family needs nothing; enabling it allocates a marker all the same, since
// callers can see it fail. Markers are exchanged atomically: walks over images, which enable and disable the class
// family, may run side by side, and none of them depends on what it finds.

#include "ccitt/decode_row.h"
#include "ccitt/detect_changes.h"
#include "ccitt/encode_row.h"
#include "ccitt/strip.h"
#include "foundation/heap.h"
#include "tilepress/ccitt.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>

namespace tilepress::g4 {
namespace {

/// Whether a codec is enabled: a block that says nothing. One thread may free what another has allocated.
class Marker {
public:
    bool set() {
        char* const block = allocate<char>(1);
        std::free(block_.exchange(block, std::memory_order_acq_rel));
        return block != nullptr;
    }
    void clear() { std::free(block_.exchange(nullptr, std::memory_order_acq_rel)); }
    explicit operator bool() const { return block_.load(std::memory_order_relaxed) != nullptr; }

private:
    std::atomic<char*> block_{nullptr};
};

struct Family {
    Marker decode, encode, detect;

    std::int16_t decodeRow(const std::int32_t* referenceLine, std::int32_t referenceCount, std::int32_t width,
                           const std::uint16_t* data, std::int32_t* bytePosition, std::int32_t* bitPosition,
                           std::int32_t* codingLine, std::int32_t* codingCount, std::int32_t dataLength) const {
        if (!bytePosition || !bitPosition) return kRowPastEnd;
        std::int64_t bit = 8 * std::int64_t{*bytePosition} + *bitPosition - 1;
        // Kept: from here on the bit counts within its 16-bit word, also when the row fails.
        if (*bytePosition & 1) *bitPosition = static_cast<std::int32_t>(static_cast<std::uint32_t>(*bitPosition) + 8);
        if (!decode) return kRowInvalidMode;
        if (!referenceLine || !data || !codingLine || !codingCount) return kRowPastEnd;
        const CodedData in{reinterpret_cast<const unsigned char*>(data), dataLength > 0 ? dataLength : -1, true};
        const RowStatus status =
            g4::decodeRow(in, bit, {referenceLine, referenceCount}, width, codingLine, *codingCount);
        if (status == kRowDecoded) {
            *bytePosition = static_cast<std::int32_t>(bit >> 3);
            *bitPosition = static_cast<std::int32_t>(bit & 7) + 1;
        }
        return status;
    }

    void detectChanges(std::uint32_t width, const std::uint8_t* row, std::int32_t maxChanges, std::uint32_t* changes,
                       std::uint32_t* count) const {
        if (!count) return;
        *count = 0;
        if (!detect || !changes || (!row && width != 0)) return;
        // Columns of a list are signed inside the library; they are never negative here.
        *count = static_cast<std::uint32_t>(
            g4::detectChanges(row, width, reinterpret_cast<std::int32_t*>(changes), maxChanges));
    }

    void encodeRow(RowList reference, RowList coding, std::uint16_t* words, std::int32_t* bits) const {
        if (!bits) return;
        *bits = 0;
        if (!encode || !words || !coding.elements || coding.count < 4) return;
        const std::int32_t end = coding.elements[coding.count - 1];
        if (!isRow(coding, end) || !isRow(reference, end)) return;
        WordWriter out{words};
        g4::encodeRow(out, reference, coding);
        out.finish();
        if (const std::int64_t written = out.bitsSince(words); written <= INT32_MAX)
            *bits = static_cast<std::int32_t>(written);
    }

    StripFamily strips(void (*say)(const char*)) const {
        return {static_cast<bool>(encode), static_cast<bool>(detect), say};
    }
};

// Apart: disabling one family must not disable another.
constinit Family classFamily, plainFamily, alternateFamily;
/// Enabled, whether or not its marker could be had.
constinit std::atomic<bool> classMarked{false};

void sayOnStandardError(const char* message) { std::fputs(message, stderr); }

}  // namespace
}  // namespace tilepress::g4

using namespace tilepress::g4;

// --- the class family -----------------------------------------------------------

ImgErr CCITT_EnableG4Decode() {
    // Kept: after a failed allocation the next enable succeeds, without a marker, until a disable.
    if (classMarked.exchange(true, std::memory_order_relaxed)) return ImgErrNone;
    return classFamily.decode.set() ? ImgErrNone : ImgErrCreate;
}

void CCITT_DisableG4Decode() {
    classFamily.decode.clear();
    classMarked.store(false, std::memory_order_relaxed);
}

std::int16_t CCITT_G4Decode(std::int32_t* referenceLine, std::int32_t referenceCount, std::int32_t width,
                            std::uint16_t* data, std::int32_t* bytePosition, std::int32_t* bitPosition, std::uint8_t*,
                            std::int32_t* codingLine, std::int32_t* codingCount, std::int32_t dataLength) {
    return classFamily.decodeRow(referenceLine, referenceCount, width, data, bytePosition, bitPosition, codingLine,
                                 codingCount, dataLength);
}

// Nothing asks whether these are enabled.
void CCITT_EnableDetectChanges() { classFamily.detect.set(); }
void CCITT_DisableDetectChanges() { classFamily.detect.clear(); }
void CCITT_EnableG4Encode() { classFamily.encode.set(); }
void CCITT_DisableG4Encode() { classFamily.encode.clear(); }

// --- the plain family -----------------------------------------------------------

std::int16_t cit_enable_decode_gr4() { return plainFamily.decode.set() ? 1 : 0; }
void cit_disable_decode_gr4() { plainFamily.decode.clear(); }
void cit_enable_detect_changes() { plainFamily.detect.set(); }
void cit_disable_detect_changes() { plainFamily.detect.clear(); }
std::int16_t cit_enable_encode_gr4() { return plainFamily.encode.set() ? 1 : 0; }
void cit_disable_encode_gr4() { plainFamily.encode.clear(); }

std::int16_t cit_decode_tiff_gr4(std::int32_t* referenceLine, std::int32_t referenceCount, std::int32_t width,
                                 std::uint16_t* data, std::int32_t* bytePosition, std::int32_t* bitPosition,
                                 std::uint8_t*, std::int32_t* codingLine, std::int32_t* codingCount,
                                 std::int32_t dataLength) {
    return plainFamily.decodeRow(referenceLine, referenceCount, width, data, bytePosition, bitPosition, codingLine,
                                 codingCount, dataLength);
}

void cit_detect_changes(std::uint32_t width, std::uint8_t* row, std::int32_t maxChanges, std::uint32_t* changes,
                        std::uint32_t* count) {
    plainFamily.detectChanges(width, row, maxChanges, changes, count);
}

void cit_encode_gr4(std::int32_t* referenceLine, std::int32_t referenceCount, std::int32_t* codingLine,
                    std::int32_t codingCount, std::uint16_t* words, std::int32_t* bits) {
    plainFamily.encodeRow({referenceLine, referenceCount}, {codingLine, codingCount}, words, bits);
}

std::int32_t create_g4_tiff_strip(std::uint8_t* rows, std::uint8_t** output, std::int32_t width,
                                  std::int32_t bytesPerRow, std::int32_t rowCount) {
    return createStrip(plainFamily.strips(nullptr), rows, output, width, bytesPerRow, rowCount);
}

// --- the alternate family -------------------------------------------------------

void cit_enable_detect_changes_tmp() { alternateFamily.detect.set(); }
void cit_disable_detect_changes_tmp() { alternateFamily.detect.clear(); }
std::int16_t cit_enable_encode_gr4_tmp() { return alternateFamily.encode.set() ? 1 : 0; }
void cit_disable_encode_gr4_tmp() { alternateFamily.encode.clear(); }

void cit_detect_changes_tmp(std::uint32_t width, std::uint8_t* row, std::int32_t maxChanges, std::uint32_t* changes,
                            std::uint32_t* count) {
    alternateFamily.detectChanges(width, row, maxChanges, changes, count);
}

void cit_encode_gr4_tmp(std::int32_t* referenceLine, std::int32_t referenceCount, std::int32_t* codingLine,
                        std::int32_t codingCount, std::uint16_t* words, std::int32_t* bits) {
    alternateFamily.encodeRow({referenceLine, referenceCount}, {codingLine, codingCount}, words, bits);
}

std::int32_t create_g4_tiff_strip_tmp(std::uint8_t* rows, std::uint8_t** output, std::int32_t width,
                                      std::int32_t bytesPerRow, std::int32_t rowCount) {
    return createStrip(alternateFamily.strips(sayOnStandardError), rows, output, width, bytesPerRow, rowCount);
}
