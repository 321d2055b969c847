#include "firmware.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <utility>

#include "boot_services.h"
#include "runtime_services.h"
#include "system_tables.h"
#include "unicode.h"

namespace korvane::host {

namespace {

constexpr std::uint64_t tables_size = 4 * uefi::page_size;
constexpr std::uint64_t platform_tables_size = uefi::page_size;

std::uint64_t whole_pages(std::uint64_t bytes) {
    return (bytes + uefi::page_size - 1) / uefi::page_size;
}

}  // namespace

Firmware::Firmware(Config config)
    : config_(std::move(config)),
      memory_(config_.memory, config_.descending_map),
      pool_(config_.layout.pool, pool_size),
      stack_(config_.layout.stack, whole_pages(config_.stack_size) * uefi::page_size),
      table_memory_(config_.layout.tables, tables_size),
      platform_table_memory_(config_.layout.platform_tables, platform_tables_size),
      tables_(new (table_memory_.bytes().data()) Tables{}),
      keyboard_(faults_),
      text_console_(faults_) {
    if (config_.graphics_output)
        display_ = std::make_unique<Display>(config_.layout.framebuffer, config_.modes, config_.width,
                                             config_.height, pool_, faults_);
    for (const VolumeConfig& volume : config_.volumes)
        volumes_.push_back(std::make_unique<Volume>(volume, faults_, misuse_));
    for (const BlockDeviceConfig& device : config_.block_devices)
        block_devices_.push_back(std::make_unique<BlockDevice>(device, faults_, misuse_));
    enter_own_memory();
    build_tables();
    build_handles();
}

Firmware::~Firmware() = default;

void Firmware::enter_own_memory() {
    using uefi::MemoryType;
    const auto enter = [this](const Mapping& mapping, MemoryType type) {
        memory_.add({mapping.base(), mapping.size() / uefi::page_size, type});
    };
    enter(stack_, MemoryType::EfiBootServicesData);
    enter(table_memory_, MemoryType::EfiRuntimeServicesData);
    enter(platform_table_memory_, MemoryType::EfiACPIReclaimMemory);
    enter(pool_.mapping(), MemoryType::EfiBootServicesData);
    if (display_) enter(display_->mapping(), MemoryType::EfiMemoryMappedIO);
}

void Firmware::build_tables() {
    Tables& tables = *tables_;
    BootServiceFunctions::fill(tables.boot, *this);
    RuntimeServiceFunctions::fill(tables.runtime, *this);
    constexpr std::u16string_view vendor = u"Korvane hosted firmware";
    vendor.copy(tables.vendor, vendor.size());

    uefi::SystemTable& system = tables.system;
    system.Hdr = {uefi::system_table_signature, 2 << 16 | 80, sizeof system, 0, 0};
    system.FirmwareVendor = tables.vendor;
    system.FirmwareRevision = 0x00010000;
    system.ConIn = &keyboard_;
    system.ConOut = &text_console_;
    system.StdErr = &text_console_;
    system.BootServices = &tables.boot;
    system.RuntimeServices = &tables.runtime;
    system.ConfigurationTable = tables.configuration;
    const auto platform = platform_table_memory_.bytes();
    if (config_.acpi_table)
        tables.configuration[system.NumberOfTableEntries++] = {uefi::acpi_20_table_guid,
                                                               put_acpi_tables(platform.first(2048))};
    if (config_.smbios_table)
        tables.configuration[system.NumberOfTableEntries++] = {uefi::smbios3_table_guid,
                                                               put_smbios_table(platform.subspan(2048))};
}

void Firmware::build_handles() {
    uefi::SystemTable& system = tables_->system;
    system.ConsoleInHandle = handles_.add();
    handles_.install(system.ConsoleInHandle, uefi::simple_text_input_guid, system.ConIn);
    system.ConsoleOutHandle = handles_.add();
    system.StandardErrorHandle = system.ConsoleOutHandle;
    handles_.install(system.ConsoleOutHandle, uefi::simple_text_output_guid, system.ConOut);
    if (display_)
        handles_.install(system.ConsoleOutHandle, uefi::graphics_output_guid,
                         static_cast<uefi::GraphicsOutputProtocol*>(display_.get()));
    build_processor_handle();
    for (std::size_t i = 0; i < volumes_.size(); ++i) {
        const uefi::Handle device = handles_.add();
        if (void* path = build_device_path(config_.volumes[i].device_path))
            handles_.install(device, uefi::device_path_guid, path);
        install_volume(device, *volumes_[i]);
        if (boot_device_ == nullptr) boot_device_ = device;
    }
    for (const auto& device : block_devices_)
        handles_.install(handles_.add(), uefi::block_io_guid,
                         static_cast<uefi::BlockIoProtocol*>(device.get()));

    build_image_path();
    uefi::LoadedImageProtocol& image = tables_->loaded_image;
    image.Revision = 0x1000;
    image.SystemTable = &system;
    image.DeviceHandle = boot_device_;
    image.FilePath = reinterpret_cast<uefi::DevicePathNode*>(device_path_.data());
    if (config_.load_options) {
        load_options_ = *config_.load_options;
        image.LoadOptions = load_options_.data();
        image.LoadOptionsSize = static_cast<std::uint32_t>((load_options_.size() + 1) * sizeof(char16_t));
    }
    image.ImageCodeType = uefi::MemoryType::EfiLoaderCode;
    image.ImageDataType = uefi::MemoryType::EfiLoaderData;
    image_handle_ = handles_.add();
    handles_.install(image_handle_, uefi::loaded_image_guid, &image);
    seal(system.Hdr);
}

void Firmware::build_processor_handle() {
    const bool has_attributes = config_.code_memory != CodeMemory::hidden;
    if (!config_.cpu_protocol && !has_attributes) return;
    const uefi::Handle processor = handles_.add();
    if (config_.cpu_protocol) {
        tables_->cpu.SetMemoryAttributes = BootServiceFunctions::set_memory_attributes;
        handles_.install(processor, uefi::cpu_arch_guid, &tables_->cpu);
    }
    if (has_attributes) {
        BootServiceFunctions::fill(tables_->memory_attributes);
        handles_.install(processor, uefi::memory_attribute_guid, &tables_->memory_attributes);
    }
}

// The path in two nodes, as some firmware hands it over: the folder, and the file's name.
void Firmware::build_image_path() {
    const auto add_node = [this](std::uint8_t type, std::uint8_t subtype, std::u16string_view text) {
        const std::size_t text_bytes = text.empty() ? 0 : (text.size() + 1) * sizeof(char16_t);
        const std::size_t length = sizeof(uefi::DevicePathNode) + text_bytes;
        device_path_.insert(device_path_.end(), {type, subtype, static_cast<std::uint8_t>(length),
                                                 static_cast<std::uint8_t>(length >> 8)});
        const std::size_t at = device_path_.size();
        device_path_.resize(at + text_bytes);
        const std::u16string terminated(text);
        if (text_bytes != 0) std::memcpy(&device_path_[at], terminated.c_str(), text_bytes);
    };
    const std::u16string_view path = config_.image_path;
    const std::size_t name = path.rfind(u'\\');
    if (name != std::u16string_view::npos && name != 0)
        add_node(uefi::device_path_media, uefi::device_path_media_file_path, path.substr(0, name));
    if (name != std::u16string_view::npos)
        add_node(uefi::device_path_media, uefi::device_path_media_file_path, path.substr(name));
    add_node(uefi::device_path_end, uefi::device_path_end_entire, {});
}

void Firmware::install_volume(uefi::Handle device, Volume& volume) {
    handles_.install(device, uefi::simple_file_system_guid,
                     static_cast<uefi::SimpleFileSystemProtocol*>(&volume));
}

// A USB node, a hard drive node for a partition, and the end. Null for no path.
void* Firmware::build_device_path(VolumeConfig::DevicePath kind) {
    if (kind == VolumeConfig::DevicePath::none) return nullptr;
    std::vector<std::uint8_t>& path = volume_paths_.emplace_back();
    path = {3, 5, 6, 0, stick_port_, 0};
    if (kind == VolumeConfig::DevicePath::partition) {
        constexpr std::size_t node_size = 42;
        std::vector<std::uint8_t> node(node_size);
        node[0] = uefi::device_path_media;
        node[1] = 1;
        node[2] = node_size;
        node[4] = 1;                  // the partition's number
        node[9] = 8;                  // its first block is 2048
        node[24] = stick_signature_;  // the first byte of its GUID
        node[40] = 2;                 // of a GPT
        node[41] = 2;                 // identified by a GUID
        path.insert(path.end(), node.begin(), node.end());
    }
    path.insert(path.end(), {uefi::device_path_end, uefi::device_path_end_entire, 4, 0});
    return path.data();
}

void Firmware::pull_stick() {
    volumes_.front()->lose(uefi::no_media);
    handles_.uninstall(boot_device_, uefi::simple_file_system_guid);
    handles_.uninstall(boot_device_, uefi::device_path_guid);
}

void Firmware::plug_stick(Replugged where, const std::string& folder) {
    VolumeConfig config = config_.volumes.front();
    config.folder = folder;
    auto volume = std::make_unique<Volume>(config, faults_, misuse_);
    if (where != Replugged::other_stick)
        for (const LentFile& lent : volumes_.front()->lent())
            volume->lend(lent);
    if (where == Replugged::other_port) ++stick_port_;
    if (where == Replugged::other_stick) ++stick_signature_;
    if (where == Replugged::same_handle) {
        volumes_.front()->lose(uefi::media_changed);
        handles_.uninstall(boot_device_, uefi::simple_file_system_guid);
    } else {
        boot_device_ = handles_.add();
        if (void* path = build_device_path(config.device_path))
            handles_.install(boot_device_, uefi::device_path_guid, path);
    }
    install_volume(boot_device_, *volume);
    lost_volumes_.push_back(std::move(volumes_.front()));
    volumes_.front() = std::move(volume);
}

void Firmware::place_image(std::uint64_t base, std::uint64_t size, const std::string& file) {
    tables_->loaded_image.ImageBase = reinterpret_cast<void*>(base);
    tables_->loaded_image.ImageSize = size;
    memory_.add({base, whole_pages(size), uefi::MemoryType::EfiLoaderCode});
    if (volumes_.empty() || file.empty()) return;
    LentFile lent{{}, file, false};
    std::u16string_view rest = config_.image_path;
    while (!rest.empty()) {
        const std::size_t end = std::min(rest.find(u'\\'), rest.size());
        if (end != 0) lent.path.push_back(to_utf8(rest.substr(0, end)));
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    volumes_.front()->lend(std::move(lent));
}

std::vector<std::string> Firmware::complaints() const {
    std::vector<std::string> all = misuse_.reports;
    for (std::string& damage : pool_.damage())
        all.push_back(std::move(damage));
    return all;
}

}  // namespace korvane::host
