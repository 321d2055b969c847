// The terminal as a device: raw mode, window size, bytes in and out.
#pragma once

#include <string>
#include <string_view>

#include <termios.h>

#include "terminal_picture.h"

namespace korvane::host {

// Switches the controlling terminal (standard input and output) to what a full-screen program needs and
// back. Ctrl-C and Ctrl-\ stay signals, so that they work whatever the program does.
class TerminalMode {
  public:
    // Keeps the present settings; nothing is changed yet.
    TerminalMode();

    // Raw keys, alternate screen, no cursor, bracketed paste, the program's name as the window's title.
    void enter() const;

    // Everything as the constructor found it. May be called at any time, and more than once.
    void leave() const;

  private:
    termios original_{};
};

// The window's size, or 80x24 when the terminal does not tell.
TerminalSize terminal_size();

// Starts noting changes of the window's size.
void watch_terminal_size();

// True once after each change.
bool terminal_size_changed();

// What the terminal sent, waiting at most `milliseconds` for it; empty when nothing came. Ends early on a
// change of the window's size. Ends the process when the terminal is gone.
std::string read_terminal(int milliseconds);

// Sends all bytes.
void write_terminal(std::string_view bytes);

}  // namespace korvane::host
