#include "program/word_scan.h"

#include "platform/characters.h"
#include "program/tokenizer.h"

namespace korvane {
bool WordScan::next_word() {
    while (position_ < text_.size() && text_[position_] != '\'') {
        word_start_ = position_;
        pass_token();
        if (!is_letter(text_[word_start_])) continue;
        if (!word_is("REM")) return true;
        break;
    }
    position_ = static_cast<std::uint32_t>(text_.size());
    return false;
}

// Most tokens end where their letters and digits end. It takes the tokenizer to tell where the others do:
// numbers that go on, strings, and names with the one suffix
// that could as well begin a token with letters in it.
void WordScan::pass_token() {
    const char first = text_[position_++];
    const bool is_word = is_letter(first);
    if (is_word || is_digit(first)) {
        while (position_ < text_.size() &&
               (is_digit(text_[position_]) || (is_word && is_letter(text_[position_]))))
            ++position_;
        if (position_ == text_.size()) return;
        const char next = text_[position_];
        if (next != '&' && (is_word || (next != '.' && !is_letter(next)))) return;
    } else if (first != '"' && first != '&' && first != '.') {
        return;
    }
    const auto* token = reinterpret_cast<const std::uint8_t*>(text_.data()) + word_start_;
    position_ = word_start_ + static_cast<std::uint32_t>(token_length(token));
}

bool WordScan::word_is(std::string_view word) const {
    if (position_ - word_start_ != word.size()) return false;
    for (std::size_t i = 0; i < word.size(); ++i)
        if (fold_to_upper(text_[word_start_ + i]) != word[i]) return false;
    return true;
}

}  // namespace korvane
