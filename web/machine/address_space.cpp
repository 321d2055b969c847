// The module's memory as the machine's. It is zero where nobody has been, and nothing in it can be forbidden.
#include "address_space.h"

#include "give_up.h"

namespace korvane::host {

namespace {

constexpr std::uint64_t memory_page = 65536;

}  // namespace

Mapping::Mapping(std::uint64_t base, std::uint64_t size) : base_(base), size_(size) {
    const std::uint64_t needed = (base + size + memory_page - 1) / memory_page;
    const std::uint64_t there = __builtin_wasm_memory_size(0);
    if (needed > there && __builtin_wasm_memory_grow(0, needed - there) == static_cast<std::uint64_t>(-1))
        give_up("the browser does not have as much memory as the machine");
}

Mapping::~Mapping() = default;

void Mapping::make_present(std::uint64_t, std::uint64_t) {}

void Mapping::protect(std::uint64_t, std::uint64_t, Access) {}

}  // namespace korvane::host
