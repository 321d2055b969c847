// Page allocation and the memory map.
#pragma once

#include <cstdint>
#include <map>
#include <vector>

#include "address_space.h"
#include "config.h"
#include "platform/uefi.h"

namespace korvane::host {

// Bytes from one descriptor of the memory map to the next:
// more than the record's 40, as on much real firmware.
inline constexpr std::uint64_t descriptor_stride = 48;

class Memory {
  public:
    // Maps all regions at their addresses. The map lists them in ascending or descending order; readers must
    // cope with any.
    Memory(const std::vector<MemoryRegion>& regions, bool descending_map);

    // Enters memory into the map that is mapped by someone else.
    void add(const MemoryRegion& region);

    uefi::Status allocate_pages(uefi::AllocateType how, uefi::MemoryType type, std::uint64_t pages,
                                uefi::PhysicalAddress* address);
    // `access_denied` for pages whose attributes are not those that they were allocated with.
    uefi::Status free_pages(uefi::PhysicalAddress address, std::uint64_t pages);
    uefi::Status get_map(std::uint64_t* map_size, uefi::MemoryDescriptor* map, std::uint64_t* map_key,
                         std::uint64_t* descriptor_size, std::uint32_t* descriptor_version) const;

    // What may be done with allocated pages: combinations of `memory_read_protect`, `memory_execute_protect`
    // and `memory_read_only`. No page may be executed at first.
    uefi::Status get_attributes(uefi::PhysicalAddress address, std::uint64_t bytes,
                                std::uint64_t& attributes) const;
    uefi::Status change_attributes(uefi::PhysicalAddress address, std::uint64_t bytes, std::uint64_t set,
                                   std::uint64_t cleared);

    // What may be executed, and how many pages that are.
    std::vector<MemoryRegion> executable_regions() const;
    std::uint64_t executable_pages() const;

    // True for an address of its own memory, whatever that is used for.
    bool contains(std::uint64_t address) const;

    // Pages handed out and not given back.
    std::uint64_t allocated_pages() const { return allocated_pages_; }

    // The regions as the map shows them, in ascending order, neighbours of one type as one region.
    std::vector<MemoryRegion> regions() const;

  private:
    struct Range {
        std::uint64_t pages;
        uefi::MemoryType type;
        bool allocated;  // by allocate_pages, so that free_pages may take it back
        std::uint64_t attributes;
    };

    void make_present(const MemoryRegion& region);
    std::map<std::uint64_t, Range>::iterator find_free(std::uint64_t pages, std::uint64_t limit);
    bool is_whole(uefi::PhysicalAddress address, std::uint64_t pages, bool allocated) const;
    void split_at(std::uint64_t address);
    void change(std::uint64_t address, std::uint64_t pages, uefi::MemoryType type, bool allocated);

    std::vector<Mapping> mappings_;
    std::map<std::uint64_t, Range> ranges_;  // by base; they never overlap
    bool descending_map_;
    std::uint64_t allocated_pages_ = 0;
    std::uint64_t map_key_ = 1;  // changes with every change to the map
};

}  // namespace korvane::host
