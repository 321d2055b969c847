#include "platform/firmware.h"

namespace korvane {

Firmware firmware;

void firmware_start(uefi::Handle image_handle, uefi::SystemTable* system_table) {
    firmware.image_handle = image_handle;
    firmware.system_table = system_table;
    firmware.boot = system_table->BootServices;
    firmware.runtime = system_table->RuntimeServices;
}

void* find_interface(uefi::Handle handle, const uefi::Guid& protocol) {
    // An image that came from no device has none to be asked.
    if (handle == nullptr) return nullptr;
    void* found = nullptr;
    return uefi::is_error(firmware.boot->HandleProtocol(handle, &protocol, &found)) ? nullptr : found;
}

void* find_interface(const uefi::Guid& protocol) {
    void* found = nullptr;
    return uefi::is_error(firmware.boot->LocateProtocol(&protocol, nullptr, &found)) ? nullptr : found;
}

uefi::LoadedImageProtocol* loaded_image() {
    return static_cast<uefi::LoadedImageProtocol*>(
        find_interface(firmware.image_handle, uefi::loaded_image_guid));
}

void print_on_firmware_console(const char16_t* text) {
    uefi::SimpleTextOutputProtocol* out = firmware.system_table->ConOut;
    if (out != nullptr) out->OutputString(out, text);
}

PoolBuffer::PoolBuffer(std::uint64_t bytes) : data_(nullptr), size_(bytes) {
    void* buffer = nullptr;
    if (uefi::is_error(firmware.boot->AllocatePool(uefi::MemoryType::EfiLoaderData, bytes, &buffer))) {
        size_ = 0;
        return;
    }
    data_ = static_cast<std::uint8_t*>(buffer);
}

PoolBuffer::~PoolBuffer() {
    // A buffer that cannot be freed is lost; there is nothing else to do about it.
    if (data_ != nullptr) firmware.boot->FreePool(data_);
}

std::uint8_t* PoolBuffer::release() {
    std::uint8_t* buffer = data_;
    data_ = nullptr;
    return buffer;
}

}  // namespace korvane
