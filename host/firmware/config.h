// What the hosted firmware pretends to be: its memory, screen modes, volumes, disks, variables and clock.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/uefi.h"

namespace korvane::host {

// A region of the machine's memory. Regions are mapped at their own addresses in this process, so that they
// are identity-mapped for the image as on real firmware.
struct MemoryRegion {
    std::uint64_t base;   // page-aligned
    std::uint64_t pages;  // of 4 KiB
    uefi::MemoryType type;
    // At its end, taken from the host at once instead of when they are touched.
    std::uint64_t present_pages = 0;
};

// One mode of the graphics output protocol.
struct GraphicsMode {
    std::uint32_t width;   // pixels
    std::uint32_t height;  // pixels
    std::uint32_t pitch;   // pixels per scan line, at least the width
    uefi::PixelFormat format = uefi::PixelFormat::PixelBlueGreenRedReserved8BitPerColor;
};

// A simple file system: a folder of the host, out of which no name leads.
struct VolumeConfig {
    std::string folder;  // its name on the host
    bool read_only = false;
    std::uint64_t size = std::uint64_t{1} << 40;      // bytes that it tells to have in all
    std::uint64_t capacity = std::uint64_t{1} << 40;  // bytes by which files may still grow
    std::u16string label = u"KORVANE";
    // Programs (files named *.BAS) are text of the host; the image sees them in code page 437, and what it
    // writes is converted when it closes the file.
    bool host_programs = false;
    // What the device path ends with: nothing, so that there is no device path; a USB device; or a partition
    // of one.
    enum class DevicePath { none, stick, partition } device_path = DevicePath::none;
};

// A block device over a raw image file.
struct BlockDeviceConfig {
    std::string image;               // its name on the host
    std::uint32_t block_size = 512;  // bytes
    std::uint32_t io_align = 0;      // bytes; 0 and 1 accept any buffer address
    std::uint32_t media_id = 1;
    bool removable = false;
    bool media_present = true;
    bool logical_partition = false;
    bool read_only = false;
    std::optional<std::uint64_t> last_block;       // instead of the one that follows from the file's size
    std::vector<std::uint64_t> unreadable_blocks;  // LBAs whose reading is a device error
};

// A firmware variable.
struct Variable {
    std::u16string name;
    uefi::Guid vendor = uefi::global_variable_guid;
    std::uint32_t attributes = 7;  // non-volatile, boot-services and runtime access
    std::vector<std::uint8_t> data;
};

// 64 MiB that become the data arena, a second region from which everything else is taken, and small or
// reserved ones that a reader of the map must cope with.
std::vector<MemoryRegion> default_memory();

// The usual resolutions, one very tall mode, and one whose lines are longer than its width.
std::vector<GraphicsMode> default_graphics_modes();

// Where the firmware's own memory lies.
struct MachineLayout {
    std::uint64_t stack = 0x0A000000;            // the image's
    std::uint64_t tables = 0x0B000000;           // system and service tables
    std::uint64_t platform_tables = 0x0B100000;  // ACPI and SMBIOS
    std::uint64_t pool = 0x0C000000;
    std::uint64_t framebuffer = 0x70000000;
};

// What the firmware does about memory that is to be executed.
enum class CodeMemory : std::uint8_t {
    offered,  // the memory attribute protocol, and what it is told
    refused,  // the protocol is there and changes nothing
    hidden,   // there is no such protocol
};

struct Config {
    MachineLayout layout;
    std::vector<MemoryRegion> memory = default_memory();
    bool descending_map = false;  // the memory map lists the highest region first
    std::vector<GraphicsMode> modes = default_graphics_modes();
    std::uint32_t width = 1024;   // of the mode that is current at start
    std::uint32_t height = 768;   // the same
    bool graphics_output = true;  // false: no graphics output protocol
    bool cpu_protocol = true;     // false: no CPU architectural protocol
    CodeMemory code_memory = CodeMemory::offered;

    std::vector<VolumeConfig> volumes;  // the image comes from the first one, if there is one
    // Where the image says it was loaded from. The image file is found there even when the folder does not
    // hold it, so that a host folder needs no copy of the interpreter; it is then not listed.
    std::u16string image_path = u"\\EFI\\BOOT\\BOOTX64.EFI";

    std::optional<std::u16string> load_options;  // without: a null options pointer
    std::vector<BlockDeviceConfig> block_devices;
    std::vector<Variable> variables;
    std::optional<uefi::Time> time;  // a clock that stands still; without: the host's local time
    bool acpi_table = true;
    bool smbios_table = true;

    // Bytes of stack for the image. Firmware guarantees 128 KiB (UEFI 2.10, section 2.3.4).
    std::uint64_t stack_size = 128 * 1024;
};

}  // namespace korvane::host
