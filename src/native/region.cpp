#include "native/region.h"

#include "fast/links.h"
#include "fast/records.h"
#include "program/execution.h"
#include "program/keywords.h"

namespace korvane::native {
namespace {

constexpr std::uint8_t deepest = 4;  // deeper loops count no more

std::size_t slot_of(const Token* at) {
    return reinterpret_cast<std::uintptr_t>(at) / sizeof(Token);
}

// Where a statement stands in the program: tokens lie in the order in which lines ran first.
std::uint64_t order_of(const Token* at) {
    const Token* end = fast::end_of_line(at);
    constexpr std::uint64_t most = max_token_records;
    return (std::uint64_t{fast::as<fast::EndRecord>(end).line} + 1) * most -
           static_cast<std::uint64_t>(end - at);
}

}  // namespace

void Region::clear() {
    used = 0;
    sequence_count = 0;
    use_count = 0;
    deepest_whole = 0;
    jump_count = 0;
    pending.count = 0;
    table.fill(0);
}

Place* Region::find(const Token* at) {
    for (std::size_t slot = slot_of(at);; ++slot) {
        const std::uint16_t index = table[slot % slots];
        if (index == 0) return nullptr;
        if (places[index - 1U].at == at) return &places[index - 1U];
    }
}

Place* Region::find_or_add(Token* at) {
    if (Place* known = find(at)) return known;
    if (used == most_places) return nullptr;
    places[used] = Place{};
    places[used].at = at;
    std::size_t slot = slot_of(at);
    while (table[slot % slots] != 0)
        ++slot;
    table[slot % slots] = static_cast<std::uint16_t>(++used);
    return &places[used - 1];
}

void Region::lead_to(Token* at) {
    if (pending.count != pending.tokens.size()) pending.tokens[pending.count++] = at;
}

void Region::note_use(const void* storage, Type type, Way way, const Place& place) {
    if (use_count == uses.size()) return;
    uses[use_count++] = {storage, type, way, static_cast<std::uint16_t>(&place - places.data())};
}

bool Region::note_targets(const Place& place, std::size_t first) {
    const auto from = static_cast<std::uint16_t>(&place - places.data());
    for (std::size_t i = first; i != pending.count; ++i) {
        const Place* target = find_or_add(pending.tokens[i]);
        if (target == nullptr) return false;
        if (jump_count == jumps.size()) continue;
        jumps[jump_count++] = {from, static_cast<std::uint16_t>(target - places.data())};
    }
    return true;
}

// A NEXT most often goes on with its loop, which is what it leads to first.
void Region::find_runs() {
    for (std::size_t i = 0; i != used; ++i)
        places[i].run = places[i].is_native ? longest_run : 0;
    for (int round = 0; round != longest_run; ++round) {
        std::array<std::uint8_t, most_places> longest{};
        for (std::size_t j = 0; j != jump_count; ++j) {
            std::uint8_t& best = longest[jumps[j].from];
            if (best != 0 && places[jumps[j].from].at->kind == KW_NEXT) continue;
            best = std::max<std::uint8_t>(best, static_cast<std::uint8_t>(places[jumps[j].to].run + 1));
        }
        for (std::size_t i = 0; i != used; ++i)
            if (places[i].is_native && longest[i] != 0) places[i].run = std::min(longest[i], longest_run);
    }
}

void Region::find_loops() {
    std::array<std::uint64_t, most_places> order;
    for (std::size_t i = 0; i != used; ++i)
        order[i] = order_of(places[i].at);
    for (std::size_t j = 0; j != jump_count; ++j) {
        const std::uint64_t first = order[jumps[j].to];
        const std::uint64_t last = order[jumps[j].from];
        if (first > last) continue;
        for (std::size_t i = 0; i != used; ++i)
            if (order[i] >= first && order[i] <= last)
                places[i].depth = static_cast<std::uint8_t>(std::min<int>(places[i].depth + 1, deepest));
    }
}

}  // namespace korvane::native
