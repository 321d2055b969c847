#include "core/word_scan.h"

#include "core/characters.h"

namespace korvane {

bool WordScan::next_word() {
    bool quoted = false;
    for (; position_ < text_.size(); ++position_) {
        const char c = text_[position_];
        if (c == '"') quoted = !quoted;
        if (quoted) continue;
        if (c == '\'') break;
        if (!is_letter(c)) continue;
        word_start_ = position_;
        while (position_ < text_.size() && (is_letter(text_[position_]) || is_digit(text_[position_])))
            ++position_;
        if (!word_is("REM")) return true;
        break;
    }
    position_ = static_cast<std::uint32_t>(text_.size());
    return false;
}

bool WordScan::word_is(std::string_view word) const {
    if (position_ - word_start_ != word.size()) return false;
    for (std::size_t i = 0; i < word.size(); ++i) {
        if (fold_to_upper(text_[word_start_ + i]) != word[i]) return false;
    }
    return true;
}

}  // namespace korvane
