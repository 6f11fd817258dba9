#include "ccitt/detect_changes.h"
#include "ccitt/encode_row.h"
#include "ccitt/strip.h"
#include "foundation/heap.h"
#include "tilepress/ccitt.h"

#include <cstdio>
#include <cstdlib>

namespace tilepress::g4 {
namespace {

/// The tables of one family, absent or built.
template <class Tables>
struct TableSet {
    Tables* tables;

    bool build(const Tables& content) {
        release();
        tables = allocate<Tables>(1);
        if (tables) *tables = content;
        return tables != nullptr;
    }
    void release() {
        std::free(tables);
        tables = nullptr;
    }
};

struct Family {
    TableSet<DetectTables> detect;
    TableSet<EncodeTables> encode;

    void detectChanges(std::uint32_t width, const std::uint8_t* row, std::int32_t maxChanges, std::uint32_t* changes,
                       std::uint32_t* count) const {
        if (!count) return;
        *count = 0;
        if (!detect.tables || !changes || (!row && width != 0)) return;
        // Columns of a list are signed inside the library; they are never negative here.
        *count = static_cast<std::uint32_t>(
            g4::detectChanges(row, width, reinterpret_cast<std::int32_t*>(changes), maxChanges));
    }

    void encodeRow(RowList reference, RowList coding, std::uint16_t* words, std::int32_t* bits) const {
        if (!bits) return;
        *bits = 0;
        if (!encode.tables || !words || !coding.elements || coding.count < 4) return;
        const std::int32_t end = coding.elements[coding.count - 1];
        if (!isRow(coding, end) || !isRow(reference, end)) return;
        WordWriter out{words};
        g4::encodeRow(*encode.tables, out, reference, coding);
        out.finish();
        if (const std::int64_t written = out.bitsSince(words); written <= INT32_MAX)
            *bits = static_cast<std::int32_t>(written);
    }

    StripFamily strips(void (*say)(const char*)) const { return {encode.tables, detect.tables != nullptr, say}; }
};

// Apart: one family's disable must not pull tables from under another.
Family classFamily, plainFamily, alternateFamily;

void sayOnStandardError(const char* message) { std::fputs(message, stderr); }

}  // namespace
}  // namespace tilepress::g4

using namespace tilepress::g4;

// --- the class family: tables that nothing reads --------------------------------

void CCITT_EnableDetectChanges() { classFamily.detect.build(kDetectTables); }
void CCITT_DisableDetectChanges() { classFamily.detect.release(); }
void CCITT_EnableG4Encode() { classFamily.encode.build(kEncodeTables); }
void CCITT_DisableG4Encode() { classFamily.encode.release(); }

// --- the plain family -----------------------------------------------------------

void cit_enable_detect_changes() { plainFamily.detect.build(kDetectTables); }
void cit_disable_detect_changes() { plainFamily.detect.release(); }
std::int16_t cit_enable_encode_gr4() { return plainFamily.encode.build(kEncodeTables) ? 1 : 0; }
void cit_disable_encode_gr4() { plainFamily.encode.release(); }

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

void cit_enable_detect_changes_tmp() { alternateFamily.detect.build(kDetectTables); }
void cit_disable_detect_changes_tmp() { alternateFamily.detect.release(); }
std::int16_t cit_enable_encode_gr4_tmp() { return alternateFamily.encode.build(kEncodeTables) ? 1 : 0; }
void cit_disable_encode_gr4_tmp() { alternateFamily.encode.release(); }

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
