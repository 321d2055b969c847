#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "platform/memory.h"
#include "platform/uefi.h"

namespace korvane {

// One node of a device path. The body is what follows the four bytes of its header.
struct DevicePathElement {
    std::uint8_t type;
    std::uint8_t sub_type;
    std::span<const std::uint8_t> body;

    bool ends_instance() const { return type == uefi::device_path_end; }

    // A little-endian field of the body; 0 where the body is too short to hold it.
    template <typename Field>
    Field field(std::size_t offset) const {
        if (offset > body.size() || body.size() - offset < sizeof(Field)) return Field{};
        return read_unaligned<Field>(body.data() + offset);
    }
};

// Takes a device path apart. Its bytes may be anything: the reader ends at the end node, at a node whose
// length is impossible and at the end of the bytes.
class DevicePathReader {
  public:
    explicit DevicePathReader(std::span<const std::uint8_t> path) : rest_(path) {}

    std::optional<DevicePathElement> next();

  private:
    std::span<const std::uint8_t> rest_;
};

// A device path, its end node included; empty for null. A path without an end node is cut after some 4 KiB,
// far more than any real one has.
std::span<const std::uint8_t> whole_device_path(const void* path);

// The same for the device path of a handle; empty when it has none.
std::span<const std::uint8_t> device_path_of(uefi::Handle handle);

}  // namespace korvane
