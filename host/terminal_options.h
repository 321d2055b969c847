// What the terminal front end was asked for.
#pragma once

#include <filesystem>
#include <string>

#include "config.h"

namespace korvane::host {

/// Smallest and largest screens that the image's text console knows, in cells.
constexpr std::uint32_t least_columns = 40;
constexpr std::uint32_t least_rows = 15;
constexpr std::uint32_t most_columns = 256;
constexpr std::uint32_t most_rows = 128;

struct TerminalOptions {
    std::filesystem::path image;          // the image file to run
    std::filesystem::path volume;         // the folder that is its volume
    std::uint64_t present_mebibytes = 0;  // of its memory that the host provides before the start
    std::string program;                  // name of a program on the volume to load and start; empty for none
    std::uint32_t columns = 0;            // of the first screen, in text cells; 0: the front end chooses
    std::uint32_t rows = 0;
};

/// A machine with memory to spare that starts in a screen mode of the size asked for, else of the given one,
/// in text cells, and has the usual modes beside it.
Config terminal_machine(const TerminalOptions& options, std::uint32_t columns, std::uint32_t rows);

/// The keys that load and start the program, as bytes of a terminal; empty without a program.
std::string start_keys(const TerminalOptions& options);

/// Runs the image on a terminal in full-screen mode; `argument` points to TerminalOptions. Returns when the
/// image ends.
int run_terminal_session(void* argument);

/// Runs the image with the lines of standard input typed in, and prints the text of the screen that they lead
/// to. Lines are typed whenever the image waits for a key; when there are no more, the session ends.
int run_piped_session(const TerminalOptions& options);

}  // namespace korvane::host
