// The direct mode: an endless loop of prompt, line editor and line handler.
#pragma once

#include <cstdint>

#include "program/token.h"
#include "screen/line_editor.h"

namespace korvane {

struct CommandLoop {
    // The line being handled, zero-terminated; direct tokens point into it.
    std::uint8_t line[line_editor_capacity];
    bool skip_prompt;  // suppresses the next "Ready." once; EDIT sets it
};
extern CommandLoop command_loop;

// Reads and handles lines for ever, beginning with "Ready.".
[[noreturn]] void run_command_loop();

// Handles one line: stores or deletes a program line when it begins with a number, else executes it. All
// outcomes are printed or left in the execution and error state. Direct tokens point into `line`, which must
// stay as it is.
void handle_line(const std::uint8_t* line);

// The same for a text of the program's own, as start-up hands it over.
void handle_text(const char* line);

}  // namespace korvane
