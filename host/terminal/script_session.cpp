#include <cstdlib>
#include <iostream>
#include <string>
#include <string_view>

#include "installation.h"
#include "machine.h"
#include "program_state.h"
#include "script_output.h"
#include "service_faults.h"
#include "standard_input.h"
#include "standard_output.h"
#include "terminal_options.h"

namespace korvane::host {
namespace {

// As wide as a screen can be, so that neither TAB nor the print zones meet its edge; as high as
// on a usual PC.
constexpr std::uint32_t columns = 256;
constexpr std::uint32_t rows = 25;

constexpr std::uint64_t glance_time_us =
    20'000;  // between looks at what is to be written while a program runs

// One program's run, its text on standard output, its messages on standard error.
class ScriptSession {
  public:
    ScriptSession(Machine& machine, const TerminalOptions& options);

    // The exit status.
    int run();

  private:
    enum class Phase { starts, loads, runs, ends };

    void hear(Happening happening, std::uint64_t value);
    void type(std::string_view line);
    bool go_on_at_prompt();
    bool press_input();
    void print_messages();
    int end(int status);

    Machine& machine_;
    const TerminalOptions& options_;
    ProgramState state_;
    StandardOutput out_;
    ScriptOutput output_{out_};
    StandardInput input_;
    Phase phase_ = Phase::starts;
    bool failed_ = false;
};

ScriptSession::ScriptSession(Machine& machine, const TerminalOptions& options)
    : machine_(machine), options_(options) {
    machine.firmware().listen([this](Happening happening, std::uint64_t value) { hear(happening, value); });
    machine.stop_at_polls(glance_time_us);
    // A STARTUP.BAS beside the program is none of the script's business.
    machine.firmware().faults().arm({{Service::FileOpen, 1, ~std::uint64_t{0}, uefi::not_found}});
}

void ScriptSession::hear(Happening happening, std::uint64_t value) {
    state_.hear(happening, value);
    if (phase_ == Phase::starts || state_.at_prompt()) return;
    output_.hear(happening, value);
    if (happening == Happening::message) print_messages();
}

int ScriptSession::run() {
    bool has_waited = false;
    for (;;) {
        switch (machine_.run()) {
            case Stop::waits_for_key:
                if (!has_waited) machine_.learn_waiting_place();
                has_waited = true;
                if (state_.at_prompt() ? !go_on_at_prompt() : !press_input())
                    return end(failed_ || !state_.at_prompt() ? EXIT_FAILURE : EXIT_SUCCESS);
                break;
            case Stop::polls_key:
                out_.flush_if_due();
                break;
            case Stop::timed_out:  // never, without a limit
            case Stop::returned:
                return end(EXIT_SUCCESS);
            case Stop::fault:
                std::cerr << machine_.fault_report() << '\n';
                return end(EXIT_FAILURE);
        }
    }
}

void ScriptSession::type(std::string_view line) {
    for (const char character : line)
        machine_.firmware().keyboard().press({uefi::scan_none, static_cast<unsigned char>(character)});
}

// Types the next line of the session; false when the script is over.
bool ScriptSession::go_on_at_prompt() {
    failed_ = failed_ || state_.line_failed();
    switch (phase_) {
        case Phase::starts:
            machine_.firmware().faults().arm({});
            type(load_line(options_) + '\r');
            phase_ = Phase::loads;
            return true;
        case Phase::loads:
            if (failed_) return false;
            type("RUN\r");
            phase_ = Phase::runs;
            return true;
        case Phase::runs:
            // Closes the files that a program without END leaves open, so that they are complete.
            type("END\r");
            phase_ = Phase::ends;
            return true;
        case Phase::ends:
            return false;
    }
    return false;
}

// Gives the program the next key of standard input; false when it waits for one that will never come. A
// program that only looks for a key may have other things to do, and goes on.
bool ScriptSession::press_input() {
    out_.flush();
    const bool waits = machine_.waits_in_event();
    if (const auto key = waits ? input_.next() : input_.next_if_there()) {
        machine_.firmware().keyboard().press(*key);
        return true;
    }
    if (waits) std::cerr << program_name() << ": the program waits for more input than there is\n";
    return !waits;
}

// Whole lines of messages, below the text that was printed before.
void ScriptSession::print_messages() {
    if (!output_.has_message_line()) return;
    out_.flush();
    std::cerr << output_.take_messages();
}

int ScriptSession::end(int status) {
    out_.flush();
    return status;
}

}  // namespace

int run_script_session(const TerminalOptions& options) {
    Machine machine(terminal_machine(options, columns, rows), ImageSource::file(options.image));
    lend_program(machine, options);
    return ScriptSession(machine, options).run();
}

}  // namespace korvane::host
