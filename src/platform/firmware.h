// What the interpreter keeps of the firmware, and owners for what it borrows from it.
#pragma once

#include <cstdint>

#include "platform/uefi.h"

namespace korvane {

struct Firmware {
    uefi::Handle image_handle;  // of the running image
    uefi::SystemTable* system_table;
    uefi::BootServices* boot;  // taken from the system table at entry
    uefi::RuntimeServices* runtime;
};
extern Firmware firmware;

// Keeps the entry point's two arguments and the service tables.
void firmware_start(uefi::Handle image_handle, uefi::SystemTable* system_table);

// The interface that a handle carries for a protocol, or null.
void* find_interface(uefi::Handle handle, const uefi::Guid& protocol);

// The first interface of a protocol anywhere in the system, or null.
void* find_interface(const uefi::Guid& protocol);

// The Loaded Image protocol of the running image, or null.
uefi::LoadedImageProtocol* loaded_image();

// Prints on the firmware's own text console; used only until the framebuffer console is up. A failure has
// nobody to be told to and is ignored.
void print_on_firmware_console(const char16_t* text);

// A pool buffer that is given back when its owner goes out of scope.
class PoolBuffer {
  public:
    explicit PoolBuffer(std::uint64_t bytes);
    ~PoolBuffer();
    PoolBuffer(const PoolBuffer&) = delete;
    PoolBuffer& operator=(const PoolBuffer&) = delete;

    explicit operator bool() const { return data_ != nullptr; }  // false: the firmware had no memory
    std::uint8_t* data() const { return data_; }
    std::uint64_t size() const { return size_; }

    // Hands the buffer to the caller, who keeps it for good.
    std::uint8_t* release();

  private:
    std::uint8_t* data_;
    std::uint64_t size_;
};

}  // namespace korvane
