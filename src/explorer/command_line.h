#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace korvane {

inline constexpr std::string_view explorer_prompt = "K> ";
inline constexpr std::size_t command_line_length = 192;  // characters, the prompt not counted
inline constexpr std::size_t command_word_length = 47;   // characters
inline constexpr std::size_t argument_word_length = 63;  // characters
inline constexpr std::size_t byte_word_length = 31;      // characters of a word that stands for one byte

// A word of a command line: letters folded to upper case, cut at the length its reader asked for.
class Word {
  public:
    // Keeps the first `limit` (at most 63) characters.
    Word(std::string_view text, std::size_t limit);

    bool empty() const { return length_ == 0; }
    std::string_view view() const { return {text_.data(), length_}; }

  private:
    std::array<char, argument_word_length> text_;
    std::size_t length_ = 0;
};

// Reads words off the front of a text. Words are separated by blanks and tabs.
class WordReader {
  public:
    explicit WordReader(std::string_view text) : text_(text) {}

    // The next word, cut at `limit` characters (what is cut off is skipped too); empty when none is left.
    Word next(std::size_t limit = argument_word_length);

    // What is left, from its first character that is no blank; case and inner blanks as typed.
    std::string_view rest();

  private:
    std::string_view text_;
};

// A command line taken apart: the command word, empty on an empty line, and a reader of what follows.
struct CommandLine {
    Word command;
    WordReader arguments;
};

// Takes a line apart. The command `>` needs no blank after it.
CommandLine split_command_line(std::string_view line);

// The command within an edited screen line: without the prompt when the line begins with it, cut at 192
// characters. The editor drops trailing blanks, so an untouched prompt arrives without its own.
std::string_view without_prompt(std::string_view line);

// A file path given as the rest of a line: trailing blanks and one pair of enclosing double quotes dropped.
std::string_view path_argument(std::string_view rest);

}  // namespace korvane
