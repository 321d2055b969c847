#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <string>
#include <string_view>

#include "held_keys.h"
#include "machine.h"
#include "program_state.h"
#include "rescue_file.h"
#include "terminal_device.h"
#include "terminal_guard.h"
#include "terminal_keys.h"
#include "terminal_options.h"
#include "terminal_picture.h"

namespace korvane::host {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::uint64_t glance_time_us = 5'000;      // between looks at the terminal while a program runs
constexpr std::chrono::milliseconds frame_time{33};  // between pictures while a program runs
constexpr int idle_wait_ms = 250;                    // for input while the image waits for a key
constexpr std::chrono::seconds rescue_time{1};       // between copies of the program while something runs

constexpr std::string_view keys_of_a_wide_line =
    " HELP: the commands | Escape, Ctrl-C: stop a program | Ctrl-C at Ready.: leave";
constexpr std::string_view keys_of_a_line = " HELP | Esc, Ctrl-C: stop | Ctrl-C: leave";
constexpr std::string_view leave_question =
    " The program is not saved. Ctrl-C again leaves (it will be kept), any key goes on";
constexpr std::string_view stop_question = " The program goes on. Ctrl-C again leaves, any key stays";

// A machine's screen and keyboard on a terminal.
class TerminalSession {
  public:
    TerminalSession(Machine& machine, const TerminalOptions& options);

    // Runs the machine until its image ends or the person leaves; the exit status.
    int run();

  private:
    void hear(Happening happening, std::uint64_t value);
    void type(std::string_view bytes);
    void start_program();
    void glance();
    void wait_for_input();
    void take_keys(std::string_view bytes);
    void flush_escape();
    void accept(const TerminalKey& key);
    void interrupt();
    void rescue_program();
    void show_program_notes();
    void draw();
    int status() const { return load_failed_ ? EXIT_FAILURE : EXIT_SUCCESS; }

    Machine& machine_;
    TerminalKeys keys_;
    TerminalPicture picture_;
    HeldKeys held_;
    ProgramState state_;
    RescueFile rescue_;
    Clock::time_point last_picture_{};
    Clock::time_point last_input_{};
    Clock::time_point last_rescue_{};
    std::uint32_t rescued_version_ = 0;  // of the program when it was looked at last
    bool shows_keys_;
    bool keeps_programs_;
    bool starts_program_;       // LOAD has been typed, and RUN is to follow
    bool load_failed_ = false;  // of the program that was to be started
    bool leaves_ = false;
    int interrupts_ = 0;  // since a key was pressed or the prompt came
    std::string notice_;  // stands above the screen until a key is pressed
};

TerminalSession::TerminalSession(Machine& machine, const TerminalOptions& options)
    : machine_(machine),
      picture_(look_of_environment()),
      rescue_(options.volume),
      shows_keys_(options.shows_keys),
      keeps_programs_(options.keeps_programs),
      starts_program_(!options.program.empty()) {
    machine.firmware().listen([this](Happening happening, std::uint64_t value) { hear(happening, value); });
    machine.stop_at_polls(glance_time_us);
    if (keeps_programs_) notice_ = rescue_.adopt();
    if (!notice_.empty()) notice_.insert(0, 1, ' ');
    if (starts_program_) type(load_line(options) + '\r');
}

void TerminalSession::hear(Happening happening, std::uint64_t value) {
    state_.hear(happening, value);
    if (happening == Happening::prompts) {
        interrupts_ = 0;
        show_program_notes();
    }
}

// Keys to be typed before the person's own.
void TerminalSession::type(std::string_view bytes) {
    TerminalKeys decoder;
    decoder.feed(bytes);
    while (const auto key = decoder.next())
        held_.add(key->key);
}

int TerminalSession::run() {
    Keyboard& keyboard = machine_.firmware().keyboard();
    for (bool has_waited = false; !leaves_;) {
        switch (machine_.run()) {
            case Stop::polls_key:
                glance();
                break;
            case Stop::waits_for_key:
                // The first wait of all is the line editor's.
                if (!has_waited) machine_.learn_waiting_place();
                has_waited = true;
                glance();
                start_program();
                if (keyboard.empty()) held_.press_line(keyboard);
                if (keyboard.empty()) wait_for_input();
                break;
            case Stop::timed_out:  // never, without a limit
            case Stop::returned:
                return status();
            case Stop::fault:
                rescue_program();
                std::cerr << machine_.fault_report() << '\n';
                return EXIT_FAILURE;
        }
    }
    return status();
}

// RUN follows the LOAD of the program that the session was asked for, if that has succeeded.
void TerminalSession::start_program() {
    if (!starts_program_ || !held_.empty() || !state_.at_prompt() || !machine_.firmware().keyboard().empty())
        return;
    starts_program_ = false;
    load_failed_ = state_.line_failed();
    if (!load_failed_) type("RUN\r");
}

// A look at the terminal without waiting, and a picture when one is due.
void TerminalSession::glance() {
    take_keys(read_terminal(0));
    flush_escape();
    if (take_interrupt()) interrupt();
    if (Clock::now() - last_rescue_ >= rescue_time) rescue_program();
    if (Clock::now() - last_picture_ >= frame_time) draw();
}

// The image waits for a key: so does the terminal, after it has shown how things are.
void TerminalSession::wait_for_input() {
    Keyboard& keyboard = machine_.firmware().keyboard();
    rescue_program();
    draw();
    while (keyboard.empty() && held_.empty() && !leaves_) {
        take_keys(read_terminal(keys_.waits_for_escape() ? escape_delay_ms : idle_wait_ms));
        flush_escape();
        if (take_interrupt()) {
            interrupt();
            draw();
        }
        if (terminal_size_changed()) draw();
    }
}

// Ctrl-C: stops what runs, leaves at the prompt. It asks before a program is left that is in no file, and
// when it has to be pressed again because the program traps the break.
void TerminalSession::interrupt() {
    ++interrupts_;
    held_.clear();
    if (state_.at_prompt()) {
        leaves_ = interrupts_ > 1 || !state_.has_unsaved_program();
        notice_ = leave_question;
    } else {
        leaves_ = interrupts_ > 2;
        machine_.firmware().keyboard().clear();
        machine_.firmware().keyboard().press({uefi::scan_escape, 0});
        if (interrupts_ == 2) notice_ = stop_question;
    }
    if (leaves_) rescue_program();
}

// Brings the copy of a program that is in no file up to date.
void TerminalSession::rescue_program() {
    last_rescue_ = Clock::now();
    if (!keeps_programs_) return;
    if (!state_.has_unsaved_program()) {
        rescue_.drop();
        rescued_version_ = 0;
        return;
    }
    if (rescued_version_ == state_.version()) return;
    const std::string text = state_.program_text();
    if (!text.empty() && rescue_.keep(text)) rescued_version_ = state_.version();
}

// Tells which line of a program's file LOAD has stopped at, and what it could not read as it stands there.
void TerminalSession::show_program_notes() {
    if (machine_.firmware().volumes().empty()) return;
    Volume& volume = *machine_.firmware().volumes().front();
    const Volume::ProgramNotes notes = volume.program_notes();
    volume.forget_program_notes();
    if (!notes.loss.empty()) notice_ = ' ' + notes.loss;
    if (state_.line_failed() && !notes.fault.empty()) notice_ = ' ' + notes.fault;
}

void TerminalSession::take_keys(std::string_view bytes) {
    if (bytes.empty()) return;
    last_input_ = Clock::now();
    keys_.feed(bytes);
    while (const auto key = keys_.next())
        accept(*key);
}

// Takes an ESC byte that nothing has followed for a while as the Escape key.
void TerminalSession::flush_escape() {
    if (!keys_.waits_for_escape() || Clock::now() - last_input_ < std::chrono::milliseconds(escape_delay_ms))
        return;
    keys_.flush();
    while (const auto key = keys_.next())
        accept(*key);
}

void TerminalSession::accept(const TerminalKey& key) {
    interrupts_ = 0;
    notice_.clear();
    const bool is_escape = key.key.ScanCode == uefi::scan_escape;
    if (is_escape) held_.clear();  // whoever breaks off a program does not want the rest of the paste either
    if (!is_escape && (key.pasted || !held_.empty()))
        held_.add(key.key);
    else
        machine_.firmware().keyboard().press(key.key);
}

void TerminalSession::draw() {
    const Display& display = *machine_.firmware().display();
    const Pixels pixels = {display.pixels().data(), display.width(), display.height(), display.pitch()};
    const TerminalSize size = terminal_size();
    const std::string_view keys =
        size.columns > keys_of_a_wide_line.size() ? keys_of_a_wide_line : keys_of_a_line;
    picture_.set_line(notice_.empty() ? std::string(shows_keys_ ? keys : "") : notice_);
    write_terminal(picture_.update(pixels, size));
    last_picture_ = Clock::now();
}

}  // namespace

int run_terminal_session(void* argument) {
    const auto& options = *static_cast<const TerminalOptions*>(argument);
    watch_terminal_size();
    const TerminalSize size = terminal_size();
    const std::uint32_t columns = std::clamp(size.columns, least_columns, most_columns);
    const std::uint32_t lines = options.shows_keys && size.rows > 1 ? 1 : 0;
    const std::uint32_t rows = std::clamp(size.rows - lines, least_rows, most_rows);
    Machine machine(terminal_machine(options, columns, rows), ImageSource::file(options.image));
    lend_program(machine, options);
    return TerminalSession(machine, options).run();
}

}  // namespace korvane::host
