#include "platform/device_path.h"

#include "platform/firmware.h"

namespace korvane {
namespace {

constexpr std::size_t header_bytes = sizeof(uefi::DevicePathNode);
constexpr std::size_t longest_path = 4096;

std::size_t node_length(const uefi::DevicePathNode& node) {
    return static_cast<std::size_t>(node.Length[0] | node.Length[1] << 8);
}

bool ends_path(const uefi::DevicePathNode& node) {
    return node.Type == uefi::device_path_end && node.SubType == uefi::device_path_end_entire;
}

}  // namespace

std::optional<DevicePathElement> DevicePathReader::next() {
    if (rest_.size() < header_bytes) return std::nullopt;
    const auto node = read_unaligned<uefi::DevicePathNode>(rest_.data());
    const std::size_t length = node_length(node);
    if (length < header_bytes || length > rest_.size() || ends_path(node)) return std::nullopt;
    const DevicePathElement element{node.Type, node.SubType,
                                    rest_.subspan(header_bytes, length - header_bytes)};
    rest_ = rest_.subspan(length);
    return element;
}

std::span<const std::uint8_t> whole_device_path(const void* start) {
    const auto* path = static_cast<const std::uint8_t*>(start);
    if (path == nullptr) return {};
    std::size_t length = 0;
    while (length < longest_path) {
        const auto node = read_unaligned<uefi::DevicePathNode>(path + length);
        if (ends_path(node)) return {path, length + header_bytes};
        if (node_length(node) < header_bytes || node_length(node) > longest_path - length) break;
        length += node_length(node);
    }
    return {path, length};
}

std::span<const std::uint8_t> device_path_of(uefi::Handle handle) {
    return whole_device_path(find_interface(handle, uefi::device_path_guid));
}

}  // namespace korvane
