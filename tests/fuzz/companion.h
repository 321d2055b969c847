// A second interpreter, without specialised statements, in a process of its own: each input is played by
// both, and both must come to the same state.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace korvane::fuzz {

class Companion {
  public:
    // Starts the program, which serve_companion() makes of it, for one target.
    Companion(const std::string& program, std::string_view target);
    Companion(const Companion&) = delete;

    // What the other interpreter has come to (describe_state()); nothing when the input cannot be compared.
    // Complains when the other one breaks down.
    std::optional<std::string> play(std::string_view input);

  private:
    int to_ = -1;
    int from_ = -1;
};

// Plays what comes from standard input, and answers on standard output, until there is no more.
int serve_companion();

// Whether a text asks for nothing that is different on every interpreter.
bool is_alike_everywhere(std::string_view text);

// Whether the input that has just been played does the same on every interpreter: nobody asked for the time,
// and nothing depended on when the keyboard was looked at.
bool is_comparable(std::string_view input);

// Complains when the two have come to different states.
void compare(std::string_view own, std::string_view other);

}  // namespace korvane::fuzz
