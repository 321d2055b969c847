// Plays kept inputs: those of a target, or all of a folder that has one folder for each target.
//
//     korvane-replay --target NAME FILE...
//     korvane-replay --all FOLDER
//     korvane-replay --measure SECONDS --target NAME FILE...    tells how many lines and inputs a second
//                                                               of processor time
//
// With --companion PROGRAM that interpreter, korvane-companion, must come to the same states.
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "companion.h"
#include "player.h"
#include "program_words.h"
#include "targets.h"

namespace korvane::fuzz {
namespace {

namespace fs = std::filesystem;

struct Options {
    std::string target;
    fs::path all;
    double seconds = 0;
    std::string companion;
    std::vector<fs::path> files;
};

constexpr char usage[] =
    R"(usage: korvane-replay [--companion PROGRAM] [--measure SECONDS] --target NAME FILE... | --all FOLDER
)";

Options parse_options(int count, char** words) {
    Options options;
    test::read_program_words(count, words, usage,
                             {{"--target", &options.target},
                              {"--all", &options.all},
                              {"--companion", &options.companion},
                              {"--measure", &options.seconds}},
                             &options.files);
    if (options.target.empty() == options.all.empty()) test::end_with_usage(usage);
    return options;
}

std::string content_of(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::vector<fs::path> files_in(const std::vector<fs::path>& places) {
    std::vector<fs::path> files;
    for (const fs::path& place : places) {
        if (!fs::is_directory(place)) {
            files.push_back(place);
            continue;
        }
        for (const fs::directory_entry& entry : fs::directory_iterator(place))
            if (entry.is_regular_file()) files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    return files;
}

// In this process: a finding ends it, and what was played is told before.
int play_target(const Target& target, const std::vector<fs::path>& files, double seconds,
                const std::string& companion_program) {
    std::optional<Companion> companion;
    if (!companion_program.empty()) companion.emplace(companion_program, target.name);
    std::vector<std::string> inputs;
    for (const fs::path& file : files)
        inputs.push_back(content_of(file));
    static Machine machine;
    prepare(target);
    // Processor time, which does not depend on what else goes on.
    const std::clock_t begin = std::clock();
    const auto passed = [&] { return static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC; };
    do {
        for (std::size_t i = 0; i < inputs.size(); ++i) {
            if (seconds == 0) std::fprintf(stderr, "%s\r", files[i].c_str());
            const bool played = play(inputs[i]);
            if (companion && played && is_comparable(inputs[i]))
                if (const auto state = companion->play(inputs[i]))
                    compare(describe_state(), *state, machine.firmware().has_code());
        }
    } while (passed() < seconds);
    std::printf(
        "%s: %llu inputs, %llu lines, %llu compared, %llu of these with native code", target.name.data(),
        static_cast<unsigned long long>(counts.inputs), static_cast<unsigned long long>(counts.lines),
        static_cast<unsigned long long>(counts.compared), static_cast<unsigned long long>(counts.native));
    if (counts.most_steps != 0)
        std::printf(", at most %llu steps without a look at the keyboard",
                    static_cast<unsigned long long>(counts.most_steps));
    if (seconds != 0)
        std::printf(", %.0f inputs and %.0f lines a second", static_cast<double>(counts.inputs) / passed(),
                    static_cast<double>(counts.lines) / passed());
    std::printf("\n");
    std::fflush(stdout);
    return inputs.empty() ? 1 : 0;
}

// Each target in a process of its own: a machine is made for one.
int play_all(const fs::path& folder, const std::string& companion) {
    int failures = 0;
    for (const Target& target : targets()) {
        const std::vector<fs::path> files = files_in({folder / target.name});
        std::fflush(nullptr);
        const pid_t child = fork();
        if (child == 0) _exit(play_target(target, files, 0, companion));
        int status = 0;
        waitpid(child, &status, 0);
        if (status == 0) continue;
        ++failures;
        std::printf("%s: FAILED\n", target.name.data());
    }
    return failures == 0 ? 0 : 1;
}

}  // namespace
}  // namespace korvane::fuzz

int main(int count, char** words) {
    using namespace korvane::fuzz;
    const Options options = parse_options(count, words);
    if (!options.all.empty()) return play_all(options.all, options.companion);
    const Target* target = find_target(options.target);
    if (target == nullptr) korvane::test::end_with_usage(usage);
    return play_target(*target, files_in(options.files), options.seconds, options.companion);
}
