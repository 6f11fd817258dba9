#pragma once

// A page of one strip, decoded row by row through the plain function into changing-element lists.

#include "pages.h"

#include "tilepress/ccitt.h"

#include <utility>

namespace bench {

class CodedRows {
public:
    /// `strip` has the order in which the bits come; the function takes 16-bit words.
    CodedRows(Bytes strip, std::uint32_t width, std::uint32_t height)
        : words_(std::move(strip)), reference_(width + 4), coding_(width + 4), width_(static_cast<std::int32_t>(width)),
          height_(height) {
        words_.resize((words_.size() + 17) / 2 * 2);
        for (std::size_t k = 0; k < words_.size(); k += 2) std::swap(words_[k], words_[k + 1]);
        cit_enable_decode_gr4();
    }

    /// False where a row could not be decoded.
    bool decode() {
        return decode([] {});
    }

    /// Codes of the page: pass, vertical and horizontal.
    double codes() {
        double count = 0;
        decode([&] { count += codesOfRow(); });
        return count;
    }

private:
    template <class OnRow>
    bool decode(OnRow onRow) {
        reference_[0] = 0;
        for (int k = 1; k < 4; ++k) reference_[static_cast<std::size_t>(k)] = width_ + 1;
        std::int32_t count = 4, byte = 0, bit = 1;
        auto* const data = reinterpret_cast<std::uint16_t*>(words_.data());
        for (std::uint32_t y = 0; y < height_; ++y) {
            std::int32_t newCount = 0;
            if (cit_decode_tiff_gr4(reference_.data(), count, width_, data, &byte, &bit, nullptr, coding_.data(),
                                    &newCount, static_cast<std::int32_t>(words_.size())) != 0)
                return false;
            bit = (bit - 1) % 8 + 1;
            onRow();
            reference_.swap(coding_);
            count = newCount;
        }
        return true;
    }

    int codesOfRow() const {
        int codes = 0;
        std::int32_t a0 = 0;
        std::size_t b = 1, n = 1;
        for (; a0 <= width_; ++codes) {
            while (b > 1 && reference_[b - 1] > a0) --b;
            while (reference_[b] <= width_ && (reference_[b] <= a0 || b % 2 != n % 2)) ++b;
            const std::int32_t b1 = reference_[b], b2 = b1 > width_ ? b1 : reference_[b + 1], a1 = coding_[n];
            if (b2 < a1) {
                a0 = b2;
            } else if (a1 - b1 <= 3 && b1 - a1 <= 3) {
                a0 = a1;
                n += 1;
            } else {
                a0 = a1 > width_ ? a1 : coding_[n + 1];
                n += 2;
            }
        }
        return codes;
    }

    Bytes words_;
    std::vector<std::int32_t> reference_, coding_;
    std::int32_t width_;
    std::uint32_t height_;
};

}  // namespace bench
