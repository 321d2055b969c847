// A firmware for one purpose: its state is small and plain, so that it can be put back between two inputs,
// and every table of it can be made from an input.
//
// The hosted firmware in host/ is a faithful one. This one is quick: it has no clock, no files of the host,
// and no process of its own for each session.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <string>
#include <vector>

#include "page_access.h"
#include "platform/uefi.h"
#include "saved_memory.h"
#include "service_faults.h"
#include "volume.h"

namespace korvane::fuzz {

inline constexpr std::uint64_t stack_base = 0x0A000000;
inline constexpr std::uint64_t stack_size = 4 << 20;
inline constexpr std::uint64_t pages_base = 0x20000000;  // of what is handed out as pages
inline constexpr std::uint64_t pages_size = 40 << 20;
inline constexpr std::uint64_t data_base = 0x30000000;  // the largest region, which becomes the data arena
inline constexpr std::uint64_t data_size = 4 << 20;
inline constexpr std::uint64_t scratch_base = 0x38000000;  // what the machine explorer may write to
inline constexpr std::uint64_t scratch_size = 64 << 10;
inline constexpr std::uint64_t tables_base = 0x39000000;  // ACPI and SMBIOS tables
inline constexpr std::uint64_t tables_size = 64 << 10;
inline constexpr std::uint64_t framebuffer_end = 0x70000000;
inline constexpr std::uint64_t framebuffer_room = 8 << 20;

// A disk whose blocks behind its content read as zeros.
struct Disk {
    std::string content;
    uefi::BlockIoMedia media{};
};

struct Variable {
    std::u16string name;
    std::string data;
};

struct GraphicsMode {
    std::uint32_t width;
    std::uint32_t height;
    std::uint32_t pitch;
    uefi::PixelFormat format = uefi::PixelFormat::PixelBlueGreenRedReserved8BitPerColor;
    uefi::PixelBitmask masks{};
};

// What an input may say about the machine.
struct Hardware {
    std::vector<GraphicsMode> modes = {{320, 640, 320}, {320, 240, 320}, {640, 480, 656}};
    std::uint32_t first_mode = 0;
    std::vector<uefi::MemoryDescriptor> descriptors;  // besides the true ones
    std::uint64_t descriptor_stride = 48;
    std::vector<Disk> disks;
    std::vector<Variable> variables;
    std::string load_options;  // bytes of 16-bit characters
    bool has_load_options = false;
    std::string image_path;       // bytes of a device path, after which comes the end of memory
    std::string device_path;      // of the volume
    std::string platform_tables;  // bytes at tables_base
    std::vector<uefi::ConfigurationTable> entries;  // of the configuration table
};

// Why the interpreter has stopped.
enum class Stop {
    waits,     // for a key
    returned,  // to the firmware
    halted,    // after a message on the firmware's console
    given_up,  // the program goes on whatever is pressed
};

class Firmware {
  public:
    Firmware();
    Firmware(const Firmware&) = delete;

    // Makes the tables for a machine, before the interpreter starts.
    void build(const Hardware& hardware);

    uefi::Handle image_handle();
    uefi::SystemTable* system_table() { return &system_; }
    Volume& volume() { return volume_; }
    host::ServiceFaults& faults() { return faults_; }
    std::vector<Disk>& disks() { return disks_; }
    std::vector<Variable>& variables() { return variables_; }

    // Called on the interpreter's stack when it has to stop.
    void on_stop(std::function<void(Stop)> stop) { stop_ = std::move(stop); }

    void press(uefi::InputKey key) { keys_.push_back(key); }
    // Escape comes at this look for a key that finds none, counted from now.
    void press_escape_at_look(std::uint32_t look) { escape_at_look_ = look; }
    // So many looks for a key find none before Escape is pressed: programs do not run for ever. Each look
    // stands for up to 256 statements.
    void be_patient_for(std::uint32_t looks) { patience_ = looks; }
    static constexpr std::uint32_t usual_patience = 6;
    // Forgets waiting keys and how long nobody has found any.
    void begin_line();
    std::size_t waiting_keys() const { return keys_.size() - next_key_; }

    // While the line editor looks for a key; without one it would look for ever.
    bool editor_waits() const { return now_.editor_waits; }
    void editor_waits(bool waits) { now_.editor_waits = waits; }

    // Pool blocks that are in use beyond those at the time of save().
    std::size_t pool_blocks() const;
    bool owns(std::uint64_t address, std::uint64_t bytes) const;
    // Whether machine code has been made in this input.
    bool has_code() const { return access_.has_code(); }
    // What was shown on the firmware's console when the interpreter stopped for good.
    const std::string& last_words() const { return last_words_; }
    // True when what was done in this input depends on when the interpreter looked for a key.
    bool depends_on_looks() const { return depends_on_looks_; }

    void save();
    void put_back();

  private:
    struct Services;
    struct Block {
        std::uint8_t* at;
        std::uint64_t size;
        bool freed;
        std::vector<std::uint8_t> saved;
    };
    // The state that changes while the interpreter runs, apart from that of the volume and the pool.
    struct Changing {
        std::uint64_t next_page = pages_base + pages_size;
        bool data_taken = false;
        std::uint32_t mode = 0;
        std::uint64_t key_of_map = 1;
        bool editor_waits = false;
    };
    struct DiskProtocol : uefi::BlockIoProtocol {
        Disk* disk;
    };

    void look();
    void count_failed_look();
    void enter_mode(std::uint32_t mode);
    std::vector<uefi::MemoryDescriptor> map() const;
    void* find(uefi::Handle handle, const uefi::Guid& protocol);
    std::vector<uefi::Handle> all_with(const uefi::Guid* protocol);
    void* allocate(std::uint64_t size);

    host::ServiceFaults faults_;
    Volume volume_;
    SavedMemory pages_;
    SavedMemory data_;
    SavedMemory scratch_;
    SavedMemory tables_;
    SavedMemory framebuffer_;
    PageAccess access_;

    Hardware hardware_;
    std::vector<Disk> disks_;
    std::vector<Disk> saved_disks_;
    std::vector<Variable> variables_;
    std::vector<Variable> saved_variables_;
    std::deque<DiskProtocol> disk_protocols_;
    std::vector<std::uint8_t> image_path_;
    std::vector<std::uint8_t> device_path_;
    std::vector<std::uint8_t> load_options_;

    uefi::SystemTable system_{};
    uefi::BootServices boot_{};
    uefi::RuntimeServices runtime_{};
    uefi::SimpleTextInputProtocol input_{};
    uefi::SimpleTextOutputProtocol output_{};
    uefi::SimpleTextOutputMode output_mode_{};
    uefi::GraphicsOutputProtocol graphics_{};
    uefi::GraphicsOutputMode graphics_mode_{};
    uefi::GraphicsOutputModeInformation mode_information_{};
    uefi::CpuArchProtocol cpu_{};
    uefi::MemoryAttributeProtocol attributes_{};
    uefi::LoadedImageProtocol image_{};
    std::vector<uefi::ConfigurationTable> entries_;
    char16_t vendor_[8] = u"fuzz";

    Changing now_;
    Changing saved_;
    std::deque<Block> pool_;
    std::size_t saved_blocks_ = 0;

    std::function<void(Stop)> stop_;
    std::vector<uefi::InputKey> keys_;
    std::size_t next_key_ = 0;
    std::uint32_t patience_ = usual_patience;
    std::uint32_t empty_looks_ = 0;  // since the last key
    std::uint32_t escapes_ = 0;      // pressed because nothing else ended the line
    std::uint32_t escape_at_look_ = 0;
    std::uint32_t failed_looks_ = 0;
    bool depends_on_looks_ = false;
    std::string last_words_;
};

}  // namespace korvane::fuzz
