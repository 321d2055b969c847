#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "explorer/line_text.h"
#include "explorer/report.h"
#include "platform/device_path.h"

namespace korvane {

// A node in the text form of UEFI 2.10, section 10.6, as in `Pci(0x1F,0x2)`, `Sata(0x0,0xFFFF,0x0)` or
// `HD(1,GPT,...)`; a file path is its own text. A node of an unknown kind, or too short for its kind, is
// `Path(type,subtype,data)`. Data of more than 32 bytes are cut and end in "...".
LineText device_path_node_text(const DevicePathElement& node);

// Lists a whole path, its nodes joined by "/", broken between nodes into lines of at most 79 columns that
// begin at column `indent`. An empty path gives no line.
void list_device_path(PagedReport& listing, std::span<const std::uint8_t> path, std::size_t indent);
void list_device_path(PagedReport& listing, uefi::Handle handle, std::size_t indent);

// Puts an identifier in its registry form, as in 8BE4DF61-93CA-11D2-AA0D-00E098032B8C.
void put_guid(LineText& line, const uefi::Guid& guid);

}  // namespace korvane
