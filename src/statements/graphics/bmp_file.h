// Reading BMP files: the uncompressed ones of 24 and 32 bits a pixel.
#pragma once

#include <cstdint>
#include <string_view>

namespace korvane {

inline constexpr std::uint32_t max_bitmap_side = 8192;

struct BmpImage {
    std::uint32_t* pixels;  // width * height words 0x00RRGGBB in the data arena, row by row from the top
    std::uint32_t width;
    std::uint32_t height;
};

// Loads a file of the current volume. The memory comes from the low end of the data arena; what a failing
// load has taken is not given back. Raises "File not found", "Bad file mode", "Illegal function call" and
// "Out of memory"; the image is meaningless then.
BmpImage load_bmp(std::string_view name);

}  // namespace korvane
