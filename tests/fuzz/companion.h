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
    std::optional<std::string> play(std::string_view input) {
        begin(input);
        return end();
    }

    // The same in two steps, for whoever has something else to do meanwhile: end() gives what the first input
    // has come to whose end has not been asked for. At most most_begun() may have been begun.
    std::size_t most_begun() const { return most_begun_; }
    void begin(std::string_view input);
    std::optional<std::string> end();

  private:
    int to_ = -1;
    int from_ = -1;
    std::size_t most_begun_ = 1;
};

// Plays what comes from standard input, and answers on standard output, until there is no more.
int serve_companion();

// Whether a text asks for nothing that is different on every interpreter.
bool is_alike_everywhere(std::string_view text);

// Whether the input that has just been played does the same on every interpreter: nobody asked for the time,
// and nothing depended on when the keyboard was looked at.
bool is_comparable(std::string_view input);

// Complains when the two have come to different states, the own one perhaps by machine code.
void compare(std::string_view own, std::string_view other, bool has_code = false);

}  // namespace korvane::fuzz
