#include "config.h"

namespace korvane::host {

// All addresses stay below 2 GiB, where AddressSanitizer leaves the address space to the program.
std::vector<MemoryRegion> default_memory() {
    using uefi::MemoryType;
    return {
        {0x00020000, 0x7F, MemoryType::EfiConventionalMemory},
        {0x0009F000, 1, MemoryType::EfiReservedMemoryType},
        {0x10000000, 0x4000, MemoryType::EfiConventionalMemory},  // 64 MiB
        {0x14000000, 4, MemoryType::EfiACPIMemoryNVS},
        {0x14004000, 16, MemoryType::EfiConventionalMemory},
        {0x18000000, 0x3800, MemoryType::EfiConventionalMemory},  // 56 MiB
        {0x1B800000, 2, MemoryType::EfiUnusableMemory},
    };
}

std::vector<GraphicsMode> default_graphics_modes() {
    return {
        {640, 480, 640},   {800, 600, 832},  // lines padded to a multiple of 64 pixels
        {1024, 768, 1024}, {1280, 1024, 1280}, {1920, 1080, 1920}, {640, 2048, 640},
    };
}

}  // namespace korvane::host
