// dump-code IMAGE LINES OUTPUT: types the lines of a file on the hosted firmware, and writes the machine code
// that the interpreter has made meanwhile to another file. It prints the address at which that lies, for the
// disassembler:
//
//     dump-code build/korvane.efi lines.txt code.bin
//     objdump -D -b binary -m i386:x86-64 -M intel --adjust-vma=ADDRESS code.bin
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include "machine.h"

namespace korvane::host {
namespace {

constexpr std::chrono::milliseconds time_limit{60000};

[[noreturn]] void fail(const std::string& message) {
    std::fprintf(stderr, "dump-code: %s\n", message.c_str());
    std::exit(EXIT_FAILURE);
}

void type_lines(Machine& machine, std::istream& lines) {
    if (machine.run(time_limit) != Stop::waits_for_key) fail("the image does not start");
    machine.learn_waiting_place();
    for (std::string line; std::getline(lines, line);) {
        for (const char character : line + '\r')
            machine.firmware().keyboard().press({0, static_cast<char16_t>(character)});
        if (machine.run(time_limit) != Stop::waits_for_key)
            fail("no prompt after: " + line + machine.fault_report());
    }
}

// The memory for code, each region up to the last byte that is not as it was taken, one behind the other.
void write_code(Machine& machine, const char* output) {
    const std::vector<MemoryRegion> regions = machine.firmware().memory().executable_regions();
    if (regions.empty()) fail("no machine code was made");
    constexpr std::uint8_t fresh = 0xA5;
    std::ofstream file(output, std::ios::binary);
    for (const MemoryRegion& region : regions) {
        const auto* first = reinterpret_cast<const std::uint8_t*>(region.base);
        std::uint64_t size = region.pages * uefi::page_size;
        while (size != 0 && (first[size - 1] == fresh || first[size - 1] == 0))
            --size;
        file.write(reinterpret_cast<const char*>(first), static_cast<std::streamsize>(size));
        std::printf("%#llx\n", static_cast<unsigned long long>(region.base));
    }
    if (!file.flush()) fail(std::string("cannot write ") + output);
}

}  // namespace
}  // namespace korvane::host

int main(int count, char** words) {
    using namespace korvane::host;
    if (count != 4) fail("dump-code IMAGE LINES OUTPUT");
    std::ifstream lines(words[2]);
    if (!lines) fail(std::string("cannot read ") + words[2]);
    Machine machine(Config{}, ImageSource::file(words[1]));
    type_lines(machine, lines);
    write_code(machine, words[3]);
}
