// What a program shows on its screen, as a stream of text.
#pragma once

#include <cstdint>
#include <string>

#include "platform/listener.h"
#include "standard_output.h"

namespace korvane::host {

// Passes the text that statements print on to standard output, in UTF-8 and without the screen's line
// breaks: only the ends of lines that the program prints end lines. A cursor that is moved to another row
// ends the line that is begun, and so does a change between the console and a text window; one that is moved
// to the right in its row, and one that starts a row further right, put blanks in front of what follows.
// Messages are gathered apart.
class ScriptOutput {
  public:
    explicit ScriptOutput(StandardOutput& out) : out_(out) {}

    void hear(Happening happening, std::uint64_t value);

    // The messages that have been told of end with a whole line.
    bool has_message_line() const { return messages_.ends_with('\n'); }

    // The messages since the last call, their lines ended by line feeds.
    std::string take_messages();

  private:
    void put(std::uint8_t code, std::uint8_t window);
    void move(std::uint64_t place);
    void end_line();

    StandardOutput& out_;
    std::string messages_;
    std::uint64_t column_ = 0;  // of the line of output
    std::uint8_t window_ = 0;   // that the line of output is for; 0: the console
};

}  // namespace korvane::host
