#include "values/array_keepers.h"

#include <array>

#include "platform/memory.h"
#include "program/arenas.h"

namespace korvane {
namespace {

constexpr std::uint16_t most_keepers = 1023;
constexpr std::size_t chains = 64;

struct Keeper {
    const ArrayBlock* array;
    Token* statement;
    std::uint16_t next;  // in its chain; 0 for none
};

struct Keepers {
    std::uint32_t generation;                  // which all of it is about
    std::uint32_t unknown_in;                  // the generation in which something unknown keeps arrays
    std::uint16_t count;                       // that have been noted
    std::uint16_t first[chains];               // of each chain; 0 for none
    std::array<Keeper, most_keepers + 1> all;  // the first is not used
};
Keepers keepers;

std::uint16_t& chain_of(const ArrayBlock* array) {
    constexpr std::uintptr_t smallest_array = 32;
    return keepers.first[reinterpret_cast<std::uintptr_t>(array) / smallest_array % chains];
}

}  // namespace

void note_array_keeper(const ArrayBlock* array, Token* at) {
    if (keepers.generation != arenas.generation) {
        keepers.generation = arenas.generation;
        keepers.count = 0;
        fill_bytes(keepers.first, 0, sizeof keepers.first);
    }
    if (keepers.count == most_keepers) return note_unknown_array_keeper();
    std::uint16_t& first = chain_of(array);
    keepers.all[++keepers.count] = {array, at, first};
    first = keepers.count;
}

void note_unknown_array_keeper() {
    keepers.unknown_in = arenas.generation;
}

bool forget_array_keepers(const ArrayBlock* array) {
    if (keepers.unknown_in == arenas.generation) return false;
    if (keepers.generation != arenas.generation) return true;
    for (std::uint16_t* link = &chain_of(array); *link != 0;) {
        Keeper& keeper = keepers.all[*link];
        if (keeper.array == array) {
            keeper.statement->generation = 0;
            *link = keeper.next;
        } else {
            link = &keeper.next;
        }
    }
    return true;
}

}  // namespace korvane
