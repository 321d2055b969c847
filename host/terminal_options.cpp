#include "terminal_options.h"

#include <algorithm>

namespace korvane::host {
namespace {

constexpr std::uint32_t cell_width = 8;
constexpr std::uint32_t cell_height = 16;

/// 256 MiB apart from the firmware's other memory: the largest region, which becomes the data arena.
constexpr MemoryRegion spare_memory = {0x20000000, 0x10000, uefi::MemoryType::EfiConventionalMemory};

}  // namespace

Config terminal_machine(const TerminalOptions& options, std::uint32_t columns, std::uint32_t rows) {
    Config config;
    MemoryRegion spare = spare_memory;
    spare.present_pages = std::min(spare.pages, options.present_mebibytes * 256);
    config.memory.push_back(spare);
    config.width = (options.columns ? options.columns : columns) * cell_width;
    config.height = (options.rows ? options.rows : rows) * cell_height;
    config.modes.insert(config.modes.begin(), {config.width, config.height, config.width});
    if (!options.volume.empty()) config.volumes.push_back({.folder = options.volume});
    return config;
}

std::string start_keys(const TerminalOptions& options) {
    return options.program.empty() ? std::string{} : "LOAD \"" + options.program + "\"\rRUN\r";
}

}  // namespace korvane::host
