#include "program/landmarks.h"

#include <array>

#include "platform/firmware.h"
#include "program/arenas.h"
#include "screen/framebuffer.h"

namespace korvane {
namespace {

using Address = std::optional<std::uint64_t>;

Address address_of(const volatile void* place) {
    return reinterpret_cast<std::uint64_t>(place);
}

Address image_base() {
    const uefi::LoadedImageProtocol* image = loaded_image();
    return image == nullptr ? std::nullopt : address_of(image->ImageBase);
}

Address image_end() {
    const uefi::LoadedImageProtocol* image = loaded_image();
    if (image == nullptr) return std::nullopt;
    return reinterpret_cast<std::uint64_t>(image->ImageBase) + image->ImageSize;
}

Address configuration_table(const uefi::Guid& identifier) {
    const uefi::SystemTable& system = *firmware.system_table;
    if (system.ConfigurationTable == nullptr) return std::nullopt;
    for (std::uint64_t i = 0; i < system.NumberOfTableEntries; ++i) {
        const uefi::ConfigurationTable& entry = system.ConfigurationTable[i];
        if (entry.VendorGuid == identifier && entry.VendorTable != nullptr)
            return address_of(entry.VendorTable);
    }
    return std::nullopt;
}

// The table under its newer identifier, else under the older one.
Address newest_table(const uefi::Guid& newer, const uefi::Guid& older) {
    const Address found = configuration_table(newer);
    return found ? found : configuration_table(older);
}

constexpr std::array<Landmark, 16> table = {{
    {"IMAGEBASE", "Korvane EFI image", image_base},
    {"IMAGEEND", "end of Korvane EFI image", image_end},
    {"SYSTEMTABLE", "UEFI system table", [] { return address_of(firmware.system_table); }},
    {"BOOTSERVICES", "UEFI boot-services table", [] { return address_of(firmware.boot); }},
    {"RUNTIMESERVICES", "UEFI runtime-services table", [] { return address_of(firmware.runtime); }},
    {"ACPI", "ACPI RSDP configuration table",
     [] { return newest_table(uefi::acpi_20_table_guid, uefi::acpi_10_table_guid); }},
    {"SMBIOS", "SMBIOS entry point",
     [] { return newest_table(uefi::smbios3_table_guid, uefi::smbios_table_guid); }},
    {"CODEBASE", "BASIC program arena", [] { return address_of(arenas.CODEBASE); }},
    {"CODEEND", "end of BASIC program arena", [] { return address_of(arenas.CODEEND); }},
    {"VARTABLE", "scalar/array descriptor table", [] { return address_of(arenas.VARTABLE); }},
    {"LOMEM", "start of BASIC data arena", [] { return address_of(arenas.LOMEM); }},
    {"FREEBOT", "first free low-memory byte", [] { return address_of(arenas.FREEBOT); }},
    {"FREETOP", "top of free area / string heap", [] { return address_of(arenas.FREETOP); }},
    {"HIMEM", "end of BASIC data arena", [] { return address_of(arenas.HIMEM); }},
    {"FRAMEBUFFER", "GOP framebuffer", [] { return address_of(screen.framebuffer); }},
    {"BACKBUFFER", "graphics back buffer", [] { return address_of(screen.back_buffer); }},
}};

}  // namespace

std::span<const Landmark> landmarks() {
    return table;
}

bool find_landmark(std::string_view name, std::uint64_t& address) {
    if (name == "STRINGTOP") name = "FREETOP";
    for (const Landmark& landmark : table) {
        if (landmark.name != name) continue;
        const Address found = landmark.address();
        if (found) address = *found;
        return found.has_value();
    }
    return false;
}

const Landmark* nearest_landmark(std::uint64_t address, std::uint64_t& landmark_address) {
    const Landmark* nearest = nullptr;
    for (const Landmark& landmark : table) {
        const Address candidate = landmark.address();
        if (!candidate || *candidate > address) continue;
        if (nearest != nullptr && *candidate <= landmark_address) continue;
        nearest = &landmark;
        landmark_address = *candidate;
    }
    return nearest;
}

}  // namespace korvane
