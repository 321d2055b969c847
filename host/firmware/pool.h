// The firmware's pool: small buffers with watched borders.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "address_space.h"
#include "platform/uefi.h"

namespace korvane::host {

class Pool {
  public:
    Pool(std::uint64_t base, std::uint64_t size);

    // Buffers are aligned to 8 bytes and never to more, the least that firmware promises. They hold anything
    // but zeros. `out_of_resources` when the pool is full.
    uefi::Status allocate(std::uint64_t size, void** buffer);

    // `invalid_parameter` for an address that is no buffer of the pool.
    uefi::Status release(void* buffer);

    // What the image did wrong: bytes written just outside a buffer.
    std::vector<std::string> damage() const;

    std::uint64_t buffers() const { return blocks_.size(); }
    std::uint64_t bytes() const;
    const Mapping& mapping() const { return mapping_; }

  private:
    bool borders_are_whole(std::uint64_t buffer, std::uint64_t size) const;

    Mapping mapping_;
    std::map<std::uint64_t, std::uint64_t> blocks_;  // buffer address to size in bytes
    std::vector<std::string> damage_;                // found when a buffer was freed
};

}  // namespace korvane::host
