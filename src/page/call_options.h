#pragma once

// What a caller's options ask of a walk: telling of progress and of damage.

#include "page/coded_page.h"
#include "page/records.h"

#include <cstdint>

namespace tilepress {

/// The options of one call, those that the caller does not have as 0, and what goes back into them.
class CallOptions {
public:
    CallOptions(const PageTiles& tiles, tp_options* callers);
    CallOptions(const CallOptions&) = delete;
    CallOptions& operator=(const CallOptions&) = delete;

    /// What is wrong with them: values that mean nothing, or a page that is too large for them.
    tp_status check(const tp_page_info& page, bool policyCounts = true) const;
    const tp_limits& limits() const { return options_.limits; }
    bool allows(std::uint64_t bytes) const {
        return options_.limits.max_bytes == 0 || bytes <= options_.limits.max_bytes;
    }
    g4::DamagePolicy policy();
    /// Notes a record, and tells the caller how many there are.
    void report(const tp_damage& damage);

    /// The last call of progress, and how a call ends that has come to its end.
    tp_status finish();

    void setTotal(std::uint64_t rows) { total_ = rows; }
    /// A row more is done; false where the caller wants no more of them.
    bool rowDone() { return ++done_ % kRowsBetween != 0 || tell(); }

private:
    bool tell() { return !options_.progress || options_.progress(options_.user, done_, total_) == 0; }

    static constexpr std::uint32_t kRowsBetween = 256;

    const PageTiles& tiles_;
    tp_options* const callers_;
    tp_options options_;
    bool given_;
    std::uint64_t done_ = 0, total_ = 0;
};

/// The kind of damage that a row's status tells of.
std::uint32_t kindOf(g4::RowStatus status);

/// How a walk that has ended early ends the call.
tp_status statusOf(g4::WalkEnd end);

}  // namespace tilepress
