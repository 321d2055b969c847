// Handles and the protocols they carry.
#pragma once

#include <cstdint>
#include <deque>
#include <vector>

#include "platform/uefi.h"
#include "pool.h"

namespace korvane::host {

class HandleDatabase {
  public:
    // A new handle; handles keep the order of their making.
    uefi::Handle add();
    void install(uefi::Handle handle, const uefi::Guid& protocol, void* interface);
    // Takes the interface away; a handle that carries nothing any more is none any more.
    void uninstall(uefi::Handle handle, const uefi::Guid& protocol);

    bool is_handle(uefi::Handle handle) const;
    // True also for a handle that has gone.
    bool was_handle(uefi::Handle handle) const { return entry(handle) != nullptr; }
    // Null when the handle does not carry the protocol.
    void* find(uefi::Handle handle, const uefi::Guid& protocol) const;
    // The handles that carry the protocol.
    std::vector<uefi::Handle> all_with(const uefi::Guid& protocol) const;
    std::vector<uefi::Handle> all() const;

  private:
    struct Interface {
        uefi::Guid protocol;
        void* interface;
    };
    struct Entry {
        std::vector<Interface> interfaces;
        bool gone = false;
    };

    const Entry* entry(uefi::Handle handle) const;

    std::deque<Entry> entries_;  // a handle is its entry's address
};

}  // namespace korvane::host
