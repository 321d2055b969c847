// The transcript runner: plays the cases of tests/language on the hosted firmware.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "cases.h"
#include "forked.h"
#include "machine_builder.h"
#include "played_image.h"
#include "player.h"
#include "program_words.h"
#include "stack_use.h"
#include "temporary_folder.h"
#include "transcript.h"

// Is told of each case in the process that plays it, where something that wants to know is linked into this
// program.
extern "C" __attribute__((weak)) void korvane_case_begins(const char* name);

namespace korvane::transcript {
namespace {

struct Options {
    test::PlayedImage image;
    CaseChoice cases;
    bool first_failure = false;
};

constexpr char usage[] = R"(usage: language_tests [options] FILE-OR-FOLDER...
  --image FILE    the application to test (build/korvane.efi)
  --linked        test the interpreter that is linked into this program
  --filter TEXT   only cases whose "file: title" contains TEXT
  --named FILE    only cases whose "file: title" is a line of FILE, in its order
  --first-failure stop at the first case that fails
  --show          print the screen after every step
  --jobs N        processes to use (4)
  --patience MS   how long one step may take (10000)
)";

Options parse_options(int count, char** words) {
    Options options;
    const test::ProgramOptions known = options.image.options() + options.cases.options() +
                                       test::ProgramOptions{{"--patience", &options.cases.play.patience},
                                                            {"--first-failure", &options.first_failure}};
    test::read_program_words(count, words, usage, known, &options.cases.inputs);
    if (options.cases.inputs.empty() || options.cases.jobs == 0) test::end_with_usage(usage);
    return options;
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
        : options_(options), scratch_(std::move(scratch)), image_(options.image.source()) {}

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
        const std::string problem =
            start_machine(*group.front(), machine, folder, image_, options_.cases.play);
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
        if (korvane_case_begins != nullptr) korvane_case_begins(name_of(test).c_str());
        const std::filesystem::path folder = scratch_ / "case";
        std::filesystem::remove_all(folder);
        if (own_start) {
            put_image_on_volume(test, folder, image_.path);
            machine = std::make_unique<host::Machine>(build_config(test, folder, true), image_);
        } else {
            write_files(test, folder);
            if (!machine->firmware().volumes().empty())
                machine->firmware().volumes().front()->replace_folder(volume_folder(folder, 0));
        }
        Player player(test, machine, folder, image_, options_.cases.play);
        ForkedResult result;
        result.report = player.play();
        result.shown = player.shown();
        // A sanitizer's stack frames are many times larger.
        if (result.report.empty() && image_.linked_code == nullptr && machine != nullptr)
            result.report = check_stack(machine->firmware());
        return result;
    }

    static std::string check_stack(host::Firmware& firmware) {
        const std::size_t used = test::stack_used(firmware);
        if (used <= test::most_stack) return "";
        return std::to_string(used) + " bytes of the stack were used, of which " +
               std::to_string(test::most_stack) + " may be\n";
    }

    static std::string describe(const Case& test, const ForkedResult& result) {
        if (result.report.empty()) return result.shown;
        return result.shown + "FAILED " + name_of(test) + "\n" + result.report + "\n";
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

int run(const Options& options) {
    std::vector<std::string> problems;
    const std::vector<Case> cases = read_cases(options.cases, problems);
    if (!problems.empty()) return 2;
    if (cases.empty()) {
        std::printf("no cases\n");
        return options.cases.filter.empty() ? 0 : 2;
    }
    if (options.image.linked && _ModuleEntryPoint == nullptr) {
        std::printf("no interpreter is linked into this program\n");
        return 2;
    }

    const test::TemporaryFolder scratch;
    const std::vector<Group> groups = make_groups(cases, options.cases.jobs);
    return conclude(cases.size(), play_in_processes(options.cases, [&](unsigned job) {
                        Worker worker(options, scratch.path() / std::to_string(job));
                        return worker.play(groups, job, options.cases.jobs);
                    }));
}

}  // namespace
}  // namespace korvane::transcript

int main(int count, char** words) {
    return korvane::transcript::run(korvane::transcript::parse_options(count, words));
}
