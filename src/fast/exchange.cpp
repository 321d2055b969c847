// Specialised SWAP: the keyword holds the first place, the comma the second one.
#include "fast/choose.h"
#include "fast/links.h"
#include "fast/places.h"
#include "fast/statement.h"
#include "platform/memory.h"

namespace korvane::fast {
namespace {

template <int size>
struct Datum {
    std::uint8_t bytes[size];
};

template <int size>
std::uint64_t swap_places(Current at, std::uint64_t budget) {
    // Subscripts may take string space.
    std::uint8_t* string_top = arenas.FREETOP;
    std::uint8_t* first = place_address<size>(at);
    std::uint8_t* second = first == nullptr ? nullptr : place_address<size>(at->step.inner);
    if (__builtin_expect(second == nullptr, false)) return fall_back(at, budget, string_top);
    const auto kept = read_unaligned<Datum<size>>(first);
    write_unaligned(first, read_unaligned<Datum<size>>(second));
    write_unaligned(second, kept);
    return proceed(at->step.next, budget);
}

Execute choose_swap(Type type) {
    return choose<2, 4, 8, 16>(storage_size(type),
                               [](auto size) -> Execute { return guarded<swap_places<size()>>; });
}

}  // namespace

bool specialise_swap(Token* at) {
    Token* comma = at + 1;
    if (!bind_place(at, comma) || comma->kind != ',') return false;
    Token* end = comma + 1;
    if (!bind_place(comma, end) || place_type(at) != place_type(comma)) return false;
    at->step.inner = comma;
    at->step.next = link_behind(end);
    at->execute = choose_swap(place_type(at));
    return true;
}

}  // namespace korvane::fast
