#include "g4_encoder.h"

#include <algorithm>
#include <utility>

#include "failure.h"
#include "tilepress/ccitt.h"

void BitJoiner::append(unsigned value, unsigned bits) {
    pending = pending << bits | (value & ((std::uint64_t{1} << bits) - 1));
    for (pendingBits += bits; pendingBits >= 8; pendingBits -= 8)
        joined.push_back(static_cast<unsigned char>(pending >> (pendingBits - 8)));
}

void BitJoiner::append(const std::uint16_t* words, std::uint64_t bits) {
    for (; bits >= 16; bits -= 16) append(*words++, 16);
    if (bits > 0) append(static_cast<unsigned>(*words >> (16 - bits)), static_cast<unsigned>(bits));
}

void BitJoiner::append(const unsigned char* bytes, std::uint64_t bits) {
    for (; bits >= 8; bits -= 8) append(*bytes++, 8);
    if (bits > 0) append(static_cast<unsigned>(*bytes >> (8 - bits)), static_cast<unsigned>(bits));
}

std::vector<unsigned char> BitJoiner::finish() {
    if (pendingBits > 0) append(0u, 8 - pendingBits);
    return std::exchange(joined, {});
}

EncoderTables::EncoderTables() {
    if (!cit_enable_encode_gr4()) throw Failure(Exit::tooLarge, "not enough memory");
}
EncoderTables::~EncoderTables() { cit_disable_encode_gr4(); }

// At most 7 bits a pixel and 18 more, in whole words.
G4Encoder::G4Encoder(std::uint32_t rowWidth)
    : width(static_cast<std::int32_t>(rowWidth)), reference(std::size_t{rowWidth} + 8),
      code((std::uint64_t{rowWidth} * 7 + 18) / 16 + 2) {
    clear();
}

void G4Encoder::clear() {
    reference[0] = 0;
    std::fill_n(reference.begin() + 1, 3, width + 1);
    referenceCount = 4;
}

void G4Encoder::add(const std::int32_t* list, std::int32_t count) {
    std::int32_t bits = 0;
    // Lists are only read.
    cit_encode_gr4(reference.data(), referenceCount, const_cast<std::int32_t*>(list), count, code.data(), &bits);
    if (bits <= 0) throw Failure(Exit::failed, "a row cannot be coded");
    joiner.append(code.data(), static_cast<std::uint64_t>(bits));
    std::copy_n(list, count, reference.begin());
    referenceCount = count;
}

void G4Encoder::addWhite() {
    const std::int32_t white[] = {0, width + 1, width + 1, width + 1};
    add(white, 4);
}

void G4Encoder::resume(const unsigned char* bytes, std::uint64_t bits, const std::vector<std::int32_t>& last,
                       std::int32_t count) {
    joiner.append(bytes, bits);
    std::copy_n(last.begin(), count, reference.begin());
    referenceCount = count;
}

std::vector<unsigned char> G4Encoder::finish() {
    constexpr unsigned endOfLine = 1;
    joiner.append(endOfLine, 12);
    joiner.append(endOfLine, 12);
    clear();
    return joiner.finish();
}
