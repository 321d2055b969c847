// Plays the transcripts of tests/language on the WebAssembly module, which runs in Debian's Chromium: the
// same cases, read and played by the same code as on the hosted firmware.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "cases.h"
#include "machine_builder.h"
#include "player.h"
#include "program_words.h"
#include "server.h"
#include "temporary_folder.h"
#include "transcript.h"

namespace korvane::transcript {

namespace {

struct Options {
    std::string node = "node";
    std::string server = "tests/web/machine/browser_server.mjs";
    std::string module = "build/wasm/korvane-test.wasm";
    std::string image = "build/korvane.efi";
    std::string exceptions = "tests/web/machine/exceptions.txt";
    CaseChoice cases;
};

constexpr char usage[] = R"(usage: web_language_tests [options] FILE-OR-FOLDER...
  --node PROGRAM     Node, which starts the browser (node)
  --module FILE      the module to test (build/wasm/korvane-test.wasm)
  --image FILE       the image that lies on the volumes (build/korvane.efi)
  --exceptions FILE  the cases that cannot pass here, with the reasons (tests/web/machine/exceptions.txt)
  --filter TEXT      only cases whose "file: title" contains TEXT
  --show             print the screen after every step
  --jobs N           processes to use (2)
)";

Options parse_options(int count, char** words) {
    Options options;
    options.cases.jobs = 2;
    options.cases.play.every_failure = false;
    // Beside much other work a browser takes long for little.
    options.cases.play.patience = std::chrono::seconds(60);
    const test::ProgramOptions known =
        options.cases.options() + test::ProgramOptions{{"--node", &options.node},
                                                       {"--module", &options.module},
                                                       {"--image", &options.image},
                                                       {"--exceptions", &options.exceptions}};
    test::read_program_words(count, words, usage, known, &options.cases.inputs);
    if (options.cases.inputs.empty() || options.cases.jobs == 0) test::end_with_usage(usage);
    return options;
}

// The reasons by the names of the cases. A line that begins with a blank tells the reason for those above it,
// up to the reason before.
std::map<std::string, std::string> read_exceptions(const std::string& file) {
    std::map<std::string, std::string> reasons;
    std::vector<std::string> names;
    std::ifstream stream(file);
    for (std::string line; std::getline(stream, line);) {
        if (line.empty() || line.front() == '#') continue;
        if (line.front() != ' ') {
            names.push_back(line);
            continue;
        }
        for (const std::string& name : names)
            reasons[name] = line.substr(line.find_first_not_of(' '));
        names.clear();
    }
    return reasons;
}

std::string play(const Case& test, const Options& options, const std::filesystem::path& folder) {
    const host::ImageSource image = host::ImageSource::file(options.image);
    std::filesystem::remove_all(folder);
    std::filesystem::create_directories(folder);
    if (test.own_start) put_image_on_volume(test, folder, options.image);
    auto machine = std::make_unique<host::Machine>(build_config(test, folder, test.own_start), image);
    if (!test.own_start) {
        // What is on the volume is put there behind the start, as where one machine serves many cases.
        const std::string problem = start_machine(test, machine, folder, image, options.cases.play);
        if (!problem.empty()) return problem;
        write_files(test, folder);
    }
    Player player(test, machine, folder, image, options.cases.play);
    const std::string report = player.play();
    std::fputs(player.shown().c_str(), stdout);
    return report;
}

// Plays every `step`-th case; the number of those that did not come out as they should.
int play_share(const std::vector<Case>& cases, std::size_t first, std::size_t step, const Options& options,
               const std::filesystem::path& folder) {
    const std::map<std::string, std::string> exceptions = read_exceptions(options.exceptions);
    std::filesystem::create_directories(folder);
    // What a browser leaves behind goes with the rest.
    setenv("TMPDIR", folder.parent_path().c_str(), 1);
    web::Server server(options.node, options.server, options.module);
    host::Machine::use(server, folder);
    int failures = 0;
    for (std::size_t i = first; i < cases.size(); i += step) {
        const std::string name = name_of(cases[i]);
        const std::string report = play(cases[i], options, folder / "case");
        const bool may_fail = exceptions.contains(name);
        if (report.empty() != may_fail) continue;
        ++failures;
        if (may_fail)
            std::printf("PASSED %s\nwhich is said not to: %s\n\n", name.c_str(), exceptions.at(name).c_str());
        else
            std::printf("FAILED %s\n%s\n", name.c_str(), report.c_str());
        std::fflush(stdout);
    }
    return failures;
}

int run(const Options& options) {
    std::vector<std::string> problems;
    const std::vector<Case> cases = read_cases(options.cases, problems);
    if (!problems.empty() || cases.empty()) return 2;
    const test::TemporaryFolder scratch;
    return conclude(cases.size(), play_in_processes(options.cases, [&](unsigned job) {
                        const std::filesystem::path folder = scratch.path() / std::to_string(job);
                        return play_share(cases, job, options.cases.jobs, options, folder);
                    }));
}

}  // namespace
}  // namespace korvane::transcript

int main(int count, char** words) {
    return korvane::transcript::run(korvane::transcript::parse_options(count, words));
}
