// The fuzzer: libFuzzer makes inputs for one target, guided by what of the interpreter they reach.
//
//     korvane-fuzzer --target=session [libFuzzer's options] CORPUS...
//
// With KORVANE_FUZZ_COMPANION, the path of korvane-companion, that interpreter must come to the same states;
// with KORVANE_FUZZ_COMPARED=N too, only one of N inputs is played by both. With KORVANE_FUZZ_COUNTS the
// counts are kept in a file in that folder.
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <string>
#include <string_view>

#include "companion.h"
#include "counted.h"
#include "line_mutations.h"
#include "machine.h"
#include "player.h"
#include "targets.h"

namespace {

const korvane::fuzz::Target* target = nullptr;
std::filesystem::path counts_file;
korvane::fuzz::Companion* companion = nullptr;
std::uint64_t inputs_for_each_compared = 1;

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
    if (const char* folder = std::getenv("KORVANE_FUZZ_COUNTS"))
        counts_file =
            std::filesystem::path(folder) / (std::string(target->name) + "-" + std::to_string(getpid()) +
                                             "-" + std::to_string(std::time(nullptr)) + ".json");
    if (const char* program = std::getenv("KORVANE_FUZZ_COMPANION")) {
        static Companion the_companion(program, target->name);
        companion = &the_companion;
    }
    if (const char* interval = std::getenv("KORVANE_FUZZ_COMPARED"))
        inputs_for_each_compared = std::max(1ULL, std::strtoull(interval, nullptr, 10));
    static Machine the_machine;
    prepare(*target);
    return 0;
}

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t most);

// What is typed is changed by lines for the most part, everything else by bytes.
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t most,
                                               unsigned seed) {
    if (target->typed)
        if (const std::size_t changed = korvane::fuzz::change_lines(data, size, most, seed)) return changed;
    return LLVMFuzzerMutate(data, size, most);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace korvane::fuzz;
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    const bool played = play(input);
    const bool compares = companion != nullptr && counts.inputs % inputs_for_each_compared == 0;
    if (compares && played && is_comparable(input))
        if (const auto state = companion->play(input))
            compare(describe_state(), *state, machine->firmware().has_code());
    if (!counts_file.empty()) write_counts(counts_file, target->name, false);
    return 0;
}
