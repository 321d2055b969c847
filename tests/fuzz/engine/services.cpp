// The firmware's services and tables, as the interpreter meets them.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "complaint.h"
#include "firmware.h"
#include "handles.h"
#include "steps.h"

namespace korvane::fuzz {

namespace {

using host::Service;
using uefi::Status;

Firmware* active = nullptr;  // services are given no context

}  // namespace

struct Firmware::Services {
    static Status EFIAPI allocate_pages(uefi::AllocateType how, uefi::MemoryType, std::uint64_t pages,
                                        uefi::PhysicalAddress* address) {
        if (auto failure = active->faults_.strike(Service::AllocatePages)) return *failure;
        Changing& now = active->now_;
        ++now.key_of_map;
        if (how == uefi::AllocateType::AllocateAddress) {
            if (now.data_taken || *address != data_base || pages != data_size / uefi::page_size)
                return uefi::not_found;
            now.data_taken = true;
            return uefi::success;
        }
        if (pages == 0 || pages > pages_size / uefi::page_size) return uefi::out_of_resources;
        const std::uint64_t bytes = pages * uefi::page_size;
        if (now.next_page - pages_base < bytes + uefi::page_size) return uefi::out_of_resources;
        now.next_page -= uefi::page_size;
        active->access_.guard(now.next_page);
        now.next_page -= bytes;
        *address = now.next_page;
        return uefi::success;
    }

    static Status EFIAPI free_pages(uefi::PhysicalAddress address, std::uint64_t pages) {
        if (auto failure = active->faults_.strike(Service::FreePages)) return *failure;
        if (!active->owns(address, pages * uefi::page_size)) complain("FreePages of what is not allocated");
        return uefi::success;
    }

    static Status EFIAPI get_memory_map(std::uint64_t* size, uefi::MemoryDescriptor* map, std::uint64_t* key,
                                        std::uint64_t* stride, std::uint32_t* version) {
        if (auto failure = active->faults_.strike(Service::GetMemoryMap)) return *failure;
        const std::vector<uefi::MemoryDescriptor> all = active->map();
        const std::uint64_t step = active->hardware_.descriptor_stride;
        const std::uint64_t room = *size;
        *size = all.size() * step;
        *stride = step;
        *version = 1;
        if (room < *size) return uefi::buffer_too_small;
        auto* to = reinterpret_cast<std::uint8_t*>(map);
        for (const uefi::MemoryDescriptor& one : all) {
            std::memset(to, 0xCC, step);
            std::memcpy(to, &one, std::min<std::uint64_t>(step, sizeof one));
            to += step;
        }
        *key = active->now_.key_of_map;
        return uefi::success;
    }

    static Status EFIAPI allocate_pool(uefi::MemoryType, std::uint64_t size, void** buffer) {
        if (auto failure = active->faults_.strike(Service::AllocatePool)) return *failure;
        if (size > 64 << 20) return uefi::out_of_resources;
        *buffer = active->allocate(size);
        return uefi::success;
    }

    static Status EFIAPI free_pool(void* buffer) {
        if (auto failure = active->faults_.strike(Service::FreePool)) return *failure;
        for (std::size_t i = active->pool_.size(); i-- > 0;) {
            Block& block = active->pool_[i];
            if (block.at != buffer || block.freed) continue;
            block.freed = true;
            if (i >= active->saved_blocks_) {
                std::free(block.at);
                block.at = nullptr;
            }
            return uefi::success;
        }
        complain("FreePool of what is no pool buffer");
    }

    static Status EFIAPI wait_for_event(std::uint64_t count, uefi::Event* events, std::uint64_t* index) {
        if (auto failure = active->faults_.strike(Service::WaitForEvent)) {
            active->count_failed_look();
            return *failure;
        }
        if (count != 1 || *events != &active->input_) complain("WaitForEvent on an unknown event");
        note_look();
        if (active->waiting_keys() == 0) active->stop_(Stop::waits);
        *index = 0;
        return uefi::success;
    }

    static Status EFIAPI check_event(uefi::Event) {
        if (auto failure = active->faults_.strike(Service::CheckEvent)) return *failure;
        return active->waiting_keys() != 0 ? uefi::success : uefi::not_ready;
    }

    static Status EFIAPI handle_protocol(uefi::Handle handle, const uefi::Guid* protocol, void** interface) {
        if (auto failure = active->faults_.strike(Service::HandleProtocol)) return *failure;
        *interface = active->find(handle, *protocol);
        return *interface == nullptr ? uefi::unsupported : uefi::success;
    }

    static Status EFIAPI locate_handle_buffer(uefi::LocateSearchType type, const uefi::Guid* protocol, void*,
                                              std::uint64_t* count, uefi::Handle** handles) {
        if (auto failure = active->faults_.strike(Service::LocateHandleBuffer)) return *failure;
        const bool all = type == uefi::LocateSearchType::AllHandles;
        const std::vector<uefi::Handle> found = active->all_with(all ? nullptr : protocol);
        if (found.empty()) return uefi::not_found;
        *count = found.size();
        *handles = static_cast<uefi::Handle*>(active->allocate(found.size() * sizeof(uefi::Handle)));
        std::copy(found.begin(), found.end(), *handles);
        return uefi::success;
    }

    static Status EFIAPI locate_protocol(const uefi::Guid* protocol, void*, void** interface) {
        if (auto failure = active->faults_.strike(Service::LocateProtocol)) return *failure;
        const std::vector<uefi::Handle> found = active->all_with(protocol);
        *interface = found.empty() ? nullptr : active->find(found.front(), *protocol);
        return found.empty() ? uefi::not_found : uefi::success;
    }

    static Status EFIAPI stall(std::uint64_t) {
        return active->faults_.strike(Service::Stall).value_or(uefi::success);
    }

    static Status EFIAPI set_watchdog_timer(std::uint64_t, std::uint64_t, std::uint64_t, const char16_t*) {
        return active->faults_.strike(Service::SetWatchdogTimer).value_or(uefi::success);
    }

    static Status EFIAPI exit(uefi::Handle, Status, std::uint64_t, char16_t*) {
        active->stop_(Stop::returned);
        return uefi::unsupported;
    }

    static Status EFIAPI set_memory_attributes(uefi::CpuArchProtocol*, uefi::PhysicalAddress base,
                                               std::uint64_t length, std::uint64_t) {
        if (auto failure = active->faults_.strike(Service::SetMemoryAttributes)) return *failure;
        return base % uefi::page_size == 0 && length % uefi::page_size == 0 ? uefi::success
                                                                            : uefi::invalid_parameter;
    }

    static PageAccess& pages_of(std::uint64_t address, std::uint64_t bytes) {
        if (!active->owns(address, bytes)) complain("attributes of pages that are not allocated");
        return active->access_;
    }

    static Status EFIAPI get_attributes(uefi::MemoryAttributeProtocol*, uefi::PhysicalAddress base,
                                        std::uint64_t length, std::uint64_t* attributes) {
        if (auto failure = active->faults_.strike(Service::MemoryAttributesGet)) return *failure;
        return pages_of(base, length).read(base, length, *attributes) ? uefi::success : uefi::no_mapping;
    }

    static Status EFIAPI set_attributes(uefi::MemoryAttributeProtocol*, uefi::PhysicalAddress base,
                                        std::uint64_t length, std::uint64_t attributes) {
        if (auto failure = active->faults_.strike(Service::MemoryAttributesSet)) return *failure;
        pages_of(base, length).change(base, length, attributes, 0);
        return uefi::success;
    }

    static Status EFIAPI clear_attributes(uefi::MemoryAttributeProtocol*, uefi::PhysicalAddress base,
                                          std::uint64_t length, std::uint64_t attributes) {
        if (auto failure = active->faults_.strike(Service::MemoryAttributesClear)) return *failure;
        pages_of(base, length).change(base, length, 0, attributes);
        return uefi::success;
    }

    static Status EFIAPI get_time(uefi::Time* time, void*) {
        if (auto failure = active->faults_.strike(Service::GetTime)) return *failure;
        *time = {2024, 2, 29, 23, 59, 58, 0, 0, 2047, 0, 0};
        return uefi::success;
    }

    static Status EFIAPI get_variable(const char16_t* name, const uefi::Guid*, std::uint32_t* attributes,
                                      std::uint64_t* size, void* data) {
        if (auto failure = active->faults_.strike(Service::GetVariable)) return *failure;
        for (const Variable& variable : active->variables_) {
            if (variable.name != name) continue;
            const std::uint64_t room = *size;
            *size = variable.data.size();
            if (attributes != nullptr) *attributes = 7;
            if (room < variable.data.size()) return uefi::buffer_too_small;
            if (!variable.data.empty()) std::memcpy(data, variable.data.data(), variable.data.size());
            return uefi::success;
        }
        return uefi::not_found;
    }

    static Status EFIAPI get_next_variable_name(std::uint64_t* size, char16_t* name, uefi::Guid* vendor) {
        if (auto failure = active->faults_.strike(Service::GetNextVariableName)) return *failure;
        const std::u16string_view current(name, std::find(name, name + *size / sizeof *name, u'\0'));
        auto next = active->variables_.begin();
        if (!current.empty()) {
            next = std::find_if(next, active->variables_.end(),
                                [&](const Variable& one) { return one.name == current; });
            if (next == active->variables_.end()) return uefi::invalid_parameter;
            ++next;
        }
        if (next == active->variables_.end()) return uefi::not_found;
        const std::uint64_t room = *size;
        *size = (next->name.size() + 1) * sizeof(char16_t);
        if (room < *size) return uefi::buffer_too_small;
        std::memcpy(name, next->name.c_str(), *size);
        *vendor = uefi::global_variable_guid;
        return uefi::success;
    }

    static Status EFIAPI reset_input(uefi::SimpleTextInputProtocol*, std::uint8_t) {
        active->next_key_ = active->keys_.size();
        return uefi::success;
    }

    static Status EFIAPI read_key_stroke(uefi::SimpleTextInputProtocol*, uefi::InputKey* key) {
        note_look();
        if (auto failure = active->faults_.strike(Service::ReadKeyStroke)) {
            active->count_failed_look();
            return *failure;
        }
        if (active->waiting_keys() == 0) {
            if (active->now_.editor_waits)
                active->stop_(Stop::waits);
            else
                active->look();
        }
        if (active->waiting_keys() == 0) return uefi::not_ready;
        active->empty_looks_ = 0;
        *key = active->keys_[active->next_key_++];
        return uefi::success;
    }

    static Status EFIAPI output_string(uefi::SimpleTextOutputProtocol*, const char16_t* text) {
        const auto failure = active->faults_.strike(Service::OutputString);
        const std::u16string_view shown(text);
        // Whoever prints an exclamation there has given up and never comes back.
        if (shown.find(u'!') != std::u16string_view::npos) {
            active->last_words_.clear();
            for (const char16_t unit : shown)
                active->last_words_ += static_cast<char>(unit);
            active->stop_(Stop::halted);
        }
        return failure.value_or(uefi::success);
    }

    static Status EFIAPI reset_output(uefi::SimpleTextOutputProtocol*, std::uint8_t) { return uefi::success; }
    static Status EFIAPI set_output(uefi::SimpleTextOutputProtocol*, std::uint64_t) { return uefi::success; }
    static Status EFIAPI clear_screen(uefi::SimpleTextOutputProtocol*) {
        return active->faults_.strike(Service::ClearScreen).value_or(uefi::success);
    }
    static Status EFIAPI set_cursor(uefi::SimpleTextOutputProtocol*, std::uint64_t, std::uint64_t) {
        return active->faults_.strike(Service::SetCursorPosition).value_or(uefi::success);
    }
    static Status EFIAPI enable_cursor(uefi::SimpleTextOutputProtocol*, std::uint8_t) {
        return uefi::success;
    }

    static uefi::GraphicsOutputModeInformation information(const GraphicsMode& mode) {
        return {0, mode.width, mode.height, mode.format, mode.masks, mode.pitch};
    }

    static Status EFIAPI query_mode(uefi::GraphicsOutputProtocol*, std::uint32_t mode, std::uint64_t* size,
                                    uefi::GraphicsOutputModeInformation** info) {
        if (auto failure = active->faults_.strike(Service::QueryMode)) return *failure;
        if (mode >= active->hardware_.modes.size()) return uefi::invalid_parameter;
        *size = sizeof **info;
        *info = static_cast<uefi::GraphicsOutputModeInformation*>(active->allocate(sizeof **info));
        **info = information(active->hardware_.modes[mode]);
        return uefi::success;
    }

    static Status EFIAPI set_mode(uefi::GraphicsOutputProtocol*, std::uint32_t mode) {
        if (auto failure = active->faults_.strike(Service::SetMode)) return *failure;
        if (mode >= active->hardware_.modes.size()) return uefi::unsupported;
        active->enter_mode(mode);
        return uefi::success;
    }

    static Status EFIAPI reset_disk(uefi::BlockIoProtocol*, std::uint8_t) { return uefi::success; }
    static Status EFIAPI flush_disk(uefi::BlockIoProtocol*) { return uefi::success; }

    static Status EFIAPI read_blocks(uefi::BlockIoProtocol* self, std::uint32_t media_id, uefi::Lba lba,
                                     std::uint64_t size, void* buffer) {
        const Disk& disk = *static_cast<DiskProtocol*>(self)->disk;
        if (auto failure = active->faults_.strike(Service::ReadBlocks)) return *failure;
        const uefi::BlockIoMedia& media = disk.media;
        if (media.MediaPresent == 0) return uefi::no_media;
        if (media_id != media.MediaId) return uefi::media_changed;
        if (size == 0) return uefi::success;
        if (size % media.BlockSize != 0) complain("ReadBlocks of parts of blocks");
        if (lba > media.LastBlock || size / media.BlockSize - 1 > media.LastBlock - lba)
            complain("ReadBlocks outside of the media");
        if (media.IoAlign > 1 && reinterpret_cast<std::uint64_t>(buffer) % media.IoAlign != 0)
            complain("ReadBlocks into a misaligned buffer");
        std::memset(buffer, 0, size);
        const std::uint64_t offset = lba * media.BlockSize;
        if (lba <= ~std::uint64_t{0} / media.BlockSize && offset < disk.content.size())
            std::memcpy(buffer, disk.content.data() + offset,
                        std::min<std::uint64_t>(size, disk.content.size() - offset));
        return uefi::success;
    }

    static Status EFIAPI write_blocks(uefi::BlockIoProtocol*, std::uint32_t, uefi::Lba, std::uint64_t,
                                      const void*) {
        complain("WriteBlocks is used");
    }

    static Status EFIAPI unimplemented() { complain("a service is called that this firmware lacks"); }

    template <typename Table>
    static void fill(Table& table, std::uint64_t signature) {
        table = {};
        auto* entry = reinterpret_cast<void**>(reinterpret_cast<std::uint8_t*>(&table) + sizeof table.Hdr);
        std::fill_n(entry, (sizeof table - sizeof table.Hdr) / sizeof *entry,
                    reinterpret_cast<void*>(unimplemented));
        table.Hdr = {signature, 2 << 16 | 80, sizeof table, 0, 0};
    }
};

Firmware::Firmware()
    : volume_(faults_),
      pages_(SavedMemory::fresh(pages_base, pages_size)),
      data_(SavedMemory::fresh(data_base, data_size)),
      scratch_(SavedMemory::fresh(scratch_base, scratch_size)),
      tables_(SavedMemory::fresh(tables_base, tables_size)),
      framebuffer_(SavedMemory::fresh(framebuffer_end - framebuffer_room, framebuffer_room)) {
    active = this;
    Services::fill(boot_, uefi::boot_services_signature);
    boot_.AllocatePages = Services::allocate_pages;
    boot_.FreePages = Services::free_pages;
    boot_.GetMemoryMap = Services::get_memory_map;
    boot_.AllocatePool = Services::allocate_pool;
    boot_.FreePool = Services::free_pool;
    boot_.WaitForEvent = Services::wait_for_event;
    boot_.CheckEvent = Services::check_event;
    boot_.HandleProtocol = Services::handle_protocol;
    boot_.Exit = Services::exit;
    boot_.Stall = Services::stall;
    boot_.SetWatchdogTimer = Services::set_watchdog_timer;
    boot_.LocateHandleBuffer = Services::locate_handle_buffer;
    boot_.LocateProtocol = Services::locate_protocol;
    Services::fill(runtime_, uefi::runtime_services_signature);
    runtime_.GetTime = Services::get_time;
    runtime_.GetVariable = Services::get_variable;
    runtime_.GetNextVariableName = Services::get_next_variable_name;
    input_ = {Services::reset_input, Services::read_key_stroke, &input_};
    output_ = {Services::reset_output,
               Services::output_string,
               nullptr,
               nullptr,
               Services::set_output,
               Services::set_output,
               Services::clear_screen,
               Services::set_cursor,
               Services::enable_cursor,
               &output_mode_};
    cpu_.SetMemoryAttributes = Services::set_memory_attributes;
    attributes_ = {Services::get_attributes, Services::set_attributes, Services::clear_attributes};
    graphics_ = {Services::query_mode, Services::set_mode, nullptr, &graphics_mode_};
    volume_.put_file("EFI/BOOT/BOOTX64.EFI", "MZ");
}

void Firmware::build(const Hardware& hardware) {
    hardware_ = hardware;
    disks_ = hardware.disks;
    variables_ = hardware.variables;
    const auto bytes_of = [](const std::string& text) {
        return std::vector<std::uint8_t>(text.begin(), text.end());
    };
    image_path_ = bytes_of(hardware.image_path);
    device_path_ = bytes_of(hardware.device_path);
    load_options_ = bytes_of(hardware.load_options);
    std::memcpy(reinterpret_cast<void*>(tables_base), hardware.platform_tables.data(),
                std::min<std::size_t>(hardware.platform_tables.size(), tables_size));
    entries_ = hardware.entries;
    system_ = {};
    system_.Hdr = {uefi::system_table_signature, 2 << 16 | 80, sizeof system_, 0, 0};
    system_.FirmwareVendor = vendor_;
    system_.ConsoleInHandle = system_.ConsoleOutHandle = system_.StandardErrorHandle =
        handle_of(console_handle);
    system_.ConIn = &input_;
    system_.ConOut = system_.StdErr = &output_;
    system_.BootServices = &boot_;
    system_.RuntimeServices = &runtime_;
    system_.NumberOfTableEntries = entries_.size();
    system_.ConfigurationTable = entries_.data();
    image_ = {};
    image_.Revision = 0x1000;
    image_.SystemTable = &system_;
    image_.DeviceHandle = handle_of(volume_handle);
    image_.FilePath = reinterpret_cast<uefi::DevicePathNode*>(image_path_.data());
    if (hardware.has_load_options) {
        image_.LoadOptions = load_options_.data();
        image_.LoadOptionsSize = static_cast<std::uint32_t>(load_options_.size());
    }
    disk_protocols_.clear();
    for (Disk& disk : disks_) {
        DiskProtocol& protocol = disk_protocols_.emplace_back();
        static_cast<uefi::BlockIoProtocol&>(protocol) = {1,
                                                         &disk.media,
                                                         Services::reset_disk,
                                                         Services::read_blocks,
                                                         Services::write_blocks,
                                                         Services::flush_disk};
        protocol.disk = &disk;
    }
    graphics_mode_.MaxMode = static_cast<std::uint32_t>(hardware_.modes.size());
    if (!hardware_.modes.empty()) enter_mode(hardware_.first_mode);
}

// The last pixel of a mode lies in front of the end of memory.
void Firmware::enter_mode(std::uint32_t mode) {
    now_.mode = mode;
    const GraphicsMode& entered = hardware_.modes[mode];
    mode_information_ = Services::information(entered);
    graphics_mode_.Mode = mode;
    graphics_mode_.Info = &mode_information_;
    graphics_mode_.SizeOfInfo = sizeof mode_information_;
    const std::uint64_t size = std::min(std::uint64_t{entered.pitch} * entered.height * 4, framebuffer_room);
    graphics_mode_.FrameBufferSize = size;
    graphics_mode_.FrameBufferBase = framebuffer_end - size;
}

}  // namespace korvane::fuzz
