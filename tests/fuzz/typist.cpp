// Plays inputs that are mixed of known ones, as many as it can: the guided fuzzer finds what is new, and this
// program puts it together in ever new ways. As korvane-native-typist it makes machine code of every
// statement that is met again.
//
//     korvane-typist [OPTIONS] --seconds N --target NAME KNOWN...     files, or folders of them
//
//     --seed N              other inputs
//     --companion PROGRAM   that interpreter, korvane-companion, must come to the same states
//     --compared N          only one of N inputs is compared with it
//     --counts FOLDER       the counts are kept in a file there
//     --found FOLDER        an input that breaks the interpreter is left there, and ends the program
//
// Sessions that are compared are short, and without what is different on every interpreter; only in these are
// the characters' pixels drawn.
#include <fcntl.h>
#include <signal.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "companion.h"
#include "counted.h"
#include "mixer.h"
#include "player.h"
#include "program_words.h"
#include "targets.h"
#include "unseen_text.h"

namespace korvane::fuzz {
namespace {

namespace fs = std::filesystem;

constexpr char usage[] =
    R"(usage: korvane-typist [--seed N] [--companion PROGRAM] [--compared N] [--counts FOLDER] [--found FOLDER]
                      --seconds N --target NAME KNOWN...
)";

constexpr int most_seconds_of_input = 60;
constexpr std::size_t fewest_lines = 40;  // of a session that is not compared; of one that is, at most
constexpr std::size_t more_lines = 200;
constexpr std::uint32_t few_looks = 2;  // for a key, before a program is broken
constexpr char first_happening = 28;    // player.h
constexpr char last_happening = 31;
constexpr char pull_stick = 31;

struct Options {
    std::string target;
    unsigned seed = 1;
    unsigned compared = 8;
    std::string companion;
    fs::path counts;
    fs::path found;
    double seconds = 0;
    std::vector<fs::path> known;
};

Options parse_options(int count, char** words) {
    Options options;
    test::read_program_words(count, words, usage,
                             {{"--target", &options.target},
                              {"--seed", &options.seed},
                              {"--companion", &options.companion},
                              {"--compared", &options.compared},
                              {"--counts", &options.counts},
                              {"--found", &options.found},
                              {"--seconds", &options.seconds}},
                             &options.known);
    if (options.target.empty() || options.seconds <= 0 || options.compared == 0) test::end_with_usage(usage);
    return options;
}

// ---- What breaks the interpreter

std::string playing;     // the input
std::string found_file;  // where it goes when it is the last one

void leave_input(int signal_number) {
    const int file = open(found_file.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    if (file >= 0 && write(file, playing.data(), playing.size()) >= 0) close(file);
    signal(signal_number, SIG_DFL);
    raise(signal_number);
}

// On a stack of its own: the interpreter's may be what is broken.
void watch_for_breaks() {
    static std::array<char, 64 << 10> room;
    const stack_t stack = {room.data(), 0, room.size()};
    sigaltstack(&stack, nullptr);
    struct sigaction action {};
    action.sa_handler = leave_input;
    action.sa_flags = SA_ONSTACK | SA_NODEFER;
    for (const int number : {SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT, SIGPROF})
        sigaction(number, &action, nullptr);
}

// ---- Which lines

bool is_happening(char c) {
    return c >= first_happening && c <= last_happening && c != last_happening - 1;
}

bool has_happening(std::string_view line) {
    return std::any_of(line.begin(), line.end(), is_happening);
}

// Once the stick is pulled out there are no files for the rest of a session; and to unpack HELP's texts takes
// as long as a hundred other lines.
bool usual_lines(std::string_view line) {
    return line.find(pull_stick) == std::string_view::npos && line.find("HELP") == std::string_view::npos;
}

bool alike_everywhere(std::string_view line) {
    return !has_happening(line) && is_alike_everywhere(line);
}

bool all_lines(std::string_view) {
    return true;
}

class Typist {
  public:
    Typist(const Options& options, const Target& target)
        : options_(options), target_(target), mixer_(target.typed, options.seed) {
        if (!options.companion.empty()) companion_.emplace(options.companion, target.name);
        for (const fs::path& place : options.known)
            know(place);
    }

    int all() {
        if (mixer_.knows_nothing()) return 1;
        using Clock = std::chrono::steady_clock;
        const auto end = Clock::now() + std::chrono::duration<double>(options_.seconds);
        while (Clock::now() < end) {
            play_one();
            if (!options_.counts.empty()) write_counts(counts_file_, target_.name, false);
        }
        compare_begun();
        if (!options_.counts.empty()) write_counts(counts_file_, target_.name, true);
        std::printf("%s: %llu inputs, %llu lines, %llu compared, %llu of these with native code\n",
                    target_.name.data(), static_cast<unsigned long long>(counts.inputs),
                    static_cast<unsigned long long>(counts.lines),
                    static_cast<unsigned long long>(counts.compared),
                    static_cast<unsigned long long>(counts.native));
        return 0;
    }

    // Files have names of their own, also those of processes that ran before.
    void name_files() {
        const std::string name = std::string(target_.name) + "-" + std::to_string(getpid()) + "-" +
                                 std::to_string(std::time(nullptr));
        counts_file_ = options_.counts / (name + ".json");
        found_file = options_.found / ("mixed-" + name);
    }

  private:
    // An input that the companion has been given.
    struct Begun {
        std::string input;
        std::string state;
        bool has_code;
    };

    void know(const fs::path& place) {
        if (fs::is_directory(place)) {
            for (const fs::directory_entry& entry : fs::directory_iterator(place))
                if (entry.is_regular_file()) know(entry.path());
            return;
        }
        std::ifstream file(place, std::ios::binary);
        mixer_.know({std::istreambuf_iterator<char>(file), {}});
    }

    void play_one() {
        const bool compares = counts.inputs % options_.compared == 0;
        playing = next(compares);
        const bool is_long = target_.typed && !compares;
        text_is_unseen = is_long;
        machine->firmware().be_patient_for(is_long ? few_looks : Firmware::usual_patience);
        // Of the processor, on which others may be at work too.
        constexpr itimerval limit = {{0, 0}, {most_seconds_of_input, 0}};
        setitimer(ITIMER_PROF, &limit, nullptr);
        const bool played = play(playing);
        if (!compares || !companion_ || !played || !is_comparable(playing)) return;
        companion_->begin(playing);
        begun_.push_back({playing, describe_state(), machine->firmware().has_code()});
        if (begun_.size() == companion_->most_begun()) compare_begun();
    }

    // All at once: to change from one process to the other and back for each takes longer than to play it.
    void compare_begun() {
        for (Begun& one : begun_) {
            playing = std::move(one.input);
            if (const auto state = companion_->end()) compare(one.state, *state, one.has_code);
        }
        begun_.clear();
    }

    std::string next(bool compares) {
        if (!target_.typed || mixer_.below(8) == 0) return mixer_.changed_bytes();
        if (compares && mixer_.below(2) == 0) return mixer_.changed_lines(alike_everywhere);
        if (compares) return mixer_.mixed_lines(1 + mixer_.below(fewest_lines), alike_everywhere);
        return mixer_.mixed_lines(fewest_lines + mixer_.below(more_lines),
                                  mixer_.below(16) == 0 ? all_lines : usual_lines);
    }

    const Options& options_;
    const Target& target_;
    Mixer mixer_;
    std::optional<Companion> companion_;
    std::vector<Begun> begun_;
    fs::path counts_file_;
};

}  // namespace
}  // namespace korvane::fuzz

int main(int count, char** words) {
    using namespace korvane::fuzz;
    const Options options = parse_options(count, words);
    const Target* target = find_target(options.target);
    if (target == nullptr) korvane::test::end_with_usage(usage);
    static Machine the_machine;
    Typist typist(options, *target);
    typist.name_files();
    if (!options.found.empty()) watch_for_breaks();
    prepare(*target);
    return typist.all();
}
