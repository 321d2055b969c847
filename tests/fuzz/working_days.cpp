// Works for many days in one image without a break: after each day the firmware's memory, its files and the
// free memory are what they were after the first one, and the same work asks for the same services.
#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "invariants.h"
#include "machine.h"
#include "played_image.h"
#include "program_words.h"
#include "screen_text.h"
#include "stack_use.h"
#include "temporary_folder.h"
#include "working_day.h"

namespace korvane::fuzz {
namespace {

using std::string;
using std::string_view;

constexpr std::chrono::milliseconds patience{20'000};  // for one action, in processor time
constexpr uefi::InputKey escape{uefi::scan_escape, 0};
struct Options {
    test::PlayedImage image;
    std::uint64_t seed = 1;
    std::uint64_t keystrokes = 100'000;
};

constexpr char usage[] = R"(usage: working_days [options]
  --image FILE      the application (build/korvane.efi)
  --linked          the interpreter that is linked into this program, whose state is then looked at
  --seed N          number of the first day (1)
  --keystrokes N    how long to go on (100000)
)";

Options parse_options(int count, char** words) {
    Options options;
    const test::ProgramOptions known =
        options.image.options() +
        test::ProgramOptions{{"--seed", &options.seed}, {"--keystrokes", &options.keystrokes}};
    test::read_program_words(count, words, usage, known);
    return options;
}

double processor_seconds() {
    return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
}

// What must be the same in the evening of each day.
struct Evening {
    string memory_map;
    std::size_t open_files = 0;
    std::uint64_t pool_buffers = 0;
    std::uint64_t pool_bytes = 0;
    string free_bytes;  // as PRINT FRE(0) shows them after CLEAR
    string services;    // that the yardstick uses
};

class Office {
  public:
    explicit Office(const Options& options) : options_(options) {
        host::Config config;
        config.width = 640;
        config.height = 480;
        config.volumes.resize(1);
        config.volumes[0].folder = folder_.path();
        config.volumes[0].capacity = 16 << 20;
        config.time = uefi::Time{};
        config.time->Year = 2024;
        config.time->Month = config.time->Day = 1;
        empty_volume();
        machine_ = std::make_unique<host::Machine>(std::move(config), options.image.source());
        if (machine_->run(patience) != host::Stop::waits_for_key) wrong("it does not start");
        machine_->learn_waiting_place();
    }

    int work() {
        std::uint64_t day = options_.seed;
        // Whatever is taken once and kept is taken in the first day.
        work_through(WorkingDay(day++).actions());
        spend_evening();
        const Evening first = spend_evening();
        if (first.free_bytes.empty()) wrong("FRE shows nothing");
        std::uint64_t tenth = options_.keystrokes / 10;
        double since = processor_seconds();
        std::uint64_t counted = keystrokes_;
        for (; keystrokes_ < options_.keystrokes && wrong_ == 0; ++day) {
            work_through(WorkingDay(day).actions());
            compare(first, spend_evening(), day);
            if (keystrokes_ < tenth) continue;
            const double now = processor_seconds();
            std::printf("%12llu keystrokes, %6llu days, %.2f us a keystroke\n",
                        static_cast<unsigned long long>(keystrokes_),
                        static_cast<unsigned long long>(day - options_.seed + 1),
                        (now - since) * 1e6 / static_cast<double>(keystrokes_ - counted));
            std::fflush(stdout);
            since = now;
            counted = keystrokes_;
            tenth += options_.keystrokes / 10;
        }
        const std::size_t stack = test::stack_used(firmware());
        std::printf("%llu actions, %llu of them broken by Escape; stack: %zu bytes\n",
                    static_cast<unsigned long long>(actions_), static_cast<unsigned long long>(broken_),
                    stack);
        if (!options_.image.linked && stack > test::most_stack) wrong("it uses too much of the stack");
        return wrong_ == 0 ? 0 : 1;
    }

  private:
    host::Firmware& firmware() { return machine_->firmware(); }

    void work_through(const std::vector<Action>& actions) {
        for (const Action& action : actions) {
            if (wrong_ != 0) return;
            perform(action);
        }
    }

    void perform(const Action& action) {
        host::Keyboard& keyboard = firmware().keyboard();
        for (const uefi::InputKey key : action.keys)
            keyboard.press(key);
        keystrokes_ += action.keys.size();
        ++actions_;
        const std::uint64_t typed = action.keys.size();
        const std::uint64_t polls = keyboard.polls();
        // The key of somebody who loses patience, soon and again and again. A line may also begin a run
        // without its author's knowing.
        const std::uint64_t soon = action.runs ? 30 : 200;
        for (std::uint64_t n = soon; n < 100 * soon; n += n / 2)
            keyboard.press_at_poll(typed + n, escape);
        const host::Stop stop = machine_->run(patience);
        if (keyboard.polls() - polls >= typed + soon) ++broken_;
        keyboard.clear();
        if (stop == host::Stop::waits_for_key) return;
        wrong(stop == host::Stop::fault       ? machine_->fault_report()
              : stop == host::Stop::timed_out ? "it hangs"
                                              : "it stops");
        string line;
        for (const uefi::InputKey key : action.keys)
            line += key.UnicodeChar >= 32 ? static_cast<char>(key.UnicodeChar) : '~';
        std::printf("at: %s\n", line.c_str());
    }

    Evening spend_evening() {
        Evening evening;
        empty_volume();
        evening.services = measure();
        perform(typed_line("CLEAR:CLS:PRINT FRE(0)"));
        evening.free_bytes = screen_row(0);
        for (const host::MemoryRegion& region : firmware().memory().regions())
            evening.memory_map += std::to_string(region.base) + ' ' + std::to_string(region.pages) + ' ' +
                                  std::to_string(static_cast<std::uint32_t>(region.type)) + '\n';
        evening.open_files = firmware().volumes().front()->open_files().size();
        evening.pool_buffers = firmware().pool().buffers();
        evening.pool_bytes = firmware().pool().bytes();
        for (const string& complaint : firmware().complaints())
            wrong(complaint);
        if (options_.image.linked)
            for (const string& rule : broken_invariants())
                wrong("this does not hold: " + rule);
        return evening;
    }

    // An old line that was changed and entered again may have made files of any name.
    void empty_volume() {
        for (const auto& entry : std::filesystem::directory_iterator(folder_.path()))
            std::filesystem::remove_all(entry.path());
        std::filesystem::create_directory(folder_.path() / "SUB");
    }

    // The services that the yardstick's actions use. How often the prompt looks for a key is nobody's affair.
    string measure() {
        string measured;
        for (const Action& action : WorkingDay::yardstick()) {
            if (wrong_ != 0) break;
            std::array<std::uint64_t, host::service_count> before{};
            for (std::size_t i = 0; i < before.size(); ++i)
                before[i] = firmware().faults().uses(static_cast<host::Service>(i));
            perform(action);
            for (std::size_t i = 0; i < before.size(); ++i) {
                const auto service = static_cast<host::Service>(i);
                if (service == host::Service::ReadKeyStroke || service == host::Service::WaitForEvent)
                    continue;
                const std::uint64_t uses = firmware().faults().uses(service) - before[i];
                if (uses != 0)
                    measured += string(host::service_name(service)) + ' ' + std::to_string(uses) + ' ';
            }
            for (const uefi::InputKey key : action.keys)
                measured += key.UnicodeChar >= 32 ? static_cast<char>(key.UnicodeChar) : '\n';
        }
        return measured;
    }

    void compare(const Evening& first, const Evening& now, std::uint64_t day) {
        const auto same = [&](const auto& before, const auto& after, const char* what) {
            if (before == after) return;
            wrong(string(what) + " drifts, on day " + std::to_string(day));
            if constexpr (std::is_same_v<std::remove_cvref_t<decltype(before)>, string>)
                show_difference(before, after);
        };
        same(first.memory_map, now.memory_map, "the memory map");
        same(first.open_files, now.open_files, "the number of open files");
        same(first.pool_buffers, now.pool_buffers, "the number of pool buffers");
        same(first.pool_bytes, now.pool_bytes, "the size of pool buffers");
        same(first.free_bytes, now.free_bytes, "the free memory");
        same(first.services, now.services, "what the same work asks of the firmware");
    }

    // The first lines that differ.
    static void show_difference(string_view before, string_view after) {
        while (!before.empty() && !after.empty()) {
            const string_view old = before.substr(0, before.find('\n'));
            const string_view fresh = after.substr(0, after.find('\n'));
            if (old != fresh) {
                std::printf("before: %.*s\nnow:    %.*s\n", static_cast<int>(old.size()), old.data(),
                            static_cast<int>(fresh.size()), fresh.data());
                return;
            }
            before.remove_prefix(std::min(old.size() + 1, before.size()));
            after.remove_prefix(std::min(fresh.size() + 1, after.size()));
        }
    }

    static Action typed_line(string_view line) {
        Action action;
        for (const char c : line)
            action.keys.push_back({0, static_cast<char16_t>(c)});
        action.keys.push_back({0, u'\r'});
        return action;
    }

    string screen_row(std::size_t row) {
        const transcript::ScreenText screen = transcript::read_screen(*firmware().display(), false);
        return row < screen.rows.size() ? screen.rows[row] : "";
    }

    void wrong(const string& what) {
        ++wrong_;
        std::printf("WRONG after %llu keystrokes: %s\n", static_cast<unsigned long long>(keystrokes_),
                    what.c_str());
        for (const auto& entry : std::filesystem::recursive_directory_iterator(folder_.path()))
            std::printf("on the volume: %s\n", entry.path().filename().c_str());
    }

    Options options_;
    test::TemporaryFolder folder_;
    std::unique_ptr<host::Machine> machine_;
    std::uint64_t keystrokes_ = 0;
    std::uint64_t actions_ = 0;
    std::uint64_t broken_ = 0;
    int wrong_ = 0;
};

}  // namespace
}  // namespace korvane::fuzz

int main(int count, char** words) {
    return korvane::fuzz::Office(korvane::fuzz::parse_options(count, words)).work();
}
