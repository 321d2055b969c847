// The fuzzer: libFuzzer makes inputs for one target, guided by what of the interpreter they reach.
//
//     korvane-fuzzer --target=session [libFuzzer's options] CORPUS...
//
// With KORVANE_FUZZ_COUNTS the counts are kept in that file.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "counted.h"
#include "machine.h"
#include "targets.h"

namespace {

const korvane::fuzz::Target* target = nullptr;
const char* counts_file = nullptr;

}  // namespace

// The machine stays until the process ends: the interpreter never returns.
extern "C" int LLVMFuzzerInitialize(int* count, char*** words) {
    using namespace korvane::fuzz;
    constexpr std::string_view option = "--target=";
    for (int i = 1; i < *count; ++i) {
        const std::string_view word = (*words)[i];
        if (word.starts_with(option)) target = find_target(word.substr(option.size()));
    }
    if (target == nullptr) {
        std::fputs("--target=NAME is wanted; there are:\n", stderr);
        for (const Target& one : targets())
            std::fprintf(stderr, "  %-16s %s\n", one.name.data(), one.reads.data());
        std::exit(2);
    }
    counts_file = std::getenv("KORVANE_FUZZ_COUNTS");
    static Machine the_machine;
    prepare(*target);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace korvane::fuzz;
    play(*target, {reinterpret_cast<const char*>(data), size});
    if (counts_file != nullptr) write_counts(counts_file, target->name, false);
    return 0;
}
