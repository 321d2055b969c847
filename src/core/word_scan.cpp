#include "core/word_scan.h"

namespace korvane {
namespace {

constexpr char fold(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - ('a' - 'A')) : c;
}
constexpr bool is_letter(char c) {
    return fold(c) >= 'A' && fold(c) <= 'Z';
}
constexpr bool is_digit(char c) {
    return c >= '0' && c <= '9';
}

}  // namespace

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
        if (fold(text_[word_start_ + i]) != word[i]) return false;
    }
    return true;
}

}  // namespace korvane
