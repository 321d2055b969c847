#include "runtime_services.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "boot_services.h"
#include "host_clock.h"

namespace korvane::host {

namespace {

Firmware* active = nullptr;  // runtime services are given no context either

using uefi::Status;

Status EFIAPI get_time(uefi::Time* time, void*) {
    if (auto failure = active->faults().strike(Service::GetTime)) return *failure;
    if (time == nullptr) return uefi::invalid_parameter;
    *time = active->config().time.value_or(to_firmware_time(host_time_now()));
    return uefi::success;
}

Status EFIAPI get_variable(const char16_t* name, const uefi::Guid* vendor, std::uint32_t* attributes,
                           std::uint64_t* data_size, void* data) {
    if (auto failure = active->faults().strike(Service::GetVariable)) return *failure;
    if (name == nullptr || vendor == nullptr || data_size == nullptr) return uefi::invalid_parameter;
    const auto& variables = active->config().variables;
    const auto variable = std::find_if(variables.begin(), variables.end(), [&](const Variable& candidate) {
        return candidate.name == name && candidate.vendor == *vendor;
    });
    if (variable == variables.end()) return uefi::not_found;
    const std::uint64_t room = *data_size;
    *data_size = variable->data.size();
    if (attributes != nullptr) *attributes = variable->attributes;
    if (room < variable->data.size()) return uefi::buffer_too_small;
    if (data == nullptr) return uefi::invalid_parameter;
    std::memcpy(data, variable->data.data(), variable->data.size());
    return uefi::success;
}

Status EFIAPI get_next_variable_name(std::uint64_t* name_size, char16_t* name, uefi::Guid* vendor) {
    if (auto failure = active->faults().strike(Service::GetNextVariableName)) return *failure;
    if (name_size == nullptr || name == nullptr || vendor == nullptr) return uefi::invalid_parameter;
    const std::u16string_view current(name, std::find(name, name + *name_size / sizeof *name, u'\0'));
    const auto& variables = active->config().variables;
    auto next = variables.begin();
    if (!current.empty()) {
        next = std::find_if(variables.begin(), variables.end(), [&](const Variable& candidate) {
            return candidate.name == current && candidate.vendor == *vendor;
        });
        if (next == variables.end()) return uefi::invalid_parameter;
        ++next;
    }
    if (next == variables.end()) return uefi::not_found;
    const std::uint64_t needed = (next->name.size() + 1) * sizeof(char16_t);
    const std::uint64_t room = *name_size;
    *name_size = needed;
    if (room < needed) return uefi::buffer_too_small;
    std::memcpy(name, next->name.c_str(), needed);
    *vendor = next->vendor;
    return uefi::success;
}

Status EFIAPI unimplemented() {
    active->misuse().report("a runtime service was called that the hosted firmware does not have");
    return uefi::unsupported;
}

void EFIAPI reset_system(uefi::ResetType, Status, std::uint64_t, void*) {
    active->misuse().report("ResetSystem was called");
}

}  // namespace

void RuntimeServiceFunctions::fill(uefi::RuntimeServices& table, Firmware& firmware) {
    active = &firmware;
    begin_table(table, uefi::runtime_services_signature, unimplemented);
    table.GetTime = get_time;
    table.GetVariable = get_variable;
    table.GetNextVariableName = get_next_variable_name;
    table.ResetSystem = reset_system;
    seal(table.Hdr);
}

}  // namespace korvane::host
