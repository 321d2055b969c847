#include "core/word_scan.h"

#include "core/characters.h"
#include "core/tokenizer.h"

namespace korvane {

bool WordScan::next_word() {
    while (position_ < text_.size() && text_[position_] != '\'') {
        word_start_ = position_;
        const bool is_word = is_letter(text_[position_]);
        position_ += token_length_at(position_);
        if (!is_word) continue;
        if (!word_is("REM")) return true;
        break;
    }
    position_ = static_cast<std::uint32_t>(text_.size());
    return false;
}

std::uint32_t WordScan::token_length_at(std::uint32_t position) const {
    if (is_blank(text_[position])) return 1;
    return static_cast<std::uint32_t>(
        token_length(reinterpret_cast<const std::uint8_t*>(text_.data()) + position));
}

bool WordScan::word_is(std::string_view word) const {
    if (position_ - word_start_ != word.size()) return false;
    for (std::size_t i = 0; i < word.size(); ++i) {
        if (fold_to_upper(text_[word_start_ + i]) != word[i]) return false;
    }
    return true;
}

}  // namespace korvane
