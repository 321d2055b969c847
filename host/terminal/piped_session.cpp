#include <cstdlib>
#include <iostream>
#include <string>
#include <vector>

#include "held_keys.h"
#include "machine.h"
#include "program_state.h"
#include "screen_cells.h"
#include "standard_output.h"
#include "terminal_keys.h"
#include "terminal_options.h"

namespace korvane::host {
namespace {

// A classic width, and as many rows as the console can have, so that most of what is printed stays together
// on the screen at the end.
constexpr std::uint32_t columns = 80;
constexpr std::uint32_t rows = 128;

// Input without line ends, which may be endless, is typed in pieces of so many bytes.
constexpr std::size_t longest_piece = 4096;

// Standard input's lines typed into a machine, and its screen's rows on standard output.
class PipedSession {
  public:
    PipedSession(Machine& machine, const TerminalOptions& options);

    // The exit status.
    int run();

  private:
    void hear(Happening happening, std::uint64_t value);
    bool press_keys();
    bool hold_next_piece();
    void hold(std::string_view bytes);
    void print_screen();
    Pixels pixels() const;

    Machine& machine_;
    ProgramState state_;
    StandardOutput out_;
    TerminalKeys decoder_;  // of what is typed
    HeldKeys held_;
    bool line_begun_ = false;   // without its end, as yet
    bool starts_program_;       // LOAD has been typed, and RUN is to follow
    bool load_failed_ = false;  // of the program that was to be started
};

PipedSession::PipedSession(Machine& machine, const TerminalOptions& options)
    : machine_(machine), starts_program_(!options.program.empty()) {
    machine.firmware().listen([this](Happening happening, std::uint64_t value) { hear(happening, value); });
    machine.stop_at_polls(output_glance_time_us);
    if (starts_program_) hold(load_line(options) + '\r');
}

void PipedSession::hear(Happening happening, std::uint64_t value) {
    state_.hear(happening, value);
    if (happening != Happening::scrolls) return;
    out_.put(read_row(pixels(), static_cast<std::uint32_t>(value)) + '\n');
    out_.flush_if_due();
}

int PipedSession::run() {
    for (bool has_waited = false;;) {
        const Stop stop = machine_.run();
        out_.flush_if_due();
        if (stop == Stop::polls_key) continue;
        // The first wait of all is the line editor's.
        if (stop == Stop::waits_for_key && !has_waited) machine_.learn_waiting_place();
        has_waited = true;
        if (stop == Stop::waits_for_key && press_keys()) continue;
        print_screen();
        out_.flush();
        if (stop == Stop::fault) std::cerr << machine_.fault_report() << '\n';
        return stop == Stop::fault || load_failed_ ? EXIT_FAILURE : EXIT_SUCCESS;
    }
}

// Presses the next line's keys; false when there is none.
bool PipedSession::press_keys() {
    if (held_.empty() && starts_program_ && state_.at_prompt()) {
        starts_program_ = false;
        load_failed_ = state_.line_failed();
        if (!load_failed_) hold("RUN\r");
    }
    while (held_.empty())
        if (!hold_next_piece()) return false;
    held_.press_line(machine_.firmware().keyboard());
    return true;
}

// Holds the next line, or a piece of it where a line has no end; false when there is nothing left. The last
// line needs no line end.
bool PipedSession::hold_next_piece() {
    std::string piece;
    char byte = 0;
    // A carriage return is not cut from the line feed behind it.
    while (piece.size() < longest_piece + (byte == '\r' ? 1 : 0) && byte != '\n' && std::cin.get(byte))
        piece += byte;
    const bool ends = byte == '\n' && piece.ends_with('\n');
    if (ends) piece.pop_back();
    if (ends && piece.ends_with('\r')) piece.pop_back();
    if (piece.empty() && !ends && !line_begun_) return false;
    line_begun_ = !ends && !std::cin.eof();
    hold(piece);
    if (!line_begun_) {
        decoder_.flush();
        hold("\r");
    }
    return true;
}

void PipedSession::hold(std::string_view bytes) {
    decoder_.feed(bytes);
    while (const auto key = decoder_.next())
        held_.add(key->key);
}

// The rows down to the last one that is not blank.
void PipedSession::print_screen() {
    std::vector<std::string> text = read_rows(pixels());
    while (!text.empty() && text.back().empty())
        text.pop_back();
    for (const std::string& row : text)
        out_.put(row + '\n');
}

Pixels PipedSession::pixels() const {
    const Display& display = *machine_.firmware().display();
    return {display.pixels().data(), display.width(), display.height(), display.pitch()};
}

}  // namespace

int run_piped_session(const TerminalOptions& options) {
    Machine machine(terminal_machine(options, columns, rows), ImageSource::file(options.image));
    lend_program(machine, options);
    return PipedSession(machine, options).run();
}

}  // namespace korvane::host
