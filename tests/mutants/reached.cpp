// Notes which places of the interpreter's code are reached, for tools/mutate.py, which links this into the
// tests with an interpreter that was compiled with -fsanitize-coverage=trace-pc.
//
// Every process writes what it reaches into a file of its own in the folder KORVANE_REACHED: its name in the
// first page, then one bit for each byte of the program's code. A process that has been forked goes on in its
// parent's file, until it begins a case of its own.
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

extern "C" {
extern const char __executable_start;  // by the linker
extern const char etext;
void __sanitizer_cov_trace_pc();
void korvane_case_begins(const char* name);
}

namespace {

constexpr std::size_t name_bytes = 4096;

std::uint8_t* bits = nullptr;

void begin_file(const char* name) {
    const char* folder = std::getenv("KORVANE_REACHED");
    if (folder == nullptr) return;
    char path[4096];
    std::snprintf(path, sizeof path, "%s/%d", folder, static_cast<int>(getpid()));
    const int file = open(path, O_RDWR | O_CREAT, 0600);
    const auto size = name_bytes + static_cast<std::size_t>(&etext - &__executable_start) / 8 + 1;
    if (file < 0 || ftruncate(file, static_cast<off_t>(size)) != 0) std::abort();
    void* memory = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    if (memory == MAP_FAILED) std::abort();
    close(file);
    std::strncpy(static_cast<char*>(memory), name, name_bytes - 1);
    bits = static_cast<std::uint8_t*>(memory) + name_bytes;
}

struct Beginning {
    Beginning() {
        const char* name = std::getenv("KORVANE_REACHED_BY");
        if (name != nullptr) begin_file(name);
    }
};
const Beginning beginning;

}  // namespace

void __sanitizer_cov_trace_pc() {
    if (bits == nullptr) return;
    const auto at =
        static_cast<std::size_t>(static_cast<const char*>(__builtin_return_address(0)) - &__executable_start);
    bits[at / 8] |= static_cast<std::uint8_t>(1U << at % 8);
}

void korvane_case_begins(const char* name) {
    begin_file(name);
}
