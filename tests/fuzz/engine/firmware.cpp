#include "firmware.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "complaint.h"
#include "handles.h"
#include "steps.h"

namespace korvane::fuzz {

namespace {

// After so many presses nothing will end the line.
constexpr std::uint32_t most_escapes = 16;
// Looks that fail in one line, after which the keyboard is sound again.
constexpr std::uint32_t most_failed_looks = 5000;

}  // namespace

uefi::Handle Firmware::image_handle() {
    return handle_of(image_handle_number);
}

std::vector<uefi::MemoryDescriptor> Firmware::map() const {
    using uefi::MemoryType;
    const auto region = [](std::uint64_t base, std::uint64_t size, MemoryType type) {
        return uefi::MemoryDescriptor{type, base, 0, size / uefi::page_size, 0xF};
    };
    // What belongs to the interpreter cannot be written by the machine explorer, which would only damage it.
    std::vector<uefi::MemoryDescriptor> all = {
        region(data_base, data_size,
               now_.data_taken ? MemoryType::EfiRuntimeServicesData : MemoryType::EfiConventionalMemory),
        region(scratch_base, scratch_size, MemoryType::EfiLoaderData),
        region(tables_base, tables_size, MemoryType::EfiACPIReclaimMemory),
        region(framebuffer_end - framebuffer_room, framebuffer_room, MemoryType::EfiMemoryMappedIO),
    };
    all.insert(all.end(), hardware_.descriptors.begin(), hardware_.descriptors.end());
    return all;
}

bool Firmware::owns(std::uint64_t address, std::uint64_t bytes) const {
    const auto inside = [=](std::uint64_t begin, std::uint64_t end) {
        return address >= begin && address <= end && bytes <= end - address;
    };
    // The page behind a block is there to be hit by mistake.
    if (access_.has_guard_in(address, bytes)) return false;
    return inside(data_base, data_base + data_size) || inside(scratch_base, scratch_base + scratch_size) ||
           inside(tables_base, tables_base + tables_size) || inside(now_.next_page, pages_base + pages_size);
}

void* Firmware::find(uefi::Handle handle, const uefi::Guid& protocol) {
    if (handle == handle_of(console_handle)) {
        if (protocol == uefi::simple_text_input_guid) return &input_;
        if (protocol == uefi::simple_text_output_guid) return &output_;
        if (protocol == uefi::cpu_arch_guid) return &cpu_;
        if (protocol == uefi::memory_attribute_guid) return &attributes_;
        if (protocol == uefi::graphics_output_guid && !hardware_.modes.empty()) return &graphics_;
        return nullptr;
    }
    if (handle == handle_of(image_handle_number))
        return protocol == uefi::loaded_image_guid ? &image_ : nullptr;
    if (handle == handle_of(volume_handle)) {
        if (protocol == uefi::simple_file_system_guid)
            return static_cast<uefi::SimpleFileSystemProtocol*>(&volume_);
        if (protocol == uefi::device_path_guid && !device_path_.empty()) return device_path_.data();
        return nullptr;
    }
    for (std::size_t i = 0; i < disk_protocols_.size(); ++i)
        if (handle == handle_of(first_disk_handle + i) && protocol == uefi::block_io_guid)
            return static_cast<uefi::BlockIoProtocol*>(&disk_protocols_[i]);
    return nullptr;
}

std::vector<uefi::Handle> Firmware::all_with(const uefi::Guid* protocol) {
    std::vector<uefi::Handle> found;
    for (std::size_t i = 0; i < first_disk_handle + disk_protocols_.size(); ++i)
        if (protocol == nullptr || find(handle_of(i), *protocol) != nullptr) found.push_back(handle_of(i));
    return found;
}

// As on real firmware, fresh memory holds anything.
void* Firmware::allocate(std::uint64_t size) {
    auto* at = static_cast<std::uint8_t*>(std::malloc(std::max<std::uint64_t>(size, 1)));
    std::memset(at, 0xA5, std::min<std::uint64_t>(size, 4096));
    pool_.push_back({at, size, false, {}});
    return at;
}

std::size_t Firmware::pool_blocks() const {
    std::size_t count = 0;
    for (std::size_t i = saved_blocks_; i < pool_.size(); ++i)
        if (!pool_[i].freed) ++count;
    return count;
}

void Firmware::begin_line() {
    keys_.clear();
    next_key_ = 0;
    empty_looks_ = escapes_ = escape_at_look_ = failed_looks_ = 0;
}

// Of a look that finds no key.
void Firmware::look() {
    const bool pressed = escape_at_look_ != 0 && --escape_at_look_ == 0;
    if (!pressed && ++empty_looks_ < patience_) return;
    depends_on_looks_ = true;
    if (++escapes_ > most_escapes) stop_(Stop::given_up);
    empty_looks_ = 0;
    press({uefi::scan_escape, 0});
}

// A keyboard that fails for good would keep everybody waiting.
void Firmware::count_failed_look() {
    if (++failed_looks_ < most_failed_looks) return;
    failed_looks_ = 0;
    faults_.arm({});
}

void Firmware::save() {
    access_.before_saving();
    for (SavedMemory* memory : {&pages_, &data_, &scratch_, &tables_})
        memory->save(access_.guards());
    access_.after_saving();
    volume_.save();
    std::erase_if(pool_, [](const Block& block) { return block.freed; });
    for (Block& block : pool_)
        block.saved.assign(block.at, block.at + block.size);
    saved_blocks_ = pool_.size();
    saved_disks_ = disks_;
    saved_variables_ = variables_;
    saved_ = now_;
}

void Firmware::put_back() {
    access_.before_putting_back();
    for (SavedMemory* memory : {&pages_, &data_, &scratch_, &tables_})
        memory->put_back();
    access_.after_putting_back();
    volume_.put_back();
    for (std::size_t i = saved_blocks_; i < pool_.size(); ++i)
        if (!pool_[i].freed) std::free(pool_[i].at);
    pool_.resize(saved_blocks_);
    for (Block& block : pool_) {
        std::copy(block.saved.begin(), block.saved.end(), block.at);
        block.freed = false;
    }
    if (now_.mode != saved_.mode && !hardware_.modes.empty()) enter_mode(saved_.mode);
    now_ = saved_;
    // Where each disk is stays known to its protocol.
    for (std::size_t i = 0; i < std::min(disks_.size(), saved_disks_.size()); ++i)
        disks_[i] = saved_disks_[i];
    variables_ = saved_variables_;
    faults_.arm({});
    begin_line();
    depends_on_looks_ = false;
    forget_steps();
}

}  // namespace korvane::fuzz
