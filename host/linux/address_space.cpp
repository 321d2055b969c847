#include "address_space.h"

#include <sys/mman.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "platform/uefi.h"

namespace korvane::host {

namespace {

int protection(Access access) {
    switch (access) {
        case Access::none:
            return PROT_NONE;
        case Access::read:
            return PROT_READ;
        case Access::read_write:
            return PROT_READ | PROT_WRITE;
        case Access::read_execute:
            return PROT_READ | PROT_EXEC;
        case Access::all:
            return PROT_READ | PROT_WRITE | PROT_EXEC;
    }
    return PROT_NONE;
}

[[noreturn]] void fail(const char* what, std::uint64_t base, std::uint64_t size) {
    std::fprintf(stderr, "hosted firmware: cannot %s %#llx bytes at %#llx: %s\n", what,
                 static_cast<unsigned long long>(size), static_cast<unsigned long long>(base),
                 std::strerror(errno));
    std::exit(71);
}

}  // namespace

Mapping::Mapping(std::uint64_t base, std::uint64_t size) : base_(base), size_(size) {
    void* wanted = reinterpret_cast<void*>(base - uefi::page_size);
    const std::uint64_t with_guards = size + 2 * uefi::page_size;
    void* mapped = mmap(wanted, with_guards, PROT_NONE,
                        MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE | MAP_FIXED_NOREPLACE, -1, 0);
    if (mapped != wanted) fail("map", base, size);
    protect(0, size, Access::read_write);
}

Mapping::~Mapping() {
    if (size_ != 0) munmap(reinterpret_cast<void*>(base_ - uefi::page_size), size_ + 2 * uefi::page_size);
}

void Mapping::make_present(std::uint64_t offset, std::uint64_t size) {
    madvise(reinterpret_cast<void*>(base_ + offset), size, MADV_POPULATE_WRITE);
}

void Mapping::protect(std::uint64_t offset, std::uint64_t size, Access access) {
    if (size == 0) return;
    if (mprotect(reinterpret_cast<void*>(base_ + offset), size, protection(access)) != 0)
        fail("protect", base_ + offset, size);
}

}  // namespace korvane::host
