// Loads a PE32+ application the way firmware does: sections, relocations, page protections.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>

#include "address_space.h"

namespace korvane::host {

struct LoadedImage {
    Mapping memory;             // the image, from its header to the end of its last section
    std::uint64_t entry_point;  // address
};

// Maps the application at `base`. On failure gives nothing and says why in `problem`. Sections that may be
// executed cannot be written, unless the file asks for both.
std::optional<LoadedImage> load_image(std::span<const std::uint8_t> file, std::uint64_t base,
                                      std::string& problem);

// The bytes of a file, or nothing when it cannot be read.
std::optional<std::string> read_file(const std::filesystem::path& path);

}  // namespace korvane::host
