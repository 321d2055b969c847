#include "prompt/command_loop.h"

#include <string_view>
#include "numbers/format.h"
#include "platform/characters.h"
#include "platform/listener.h"
#include "program/errors.h"
#include "prompt/auto_numbering.h"
#include "screen/console.h"

namespace korvane {

CommandLoop command_loop;

namespace {

// False when the user gave the line up with Escape; the cursor then stands on a fresh line.
bool read_line() {
    tell(Happening::prompts, error_pending());
    const bool read = edit_screen_line(command_loop.line) != edit_aborted;
    tell(Happening::handles);
    if (!read) con_put_char(carriage_return);
    return read;
}

void print_ready() {
    // Listeners are told of the prompt itself.
    for (const char character : std::string_view("Ready.\r"))
        con_echo_char(static_cast<std::uint8_t>(character));
}

bool is_program_line() {
    const std::uint8_t* at = command_loop.line;
    while (*at == ' ')
        ++at;
    return is_digit(*at);
}

// A prompt follows unless a program line was stored or deleted
// or the line left the user editing on the screen.
bool prompt_due() {
    if (command_loop.skip_prompt) {
        command_loop.skip_prompt = false;
        return false;
    }
    return !is_program_line();
}

// Prompts with numbers until AUTO ends. The editor returns the whole screen line, so the printed number is
// part of the text. True when a prompt is due.
bool read_numbered_lines() {
    while (auto_numbering.active) {
        if (!next_auto_number()) return true;
        con_put_text(format_unsigned(auto_numbering.number).view());
        con_put_char(' ');
        if (!read_line()) {
            auto_numbering.active = false;
            return true;
        }
        handle_line(command_loop.line);
    }
    return prompt_due();
}

}  // namespace

void run_command_loop() {
    bool prompt = true;
    for (;;) {
        if (prompt) print_ready();
        prompt = true;
        if (!read_line()) continue;
        handle_line(command_loop.line);
        prompt = auto_numbering.active ? read_numbered_lines() : prompt_due();
    }
}

}  // namespace korvane
