#include "page/call_options.h"

#include <algorithm>
#include <cstddef>

namespace tilepress {
std::uint32_t kindOf(g4::RowStatus status) {
    switch (status) {
    case g4::kRowBackwards: return TP_BACKWARDS;
    case g4::kRowPastEnd: return TP_PAST_END;
    case g4::kRowNoData: return TP_OUT_OF_DATA;
    default: return TP_BAD_CODE;
    }
}

CallOptions::CallOptions(const PageTiles& tiles, tp_options* callers)
    : tiles_(tiles), callers_(callers), given_(readRecord(options_, callers)) {
    options_.damage_count = 0;
    if (!options_.damage) options_.damage_capacity = 0;
    if (given_ && options_.size >= offsetof(tp_options, damage_count) + sizeof options_.damage_count)
        callers_->damage_count = 0;
}

tp_status CallOptions::check(const tp_page_info& page, bool policyCounts) const {
    if ((callers_ && !given_) || (policyCounts && options_.on_damage > TP_ON_DAMAGE_KEEP)) return TP_E_ARGUMENT;
    const std::uint64_t most = options_.limits.max_pixels;
    return most != 0 && std::uint64_t{page.width} * page.height > most ? TP_E_LIMIT : TP_OK;
}

tp_status CallOptions::finish() {
    if (!tell()) return TP_E_CANCELLED;
    return options_.damage_count != 0 ? TP_DAMAGED : TP_OK;
}

void CallOptions::report(const tp_damage& damage) {
    if (options_.damage_count < options_.damage_capacity) options_.damage[options_.damage_count] = damage;
    ++options_.damage_count;
    if (given_ && options_.size >= offsetof(tp_options, damage_count) + sizeof options_.damage_count)
        callers_->damage_count = options_.damage_count;
}

g4::DamagePolicy CallOptions::policy() {
    constexpr g4::OnDamage ways[] = {g4::OnDamage::end, g4::OnDamage::paper, g4::OnDamage::keep};
    return {ways[options_.on_damage],
            [](void* self, const g4::TileDamage& damage) {
                auto& options = *static_cast<CallOptions*>(self);
                const std::uint64_t size = options.tiles_.tiles[damage.tile].size;
                options.report({static_cast<std::uint32_t>(damage.tile), damage.row,
                                std::min(static_cast<std::uint64_t>(damage.byte), size), kindOf(damage.reason),
                                damage.left, damage.top});
            },
            this};
}

tp_status statusOf(g4::WalkEnd end) { return end == g4::WalkEnd::noMemory ? TP_E_MEMORY : TP_E_DAMAGED; }

}  // namespace tilepress
