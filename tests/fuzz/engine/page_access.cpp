#include "page_access.h"

#include <sys/mman.h>

#include <algorithm>

#include "complaint.h"
#include "platform/uefi.h"

namespace korvane::fuzz {

namespace {

void set_access(std::uint64_t page, bool allowed) {
    mprotect(reinterpret_cast<void*>(page), uefi::page_size, allowed ? PROT_READ | PROT_WRITE : PROT_NONE);
}

// What the firmware gives pages: nobody may execute them.
constexpr std::uint64_t first_attributes = uefi::memory_execute_protect;

int access_of(std::uint64_t attributes) {
    if ((attributes & uefi::memory_read_protect) != 0) return PROT_NONE;
    return PROT_READ | ((attributes & uefi::memory_read_only) != 0 ? 0 : PROT_WRITE) |
           ((attributes & uefi::memory_execute_protect) != 0 ? 0 : PROT_EXEC);
}

void set_attributes(std::uint64_t address, std::uint64_t bytes, std::uint64_t attributes) {
    mprotect(reinterpret_cast<void*>(address), bytes, access_of(attributes));
}

}  // namespace

void PageAccess::guard(std::uint64_t page) {
    guards_.push_back(page);
    set_access(page, false);
}

bool PageAccess::has_guard_in(std::uint64_t address, std::uint64_t bytes) const {
    return std::any_of(
        guards_.begin(), guards_.end(),
        [=](std::uint64_t guard) { return address < guard + uefi::page_size && guard < address + bytes; });
}

bool PageAccess::has_code() const {
    return std::any_of(
        protected_.begin(), protected_.end(),
        [](const auto& page) { return (page.second & uefi::memory_execute_protect) == 0; });
}

std::uint64_t PageAccess::attributes_of(std::uint64_t page) const {
    const auto known = protected_.find(page);
    return known == protected_.end() ? first_attributes : known->second;
}

bool PageAccess::read(std::uint64_t address, std::uint64_t bytes, std::uint64_t& attributes) const {
    attributes = attributes_of(address);
    for (std::uint64_t page = address; page < address + bytes; page += uefi::page_size)
        if (attributes_of(page) != attributes) return false;
    return true;
}

void PageAccess::change(std::uint64_t address, std::uint64_t bytes, std::uint64_t set,
                        std::uint64_t cleared) {
    for (std::uint64_t page = address; page < address + bytes; page += uefi::page_size) {
        const std::uint64_t attributes = (attributes_of(page) | set) & ~cleared;
        if ((attributes & (uefi::memory_execute_protect | uefi::memory_read_only)) == 0)
            complain("pages that may be both written and executed");
        protected_[page] = attributes;
    }
    protect(address, address + bytes);
}

// Pages that lie side by side and are alike take one system call.
void PageAccess::protect(std::uint64_t begin, std::uint64_t end) const {
    auto first = protected_.lower_bound(begin);
    while (first != protected_.end() && first->first < end) {
        std::uint64_t next = first->first;
        auto last = first;
        while (last != protected_.end() && last->first == next && last->first < end &&
               last->second == first->second) {
            next += uefi::page_size;
            ++last;
        }
        set_attributes(first->first, next - first->first, first->second);
        first = last;
    }
}

// As if nobody had ever changed them.
void PageAccess::unprotect() const {
    if (protected_.empty()) return;
    const std::uint64_t begin = protected_.begin()->first;
    const std::uint64_t end = protected_.rbegin()->first + uefi::page_size;
    if ((end - begin) / uefi::page_size == protected_.size())
        return set_attributes(begin, end - begin, first_attributes);
    for (const auto& [page, attributes] : protected_)
        set_attributes(page, uefi::page_size, first_attributes);
}

void PageAccess::before_saving() {
    for (const std::uint64_t guard : guards_)
        set_access(guard, true);
    unprotect();
}

void PageAccess::after_saving() {
    for (const std::uint64_t guard : guards_)
        set_access(guard, false);
    protect_all();
    saved_guards_ = guards_.size();
    saved_protected_ = protected_;
}

void PageAccess::before_putting_back() {
    for (std::size_t i = saved_guards_; i < guards_.size(); ++i)
        set_access(guards_[i], true);
    guards_.resize(saved_guards_);
    unprotect();
}

void PageAccess::after_putting_back() {
    protected_ = saved_protected_;
    protect_all();
}

}  // namespace korvane::fuzz
