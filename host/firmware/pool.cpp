#include "pool.h"

#include <algorithm>
#include <cstring>

namespace korvane::host {

namespace {

constexpr std::uint64_t border_size = 24;  // bytes before and after each buffer
constexpr std::uint8_t border_byte = 0xB7;
constexpr std::uint8_t fresh_byte = 0xAF;
constexpr std::uint8_t freed_byte = 0xDF;

std::uint64_t round_up(std::uint64_t value, std::uint64_t multiple) {
    return (value + multiple - 1) / multiple * multiple;
}

std::string describe(std::uint64_t buffer, std::uint64_t size) {
    std::string address;
    for (std::uint64_t rest = buffer; rest != 0; rest >>= 4)
        address.insert(address.begin(), "0123456789abcdef"[rest & 0xF]);
    return "bytes beside the pool buffer of " + std::to_string(size) + " bytes at 0x" + address +
           " were overwritten";
}

}  // namespace

Pool::Pool(std::uint64_t base, std::uint64_t size) : mapping_(base, size) {}

uefi::Status Pool::allocate(std::uint64_t size, void** buffer) {
    if (buffer == nullptr) return uefi::invalid_parameter;
    if (size > mapping_.size()) return uefi::out_of_resources;
    // First fit between the buffers there are. Addresses are 8 more than a multiple of 16.
    std::uint64_t place = mapping_.base() + 8 + 2 * border_size;
    for (const auto& [address, taken] : blocks_) {
        if (place + size + border_size <= address - border_size) break;
        place = round_up(address + taken + 2 * border_size, 16) + 8;
    }
    if (place + size + border_size > mapping_.base() + mapping_.size()) return uefi::out_of_resources;
    blocks_[place] = size;
    std::memset(reinterpret_cast<void*>(place - border_size), border_byte, size + 2 * border_size);
    std::memset(reinterpret_cast<void*>(place), fresh_byte, size);
    *buffer = reinterpret_cast<void*>(place);
    return uefi::success;
}

uefi::Status Pool::release(void* buffer) {
    const auto block = blocks_.find(reinterpret_cast<std::uint64_t>(buffer));
    if (block == blocks_.end()) return uefi::invalid_parameter;
    if (!borders_are_whole(block->first, block->second))
        damage_.push_back(describe(block->first, block->second));
    std::memset(buffer, freed_byte, block->second);
    blocks_.erase(block);
    return uefi::success;
}

bool Pool::borders_are_whole(std::uint64_t buffer, std::uint64_t size) const {
    const auto* before = reinterpret_cast<const std::uint8_t*>(buffer - border_size);
    const auto* after = reinterpret_cast<const std::uint8_t*>(buffer + size);
    const auto is_border = [](std::uint8_t byte) { return byte == border_byte; };
    return std::all_of(before, before + border_size, is_border) &&
           std::all_of(after, after + border_size, is_border);
}

std::vector<std::string> Pool::damage() const {
    std::vector<std::string> all = damage_;
    for (const auto& [address, size] : blocks_)
        if (!borders_are_whole(address, size)) all.push_back(describe(address, size));
    return all;
}

std::uint64_t Pool::bytes() const {
    std::uint64_t sum = 0;
    for (const auto& [address, size] : blocks_)
        sum += size;
    return sum;
}

}  // namespace korvane::host
