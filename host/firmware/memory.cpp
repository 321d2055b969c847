#include "memory.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace korvane::host {

namespace {

using uefi::MemoryType;
using uefi::page_size;

// Fresh memory holds anything on real firmware. Large blocks are only spoilt at their ends, so that they cost
// no memory before they are used.
void spoil(std::uint64_t address, std::uint64_t bytes) {
    constexpr std::uint64_t end = 64 * 1024;
    auto* first = reinterpret_cast<std::uint8_t*>(address);
    std::memset(first, 0xA5, std::min(bytes, end));
    if (bytes > end) std::memset(first + bytes - end, 0xA5, end);
}

std::uint64_t end_of(std::uint64_t base, std::uint64_t pages) {
    return base + pages * page_size;
}

constexpr std::uint64_t all_attributes =
    uefi::memory_read_protect | uefi::memory_execute_protect | uefi::memory_read_only;
constexpr std::uint64_t first_attributes = uefi::memory_execute_protect;

Access access(std::uint64_t attributes) {
    if ((attributes & uefi::memory_read_protect) != 0) return Access::none;
    const bool writable = (attributes & uefi::memory_read_only) == 0;
    if ((attributes & uefi::memory_execute_protect) != 0) return writable ? Access::read_write : Access::read;
    return writable ? Access::all : Access::read_execute;
}

bool may_be_allocated(MemoryType type) {
    return type <= MemoryType::EfiPersistentMemory;
}

}  // namespace

Memory::Memory(const std::vector<MemoryRegion>& regions, bool descending_map)
    : descending_map_(descending_map) {
    for (const MemoryRegion& region : regions)
        add(region);
    // Neighbouring regions share one mapping: guard pages stand only where memory ends.
    auto range = ranges_.begin();
    while (range != ranges_.end()) {
        const std::uint64_t base = range->first;
        std::uint64_t end = base;
        while (range != ranges_.end() && range->first == end) {
            end = end_of(range->first, range->second.pages);
            ++range;
        }
        mappings_.emplace_back(base, end - base);
    }
    for (const MemoryRegion& region : regions)
        make_present(region);
}

void Memory::make_present(const MemoryRegion& region) {
    const std::uint64_t start = end_of(region.base, region.pages - region.present_pages);
    for (Mapping& mapping : mappings_)
        if (region.present_pages != 0 && mapping.contains(start))
            mapping.make_present(start - mapping.base(), region.present_pages * page_size);
}

void Memory::add(const MemoryRegion& region) {
    if (region.pages != 0) ranges_[region.base] = {region.pages, region.type, false, first_attributes};
    ++map_key_;
}

// The highest place that is large enough, as firmware commonly does.
std::map<std::uint64_t, Memory::Range>::iterator Memory::find_free(std::uint64_t pages, std::uint64_t limit) {
    auto best = ranges_.end();
    for (auto range = ranges_.begin(); range != ranges_.end(); ++range) {
        const bool fits =
            range->second.type == MemoryType::EfiConventionalMemory && range->second.pages >= pages;
        if (fits && end_of(range->first, pages) - 1 <= limit) best = range;
    }
    return best;
}

bool Memory::is_whole(uefi::PhysicalAddress address, std::uint64_t pages, bool allocated) const {
    while (pages != 0) {
        auto range = ranges_.upper_bound(address);
        if (range == ranges_.begin()) return false;
        --range;
        const std::uint64_t inside = (address - range->first) / page_size;
        if (inside >= range->second.pages) return false;
        const bool is_free =
            range->second.type == MemoryType::EfiConventionalMemory && !range->second.allocated;
        if (allocated ? !range->second.allocated : !is_free) return false;
        const std::uint64_t step = std::min(pages, range->second.pages - inside);
        pages -= step;
        address += step * page_size;
    }
    return true;
}

void Memory::split_at(std::uint64_t address) {
    auto range = ranges_.upper_bound(address);
    if (range == ranges_.begin()) return;
    --range;
    const std::uint64_t inside = (address - range->first) / page_size;
    if (inside == 0 || inside >= range->second.pages) return;
    Range rest = range->second;
    rest.pages -= inside;
    range->second.pages = inside;
    ranges_[address] = rest;
}

void Memory::change(std::uint64_t address, std::uint64_t pages, MemoryType type, bool allocated) {
    split_at(address);
    split_at(end_of(address, pages));
    for (auto range = ranges_.find(address); range != ranges_.end() && range->first < end_of(address, pages);
         ++range) {
        range->second.type = type;
        range->second.allocated = allocated;
    }
    ++map_key_;
}

uefi::Status Memory::allocate_pages(uefi::AllocateType how, MemoryType type, std::uint64_t pages,
                                    uefi::PhysicalAddress* address) {
    if (address == nullptr || !may_be_allocated(type) || type == MemoryType::EfiConventionalMemory ||
        type == MemoryType::EfiPersistentMemory)
        return uefi::invalid_parameter;
    constexpr std::uint64_t most_pages = std::uint64_t{1} << 52;
    if (pages == 0 || pages >= most_pages) return uefi::not_found;

    std::uint64_t base = 0;
    switch (how) {
        case uefi::AllocateType::AllocateAddress:
            base = *address;
            if (base % page_size != 0) return uefi::not_found;
            if (!is_whole(base, pages, false)) return uefi::not_found;
            break;
        case uefi::AllocateType::AllocateAnyPages:
        case uefi::AllocateType::AllocateMaxAddress: {
            const std::uint64_t limit =
                how == uefi::AllocateType::AllocateAnyPages ? ~std::uint64_t{0} : *address;
            const auto range = find_free(pages, limit);
            if (range == ranges_.end()) return uefi::out_of_resources;
            const std::uint64_t highest = end_of(range->first, range->second.pages - pages);
            const std::uint64_t below_limit = limit == ~std::uint64_t{0}
                                                  ? highest
                                                  : (limit + 1 - pages * page_size) / page_size * page_size;
            base = std::min(highest, below_limit);
            break;
        }
        default:
            return uefi::invalid_parameter;
    }
    change(base, pages, type, true);
    allocated_pages_ += pages;
    spoil(base, pages * page_size);
    *address = base;
    return uefi::success;
}

uefi::Status Memory::free_pages(uefi::PhysicalAddress address, std::uint64_t pages) {
    if (address % page_size != 0 || pages == 0) return uefi::invalid_parameter;
    if (!is_whole(address, pages, true)) return uefi::not_found;
    std::uint64_t attributes = 0;
    if (uefi::is_error(get_attributes(address, pages * page_size, attributes)) ||
        attributes != first_attributes)
        return uefi::access_denied;
    change(address, pages, MemoryType::EfiConventionalMemory, false);
    allocated_pages_ -= pages;
    return uefi::success;
}

uefi::Status Memory::get_attributes(uefi::PhysicalAddress address, std::uint64_t bytes,
                                    std::uint64_t& attributes) const {
    if (bytes == 0) return uefi::invalid_parameter;
    if (address % page_size != 0 || bytes % page_size != 0) return uefi::unsupported;
    if (!is_whole(address, bytes / page_size, true)) return uefi::no_mapping;
    auto range = std::prev(ranges_.upper_bound(address));
    attributes = range->second.attributes;
    for (; range != ranges_.end() && range->first < address + bytes; ++range)
        if (range->second.attributes != attributes) return uefi::no_mapping;
    return uefi::success;
}

uefi::Status Memory::change_attributes(uefi::PhysicalAddress address, std::uint64_t bytes, std::uint64_t set,
                                       std::uint64_t cleared) {
    if (bytes == 0 || (set | cleared) == 0 || ((set | cleared) & ~all_attributes) != 0)
        return uefi::invalid_parameter;
    if (address % page_size != 0 || bytes % page_size != 0) return uefi::unsupported;
    if (!is_whole(address, bytes / page_size, true)) return uefi::unsupported;
    split_at(address);
    split_at(address + bytes);
    for (auto range = ranges_.find(address); range != ranges_.end() && range->first < address + bytes;
         ++range) {
        std::uint64_t& attributes = range->second.attributes;
        attributes = (attributes | set) & ~cleared;
        for (Mapping& mapping : mappings_)
            if (mapping.contains(range->first))
                mapping.protect(range->first - mapping.base(), range->second.pages * page_size,
                                access(attributes));
    }
    return uefi::success;
}

std::vector<MemoryRegion> Memory::executable_regions() const {
    std::vector<MemoryRegion> found;
    for (const auto& [base, range] : ranges_) {
        if ((range.attributes & uefi::memory_execute_protect) != 0) continue;
        if (!found.empty() && end_of(found.back().base, found.back().pages) == base)
            found.back().pages += range.pages;
        else
            found.push_back({base, range.pages, range.type});
    }
    return found;
}

std::uint64_t Memory::executable_pages() const {
    std::uint64_t pages = 0;
    for (const MemoryRegion& region : executable_regions())
        pages += region.pages;
    return pages;
}

bool Memory::contains(std::uint64_t address) const {
    return std::any_of(
        mappings_.begin(), mappings_.end(),
        [=](const Mapping& mapping) { return mapping.contains(address); });
}

std::vector<MemoryRegion> Memory::regions() const {
    std::vector<MemoryRegion> merged;
    for (const auto& [base, range] : ranges_)
        if (!merged.empty() && merged.back().type == range.type &&
            end_of(merged.back().base, merged.back().pages) == base)
            merged.back().pages += range.pages;
        else
            merged.push_back({base, range.pages, range.type});
    return merged;
}

uefi::Status Memory::get_map(std::uint64_t* map_size, uefi::MemoryDescriptor* map, std::uint64_t* map_key,
                             std::uint64_t* descriptor_size, std::uint32_t* descriptor_version) const {
    if (map_size == nullptr) return uefi::invalid_parameter;
    std::vector<MemoryRegion> all = regions();
    if (descending_map_) std::reverse(all.begin(), all.end());
    const std::uint64_t needed = all.size() * descriptor_stride;
    if (descriptor_size != nullptr) *descriptor_size = descriptor_stride;
    if (descriptor_version != nullptr) *descriptor_version = 1;
    if (*map_size < needed) {
        *map_size = needed;
        return uefi::buffer_too_small;
    }
    if (map == nullptr) return uefi::invalid_parameter;
    auto* record = reinterpret_cast<std::uint8_t*>(map);
    for (const MemoryRegion& region : all) {
        // The bytes that only this firmware knows of hold no zeros, nor do the record's padding bytes.
        std::memset(record, 0xCC, descriptor_stride);
        uefi::MemoryDescriptor descriptor;
        std::memcpy(&descriptor, record, sizeof descriptor);
        descriptor.Type = region.type;
        descriptor.PhysicalStart = region.base;
        descriptor.VirtualStart = 0;
        descriptor.NumberOfPages = region.pages;
        descriptor.Attribute = region.type == MemoryType::EfiMemoryMappedIO ? 1 : 0xF;
        std::memcpy(record, &descriptor, sizeof descriptor);
        record += descriptor_stride;
    }
    *map_size = needed;
    if (map_key != nullptr) *map_key = map_key_;
    return uefi::success;
}

}  // namespace korvane::host
