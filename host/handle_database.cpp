#include "handle_database.h"

namespace korvane::host {

uefi::Handle HandleDatabase::add() {
    return &entries_.emplace_back();
}

void HandleDatabase::install(uefi::Handle handle, const uefi::Guid& protocol, void* interface) {
    static_cast<Entry*>(handle)->interfaces.push_back({protocol, interface});
}

const HandleDatabase::Entry* HandleDatabase::entry(uefi::Handle handle) const {
    for (const Entry& known : entries_)
        if (&known == handle) return &known;
    return nullptr;
}

bool HandleDatabase::is_handle(uefi::Handle handle) const {
    return entry(handle) != nullptr;
}

void* HandleDatabase::find(uefi::Handle handle, const uefi::Guid& protocol) const {
    const Entry* known = entry(handle);
    if (known == nullptr) return nullptr;
    for (const Interface& interface : known->interfaces)
        if (interface.protocol == protocol) return interface.interface;
    return nullptr;
}

std::vector<uefi::Handle> HandleDatabase::all_with(const uefi::Guid& protocol) const {
    std::vector<uefi::Handle> found;
    for (uefi::Handle handle : all())
        if (find(handle, protocol) != nullptr) found.push_back(handle);
    return found;
}

std::vector<uefi::Handle> HandleDatabase::all() const {
    std::vector<uefi::Handle> handles;
    for (const Entry& known : entries_)
        handles.push_back(const_cast<Entry*>(&known));
    return handles;
}

}  // namespace korvane::host
