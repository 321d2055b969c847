// Walks the words of a line's raw text as the tokenizer cuts it: what lies in quotes is passed over, a number
// joined to a word is not part of it, a remark ends the line.
#pragma once

#include <cstdint>
#include <string_view>

namespace korvane {

class WordScan {
  public:
    // `text`: a zero follows it.
    WordScan(std::string_view text, std::uint32_t start)
        : text_(text), position_(start), word_start_(start) {}

    // Moves behind the next word (a keyword or a name, its suffix not counted unless it is "&"); false at the
    // end of the line.
    bool next_word();

    // Compares the word, without regard to case, with an upper-case one.
    bool word_is(std::string_view word) const;

    // Offset of the first character behind the word.
    std::uint32_t position() const { return position_; }

  private:
    void pass_token();

    std::string_view text_;
    std::uint32_t position_;
    std::uint32_t word_start_;
};

}  // namespace korvane
