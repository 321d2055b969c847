// Types random sessions into the interpreter. Nothing may crash it, misuse the firmware or make it hang; and
// two images, one of which runs every statement by its general handler, must show the same.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "forked.h"
#include "machine.h"
#include "played_image.h"
#include "program_words.h"
#include "screen_text.h"
#include "session.h"
#include "session_machine.h"
#include "temporary_folder.h"

namespace korvane::fuzz {
namespace {

using transcript::ForkedResult;
using transcript::run_forked;

constexpr std::chrono::milliseconds patience{20'000};  // for one line, in processor time

struct Options {
    test::PlayedImage image;
    std::filesystem::path other;  // compared with the image when given
    std::uint64_t seed = 1;
    std::chrono::seconds duration{20};
    std::vector<std::filesystem::path> replayed;  // files of sessions instead of random ones
    bool print = false;
};

constexpr char usage[] = R"(usage: typed_lines [options] [SESSION-FILE...]
  --image FILE    the application (build/korvane.efi)
  --linked        the interpreter that is linked into this program
  --compare FILE  another application, which must show the same
  --seed N        number of the first session (1)
  --seconds N     how long to go on (20)
  --print         only print the session of the seed
A session file holds sessions apart by empty lines; they are typed instead of random ones.
)";

Options parse_options(int count, char** words) {
    Options options;
    const test::ProgramOptions known =
        options.image.options() + test::ProgramOptions{{"--compare", &options.other},
                                                       {"--seed", &options.seed},
                                                       {"--seconds", &options.duration},
                                                       {"--print", &options.print}};
    test::read_program_words(count, words, usage, known, &options.replayed);
    return options;
}

std::vector<Session> read_sessions(const std::filesystem::path& file) {
    std::vector<Session> sessions(1);
    std::ifstream stream(file);
    if (!stream) {
        std::fprintf(stderr, "cannot read %s\n", file.c_str());
        std::exit(2);
    }
    for (std::string line; std::getline(stream, line);)
        if (line.empty())
            sessions.emplace_back();
        else
            sessions.back().push_back(line);
    std::erase_if(sessions, [](const Session& session) { return session.empty(); });
    return sessions;
}

// A machine at its first prompt; sessions are typed into copies of it.
class Typist {
  public:
    Typist(const host::ImageSource& image, const std::filesystem::path& folder, bool repeatable)
        : folder_(folder),
          repeatable_(repeatable),
          machine_(start_session_machine(image, folder, patience)) {}

    // Types the session in a process of its own. The result shows the screen after every few lines.
    ForkedResult type(const Session& session) {
        std::filesystem::remove_all(folder_);
        std::filesystem::create_directories(folder_);
        return run_forked([&] { return type_here(session); });
    }

  private:
    ForkedResult type_here(const Session& session) {
        ForkedResult result;
        int typed_lines = 0;
        for (const std::string& line : session) {
            host::Keyboard& keyboard = machine_->firmware().keyboard();
            press_text(*machine_, line + "\r");
            const std::uint64_t polls = keyboard.polls();
            const std::uint64_t typed = line.size() + 1;
            press_escape_after(*machine_, typed, 40);
            const host::Stop stop = machine_->run(patience);
            const bool broken = keyboard.polls() - polls >= typed + 40;
            keyboard.clear();
            if (stop == host::Stop::fault) result.report = machine_->fault_report();
            if (stop == host::Stop::timed_out) result.report = "it hangs";
            if (stop == host::Stop::returned) result.report = "it has ended";
            if (!result.report.empty()) {
                result.report += " at the line: " + line + "\n";
                return result;
            }
            // Where exactly Escape meets a program is nobody's promise.
            if (repeatable_ && broken) return result;
            // Reading the screen takes longer than most lines; it holds many of them.
            if (repeatable_ && (++typed_lines % 8 == 0 || &line == &session.back()))
                result.shown += show(line);
        }
        return result;
    }

    std::string show(const std::string& line) {
        std::string text = "> " + line + "\n";
        const transcript::ScreenText screen = transcript::read_screen(*machine_->firmware().display(), false);
        for (std::size_t row = 0; row < screen.used_rows(); ++row)
            text += screen.rows[row] + "\n";
        return text;
    }

    std::filesystem::path folder_;
    bool repeatable_;
    std::unique_ptr<host::Machine> machine_;
};

// Types a series of sessions into the image, in a process of its own; its result shows what each showed.
std::vector<ForkedResult> type_all(const host::ImageSource& image, const std::filesystem::path& folder,
                                   bool repeatable, const std::vector<Session>& sessions) {
    std::vector<ForkedResult> results;
    std::filesystem::create_directories(folder);
    Typist typist(image, folder, repeatable);
    for (const Session& session : sessions)
        results.push_back(typist.type(session));
    return results;
}

void print(const Session& session) {
    for (const std::string& line : session)
        std::printf("%s\n", line.c_str());
}

// The part of a text from the last line that two texts share.
std::string from_difference(const std::string& text, const std::string& other) {
    std::size_t at = 0;
    while (at < text.size() && at < other.size() && text[at] == other[at])
        ++at;
    const std::size_t prompt = text.rfind("\n> ", at);
    return text.substr(prompt == std::string::npos ? 0 : prompt + 1, at + 300);
}

class Run {
  public:
    explicit Run(const Options& options) : options_(options) {}

    int all() {
        for (const std::filesystem::path& file : options_.replayed)
            play(read_sessions(file), 0);
        if (!options_.replayed.empty()) return finish();
        const auto end = std::chrono::steady_clock::now() + options_.duration;
        constexpr std::uint64_t batch = 50;
        for (std::uint64_t seed = options_.seed; std::chrono::steady_clock::now() < end; seed += batch) {
            std::vector<Session> sessions;
            for (std::uint64_t i = 0; i < batch; ++i)
                sessions.push_back(make_session(seed + i, taste()));
            play(sessions, seed);
        }
        return finish();
    }

    Taste taste() const { return options_.other.empty() ? Taste::anything : Taste::repeatable; }

  private:
    host::ImageSource source(const std::filesystem::path& path) const {
        return test::PlayedImage{path, options_.image.linked}.source();
    }

    // Each image has a process of its own, since machines stand at fixed addresses.
    std::vector<ForkedResult> type_apart(const std::filesystem::path& image,
                                         const std::vector<Session>& sessions) {
        const std::filesystem::path folder = scratch_.path() / "volume";
        std::vector<ForkedResult> results(sessions.size());
        const ForkedResult packed = run_forked([&] {
            const auto typed = type_all(source(image), folder, !options_.other.empty(), sessions);
            ForkedResult together;
            for (const ForkedResult& one : typed)
                together.shown += one.report + '\0' + one.shown + '\0';
            return together;
        });
        if (!packed.report.empty()) results[0].report = packed.report;
        std::size_t at = 0;
        for (ForkedResult& one : results) {
            for (std::string* part : {&one.report, &one.shown}) {
                const std::size_t end = packed.shown.find('\0', at);
                if (end == std::string::npos) return results;
                *part = packed.shown.substr(at, end - at);
                at = end + 1;
            }
        }
        return results;
    }

    void play(const std::vector<Session>& sessions, std::uint64_t first_seed) {
        const std::vector<ForkedResult> results = type_apart(options_.image.image, sessions);
        std::vector<ForkedResult> others = results;
        if (!options_.other.empty()) others = type_apart(options_.other, sessions);
        for (std::size_t i = 0; i < sessions.size(); ++i) {
            ++played_;
            std::string report = results[i].report;
            if (report.empty() && !others[i].report.empty()) report = "the other image: " + others[i].report;
            if (report.empty() && results[i].shown != others[i].shown)
                report = "the images differ:\n" + from_difference(results[i].shown, others[i].shown) +
                         "---- the other:\n" + from_difference(others[i].shown, results[i].shown);
            if (report.empty()) continue;
            ++failures_;
            std::printf("FAILED session %llu\n%s\n", static_cast<unsigned long long>(first_seed + i),
                        report.c_str());
            print(sessions[i]);
            std::printf("\n");
            std::fflush(stdout);
        }
    }

    int finish() const {
        std::printf("%d sessions, %d failed\n", played_, failures_);
        return failures_ == 0 && played_ > 0 ? 0 : 1;
    }

    const Options& options_;
    test::TemporaryFolder scratch_;
    int played_ = 0;
    int failures_ = 0;
};

}  // namespace
}  // namespace korvane::fuzz

int main(int count, char** words) {
    using namespace korvane::fuzz;
    const Options options = parse_options(count, words);
    Run run(options);
    if (options.print) {
        print(make_session(options.seed, run.taste()));
        return 0;
    }
    return run.all();
}
