#include "boot_services.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "host_clock.h"

namespace korvane::host {

namespace {

// Boot services are given no context: this is the firmware that they belong to.
Firmware* active = nullptr;

using uefi::Status;

Status EFIAPI allocate_pages(uefi::AllocateType how, uefi::MemoryType type, std::uint64_t pages,
                             uefi::PhysicalAddress* address) {
    if (auto failure = active->faults().strike(Service::AllocatePages)) return *failure;
    return active->memory().allocate_pages(how, type, pages, address);
}

Status EFIAPI free_pages(uefi::PhysicalAddress address, std::uint64_t pages) {
    if (auto failure = active->faults().strike(Service::FreePages)) return *failure;
    const Status status = active->memory().free_pages(address, pages);
    if (status == uefi::access_denied)
        active->misuse().report("FreePages of pages that are not as they were allocated");
    else if (uefi::is_error(status))
        active->misuse().report("FreePages of pages that were not allocated");
    return status;
}

Status EFIAPI get_memory_map(std::uint64_t* map_size, uefi::MemoryDescriptor* map, std::uint64_t* map_key,
                             std::uint64_t* descriptor_size, std::uint32_t* descriptor_version) {
    if (auto failure = active->faults().strike(Service::GetMemoryMap)) return *failure;
    return active->memory().get_map(map_size, map, map_key, descriptor_size, descriptor_version);
}

Status EFIAPI allocate_pool(uefi::MemoryType type, std::uint64_t size, void** buffer) {
    if (auto failure = active->faults().strike(Service::AllocatePool)) return *failure;
    if (type == uefi::MemoryType::EfiConventionalMemory || type > uefi::MemoryType::EfiPersistentMemory)
        return uefi::invalid_parameter;
    return active->pool().allocate(size, buffer);
}

Status EFIAPI free_pool(void* buffer) {
    if (auto failure = active->faults().strike(Service::FreePool)) return *failure;
    const Status status = active->pool().release(buffer);
    if (uefi::is_error(status)) active->misuse().report("FreePool of what is no pool buffer");
    return status;
}

Status EFIAPI wait_for_event(std::uint64_t count, uefi::Event* events, std::uint64_t* index) {
    if (auto failure = active->faults().strike(Service::WaitForEvent)) return *failure;
    if (count == 0 || events == nullptr || index == nullptr) return uefi::invalid_parameter;
    for (std::uint64_t i = 0; i < count; ++i) {
        if (events[i] != active->keyboard().WaitForKey) continue;
        *index = i;
        return active->keyboard().wait();
    }
    active->misuse().report("WaitForEvent on an unknown event");
    return uefi::invalid_parameter;
}

Status EFIAPI check_event(uefi::Event event) {
    if (auto failure = active->faults().strike(Service::CheckEvent)) return *failure;
    if (event != active->keyboard().WaitForKey) return uefi::invalid_parameter;
    return active->keyboard().empty() ? uefi::not_ready : uefi::success;
}

Status EFIAPI stall(std::uint64_t microseconds) {
    if (auto failure = active->faults().strike(Service::Stall)) return *failure;
    host_stall(microseconds);
    return uefi::success;
}

Status EFIAPI set_watchdog_timer(std::uint64_t, std::uint64_t watchdog_code, std::uint64_t data_size,
                                 const char16_t* watchdog_data) {
    if (auto failure = active->faults().strike(Service::SetWatchdogTimer)) return *failure;
    // Codes up to 0xFFFF belong to the firmware; 0 is allowed for switching the timer off.
    const bool bad_code = watchdog_code != 0 && watchdog_code <= 0xFFFF;
    if (bad_code || (data_size != 0 && watchdog_data == nullptr)) return uefi::invalid_parameter;
    return uefi::success;
}

Status EFIAPI get_attributes(uefi::MemoryAttributeProtocol*, uefi::PhysicalAddress base, std::uint64_t length,
                             std::uint64_t* attributes) {
    if (auto failure = active->faults().strike(Service::MemoryAttributesGet)) return *failure;
    if (attributes == nullptr) return uefi::invalid_parameter;
    return active->memory().get_attributes(base, length, *attributes);
}

Status change_attributes(uefi::PhysicalAddress base, std::uint64_t length, std::uint64_t set,
                         std::uint64_t cleared) {
    if (active->config().code_memory == CodeMemory::refused) return uefi::unsupported;
    const Status status = active->memory().change_attributes(base, length, set, cleared);
    if (uefi::is_error(status))
        active->misuse().report("attributes of pages that were not allocated, or that there are not");
    std::uint64_t now = uefi::memory_execute_protect;
    active->memory().get_attributes(base, length, now);
    if ((now & (uefi::memory_execute_protect | uefi::memory_read_only)) == 0)
        active->misuse().report("pages that may be both written and executed");
    return status;
}

Status EFIAPI set_attributes(uefi::MemoryAttributeProtocol*, uefi::PhysicalAddress base, std::uint64_t length,
                             std::uint64_t attributes) {
    if (auto failure = active->faults().strike(Service::MemoryAttributesSet)) return *failure;
    return change_attributes(base, length, attributes, 0);
}

Status EFIAPI clear_attributes(uefi::MemoryAttributeProtocol*, uefi::PhysicalAddress base,
                               std::uint64_t length, std::uint64_t attributes) {
    if (auto failure = active->faults().strike(Service::MemoryAttributesClear)) return *failure;
    return change_attributes(base, length, 0, attributes);
}

// Unused services end here: an image that calls one learns so at once, and the report tells.
Status EFIAPI unimplemented() {
    active->misuse().report("a boot service was called that the hosted firmware does not have");
    return uefi::unsupported;
}

}  // namespace

// Those that need the firmware's handle database.
struct HandleServices {
    static HandleDatabase& database() { return active->handles_; }

    static Status EFIAPI handle_protocol(uefi::Handle handle, const uefi::Guid* protocol, void** interface) {
        if (auto failure = active->faults().strike(Service::HandleProtocol)) return *failure;
        if (protocol == nullptr || interface == nullptr) return uefi::invalid_parameter;
        *interface = nullptr;
        if (!database().is_handle(handle)) {
            if (!database().was_handle(handle))
                active->misuse().report("HandleProtocol of what is no handle");
            return uefi::invalid_parameter;
        }
        *interface = database().find(handle, *protocol);
        return *interface == nullptr ? uefi::unsupported : uefi::success;
    }

    static Status EFIAPI locate_handle_buffer(uefi::LocateSearchType search_type, const uefi::Guid* protocol,
                                              void*, std::uint64_t* count, uefi::Handle** handles) {
        if (auto failure = active->faults().strike(Service::LocateHandleBuffer)) return *failure;
        if (count == nullptr || handles == nullptr) return uefi::invalid_parameter;
        *count = 0;
        *handles = nullptr;
        const bool by_protocol = search_type == uefi::LocateSearchType::ByProtocol;
        if (by_protocol && protocol == nullptr) return uefi::invalid_parameter;
        if (!by_protocol && search_type != uefi::LocateSearchType::AllHandles) return uefi::invalid_parameter;
        const std::vector<uefi::Handle> found =
            by_protocol ? database().all_with(*protocol) : database().all();
        if (found.empty()) return uefi::not_found;
        void* buffer = nullptr;
        const std::uint64_t bytes = found.size() * sizeof(uefi::Handle);
        const Status status = active->pool().allocate(bytes, &buffer);
        if (uefi::is_error(status)) return status;
        std::memcpy(buffer, found.data(), bytes);
        *handles = static_cast<uefi::Handle*>(buffer);
        *count = found.size();
        return uefi::success;
    }

    static Status EFIAPI locate_protocol(const uefi::Guid* protocol, void*, void** interface) {
        if (auto failure = active->faults().strike(Service::LocateProtocol)) return *failure;
        if (protocol == nullptr || interface == nullptr) return uefi::invalid_parameter;
        *interface = nullptr;
        // On no handle, so that a list of all handles is the same with it and without.
        if (*protocol == listener_guid && active->listener() != nullptr) {
            *interface = active->listener();
            return uefi::success;
        }
        const std::vector<uefi::Handle> found = database().all_with(*protocol);
        if (found.empty()) return uefi::not_found;
        *interface = database().find(found.front(), *protocol);
        return uefi::success;
    }

    static Status EFIAPI exit(uefi::Handle image, Status exit_status, std::uint64_t, char16_t*) {
        if (image != active->image_handle()) return uefi::invalid_parameter;
        if (active->exit_) active->exit_(exit_status);
        return uefi::unsupported;
    }
};

void seal(uefi::TableHeader& header) {
    header.Crc32 = 0;
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(&header);
    std::uint32_t crc = 0xFFFFFFFF;
    for (std::uint32_t i = 0; i < header.HeaderSize; ++i) {
        crc ^= bytes[i];
        for (int bit = 0; bit < 8; ++bit)
            crc = crc >> 1 ^ ((crc & 1) != 0 ? 0xEDB88320 : 0);
    }
    header.Crc32 = ~crc;
}

uefi::Status EFIAPI BootServiceFunctions::set_memory_attributes(uefi::CpuArchProtocol*,
                                                                uefi::PhysicalAddress base,
                                                                std::uint64_t length, std::uint64_t) {
    if (auto failure = active->faults().strike(Service::SetMemoryAttributes)) return *failure;
    if (base % uefi::page_size != 0 || length % uefi::page_size != 0 || length == 0)
        return uefi::invalid_parameter;
    return uefi::success;
}

void BootServiceFunctions::fill(uefi::MemoryAttributeProtocol& protocol) {
    protocol = {get_attributes, set_attributes, clear_attributes};
}

void BootServiceFunctions::fill(uefi::BootServices& table, Firmware& firmware) {
    active = &firmware;
    begin_table(table, uefi::boot_services_signature, unimplemented);
    table.AllocatePages = allocate_pages;
    table.FreePages = free_pages;
    table.GetMemoryMap = get_memory_map;
    table.AllocatePool = allocate_pool;
    table.FreePool = free_pool;
    table.WaitForEvent = wait_for_event;
    table.CheckEvent = check_event;
    table.HandleProtocol = HandleServices::handle_protocol;
    table.Exit = HandleServices::exit;
    table.Stall = stall;
    table.SetWatchdogTimer = set_watchdog_timer;
    table.LocateHandleBuffer = HandleServices::locate_handle_buffer;
    table.LocateProtocol = HandleServices::locate_protocol;
    seal(table.Hdr);
}

}  // namespace korvane::host
