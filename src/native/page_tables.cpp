#include "native/page_tables.h"

#include "platform/processor.h"
#include "platform/uefi.h"

namespace korvane::native {
namespace {

// An entry of a table, on every level the same for what matters here.
constexpr std::uint64_t entry_present = 1;
constexpr std::uint64_t entry_writable = 1 << 1;
constexpr std::uint64_t entry_user = 1 << 2;
constexpr std::uint64_t entry_large = 1 << 7;  // on levels 2 and 3: a page of 2 MiB or 1 GiB, and no table
constexpr std::uint64_t entry_no_execute = std::uint64_t{1} << 63;
constexpr std::uint64_t entry_address = 0x000FFFFFFFFFF000;

constexpr std::uint32_t page_bits = 12;
constexpr std::uint32_t index_bits = 9;  // of an address choose the entry on each level
constexpr std::uint32_t highest_large_level = 3;

// Firmware's memory lies at its own addresses, in the lower half of them. An entry that leads elsewhere holds
// more than an address, the mark of encrypted memory for example: nothing to be followed.
constexpr std::uint64_t addressable_bits = 47;

constexpr std::uint64_t control_4_five_levels = 1 << 12;
constexpr std::uint64_t control_4_no_user_code = 1 << 20;

bool page_allows_code(const Translation& translation, std::uint64_t address) {
    std::uint64_t table = translation.root;
    std::uint64_t all_user = entry_user;
    for (std::uint32_t level = translation.levels; level != 0; --level) {
        table &= entry_address;
        if (table >> addressable_bits != 0) return false;
        const std::uint32_t shift = page_bits + (level - 1) * index_bits;
        const std::uint64_t index = address >> shift & ((1 << index_bits) - 1);
        const std::uint64_t entry = reinterpret_cast<const volatile std::uint64_t*>(table)[index];
        if ((entry & entry_present) == 0 || (entry & entry_writable) == 0) return false;
        // Where pages can be forbidden to be executed at all: elsewhere the bit would be a fault itself.
        if ((entry & entry_no_execute) != 0) return false;
        all_user &= entry;
        const bool is_large = level != 1 && (entry & entry_large) != 0;
        if (is_large && level > highest_large_level) return false;
        if (is_large || level == 1) {
            const std::uint64_t page = ~std::uint64_t{0} << shift;
            if (all_user != 0 && translation.refuses_user_pages) return false;
            return (entry & entry_address & page) == (address & page);
        }
        table = entry;
    }
    return false;
}

}  // namespace

Translation current_translation() {
    const std::uint64_t control_4 = processor_control_4();
    return {processor_control_3(), (control_4 & control_4_five_levels) != 0 ? 5U : 4U,
            (control_4 & control_4_no_user_code) != 0};
}

bool allows_code(const Translation& translation, std::uint64_t address, std::uint64_t bytes) {
    if (address >> addressable_bits != 0) return false;
    for (std::uint64_t at = 0; at < bytes; at += uefi::page_size)
        if (!page_allows_code(translation, address + at)) return false;
    return bytes != 0;
}

}  // namespace korvane::native
