// What the player of transcripts and the machine that it plays tell each other: numbers and texts, one behind
// the other. Both are compiled from this.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "config.h"

namespace korvane::web {

class Writer {
  public:
    void number(std::uint64_t value) {
        char digits[sizeof value];
        std::memcpy(digits, &value, sizeof value);
        bytes_.append(digits, sizeof digits);
    }
    void text(std::string_view value) {
        number(value.size());
        bytes_ += value;
    }
    void wide(std::u16string_view value) {
        text({reinterpret_cast<const char*>(value.data()), value.size() * sizeof(char16_t)});
    }
    const std::string& bytes() const { return bytes_; }

  private:
    std::string bytes_;
};

class Reader {
  public:
    explicit Reader(std::string_view bytes) : rest_(bytes) {}

    bool at_end() const { return rest_.empty(); }
    std::uint64_t number() {
        std::uint64_t value = 0;
        if (rest_.size() < sizeof value) return 0;
        std::memcpy(&value, rest_.data(), sizeof value);
        rest_.remove_prefix(sizeof value);
        return value;
    }
    std::string_view text() {
        const std::uint64_t size = number();
        return take(size);
    }
    std::u16string wide() {
        const std::string_view bytes = text();
        std::u16string value(bytes.size() / sizeof(char16_t), u'\0');
        std::memcpy(value.data(), bytes.data(), bytes.size());
        return value;
    }

  private:
    std::string_view take(std::size_t count) {
        const std::string_view value = rest_.substr(0, count);
        rest_.remove_prefix(value.size());
        return value;
    }

    std::string_view rest_;
};

// What the player says before the machine goes on, as often as there is something to say.
enum class Order : std::uint64_t {
    go_on,           // nothing follows
    start,           // a configuration, the image's file, its size in memory: a new machine
    put_file,        // path, bytes
    put_folder,      // path
    remove,          // path
    press,           // scan code, character
    press_at_poll,   // poll, scan code, character
    arm,             // number of faults; of each the service, the first use, the uses, the status
    set_time,        // 1 and the record's bytes, or 0
    pull_stick,      //
    plug_stick,      // where (a host::Replugged), the folder
    replace_folder,  // the folder
    double_machine,  // alone: the orders that follow are for a machine that has had the same ones
    drop_double,     // alone: and now for the machine again
};

// What the machine answers when it stops: why, then what write_report() writes.
enum class Answer : std::uint64_t {
    waits_in_event,
    waits_looking,
    returned,
    halted,
    fault,  // only a text follows
};

inline void write_config(Writer& writer, const host::Config& config) {
    writer.number(config.memory.size());
    for (const host::MemoryRegion& region : config.memory) {
        writer.number(region.base);
        writer.number(region.pages);
        writer.number(static_cast<std::uint64_t>(region.type));
    }
    writer.number(config.modes.size());
    for (const host::GraphicsMode& mode : config.modes) {
        writer.number(mode.width);
        writer.number(mode.height);
        writer.number(mode.pitch);
        writer.number(static_cast<std::uint64_t>(mode.format));
    }
    for (const std::uint64_t value :
         {std::uint64_t{config.descending_map}, std::uint64_t{config.width}, std::uint64_t{config.height},
          std::uint64_t{config.graphics_output}, std::uint64_t{config.cpu_protocol},
          std::uint64_t{config.acpi_table}, std::uint64_t{config.smbios_table},
          static_cast<std::uint64_t>(config.code_memory), config.stack_size})
        writer.number(value);
    writer.number(config.volumes.size());
    for (const host::VolumeConfig& volume : config.volumes) {
        writer.text(volume.folder);
        writer.number(volume.read_only);
        writer.number(volume.capacity);
        writer.wide(volume.label);
        writer.number(volume.host_programs);
        writer.number(static_cast<std::uint64_t>(volume.device_path));
    }
    writer.wide(config.image_path);
    writer.number(config.load_options.has_value());
    writer.wide(config.load_options.value_or(u""));
    writer.number(config.block_devices.size());
    for (const host::BlockDeviceConfig& device : config.block_devices) {
        writer.text(device.image);
        for (const std::uint64_t value :
             {std::uint64_t{device.block_size}, std::uint64_t{device.io_align},
              std::uint64_t{device.media_id}, std::uint64_t{device.removable},
              std::uint64_t{device.media_present}, std::uint64_t{device.logical_partition},
              std::uint64_t{device.read_only}, std::uint64_t{device.last_block.has_value()},
              device.last_block.value_or(0), std::uint64_t{device.unreadable_blocks.size()}})
            writer.number(value);
        for (const std::uint64_t block : device.unreadable_blocks)
            writer.number(block);
    }
    writer.number(config.variables.size());
    for (const host::Variable& variable : config.variables) {
        writer.wide(variable.name);
        writer.text({reinterpret_cast<const char*>(&variable.vendor), sizeof variable.vendor});
        writer.number(variable.attributes);
        writer.text({reinterpret_cast<const char*>(variable.data.data()), variable.data.size()});
    }
    writer.number(config.time.has_value());
    const uefi::Time time = config.time.value_or(uefi::Time{});
    writer.text({reinterpret_cast<const char*>(&time), sizeof time});
}

template <typename Record>
Record read_record(Reader& reader) {
    Record record{};
    const std::string_view bytes = reader.text();
    if (bytes.size() == sizeof record) std::memcpy(&record, bytes.data(), sizeof record);
    return record;
}

inline host::Config read_config(Reader& reader) {
    host::Config config;
    config.memory.resize(reader.number());
    for (host::MemoryRegion& region : config.memory) {
        region.base = reader.number();
        region.pages = reader.number();
        region.type = static_cast<uefi::MemoryType>(reader.number());
    }
    config.modes.resize(reader.number());
    for (host::GraphicsMode& mode : config.modes) {
        mode.width = static_cast<std::uint32_t>(reader.number());
        mode.height = static_cast<std::uint32_t>(reader.number());
        mode.pitch = static_cast<std::uint32_t>(reader.number());
        mode.format = static_cast<uefi::PixelFormat>(reader.number());
    }
    config.descending_map = reader.number() != 0;
    config.width = static_cast<std::uint32_t>(reader.number());
    config.height = static_cast<std::uint32_t>(reader.number());
    config.graphics_output = reader.number() != 0;
    config.cpu_protocol = reader.number() != 0;
    config.acpi_table = reader.number() != 0;
    config.smbios_table = reader.number() != 0;
    config.code_memory = static_cast<host::CodeMemory>(reader.number());
    config.stack_size = reader.number();
    config.volumes.resize(reader.number());
    for (host::VolumeConfig& volume : config.volumes) {
        volume.folder = reader.text();
        volume.read_only = reader.number() != 0;
        volume.capacity = reader.number();
        volume.label = reader.wide();
        volume.host_programs = reader.number() != 0;
        volume.device_path = static_cast<host::VolumeConfig::DevicePath>(reader.number());
    }
    config.image_path = reader.wide();
    const bool has_options = reader.number() != 0;
    std::u16string options = reader.wide();
    if (has_options) config.load_options = std::move(options);
    config.block_devices.resize(reader.number());
    for (host::BlockDeviceConfig& device : config.block_devices) {
        device.image = reader.text();
        device.block_size = static_cast<std::uint32_t>(reader.number());
        device.io_align = static_cast<std::uint32_t>(reader.number());
        device.media_id = static_cast<std::uint32_t>(reader.number());
        device.removable = reader.number() != 0;
        device.media_present = reader.number() != 0;
        device.logical_partition = reader.number() != 0;
        device.read_only = reader.number() != 0;
        const bool has_last_block = reader.number() != 0;
        const std::uint64_t last_block = reader.number();
        if (has_last_block) device.last_block = last_block;
        device.unreadable_blocks.resize(reader.number());
        for (std::uint64_t& block : device.unreadable_blocks)
            block = reader.number();
    }
    config.variables.resize(reader.number());
    for (host::Variable& variable : config.variables) {
        variable.name = reader.wide();
        variable.vendor = read_record<uefi::Guid>(reader);
        variable.attributes = static_cast<std::uint32_t>(reader.number());
        const std::string_view data = reader.text();
        variable.data.assign(data.begin(), data.end());
    }
    const bool has_time = reader.number() != 0;
    const auto time = read_record<uefi::Time>(reader);
    if (has_time) config.time = time;
    return config;
}

}  // namespace korvane::web
