#include "service_faults.h"

#include <algorithm>
#include <utility>

namespace korvane::host {

namespace {

constexpr std::array<std::string_view, service_count> service_names = {
    "AllocatePages",
    "FreePages",
    "GetMemoryMap",
    "AllocatePool",
    "FreePool",
    "WaitForEvent",
    "CheckEvent",
    "HandleProtocol",
    "LocateHandleBuffer",
    "LocateProtocol",
    "Stall",
    "SetWatchdogTimer",
    "GetTime",
    "GetVariable",
    "GetNextVariableName",
    "QueryMode",
    "SetMode",
    "SetMemoryAttributes",
    "MemoryAttributesGet",
    "MemoryAttributesSet",
    "MemoryAttributesClear",
    "ReadKeyStroke",
    "OutputString",
    "ClearScreen",
    "SetCursorPosition",
    "OpenVolume",
    "FileOpen",
    "FileClose",
    "FileDelete",
    "FileRead",
    "FileWrite",
    "FileGetPosition",
    "FileSetPosition",
    "FileGetInfo",
    "FileSetInfo",
    "FileFlush",
    "ReadBlocks",
};

constexpr std::pair<std::string_view, uefi::Status> status_names[] = {
    {"EFI_LOAD_ERROR", uefi::load_error},
    {"EFI_INVALID_PARAMETER", uefi::invalid_parameter},
    {"EFI_UNSUPPORTED", uefi::unsupported},
    {"EFI_BAD_BUFFER_SIZE", uefi::bad_buffer_size},
    {"EFI_BUFFER_TOO_SMALL", uefi::buffer_too_small},
    {"EFI_NOT_READY", uefi::not_ready},
    {"EFI_DEVICE_ERROR", uefi::device_error},
    {"EFI_WRITE_PROTECTED", uefi::write_protected},
    {"EFI_OUT_OF_RESOURCES", uefi::out_of_resources},
    {"EFI_VOLUME_CORRUPTED", uefi::volume_corrupted},
    {"EFI_VOLUME_FULL", uefi::volume_full},
    {"EFI_NO_MEDIA", uefi::no_media},
    {"EFI_MEDIA_CHANGED", uefi::media_changed},
    {"EFI_NOT_FOUND", uefi::not_found},
    {"EFI_ACCESS_DENIED", uefi::access_denied},
    {"EFI_NO_MAPPING", uefi::no_mapping},
    {"EFI_TIMEOUT", uefi::timeout},
    {"EFI_ABORTED", uefi::aborted},
    {"EFI_SECURITY_VIOLATION", uefi::security_violation},
    {"EFI_WARN_DELETE_FAILURE", uefi::warn_delete_failure},
};

}  // namespace

std::string_view service_name(Service service) {
    return service_names[static_cast<std::size_t>(service)];
}

std::optional<Service> find_service(std::string_view name) {
    const auto* found = std::find(service_names.begin(), service_names.end(), name);
    if (found == service_names.end()) return std::nullopt;
    return static_cast<Service>(found - service_names.begin());
}

std::optional<uefi::Status> find_status(std::string_view name) {
    for (const auto& [status_name, status] : status_names)
        if (status_name == name) return status;
    return std::nullopt;
}

void ServiceFaults::arm(std::vector<ServiceFault> faults) {
    faults_ = std::move(faults);
    uses_when_armed_ = uses_;
    strikes_ = 0;
}

std::optional<uefi::Status> ServiceFaults::strike(Service service) {
    const auto index = static_cast<std::size_t>(service);
    const std::uint64_t use = ++uses_[index] - uses_when_armed_[index];
    for (const ServiceFault& fault : faults_) {
        if (fault.service != service || use < fault.first || use - fault.first >= fault.uses) continue;
        ++strikes_;
        return fault.status;
    }
    return std::nullopt;
}

}  // namespace korvane::host
