#include "handle_database.h"

namespace korvane::host {

uefi::Handle HandleDatabase::add() {
    return &entries_.emplace_back();
}

void HandleDatabase::install(uefi::Handle handle, const uefi::Guid& protocol, void* interface) {
    Entry& known = *static_cast<Entry*>(handle);
    known.interfaces.push_back({protocol, interface});
    known.gone = false;
}

void HandleDatabase::uninstall(uefi::Handle handle, const uefi::Guid& protocol) {
    Entry& known = *static_cast<Entry*>(handle);
    std::erase_if(known.interfaces, [&](const Interface& one) { return one.protocol == protocol; });
    known.gone = known.interfaces.empty();
}

const HandleDatabase::Entry* HandleDatabase::entry(uefi::Handle handle) const {
    for (const Entry& known : entries_)
        if (&known == handle) return &known;
    return nullptr;
}

bool HandleDatabase::is_handle(uefi::Handle handle) const {
    const Entry* known = entry(handle);
    return known != nullptr && !known->gone;
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
        if (!known.gone) handles.push_back(const_cast<Entry*>(&known));
    return handles;
}

}  // namespace korvane::host
