#include <cstdlib>
#include <iostream>
#include <string>
#include <vector>

#include "held_keys.h"
#include "machine.h"
#include "screen_cells.h"
#include "terminal_keys.h"
#include "terminal_options.h"

namespace korvane::host {
namespace {

/// A classic width, and as many rows as the console can have, so that most of what is printed stays on the
/// screen.
constexpr std::uint32_t columns = 80;
constexpr std::uint32_t rows = 128;

void hold(HeldKeys& held, std::string_view bytes) {
    TerminalKeys decoder;
    decoder.feed(bytes);
    decoder.flush();
    while (const auto key = decoder.next())
        held.add(key->key);
}

/// Presses the next line's keys; false when there is none.
bool press_next_line(HeldKeys& held, Keyboard& keyboard) {
    std::string line;
    if (held.empty() && std::getline(std::cin, line)) {
        if (line.ends_with('\r')) line.pop_back();
        hold(held, line + '\r');
    }
    if (held.empty()) return false;
    held.press_line(keyboard);
    return true;
}

/// The rows down to the last one that is not blank.
void print_screen(const Display& display) {
    std::vector<std::string> text =
        read_rows({display.pixels().data(), display.width(), display.height(), display.pitch()});
    while (!text.empty() && text.back().empty())
        text.pop_back();
    for (const std::string& row : text)
        std::cout << row << '\n';
    std::cout.flush();
}

}  // namespace

int run_piped_session(const TerminalOptions& options) {
    Machine machine(terminal_machine(options, columns, rows), ImageSource::file(options.image));
    Keyboard& keyboard = machine.firmware().keyboard();
    HeldKeys held;
    hold(held, start_keys(options));
    for (bool has_waited = false;; has_waited = true) {
        const Stop stop = machine.run();
        // The first wait of all is the line editor's.
        if (stop == Stop::waits_for_key && !has_waited) machine.learn_waiting_place();
        if (stop == Stop::waits_for_key && press_next_line(held, keyboard)) continue;
        print_screen(*machine.firmware().display());
        if (stop != Stop::fault) return EXIT_SUCCESS;
        std::cerr << machine.fault_report() << '\n';
        return EXIT_FAILURE;
    }
}

}  // namespace korvane::host
