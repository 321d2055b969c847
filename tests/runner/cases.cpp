#include "cases.h"

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <map>

namespace korvane::transcript {

namespace {

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

// The cases that a file names, one on each line, in its order.
std::vector<Case> named_cases(std::vector<Case> cases, const std::filesystem::path& names) {
    std::map<std::string, std::size_t> places;
    std::ifstream file(names);
    for (std::string name; std::getline(file, name);)
        places.emplace(name, places.size());
    std::erase_if(
        cases, [&](const Case& test) { return !places.contains(name_of(test)); });
    std::stable_sort(cases.begin(), cases.end(), [&](const Case& left, const Case& right) {
        return places.at(name_of(left)) < places.at(name_of(right));
    });
    return cases;
}

}  // namespace

test::ProgramOptions CaseChoice::options() {
    return {{"--filter", &filter}, {"--named", &named}, {"--show", &play.show}, {"--jobs", &jobs}};
}

std::string name_of(const Case& test) {
    return test.file.string() + ": " + test.title;
}

std::vector<Case> read_cases(const CaseChoice& choice, std::vector<std::string>& problems) {
    std::vector<Case> cases;
    for (const std::filesystem::path& file : transcript_files(choice.inputs))
        for (Case& test : read_transcript(file, problems))
            if (name_of(test).find(choice.filter) != std::string::npos) cases.push_back(std::move(test));
    for (const std::string& problem : problems)
        std::printf("%s\n", problem.c_str());
    return choice.named.empty() ? cases : named_cases(std::move(cases), choice.named);
}

std::string start_machine(const Case& like, std::unique_ptr<host::Machine>& machine,
                          const std::filesystem::path& scratch, const host::ImageSource& image,
                          const PlayOptions& options) {
    Case starting;
    starting.file = like.file;
    starting.line = like.line;
    return Player(starting, machine, scratch, image, options).play();
}

int play_in_processes(const CaseChoice& choice, const std::function<int(unsigned job)>& work) {
    constexpr int most_failures = 100;  // that a process's status can tell
    std::vector<pid_t> workers;
    for (unsigned job = 0; job < choice.jobs; ++job) {
        std::fflush(nullptr);
        const pid_t child = fork();
        if (child == 0) {
            const int failures = work(job);
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

int conclude(std::size_t cases, int failures) {
    std::printf("%zu cases, %d failed\n", cases, failures);
    return failures == 0 ? 0 : 1;
}

}  // namespace korvane::transcript
