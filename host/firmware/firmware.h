// The hosted firmware: a genuine UEFI system table whose services are implemented in this process.
//
// Only one can exist at a time, because boot services carry no context. Its memory lies at the addresses that
// Config::layout gives, the same in every run, and Config::memory says what else there is.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "address_space.h"
#include "block_device.h"
#include "config.h"
#include "display.h"
#include "handle_database.h"
#include "keyboard.h"
#include "memory.h"
#include "misuse.h"
#include "platform/listener.h"
#include "platform/uefi.h"
#include "pool.h"
#include "service_faults.h"
#include "text_console.h"
#include "volume.h"

namespace korvane::host {

inline constexpr std::uint64_t pool_size = 16 * 1024 * 1024;
inline constexpr std::uint64_t image_base = 0x0E000000;  // where the image is loaded
inline constexpr std::uint64_t framebuffer_base = MachineLayout{}.framebuffer;

// Where a stick is when it is back.
enum class Replugged {
    same_port,    // under a new handle with the old device path
    other_port,   // under a new handle; only the partition is the same
    same_handle,  // as a medium in its drive: the handle has stayed
    other_stick,  // it is another one, with a partition of its own
};

class Firmware {
  public:
    explicit Firmware(Config config);
    ~Firmware();
    Firmware(const Firmware&) = delete;
    Firmware& operator=(const Firmware&) = delete;

    // What the entry point of an image is given.
    uefi::Handle image_handle() const { return image_handle_; }
    uefi::SystemTable* system_table() { return &tables_->system; }

    // Enters the image's place into the loaded image record and the memory map. `file`, when given, is found
    // at Config::image_path on the first volume.
    void place_image(std::uint64_t base, std::uint64_t size, const std::string& file);

    const Config& config() const { return config_; }
    Mapping& stack() { return stack_; }
    Memory& memory() { return memory_; }
    const Memory& memory() const { return memory_; }
    Pool& pool() { return pool_; }
    Display* display() { return display_.get(); }  // null without graphics output
    Keyboard& keyboard() { return keyboard_; }
    TextConsole& text_console() { return text_console_; }
    std::vector<std::unique_ptr<Volume>>& volumes() { return volumes_; }
    ServiceFaults& faults() { return faults_; }
    Misuse& misuse() { return misuse_; }

    // Offers the interpreter to be listened to (platform/listener.h), which is to be done before it starts:
    // `told` is called, on the image's stack, for everything that it tells.
    void listen(std::function<void(Happening, std::uint64_t)> told) { listener_.told = std::move(told); }
    // Null when nobody listens.
    ListenerProtocol* listener() { return listener_.told ? &listener_ : nullptr; }

    // Called, on the image's stack, when the image calls Exit.
    void on_exit(std::function<void(uefi::Status)> exit) { exit_ = std::move(exit); }

    // Pulls out the stick that the first volume is on: its handles go, and every use of its files fails.
    void pull_stick();
    // Puts it back, with `folder` on it; its free space is the volume's first one again.
    void plug_stick(Replugged where, const std::string& folder);

    void set_time(const std::optional<uefi::Time>& time) { config_.time = time; }

    // Everything the image did wrong so far, damaged pool borders included.
    std::vector<std::string> complaints() const;

  private:
    friend struct HandleServices;

    // What BASIC can look at through the landmarks: everything the system table leads to.
    struct Tables {
        uefi::SystemTable system;
        uefi::BootServices boot;
        uefi::RuntimeServices runtime;
        uefi::ConfigurationTable configuration[2];
        uefi::LoadedImageProtocol loaded_image;
        uefi::CpuArchProtocol cpu;
        uefi::MemoryAttributeProtocol memory_attributes;
        char16_t vendor[24];
    };

    struct HostListener : ListenerProtocol {
        HostListener() : ListenerProtocol{pass_on} {}
        static void EFIAPI pass_on(ListenerProtocol* self, Happening happening, std::uint64_t value) {
            static_cast<HostListener*>(self)->told(happening, value);
        }
        std::function<void(Happening, std::uint64_t)> told;
    };

    void build_tables();
    void build_handles();
    void build_processor_handle();
    void build_image_path();
    void install_volume(uefi::Handle device, Volume& volume);
    void* build_device_path(VolumeConfig::DevicePath kind);
    void enter_own_memory();

    Config config_;
    ServiceFaults faults_;
    Misuse misuse_;
    Memory memory_;
    Pool pool_;
    Mapping stack_;
    Mapping table_memory_;
    Mapping platform_table_memory_;
    Tables* tables_;  // in table_memory_
    Keyboard keyboard_;
    TextConsole text_console_;
    std::unique_ptr<Display> display_;
    std::vector<std::unique_ptr<Volume>> volumes_;
    std::vector<std::unique_ptr<Volume>> lost_volumes_;  // their handles may still be used
    std::vector<std::unique_ptr<BlockDevice>> block_devices_;
    HandleDatabase handles_;
    uefi::Handle image_handle_ = nullptr;
    std::vector<std::uint8_t> device_path_;  // of the image file on its volume
    std::deque<std::vector<std::uint8_t>> volume_paths_;
    uefi::Handle boot_device_ = nullptr;
    std::uint8_t stick_port_ = 1;
    std::uint8_t stick_signature_ = 1;
    std::u16string load_options_;
    std::function<void(uefi::Status)> exit_;
    HostListener listener_;
};

}  // namespace korvane::host
