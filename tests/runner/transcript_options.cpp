#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>

#include "text_syntax.h"
#include "transcript_parser.h"
#include "unicode.h"

namespace korvane::transcript {

namespace {

constexpr std::uint64_t default_disk_blocks = 64;

std::optional<uefi::PixelFormat> pixel_format(std::string_view name) {
    if (name == "bgr") return uefi::PixelFormat::PixelBlueGreenRedReserved8BitPerColor;
    if (name == "rgb") return uefi::PixelFormat::PixelRedGreenBlueReserved8BitPerColor;
    if (name == "blt") return uefi::PixelFormat::PixelBltOnly;
    return std::nullopt;
}

}  // namespace

bool Parser::folder(const Words& words, std::string_view) {
    if (words.size() != 2) return false;
    cases_.back().files.push_back({0, words[1], "", true});
    return true;
}

bool Parser::screen(const Words& words, std::string_view) {
    const std::size_t x = words.size() == 2 ? words[1].find('x') : std::string::npos;
    if (x == std::string::npos) return false;
    const auto width = parse_number(words[1].substr(0, x));
    const auto height = parse_number(words[1].substr(x + 1));
    if (!width || !height) return false;
    cases_.back().config.width = static_cast<std::uint32_t>(*width);
    cases_.back().config.height = static_cast<std::uint32_t>(*height);
    return true;
}

// @modes WIDTHxHEIGHT[/PITCH][:rgb|:blt] ...
bool Parser::modes(const Words& words, std::string_view) {
    std::vector<host::GraphicsMode>& modes = cases_.back().config.modes;
    modes.clear();
    for (std::size_t i = 1; i < words.size(); ++i) {
        const std::size_t colon = words[i].find(':');
        const std::string size = words[i].substr(0, colon);
        const auto format = pixel_format(colon == std::string::npos ? "bgr" : words[i].substr(colon + 1));
        const std::size_t x = size.find('x');
        if (x == std::string::npos || !format) return false;
        const std::size_t slash = size.find('/');
        const auto width = parse_number(size.substr(0, x));
        const auto height =
            parse_number(size.substr(x + 1, slash == std::string::npos ? slash : slash - x - 1));
        const auto pitch = slash == std::string::npos ? width : parse_number(size.substr(slash + 1));
        if (!width || !height || !pitch) return false;
        modes.push_back({static_cast<std::uint32_t>(*width), static_cast<std::uint32_t>(*height),
                         static_cast<std::uint32_t>(*pitch), *format});
    }
    return !modes.empty();
}

bool Parser::options(const Words&, std::string_view rest) {
    const auto plain = unescape(rest);
    const auto text = plain ? host::to_utf16(*plain) : std::nullopt;
    if (text) cases_.back().config.load_options = *text;
    return text.has_value();
}

// @memory BASE SIZE [TYPE]; the first one replaces the default memory
bool Parser::memory(const Words& words, std::string_view) {
    std::vector<std::uint64_t> given;
    if (words.size() > 4 || !numbers(words, 1, words.size() - 1, given) || given.size() < 2) return false;
    auto& memory = cases_.back().config.memory;
    if (!memory_given_) memory.clear();
    memory_given_ = true;
    const auto type =
        given.size() == 3 ? static_cast<uefi::MemoryType>(given[2]) : uefi::MemoryType::EfiConventionalMemory;
    memory.push_back({given[0], given[1] / uefi::page_size, type});
    return given[0] % uefi::page_size == 0 && given[1] % uefi::page_size == 0;
}

// @memory-map descending
bool Parser::memory_map(const Words& words, std::string_view) {
    cases_.back().config.descending_map = true;
    return words.size() == 2 && words[1] == "descending";
}

bool Parser::volumes(const Words& words, std::string_view) {
    std::vector<std::uint64_t> count;
    if (words.size() != 2 || !numbers(words, 1, 1, count) || count[0] > 9) return false;
    cases_.back().config.volumes.resize(count[0]);
    return true;
}

bool Parser::read_only(const Words& words, std::string_view) {
    cases_.back().config.volumes.front().read_only = true;
    return words.size() == 1;
}

bool Parser::capacity(const Words& words, std::string_view) {
    std::vector<std::uint64_t> bytes;
    if (words.size() != 2 || !numbers(words, 1, 1, bytes)) return false;
    cases_.back().config.volumes.front().capacity = bytes[0];
    return true;
}

bool Parser::image_path(const Words& words, std::string_view) {
    const auto path = words.size() == 2 ? host::to_utf16(words[1]) : std::nullopt;
    if (path) cases_.back().config.image_path = *path;
    return path.has_value();
}

bool Parser::image_on_volume(const Words& words, std::string_view) {
    cases_.back().image_on_volume = true;
    cases_.back().own_start = true;
    return words.size() == 1;
}

// @stick [whole]
bool Parser::stick(const Words& words, std::string_view) {
    const bool whole = words.size() == 2 && words[1] == "whole";
    using DevicePath = host::VolumeConfig::DevicePath;
    cases_.back().config.volumes.front().device_path = whole ? DevicePath::stick : DevicePath::partition;
    return words.size() == 1 || whole;
}

bool Parser::without(const Words& words, std::string_view) {
    host::Config& config = cases_.back().config;
    for (std::size_t i = 1; i < words.size(); ++i)
        if (words[i] == "graphics")
            config.graphics_output = false;
        else if (words[i] == "cpu")
            config.cpu_protocol = false;
        else if (words[i] == "code-memory")
            config.code_memory = host::CodeMemory::refused;
        else if (words[i] == "memory-attributes")
            config.code_memory = host::CodeMemory::hidden;
        else if (words[i] == "acpi")
            config.acpi_table = false;
        else if (words[i] == "smbios")
            config.smbios_table = false;
        else
            return false;
    return words.size() > 1;
}

// @disk [block=SIZE] [blocks=COUNT] [align=BYTES] [media=ID] [last=LBA] [bad=LBA]...
//       [removable] [absent] [partition] [read-only]
bool Parser::disk(const Words& words, std::string_view) {
    host::BlockDeviceConfig device;
    std::uint64_t blocks = default_disk_blocks;
    for (std::size_t i = 1; i < words.size(); ++i) {
        const std::size_t equals = words[i].find('=');
        const std::string name = words[i].substr(0, equals);
        std::optional<std::uint64_t> value = 0;
        if (equals != std::string::npos) value = parse_number(words[i].substr(equals + 1));
        if (!value) return false;
        if (name == "block")
            device.block_size = static_cast<std::uint32_t>(*value);
        else if (name == "blocks")
            blocks = *value;
        else if (name == "align")
            device.io_align = static_cast<std::uint32_t>(*value);
        else if (name == "media")
            device.media_id = static_cast<std::uint32_t>(*value);
        else if (name == "last")
            device.last_block = *value;
        else if (name == "bad")
            device.unreadable_blocks.push_back(*value);
        else if (name == "removable")
            device.removable = true;
        else if (name == "absent")
            device.media_present = false;
        else if (name == "partition")
            device.logical_partition = true;
        else if (name == "read-only")
            device.read_only = true;
        else
            return false;
    }
    Case& test = cases_.back();
    test.disk_sizes.push_back(blocks * std::max(device.block_size, 1U));
    test.config.block_devices.push_back(device);
    test.own_start = true;
    return true;
}

// @disk-bytes OFFSET HEX..., into the disk described last
bool Parser::disk_bytes(const Words& words, std::string_view rest) {
    Case& test = cases_.back();
    std::vector<std::uint64_t> offset;
    if (words.size() < 3 || test.disk_sizes.empty() || !numbers(words, 1, 1, offset)) return false;
    const auto bytes = parse_hex_bytes(rest.substr(rest.find(' ')));
    if (bytes) test.disk_patches.push_back({test.disk_sizes.size() - 1, offset[0], *bytes});
    return bytes.has_value();
}

// @disk-text OFFSET TEXT
bool Parser::disk_text(const Words& words, std::string_view rest) {
    Case& test = cases_.back();
    std::vector<std::uint64_t> offset;
    if (words.size() < 3 || test.disk_sizes.empty() || !numbers(words, 1, 1, offset)) return false;
    const auto bytes = unescape(rest.substr(rest.find(' ') + 1));
    if (bytes) test.disk_patches.push_back({test.disk_sizes.size() - 1, offset[0], *bytes});
    return bytes.has_value();
}

// @variable NAME HEX...
bool Parser::variable(const Words& words, std::string_view rest) {
    if (words.size() < 2) return false;
    const std::size_t data_at = rest.find(' ');
    const auto data = parse_hex_bytes(data_at == std::string_view::npos ? "" : rest.substr(data_at));
    const auto name = host::to_utf16(words[1]);
    if (!data || !name) return false;
    host::Variable variable;
    variable.name = *name;
    variable.data.assign(data->begin(), data->end());
    cases_.back().config.variables.push_back(std::move(variable));
    return true;
}

// @boot-entry HHHH ATTRIBUTES DESCRIPTION, the variable Boot#### with an empty device path (UEFI 2.10,
// section 3.1.3)
bool Parser::boot_entry(const Words& words, std::string_view rest) {
    if (words.size() < 4) return false;
    const auto name = host::to_utf16("Boot" + words[1]);
    const auto attributes = parse_number(words[2]);
    const auto description = host::to_utf16(rest.substr(words[1].size() + words[2].size() + 2));
    if (!name || !attributes || !description) return false;
    host::Variable variable;
    variable.name = *name;
    const auto put = [&](std::uint64_t value, int bytes) {
        for (int i = 0; i < bytes; ++i)
            variable.data.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
    };
    put(*attributes, 4);
    put(4, 2);  // bytes of device path
    for (const char16_t unit : *description)
        put(unit, 2);
    put(0, 2);
    put(0x0004FF7F, 4);  // the end of the path
    cases_.back().config.variables.push_back(std::move(variable));
    return true;
}

bool Parser::own_start(const Words& words, std::string_view) {
    cases_.back().own_start = true;
    return words.size() == 1;
}

bool Parser::fail_start(const Words& words, std::string_view) {
    const auto given = fault(words);
    if (given) cases_.back().start_faults.push_back(*given);
    cases_.back().own_start = true;
    return given.has_value();
}

bool Parser::fail_each_start(const Words& words, std::string_view) {
    cases_.back().own_start = true;
    return services(words, cases_.back().start_fail_each);
}

}  // namespace korvane::transcript
