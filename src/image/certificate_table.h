// Where a signature begins in an image file.
#pragma once

#include <cstdint>

#include "files/file_handle.h"

namespace korvane {

// The file offset of the attribute certificate table that ends a signed PE32+ image of `size` bytes; `size`
// itself when the image carries none or its headers make no sense. Moves the file's position.
std::uint64_t find_certificate_table(const FileHandle& image, std::uint64_t size);

}  // namespace korvane
