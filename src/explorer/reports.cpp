#include "explorer/reports.h"

#include "explorer/report.h"
#include "platform/firmware.h"
#include "platform/memory_map.h"
#include "program/arenas.h"
#include "program/landmarks.h"
#include "screen/framebuffer.h"

namespace korvane {
namespace {

constexpr std::size_t landmark_address_column = 17;
constexpr std::size_t information_column = 17;
constexpr std::size_t region_column = 11;
constexpr std::size_t type_width = 13;  // the longest type name and a blank
constexpr std::size_t longest_vendor_name = 40;
constexpr std::uint64_t runtime_attribute = 0x8000000000000000;  // EFI_MEMORY_RUNTIME
constexpr std::string_view no_memory_map = "Unable to obtain UEFI memory map.";
constexpr std::string_view not_in_memory_map = "Address is not present in the UEFI memory map.";

LineText labelled(const char* label, std::size_t column) {
    LineText line;
    line.put(label).tab_to(column);
    return line;
}

LineText landmark_line(const Landmark& landmark) {
    LineText line = labelled(landmark.name, landmark_address_column);
    if (const auto address = landmark.address())
        line.put_address(*address);
    else
        line.put("not present     ");
    line.put("  ").put(landmark.description);
    return line;
}

LineText region_line(const MemoryRegion& region) {
    LineText line;
    line.put_address(region.first).put('-').put_address(region.last).put("  ");
    const std::size_t type_column = line.length();
    line.put(memory_type_name(region.type)).tab_to(type_column + type_width);
    line.put_decimal(region.pages, 9).put(" pages").put_decimal(region.pages >> 8, 8).put(" MiB");
    if ((region.attributes & runtime_attribute) != 0) line.put(" RT");
    return line;
}

void put_vendor(LineText& line) {
    const char16_t* vendor = firmware.system_table->FirmwareVendor;
    if (vendor == nullptr) return;
    for (std::size_t i = 0; i < longest_vendor_name && vendor[i] != 0; ++i)
        line.put_utf16(vendor[i]);
}

// A revision of the standard: 2.7 is kept as 2 and 70, 2.3.1 as 2 and 31.
void put_standard_revision(LineText& line, std::uint32_t revision) {
    const std::uint32_t minor = revision & 0xFFFF;
    line.put("UEFI ").put_decimal(revision >> 16).put('.').put_decimal(minor / 10);
    if (minor % 10 != 0) line.put('.').put_decimal(minor % 10);
}

}  // namespace

void print_landmarks() {
    PagedReport listing;
    listing.line("[KORVANE LANDMARKS - UEFI]");
    for (const Landmark& landmark : landmarks())
        listing.line(landmark_line(landmark));
}

void print_memory_map() {
    const MemoryMapSnapshot snapshot;
    if (!snapshot) {
        print_line(no_memory_map);
        return;
    }
    PagedReport listing;
    listing.line("[UEFI MEMORY MAP]");
    for (std::size_t i = 0; i < snapshot.view().count(); ++i)
        if (!listing.line(region_line(snapshot.view().region(i)))) return;
}

void print_machine_information() {
    const uefi::SystemTable& system = *firmware.system_table;
    PagedReport listing;
    listing.line("[KORVANE MACHINE INFO]");
    listing.line("Platform         x64 UEFI");
    listing.line("Address model    flat 64-bit pre-ExitBootServices");
    LineText revision = labelled("Firmware rev", information_column);
    revision.put_hex(system.FirmwareRevision, 8).put("  ");
    put_standard_revision(revision, system.Hdr.Revision);
    revision.put("  ");
    put_vendor(revision);
    listing.line(revision);
    LineText graphics = labelled("Graphics", information_column);
    graphics.put_decimal(screen.width).put('x').put_decimal(screen.height);
    listing.line(graphics.put(", ").put_decimal(screen.pitch).put(" pixels per scan line"));
    const std::uint64_t free = free_data_bytes();
    LineText memory = labelled("BASIC free", information_column);
    listing.line(memory.put_decimal(free).put(" bytes (").put_decimal(free >> 20).put(" MiB)"));
}

CommandEnd do_landmarks(WordReader&) {
    print_landmarks();
    return CommandEnd::done;
}

CommandEnd do_memory_map(WordReader&) {
    print_memory_map();
    return CommandEnd::done;
}

CommandEnd do_machine_information(WordReader&) {
    print_machine_information();
    return CommandEnd::done;
}

CommandEnd do_region(WordReader& arguments) {
    std::uint64_t address = 0;
    if (const auto ended = read_addresses(arguments, {&address})) return *ended;
    const MemoryMapSnapshot snapshot;
    if (!snapshot) {
        print_line(no_memory_map);
        return CommandEnd::done;
    }
    const auto region = snapshot.view().find(address);
    if (!region) {
        print_line(not_in_memory_map);
        return CommandEnd::done;
    }
    LineText range = labelled("Region", region_column);
    print_line(range.put_address(region->first).put('-').put_address(region->last));
    print_line(labelled("Type", region_column).put(memory_type_name(region->type)));
    print_line(labelled("Pages", region_column).put_decimal(region->pages));
    print_line(labelled("Attributes", region_column).put_hex(region->attributes, 16));
    return CommandEnd::done;
}

CommandEnd do_where(WordReader& arguments) {
    std::uint64_t address = 0;
    if (const auto ended = read_addresses(arguments, {&address})) return *ended;
    std::uint64_t landmark_address = 0;
    const Landmark* landmark = nearest_landmark(address, landmark_address);
    if (landmark == nullptr) {
        print_line("No lower known landmark.");
        return CommandEnd::done;
    }
    LineText line;
    line.put("Nearest landmark: ").put(landmark->name).put(" + ").put_decimal(address - landmark_address);
    print_line(line.put("  (").put_address(landmark_address).put(')'));
    if (const auto region = cached_memory_map().find(address)) {
        LineText range = labelled("Region", region_column);
        range.put_address(region->first).put('-').put_address(region->last);
        print_line(range.put("  ").put(memory_type_name(region->type)));
    } else {
        print_line(not_in_memory_map);
    }
    return CommandEnd::done;
}

}  // namespace korvane
