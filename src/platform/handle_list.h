#pragma once

#include <cstdint>

#include "platform/uefi.h"

namespace korvane {

// The handles that carry a protocol, in the firmware's order; gives the firmware's buffer back when it goes
// out of scope. Empty when there are none or the firmware fails.
class HandleList {
  public:
    explicit HandleList(const uefi::Guid& protocol);
    ~HandleList();
    HandleList(const HandleList&) = delete;
    HandleList& operator=(const HandleList&) = delete;

    const uefi::Handle* begin() const { return handles_; }
    const uefi::Handle* end() const { return handles_ + count_; }

  private:
    uefi::Handle* handles_ = nullptr;
    std::uint64_t count_ = 0;
};

}  // namespace korvane
