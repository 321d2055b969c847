#include "explorer/memory/memory_range.h"

#include "explorer/report.h"

namespace korvane {

bool check_range(const MemoryRange& range) {
    if (range.end < range.start) {
        print_line("End address is below start address.");
        return false;
    }
    if (range.start == 0 && range.end == last_address) {
        print_line("Range is too large.");
        return false;
    }
    return true;
}

bool check_wrap(std::uint64_t address, std::uint64_t count) {
    if (fits_address_space(address, count)) return true;
    print_line("Address range wraps past FFFFFFFFFFFFFFFF.");
    return false;
}

}  // namespace korvane
