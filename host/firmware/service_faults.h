// Firmware services that fail on demand, and counts of their uses.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "platform/uefi.h"

namespace korvane::host {

// Every service whose uses are counted and that can be made to fail. Protocol members carry their protocol's
// name in front where the member's own name would not tell.
enum class Service : std::uint32_t {
    AllocatePages,
    FreePages,
    GetMemoryMap,
    AllocatePool,
    FreePool,
    WaitForEvent,
    CheckEvent,
    HandleProtocol,
    LocateHandleBuffer,
    LocateProtocol,
    Stall,
    SetWatchdogTimer,
    GetTime,
    GetVariable,
    GetNextVariableName,
    QueryMode,
    SetMode,
    SetMemoryAttributes,
    MemoryAttributesGet,
    MemoryAttributesSet,
    MemoryAttributesClear,
    ReadKeyStroke,
    OutputString,
    ClearScreen,
    SetCursorPosition,
    OpenVolume,
    FileOpen,
    FileClose,
    FileDelete,
    FileRead,
    FileWrite,
    FileGetPosition,
    FileSetPosition,
    FileGetInfo,
    FileSetInfo,
    FileFlush,
    ReadBlocks,
    count_of_services,
};
inline constexpr std::size_t service_count = static_cast<std::size_t>(Service::count_of_services);

// The enumerator's own name.
std::string_view service_name(Service service);
std::optional<Service> find_service(std::string_view name);

// Makes uses `first` to `first + uses - 1` of a service fail; uses are counted from 1, from the moment the
// fault is armed.
struct ServiceFault {
    Service service;
    std::uint64_t first = 1;
    std::uint64_t uses = 1;
    uefi::Status status = uefi::device_error;
};

class ServiceFaults {
  public:
    // Replaces all faults; counting starts anew.
    void arm(std::vector<ServiceFault> faults);

    // Called once for each use of a service, before it does anything: the status to fail with, or nothing.
    std::optional<uefi::Status> strike(Service service);

    // All uses of a service so far.
    std::uint64_t uses(Service service) const { return uses_[static_cast<std::size_t>(service)]; }

    // Failures delivered since the last arming.
    std::uint64_t strikes() const { return strikes_; }

  private:
    std::vector<ServiceFault> faults_;
    std::array<std::uint64_t, service_count> uses_{};
    std::array<std::uint64_t, service_count> uses_when_armed_{};
    std::uint64_t strikes_ = 0;
};

// "EFI_NOT_FOUND" and the like to the status; nothing for an unknown name.
std::optional<uefi::Status> find_status(std::string_view name);

}  // namespace korvane::host
