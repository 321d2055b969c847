// Plays the transcripts of tests/language on the WebAssembly module, which runs in Debian's Chromium: the
// same cases, read and played by the same code as on the hosted firmware.
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

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
    std::string filter;
    unsigned jobs = 2;
    PlayOptions play;
    std::vector<std::filesystem::path> inputs;
};

[[noreturn]] void usage() {
    std::fputs(
        "usage: web_language_tests [options] FILE-OR-FOLDER...\n"
        "  --node PROGRAM     Node, which starts the browser (node)\n"
        "  --module FILE      the module to test (build/wasm/korvane-test.wasm)\n"
        "  --image FILE       the image that lies on the volumes (build/korvane.efi)\n"
        "  --exceptions FILE  the cases that cannot pass here, with the reasons "
        "(tests/web/machine/exceptions.txt)\n"
        "  --filter TEXT      only cases whose \"file: title\" contains TEXT\n"
        "  --show             print the screen after every step\n"
        "  --jobs N           processes to use (2)\n",
        stderr);
    std::exit(2);
}

Options parse_options(int count, char** words) {
    Options options;
    test::ProgramWords program(count, words, usage);
    for (std::string_view word; program.take(word);)
        if (word == "--node")
            options.node = program.value();
        else if (word == "--module")
            options.module = program.value();
        else if (word == "--image")
            options.image = program.value();
        else if (word == "--exceptions")
            options.exceptions = program.value();
        else if (word == "--filter")
            options.filter = program.value();
        else if (word == "--show")
            options.play.show = true;
        else if (word == "--jobs")
            options.jobs = static_cast<unsigned>(std::max(1, std::atoi(program.value().c_str())));
        else if (word.starts_with("-"))
            usage();
        else
            options.inputs.emplace_back(word);
    if (options.inputs.empty()) usage();
    return options;
}

std::string name_of(const Case& test) {
    return test.file.string() + ": " + test.title;
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

std::vector<Case> read_cases(const Options& options) {
    std::vector<std::filesystem::path> files;
    for (const std::filesystem::path& input : options.inputs) {
        if (!std::filesystem::is_directory(input)) files.push_back(input);
        if (std::filesystem::is_directory(input))
            for (const auto& entry : std::filesystem::recursive_directory_iterator(input))
                if (entry.path().extension() == ".txt") files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    std::vector<Case> cases;
    std::vector<std::string> problems;
    for (const std::filesystem::path& file : files)
        for (Case& test : read_transcript(file, problems))
            if (name_of(test).find(options.filter) != std::string::npos) cases.push_back(std::move(test));
    for (const std::string& problem : problems)
        std::printf("%s\n", problem.c_str());
    return cases;
}

std::string play(const Case& test, const Options& options, const std::filesystem::path& folder) {
    const host::ImageSource image = host::ImageSource::file(options.image);
    std::filesystem::remove_all(folder);
    std::filesystem::create_directories(folder);
    if (test.own_start && test.image_on_volume) {
        const std::filesystem::path copy = image_file(test, folder);
        std::filesystem::create_directories(copy.parent_path());
        std::filesystem::copy_file(options.image, copy);
    }
    auto machine = std::make_unique<host::Machine>(build_config(test, folder, test.own_start), image);
    if (!test.own_start) {
        // What is on the volume is put there behind the start, as where one machine serves many cases.
        Case starting;
        starting.file = test.file;
        starting.line = test.line;
        Player starter(starting, machine, folder, image, options.play);
        const std::string problem = starter.play();
        if (!problem.empty()) return problem;
        write_files(test, folder);
    }
    Player player(test, machine, folder, image, options.play);
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
    const std::vector<Case> cases = read_cases(options);
    const test::TemporaryFolder scratch;
    std::vector<pid_t> workers;
    for (unsigned job = 0; job < options.jobs; ++job) {
        std::fflush(nullptr);
        const pid_t child = fork();
        if (child == 0) {
            constexpr int most_failures = 100;
            const int failures =
                play_share(cases, job, options.jobs, options, scratch.path() / std::to_string(job));
            std::fflush(nullptr);
            _exit(std::min(failures, most_failures));
        }
        workers.push_back(child);
    }
    int failures = 0;
    for (const pid_t worker : workers) {
        int status = 0;
        waitpid(worker, &status, 0);
        failures += WIFEXITED(status) ? WEXITSTATUS(status) : 1;
    }
    std::printf("%zu cases, %d failed\n", cases.size(), failures);
    return failures == 0 && !cases.empty() ? 0 : 1;
}

}  // namespace
}  // namespace korvane::transcript

int main(int count, char** words) {
    return korvane::transcript::run(korvane::transcript::parse_options(count, words));
}
