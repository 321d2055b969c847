// What a terminal can show, and how cells look on it.
#pragma once

#include <string>

#include "screen_cells.h"

namespace korvane::host {

enum class Colours { none, sixteen, many, all };  // many: the 256 of xterm; all: 24 bits

struct TerminalLook {
    Colours colours = Colours::all;
    bool has_unicode = true;
};

// What the environment says about the terminal: TERM, COLORTERM and NO_COLOR about colours; LC_ALL, LC_CTYPE
// and LANG about characters. A locale that is not set at all is no sign against UTF-8.
TerminalLook look_of_environment();

// False when TERM says that the terminal understands no control sequences.
bool has_control_sequences();

// The cell as the terminal can show it: nearest colours, ASCII. Without colours, what is bright is drawn and
// what is dark is left out, and text on bright paper is reversed.
Cell shown_cell(Cell cell, const TerminalLook& look);

// Appends the sequence that sets a colour of a cell that shown_cell() has made.
void append_colour(std::string& bytes, bool is_paper, std::uint32_t colour, const TerminalLook& look);

}  // namespace korvane::host
