// The transcript runner: plays the cases of tests/language on the hosted firmware.
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "forked.h"
#include "machine_builder.h"
#include "player.h"
#include "program_words.h"
#include "temporary_folder.h"
#include "transcript.h"

// The entry point of the interpreter when it is linked into this program.
extern "C" __attribute__((weak)) korvane::uefi::Status EFIAPI _ModuleEntryPoint(korvane::uefi::Handle,
                                                                                korvane::uefi::SystemTable*);

namespace korvane::transcript {
namespace {

struct Options {
    std::filesystem::path image = "build/korvane.efi";
    bool linked = false;
    bool first_failure = false;
    std::string filter;
    unsigned jobs = 4;
    PlayOptions play;
    std::vector<std::filesystem::path> inputs;
};

[[noreturn]] void usage() {
    std::fputs(
        "usage: language_tests [options] FILE-OR-FOLDER...\n"
        "  --image FILE    the application to test (build/korvane.efi)\n"
        "  --linked        test the interpreter that is linked into this program\n"
        "  --filter TEXT   only cases whose \"file: title\" contains TEXT\n"
        "  --first-failure stop at the first case that fails\n"
        "  --show          print the screen after every step\n"
        "  --jobs N        processes to use (4)\n"
        "  --patience MS   how long one step may take (10000)\n",
        stderr);
    std::exit(2);
}

Options parse_options(int count, char** words) {
    Options options;
    test::ProgramWords program(count, words, usage);
    for (std::string_view word; program.take(word);)
        if (word == "--image")
            options.image = program.value();
        else if (word == "--linked")
            options.linked = true;
        else if (word == "--filter")
            options.filter = program.value();
        else if (word == "--first-failure")
            options.first_failure = true;
        else if (word == "--show")
            options.play.show = true;
        else if (word == "--jobs")
            options.jobs = static_cast<unsigned>(std::max(1, std::atoi(program.value().c_str())));
        else if (word == "--patience")
            options.play.patience = std::chrono::milliseconds(std::atoi(program.value().c_str()));
        else if (word.starts_with("-"))
            usage();
        else
            options.inputs.emplace_back(word);
    if (options.inputs.empty()) usage();
    return options;
}

std::vector<std::filesystem::path> transcript_files(const std::vector<std::filesystem::path>& inputs) {
    std::vector<std::filesystem::path> files;
    for (const std::filesystem::path& input : inputs) {
        if (!std::filesystem::is_directory(input)) {
            files.push_back(input);
            continue;
        }
        for (const auto& entry : std::filesystem::recursive_directory_iterator(input))
            if (entry.path().extension() == ".txt") files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    return files;
}

// The cases that one started machine serves.
using Group = std::vector<const Case*>;

// Cases that can share a machine, in groups small enough to be spread over the processes.
std::vector<Group> make_groups(const std::vector<Case>& cases, unsigned jobs) {
    std::map<std::string, Group> by_machine;
    std::vector<Group> groups;
    for (const Case& test : cases)
        if (test.own_start)
            groups.push_back({&test});
        else
            by_machine[test.machine_key].push_back(&test);
    for (const auto& [key, group] : by_machine) {
        const std::size_t parts = std::min<std::size_t>(jobs, (group.size() + 7) / 8);
        const std::size_t size = (group.size() + parts - 1) / parts;
        for (std::size_t first = 0; first < group.size(); first += size)
            groups.emplace_back(
                group.begin() + static_cast<std::ptrdiff_t>(first),
                group.begin() + static_cast<std::ptrdiff_t>(std::min(first + size, group.size())));
    }
    return groups;
}

class Worker {
  public:
    Worker(const Options& options, std::filesystem::path scratch)
        : options_(options), scratch_(std::move(scratch)) {
        image_.path = options.image;
        if (options.linked) image_.linked_code = _ModuleEntryPoint;
    }

    // Plays the groups numbered first, first + step, ... and reports the failed cases; gives their number.
    int play(const std::vector<Group>& groups, std::size_t first, std::size_t step) {
        for (std::size_t i = first; i < groups.size() && !enough(failures_); i += step)
            play_group(groups[i]);
        return failures_;
    }

  private:
    bool enough(int failures) const { return options_.first_failure && failures != 0; }

    void play_group(const Group& group) {
        if (group.front()->own_start)
            return report(*group.front(), run_forked([&] { return play_alone(*group.front()); }));
        // The machine is started in a process of its own, from which the cases' processes descend.
        const ForkedResult result = run_forked([&] { return play_shared(group); });
        std::fputs(result.shown.c_str(), stdout);
        std::fflush(stdout);
        failures_ += std::atoi(result.report.c_str());
        if (!result.report.empty() && std::atoi(result.report.c_str()) == 0) report(*group.front(), result);
    }

    ForkedResult play_shared(const Group& group) {
        const std::filesystem::path folder = scratch_ / "shared";
        std::filesystem::remove_all(folder);
        auto machine = std::make_unique<host::Machine>(build_config(*group.front(), folder, false), image_);
        Case starting;
        starting.file = group.front()->file;
        starting.line = group.front()->line;
        Player starter(starting, machine, folder, image_, options_.play);
        const std::string problem = starter.play();
        if (!problem.empty()) return {problem, "", false};
        int failed = 0;
        std::string shown;
        for (const Case* test : group) {
            const ForkedResult result = run_forked([&] { return play_case(*test, machine, false); });
            shown += describe(*test, result);
            if (!result.report.empty()) ++failed;
            if (enough(failed)) break;
        }
        return {failed == 0 ? "" : std::to_string(failed), shown, false};
    }

    ForkedResult play_alone(const Case& test) {
        std::unique_ptr<host::Machine> machine;
        return play_case(test, machine, true);
    }

    ForkedResult play_case(const Case& test, std::unique_ptr<host::Machine>& machine, bool own_start) {
        const std::filesystem::path folder = scratch_ / "case";
        std::filesystem::remove_all(folder);
        if (own_start && test.image_on_volume) {
            const std::filesystem::path copy = image_file(test, folder);
            std::filesystem::create_directories(copy.parent_path());
            std::filesystem::copy_file(image_.path, copy);
        }
        if (own_start) {
            machine = std::make_unique<host::Machine>(build_config(test, folder, true), image_);
        } else {
            write_files(test, folder);
            if (!machine->firmware().volumes().empty())
                machine->firmware().volumes().front()->replace_folder(volume_folder(folder, 0));
        }
        Player player(test, machine, folder, image_, options_.play);
        ForkedResult result;
        result.report = player.play();
        result.shown = player.shown();
        return result;
    }

    static std::string describe(const Case& test, const ForkedResult& result) {
        if (result.report.empty()) return result.shown;
        return result.shown + "FAILED " + test.file.string() + ": " + test.title + "\n" + result.report +
               "\n";
    }

    void report(const Case& test, const ForkedResult& result) {
        std::fputs(describe(test, result).c_str(), stdout);
        std::fflush(stdout);
        if (!result.report.empty()) ++failures_;
    }

    const Options& options_;
    std::filesystem::path scratch_;
    host::ImageSource image_;
    int failures_ = 0;
};

// One process for each job; a process's status is the number of its failures.
int play_in_processes(const Options& options, const std::vector<Group>& groups,
                      const std::filesystem::path& scratch) {
    constexpr int most_failures = 100;
    std::vector<pid_t> workers;
    for (unsigned job = 0; job < options.jobs; ++job) {
        std::fflush(nullptr);
        const pid_t child = fork();
        if (child == 0) {
            Worker worker(options, scratch / std::to_string(job));
            const int failures = worker.play(groups, job, options.jobs);
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
    return failures;
}

int run(const Options& options) {
    std::vector<std::string> problems;
    std::vector<Case> cases;
    for (const std::filesystem::path& file : transcript_files(options.inputs))
        for (Case& test : read_transcript(file, problems))
            if ((test.file.string() + ": " + test.title).find(options.filter) != std::string::npos)
                cases.push_back(std::move(test));
    for (const std::string& problem : problems)
        std::printf("%s\n", problem.c_str());
    if (!problems.empty()) return 2;
    if (cases.empty()) {
        std::printf("no cases\n");
        return options.filter.empty() ? 0 : 2;
    }
    if (options.linked && _ModuleEntryPoint == nullptr) {
        std::printf("no interpreter is linked into this program\n");
        return 2;
    }

    const test::TemporaryFolder scratch;
    const std::vector<Group> groups = make_groups(cases, options.jobs);
    const int failures = play_in_processes(options, groups, scratch.path());
    std::printf("%zu cases, %d failed\n", cases.size(), failures);
    return failures == 0 ? 0 : 1;
}

}  // namespace
}  // namespace korvane::transcript

int main(int count, char** words) {
    return korvane::transcript::run(korvane::transcript::parse_options(count, words));
}
