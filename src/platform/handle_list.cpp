#include "platform/handle_list.h"

#include "platform/firmware.h"

namespace korvane {

HandleList::HandleList(const uefi::Guid& protocol) {
    std::uint64_t count = 0;
    uefi::Handle* handles = nullptr;
    const uefi::Status status = firmware.boot->LocateHandleBuffer(uefi::LocateSearchType::ByProtocol,
                                                                  &protocol, nullptr, &count, &handles);
    if (uefi::is_error(status) || handles == nullptr) return;
    handles_ = handles;
    count_ = count;
}

HandleList::~HandleList() {
    if (handles_ != nullptr) firmware.boot->FreePool(handles_);
}

}  // namespace korvane
