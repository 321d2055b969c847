#include "native/executable_memory.h"

#include <algorithm>

#include "native/page_tables.h"
#include "platform/firmware.h"
#include "platform/processor.h"

namespace korvane::native {

constinit ExecutableMemory executable_memory;

namespace {

constexpr std::uint64_t access_attributes =
    uefi::memory_read_protect | uefi::memory_execute_protect | uefi::memory_read_only;

}  // namespace

// The bits are set before others are cleared: there is no moment in which the pages can be both written and
// executed.
bool ExecutableMemory::protect(const Pages& pages, std::uint64_t attributes) const {
    if (attributes_ == nullptr) return true;
    const std::uint64_t cleared = access_attributes & ~attributes;
    const bool is_set = attributes == 0 || !uefi::is_error(attributes_->SetMemoryAttributes(
                                               attributes_, pages.address, pages.bytes, attributes));
    if (!is_set || cleared == 0) return is_set;
    return !uefi::is_error(
        attributes_->ClearMemoryAttributes(attributes_, pages.address, pages.bytes, cleared));
}

bool ExecutableMemory::read_attributes(Pages& pages) const {
    std::uint64_t attributes = 0;
    if (uefi::is_error(
            attributes_->GetMemoryAttributes(attributes_, pages.address, pages.bytes, &attributes)))
        return false;
    pages.attributes = attributes & access_attributes;
    return true;
}

bool ExecutableMemory::allocate(std::uint64_t bytes, Pages& pages) const {
    uefi::PhysicalAddress address = 0;
    if (uefi::is_error(firmware.boot->AllocatePages(uefi::AllocateType::AllocateAnyPages,
                                                    uefi::MemoryType::EfiLoaderCode, bytes / uefi::page_size,
                                                    &address)))
        return false;
    pages = {address, bytes};
    const bool may_hold_code =
        attributes_ != nullptr
            ? read_attributes(pages)
            : has_highest_privilege() && allows_code(current_translation(), address, bytes);
    if (may_hold_code) return true;
    firmware.boot->FreePages(address, bytes / uefi::page_size);
    pages = {};
    return false;
}

void ExecutableMemory::release(const Pages& pages) const {
    // Firmware that refuses may have changed nothing in the first place; it is asked what the pages are now.
    protect(pages, pages.attributes);
    Pages now = pages;
    if (attributes_ == nullptr || (read_attributes(now) && now.attributes == pages.attributes))
        firmware.boot->FreePages(pages.address, pages.bytes / uefi::page_size);
}

bool ExecutableMemory::take() {
    if (state_ != State::none) return state_ == State::present;
    attributes_ = static_cast<uefi::MemoryAttributeProtocol*>(find_interface(uefi::memory_attribute_guid));
    state_ = allocate(first_code_bytes, pages_[0]) ? State::present : State::refused;
    return state_ == State::present;
}

// To protect pages takes firmware the longer the more they are. But at first all are as it gave them, which
// may be writable and executable.
std::span<std::byte> ExecutableMemory::begin_writing(std::size_t from, std::size_t bytes) {
    if (state_ != State::present) return {};
    const Pages& pages = pages_[current_];
    const std::size_t end = std::min<std::size_t>(from + bytes, pages.bytes);
    const std::size_t first =
        std::min<std::size_t>(from, pages.bytes - 1) / uefi::page_size * uefi::page_size;
    const std::size_t whole_pages = (end - first + uefi::page_size - 1) / uefi::page_size;
    written_ = {pages.address + first, whole_pages * uefi::page_size};
    if (!protect(pages.is_proven ? written_ : pages, uefi::memory_execute_protect)) {
        give_back();
        return {};
    }
    return {reinterpret_cast<std::byte*>(pages.address + from), end - from};
}

bool ExecutableMemory::end_writing() {
    if (state_ != State::present) return false;
    bool is_done = protect(written_, uefi::memory_read_only);
    // Firmware that only says so would let the machine die at the first jump.
    bool& is_proven = pages_[current_].is_proven;
    if (is_done && attributes_ != nullptr && !is_proven) {
        Pages now = written_;
        is_done = read_attributes(now) && now.attributes == uefi::memory_read_only;
        is_proven = is_done;
    }
    if (!is_done) give_back();
    return is_done;
}

bool ExecutableMemory::grow() {
    if (state_ != State::present || current_ + 1 == pages_.size()) return false;
    Pages& more = pages_[current_ + 1];
    if (more.bytes == 0 && !allocate(first_code_bytes << current_, more)) return false;
    ++current_;
    return true;
}

void ExecutableMemory::give_back() {
    if (state_ == State::present)
        for (const Pages& pages : pages_)
            if (pages.bytes != 0) release(pages);
    state_ = State::refused;
}

}  // namespace korvane::native
