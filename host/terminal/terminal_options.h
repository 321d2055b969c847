// What the terminal front end was asked for.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "config.h"
#include "machine.h"

namespace korvane::host {

// Smallest and largest screens that the image's text console knows, in cells.
constexpr std::uint32_t least_columns = 40;
constexpr std::uint32_t least_rows = 15;
constexpr std::uint32_t most_columns = 256;
constexpr std::uint32_t most_rows = 128;

struct TerminalOptions {
    std::filesystem::path image;          // the image file to run
    std::filesystem::path volume;         // the folder that is its volume
    std::uint64_t present_mebibytes = 0;  // of its memory that the host provides before the start
    std::string program;                  // what LOAD is given to load a program; empty for none
    std::filesystem::path program_file;   // the program's file
    bool lends_program = false;  // the volume does not show that file under the name that LOAD is given
    bool shows_keys = true;      // in a line above the screen
    bool keeps_programs = true;  // in a file of its own, a program that is in none when the session ends
    CodeMemory code_memory = CodeMemory::offered;
    bool script = false;                 // run the program as a script
    std::vector<std::string> arguments;  // the script's
    std::uint32_t columns = 0;           // of the first screen, in text cells; 0: the front end chooses
    std::uint32_t rows = 0;
};

// A machine with memory to spare that starts in a screen mode of the size asked for, else of the given one,
// in text cells, and has the usual modes beside it.
Config terminal_machine(const TerminalOptions& options, std::uint32_t columns, std::uint32_t rows);

// Enters a program's file: its folder becomes the volume. Names that LOAD cannot reach (characters beyond
// ASCII, links, quotation marks) or that do not say that it is a program are replaced by one that it can and
// that does.
void choose_program(TerminalOptions& options, const std::filesystem::path& file);

// Puts the program onto the machine's volume where the volume does not show it.
void lend_program(Machine& machine, const TerminalOptions& options);

// The line that loads the program.
std::string load_line(const TerminalOptions& options);

// Runs the image on a terminal in full-screen mode; `argument` points to TerminalOptions. Returns when the
// image ends.
int run_terminal_session(void* argument);

// Runs the image with the lines of standard input typed in, and prints the text of the screen that they lead
// to, rows that scroll away as they do. Lines are typed whenever the image waits for a key; when there are
// no more, the session ends.
int run_piped_session(const TerminalOptions& options);

// Runs the program with its text on standard output and standard input as its keyboard; messages go to
// standard error. Status 0 when it has ended, 1 when an error ended it.
int run_script_session(const TerminalOptions& options);

}  // namespace korvane::host
