#include "native/variable_registers.h"

#include <algorithm>

namespace korvane::native {
namespace {

struct Candidate {
    const void* storage;
    Type type;
    std::uint32_t weight;
    std::int32_t as_subscript;
};

constexpr int most_subscripts = 4;       // r11 to r8, where expressions do not need them
constexpr int weight_bits_per_loop = 3;  // a loop is taken to have eight turns

}  // namespace

void VariableRegisters::choose(Region& region) {
    std::array<Candidate, 64> candidates;
    std::size_t count = 0;
    const int most_wholes = std::min(most_subscripts, most_whole_registers - region.most_wholes());
    int wholes = 0;
    for (const Region::Use& use : region.all_uses()) {
        if (!is_floating(use.type) || !region[use.place].is_native) continue;
        const std::int32_t weight = 1 << weight_bits_per_loop * region[use.place].depth;
        std::size_t i = 0;
        while (i != count && candidates[i].storage != use.storage)
            ++i;
        if (i == candidates.size()) continue;
        if (i == count) candidates[count++] = {use.storage, use.type, 0, 0};
        candidates[i].weight += static_cast<std::uint32_t>(weight);
        if (use.way == Region::Way::subscript) candidates[i].as_subscript += 2 * weight;
        if (use.way == Region::Way::written) candidates[i].as_subscript -= weight;
    }
    for (used = 0; used != most; ++used) {
        Candidate* best = nullptr;
        for (std::size_t i = 0; i != count; ++i)
            if (candidates[i].weight > (best == nullptr ? 0 : best->weight)) best = &candidates[i];
        if (best == nullptr) return;
        const auto where = static_cast<Vector>(static_cast<std::size_t>(Vector::xmm7) + used);
        Register whole = KeptVariable::no_register;
        if (best->as_subscript > 0 && wholes < most_wholes)
            whole = static_cast<Register>(static_cast<int>(Register::r11) - wholes++);
        kept[used] = {best->storage, best->type, where, whole};
        best->weight = 0;
    }
}

const KeptVariable* VariableRegisters::find(const void* storage) const {
    for (std::size_t i = 0; i != used; ++i)
        if (kept[i].storage == storage) return &kept[i];
    return nullptr;
}

}  // namespace korvane::native
