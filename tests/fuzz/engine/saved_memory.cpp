#include "saved_memory.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <utility>

#include "raw_memory.h"

namespace korvane::fuzz {

namespace {

constexpr std::uint64_t page_size = 4096;
constexpr std::uint32_t lessons = 200;  // inputs

[[noreturn]] void give_up(const char* what) {
    std::perror(what);
    std::exit(71);
}

std::uint8_t* at(std::uint64_t address) {
    return reinterpret_cast<std::uint8_t*>(address);
}

}  // namespace

SavedMemory SavedMemory::fresh(std::uint64_t base, std::uint64_t size) {
    void* const whole = mmap(at(base - page_size), size + 2 * page_size, PROT_NONE,
                             MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED_NOREPLACE | MAP_NORESERVE, -1, 0);
    if (whole != at(base - page_size)) give_up("memory at a fixed address");
    if (mprotect(at(base), size, PROT_READ | PROT_WRITE) != 0) give_up("mprotect");
    return {at(base), at(base + size)};
}

SavedMemory::SavedMemory(void* begin, void* end)
    : begin_(reinterpret_cast<std::uint64_t>(begin)), end_(reinterpret_cast<std::uint64_t>(end)) {
    pages_begin_ = (begin_ + page_size - 1) / page_size * page_size;
    pages_end_ = end_ / page_size * page_size;
    // All of it may lie on one page.
    if (pages_begin_ >= pages_end_) pages_begin_ = pages_end_ = end_;
}

void SavedMemory::save(const std::vector<std::uint64_t>& untouchable) {
    head_.resize(std::min(pages_begin_, end_) - begin_);
    copy_raw(head_.data(), at(begin_), head_.size());
    tail_.resize(end_ - pages_end_);
    copy_raw(tail_.data(), at(pages_end_), tail_.size());
    if (pages_begin_ != pages_end_) save_pages();
    untouchable_.assign(written_.size(), false);
    for (const std::uint64_t page : untouchable)
        if (page >= pages_begin_ && page < pages_end_) untouchable_[(page - pages_begin_) / page_size] = true;
}

// The memory is replaced by a private view of a file with its content: pages that are written become copies,
// and giving these up brings the file's back.
void SavedMemory::save_pages() {
    const std::uint64_t size = pages_end_ - pages_begin_;
    const int file = memfd_create("saved", MFD_CLOEXEC);
    if (file < 0 || ftruncate(file, static_cast<off_t>(size)) != 0) give_up("memfd");
    constexpr std::array<std::uint8_t, page_size> zeros{};
    std::array<std::uint8_t, page_size> page{};
    for (std::uint64_t offset = 0; offset < size; offset += page_size) {
        copy_raw(page.data(), at(pages_begin_ + offset), page_size);
        if (page == zeros) continue;
        if (pwrite(file, page.data(), page_size, static_cast<off_t>(offset)) !=
            static_cast<ssize_t>(page_size))
            give_up("pwrite");
    }
    void* const view = mmap(at(pages_begin_), size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_FIXED, file, 0);
    void* const saved = mmap(nullptr, size, PROT_READ, MAP_SHARED, file, 0);
    if (view == MAP_FAILED || saved == MAP_FAILED) give_up("mmap");
    saved_ = static_cast<const std::uint8_t*>(saved);
    close(file);
    written_.assign(size / page_size, 0);
    given_up_ = {{pages_begin_, pages_end_}};
}

// A private copy of a page of a file is no page of the file any more.
void SavedMemory::count_written_pages() {
    constexpr std::uint64_t present = std::uint64_t{1} << 63;
    constexpr std::uint64_t of_file = std::uint64_t{1} << 61;
    static const int page_map = open("/proc/self/pagemap", O_RDONLY | O_CLOEXEC);
    std::vector<std::uint64_t> entries(written_.size());
    const ssize_t size = static_cast<ssize_t>(entries.size() * sizeof entries[0]);
    const auto offset = static_cast<off_t>(pages_begin_ / page_size * sizeof entries[0]);
    if (pread(page_map, entries.data(), static_cast<std::size_t>(size), offset) != size) return;
    for (std::size_t i = 0; i < entries.size(); ++i)
        if ((entries[i] & (present | of_file)) == present) ++written_[i];
}

// Runs of pages that are seldom written between those that often are become copied ones too: each run that is
// given up costs a system call.
void SavedMemory::choose_copied_pages() {
    constexpr std::uint32_t often = lessons / 25;
    constexpr std::uint64_t short_run = 16 * page_size;
    copied_.clear();
    given_up_.clear();
    std::uint64_t end = pages_begin_;  // of what is decided
    bool joins = false;                // the run before and what is copied next may become one
    for (std::size_t i = 0; i < written_.size(); ++i) {
        const std::uint64_t page = pages_begin_ + i * page_size;
        if (untouchable_[i]) joins = false;
        if (untouchable_[i] || written_[i] < often) continue;
        if (std::exchange(joins, true) && page - end < short_run) {
            copied_.back().end = end = page + page_size;
            continue;
        }
        if (page != end) given_up_.push_back({end, page});
        copied_.push_back({page, page + page_size});
        end = page + page_size;
    }
    if (end != pages_end_) given_up_.push_back({end, pages_end_});
}

void SavedMemory::copy_written_pages() const {
    for (const Run& run : copied_) {
        for (std::uint64_t page = run.begin; page < run.end; page += page_size) {
            const std::uint8_t* saved = saved_ + (page - pages_begin_);
            if (!equal_raw(at(page), saved, page_size)) copy_raw(at(page), saved, page_size);
        }
    }
}

void SavedMemory::put_back() {
    copy_raw(at(begin_), head_.data(), head_.size());
    copy_raw(at(pages_end_), tail_.data(), tail_.size());
    if (lessons_ < lessons && pages_begin_ != pages_end_) {
        count_written_pages();
        if (++lessons_ == lessons) choose_copied_pages();
    }
    copy_written_pages();
    for (const Run& run : given_up_)
        madvise(at(run.begin), run.end - run.begin, MADV_DONTNEED);
}

}  // namespace korvane::fuzz
