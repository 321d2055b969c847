#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <iostream>

#include "held_keys.h"
#include "machine.h"
#include "terminal_device.h"
#include "terminal_keys.h"
#include "terminal_options.h"
#include "terminal_picture.h"

namespace korvane::host {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::uint64_t glance_time_us = 5'000;      // between looks at the terminal while a program runs
constexpr std::chrono::milliseconds frame_time{33};  // between pictures while a program runs
constexpr int idle_wait_ms = 1000;                   // for input while the image waits for a key

/// A machine's screen and keyboard on a terminal.
class TerminalSession {
  public:
    explicit TerminalSession(Machine& machine) : machine_(machine) {}

    /// Keys to be typed before the person's own.
    void type(std::string_view bytes);

    /// Runs the machine until its image ends; the exit status.
    int run();

  private:
    void glance();
    void wait_for_input();
    void take_keys(std::string_view bytes);
    void flush_escape();
    void accept(const TerminalKey& key);
    void draw();

    Machine& machine_;
    TerminalKeys keys_;
    TerminalPicture picture_;
    HeldKeys held_;
    Clock::time_point last_picture_{};
    Clock::time_point last_input_{};
};

void TerminalSession::type(std::string_view bytes) {
    TerminalKeys decoder;
    decoder.feed(bytes);
    while (const auto key = decoder.next())
        held_.add(key->key);
}

int TerminalSession::run() {
    Keyboard& keyboard = machine_.firmware().keyboard();
    machine_.stop_at_polls(glance_time_us);
    for (bool has_waited = false;;) {
        switch (machine_.run()) {
            case Stop::polls_key:
                glance();
                break;
            case Stop::waits_for_key:
                // The first wait of all is the line editor's.
                if (!has_waited) machine_.learn_waiting_place();
                has_waited = true;
                glance();
                if (keyboard.empty()) held_.press_line(keyboard);
                if (keyboard.empty()) wait_for_input();
                break;
            case Stop::timed_out:  // never, without a limit
            case Stop::returned:
                return EXIT_SUCCESS;
            case Stop::fault:
                std::cerr << machine_.fault_report() << '\n';
                return EXIT_FAILURE;
        }
    }
}

/// A look at the terminal without waiting, and a picture when one is due.
void TerminalSession::glance() {
    take_keys(read_terminal(0));
    flush_escape();
    if (Clock::now() - last_picture_ >= frame_time) draw();
}

/// The image waits for a key: so does the terminal, after it has shown how things are.
void TerminalSession::wait_for_input() {
    Keyboard& keyboard = machine_.firmware().keyboard();
    draw();
    while (keyboard.empty() && held_.empty()) {
        take_keys(read_terminal(keys_.waits_for_escape() ? escape_delay_ms : idle_wait_ms));
        flush_escape();
        if (terminal_size_changed()) draw();
    }
}

void TerminalSession::take_keys(std::string_view bytes) {
    if (bytes.empty()) return;
    last_input_ = Clock::now();
    keys_.feed(bytes);
    while (const auto key = keys_.next())
        accept(*key);
}

/// Takes an ESC byte that nothing has followed for a while as the Escape key.
void TerminalSession::flush_escape() {
    if (!keys_.waits_for_escape() || Clock::now() - last_input_ < std::chrono::milliseconds(escape_delay_ms))
        return;
    keys_.flush();
    while (const auto key = keys_.next())
        accept(*key);
}

void TerminalSession::accept(const TerminalKey& key) {
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
    write_terminal(picture_.update(pixels, terminal_size()));
    last_picture_ = Clock::now();
}

}  // namespace

int run_terminal_session(void* argument) {
    const auto& options = *static_cast<const TerminalOptions*>(argument);
    watch_terminal_size();
    const TerminalSize size = terminal_size();
    const std::uint32_t columns = std::clamp(size.columns, least_columns, most_columns);
    const std::uint32_t rows = std::clamp(size.rows, least_rows, most_rows);
    Machine machine(terminal_machine(options, columns, rows), ImageSource::file(options.image));
    TerminalSession session(machine);
    lend_program(machine, options);
    if (!options.program.empty()) session.type(load_line(options) + "\rRUN\r");
    return session.run();
}

}  // namespace korvane::host
