#include "tiff/g4_encoder.h"

#include "base/failure.h"
#include "tilepress/ccitt.h"

#include <algorithm>
#include <utility>

void BitJoiner::append(unsigned value, unsigned bits) {
    pending_ = pending_ << bits | (value & ((std::uint64_t{1} << bits) - 1));
    for (pendingBits_ += bits; pendingBits_ >= 8; pendingBits_ -= 8)
        joined_.push_back(static_cast<unsigned char>(pending_ >> (pendingBits_ - 8)));
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
    if (pendingBits_ > 0) append(0u, 8 - pendingBits_);
    return std::exchange(joined_, {});
}

EncoderTables::EncoderTables() {
    if (!cit_enable_encode_gr4()) throw Failure(Exit::tooLarge, "not enough memory");
}
EncoderTables::~EncoderTables() { cit_disable_encode_gr4(); }

// At most 7 bits a pixel and 18 more, in whole words.
G4Encoder::G4Encoder(std::uint32_t rowWidth)
    : width_(static_cast<std::int32_t>(rowWidth)), reference_(std::size_t{rowWidth} + 8),
      code_((std::uint64_t{rowWidth} * 7 + 18) / 16 + 2) {
    clear();
}

void G4Encoder::clear() {
    reference_[0] = 0;
    std::fill_n(reference_.begin() + 1, 3, width_ + 1);
    referenceCount_ = 4;
}

void G4Encoder::add(const std::int32_t* list, std::int32_t count) {
    std::int32_t bits = 0;
    // Lists are only read.
    cit_encode_gr4(reference_.data(), referenceCount_, const_cast<std::int32_t*>(list), count, code_.data(), &bits);
    if (bits <= 0) throw Failure(Exit::failed, "a row cannot be coded");
    joiner_.append(code_.data(), static_cast<std::uint64_t>(bits));
    std::copy_n(list, count, reference_.begin());
    referenceCount_ = count;
}

void G4Encoder::addWhite() {
    const std::int32_t white[] = {0, width_ + 1, width_ + 1, width_ + 1};
    add(white, 4);
}

void G4Encoder::resume(const unsigned char* bytes, std::uint64_t bits, const std::vector<std::int32_t>& last,
                       std::int32_t count) {
    joiner_.append(bytes, bits);
    std::copy_n(last.begin(), count, reference_.begin());
    referenceCount_ = count;
}

std::vector<unsigned char> G4Encoder::finish() {
    constexpr unsigned endOfLine = 1;
    joiner_.append(endOfLine, 12);
    joiner_.append(endOfLine, 12);
    clear();
    return joiner_.finish();
}
