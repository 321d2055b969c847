// Plays sessions for a program that makes and judges them: reads sessions from standard input, each on a copy
// of one started machine, and writes what each step showed to standard output.
//
// A session is a list of lines, ended by a line with a single dot:
//
//     TEXT          types the text and Enter
//     @keys KEYS    presses keys, with the names of the transcripts in braces
//     @escape N     Escape arrives when the machine looks for a key for the N-th time in the next typed
//     line's run
//     @fail SERVICE N   use N of a firmware service from now on, and every later one, is a device error
//     @heal         no service fails any more
//     @files        shows the volume
//
// The answer is one line "STEPS" per session, then for each step a line "KIND POLLS ROWS" with so many rows
// of the screen behind it, then "END" or "FAULT text". KIND is "shown" for the rows below the typed line,
// "screen" when the typed line is gone and all rows are given, and "broken" when Escape had to end the step.
// A step "astray" in front says that a line was typed into a program that waits for keys, or keys at the
// prompt. Lines that are only stored are no steps.
#include <time.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "forked.h"
#include "machine.h"
#include "played_image.h"
#include "program_words.h"
#include "screen_text.h"
#include "session_machine.h"
#include "text_syntax.h"

namespace korvane::fuzz {
namespace {

using transcript::CellPosition;
using transcript::ForkedResult;
using transcript::ScreenText;

using Session = std::vector<std::string>;

constexpr uefi::InputKey escape{23, 0};

struct Options {
    test::PlayedImage image;
    std::filesystem::path volume;
    std::vector<std::string> prepared;          // lines typed once, before the machine is copied
    std::chrono::milliseconds patience{4'000};  // for one step, in processor time
};

constexpr char usage[] = R"(usage: session_player --volume FOLDER [options] <SESSIONS >RESULTS
  --image FILE      the application (build/korvane.efi)
  --linked          the interpreter that is linked into this program
  --prepare LINE    typed once before the first session; may be repeated
  --patience MS     processor time that a step may take (4000)
The folder is emptied before every session, but for files whose name begins with KEEP.
)";

Options parse_options(int count, char** words) {
    Options options;
    const test::ProgramOptions known =
        options.image.options() + test::ProgramOptions{{"--volume", &options.volume},
                                                       {"--prepare", &options.prepared},
                                                       {"--patience", &options.patience}};
    test::read_program_words(count, words, usage, known);
    if (options.volume.empty()) test::end_with_usage(usage);
    return options;
}

std::int64_t processor_microseconds() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return std::int64_t{time.tv_sec} * 1'000'000 + time.tv_nsec / 1000;
}

// The folders and files of a volume with what they hold, in a fixed order.
std::vector<std::string> describe_volume(const std::filesystem::path& folder) {
    std::vector<std::string> rows;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
        std::string row = std::filesystem::relative(entry.path(), folder).string();
        if (row.starts_with("KEEP")) continue;
        if (entry.is_regular_file()) {
            std::ifstream stream(entry.path(), std::ios::binary);
            std::ostringstream content;
            content << stream.rdbuf();
            row += ": ";
            for (const char c : content.str().substr(0, 2000))
                row += c == '\r' ? std::string("\\r") : c == '\n' ? std::string("\\n") : std::string(1, c);
        }
        rows.push_back(row);
    }
    std::sort(rows.begin(), rows.end());
    return rows;
}

// A machine at its first prompt; sessions are typed into copies of it.
class Typist {
  public:
    explicit Typist(const Options& options) : options_(options) {
        machine_ = start_session_machine(options.image.source(), options.volume, options.patience);
        for (const std::string& line : options.prepared) {
            press_text(*machine_, line + "\r");
            machine_->run({});
        }
    }

    // Types the session in a process of its own; `shown` is the answer's part for the steps.
    ForkedResult type(const Session& session) {
        empty_volume();
        return transcript::run_forked([&] { return type_here(session); });
    }

  private:
    void empty_volume() const {
        for (const auto& entry : std::filesystem::directory_iterator(options_.volume))
            if (!entry.path().filename().string().starts_with("KEEP")) std::filesystem::remove_all(entry);
    }

    ForkedResult type_here(const Session& session) {
        ForkedResult result;
        screen_ = transcript::read_screen(*machine_->firmware().display(), true);
        // A program that waits for single keys looks for them many times before it is known to wait: on a
        // busy computer nobody can say how many. The limit of time has to do there.
        const bool presses_keys = std::any_of(session.begin(), session.end(), [](const std::string& line) {
            return line.starts_with("@keys ");
        });
        patient_polls_ = presses_keys ? ~std::uint64_t{0} / 8 : 60;
        for (const std::string& line : session) {
            const std::string fault = step(line, result.shown);
            if (fault.empty()) continue;
            result.report = fault + " at the line: " + line;
            return result;
        }
        const auto& misuse = machine_->firmware().misuse().reports;
        if (!misuse.empty()) result.report = "misuse of the firmware: " + misuse.front();
        return result;
    }

    // Does one line of the session and adds what it showed; gives what went wrong.
    std::string step(const std::string& line, std::string& shown) {
        if (line.starts_with("@keys ")) {
            const auto keys = transcript::named_keys(line.substr(6));
            if (!keys) return "no such key";
            // The line editor shows its cursor: no program asks for these keys.
            if (screen_.cursor) add("astray", 0, {}, shown);
            for (const uefi::InputKey& key : *keys)
                machine_->firmware().keyboard().press(key);
            return run(keys->size(), true, shown);
        }
        if (line.starts_with("@escape ")) {
            escape_at_ = std::strtoull(line.c_str() + 8, nullptr, 10);
            return {};
        }
        if (line == "@files") {
            add("shown", 0, describe_volume(options_.volume), shown);
            return {};
        }
        if (line.starts_with("@fail ")) {
            const std::vector<std::string> words = transcript::split_words(line);
            const auto service = words.size() == 3 ? host::find_service(words[1]) : std::nullopt;
            if (!service) return "no such service";
            const std::uint64_t first = std::strtoull(words[2].c_str(), nullptr, 10);
            machine_->firmware().faults().arm({{*service, first, ~0ull - first, uefi::device_error}});
            return {};
        }
        if (line == "@heal") {
            machine_->firmware().faults().arm({});
            return {};
        }
        if (!screen_.cursor) add("astray", 0, {}, shown);
        press_text(*machine_, line + "\r");
        typed_.push_back(line);
        const bool stores_line = !line.empty() && line[0] >= '0' && line[0] <= '9';
        return run(line.size() + 1, !stores_line, shown);
    }

    std::string run(std::size_t keys, bool looks, std::string& shown) {
        host::Keyboard& keyboard = machine_->firmware().keyboard();
        const std::uint64_t polls = keyboard.polls();
        // The machine already stands in the look that takes the first key.
        if (escape_at_ != 0) keyboard.press_at_poll(keys - 1 + escape_at_, escape);
        escape_at_ = 0;
        press_escape_after(*machine_, keys, patient_polls_);
        const std::int64_t began = processor_microseconds();
        const host::Stop stop = machine_->run(options_.patience);
        microseconds_ = processor_microseconds() - began;
        if (stop == host::Stop::fault) return machine_->fault_report();
        if (stop == host::Stop::timed_out)
            return "it does not end: " + machine_->fault_report() + ", " +
                   std::to_string(keyboard.polls() - polls) + " looks at the keyboard";
        if (stop == host::Stop::returned) return "the application has ended";
        const std::uint64_t used =
            keyboard.polls() - polls - std::min<std::uint64_t>(keys, keyboard.polls() - polls);
        keyboard.clear();
        if (looks) show(used, shown);
        return {};
    }

    void show(std::uint64_t polls, std::string& shown) {
        // Without the editor's cursor a program waits, whose output goes on below.
        const std::size_t first = screen_.cursor ? screen_.cursor->row : screen_.used_rows();
        const std::size_t above = first == 0 ? 0 : first - 1;
        const std::string row_above = screen_.rows[above];
        screen_ = transcript::read_screen(*machine_->firmware().display(), !machine_->waits_in_event());
        // Near the end of the screen it may have scrolled.
        const bool in_place =
            first != 0 && screen_.rows[above] == row_above && screen_.used_rows() + 3 < screen_.rows.size();
        std::size_t begin = in_place ? first : 0;
        if (in_place)
            for (const std::string& line : typed_)
                begin += rows_of(line, begin);
        typed_.clear();
        std::vector<std::string> rows;
        for (std::size_t row = begin; row < screen_.used_rows(); ++row)
            rows.push_back(screen_.rows[row]);
        const char* kind = polls >= patient_polls_ ? "broken" : in_place ? "shown" : "screen";
        add(kind, polls, rows, shown);
    }

    // How many rows from `row` on show a typed line and nothing else; 0 when they do not.
    std::size_t rows_of(const std::string& line, std::size_t row) const {
        const std::size_t count = line.size() / screen_.columns + 1;
        if (row + count > screen_.rows.size()) return 0;
        std::string text;
        for (std::size_t i = 0; i < count; ++i) {
            text.resize(i * screen_.columns, ' ');
            text += screen_.rows[row + i];
        }
        return text == transcript::without_trailing_blanks(line) ? count : 0;
    }

    void add(const char* kind, std::uint64_t polls, const std::vector<std::string>& rows,
             std::string& shown) const {
        shown += std::string(kind) + " " + std::to_string(polls) + " " + std::to_string(microseconds_) + " " +
                 std::to_string(rows.size()) + "\n";
        for (const std::string& row : rows)
            shown += row + "\n";
    }

    const Options& options_;
    std::unique_ptr<host::Machine> machine_;
    ScreenText screen_;
    std::vector<std::string> typed_;  // since the screen was looked at
    std::uint64_t escape_at_ = 0;
    std::clock_t microseconds_ = 0;    // of processor time of processor time that the last run took
    std::uint64_t patient_polls_ = 0;  // looks for a key in one step until Escape is pressed
};

int play_all(const Options& options) {
    std::filesystem::create_directories(options.volume);
    Typist typist(options);
    Session session;
    for (std::string line; std::getline(std::cin, line);) {
        if (line != ".") {
            session.push_back(line);
            continue;
        }
        const ForkedResult result = typist.type(session);
        std::string report = result.report;
        std::replace(report.begin(), report.end(), '\n', ' ');
        std::cout << result.shown << (report.empty() ? "END" : "FAULT " + report) << "\n" << std::flush;
        session.clear();
    }
    return 0;
}

}  // namespace
}  // namespace korvane::fuzz

int main(int count, char** words) {
    return korvane::fuzz::play_all(korvane::fuzz::parse_options(count, words));
}
