#include "program/line_references.h"

#include <optional>

#include "numbers/format.h"
#include "platform/characters.h"
#include "program/execution.h"
#include "program/literals.h"
#include "program/program_store.h"
#include "program/tokenizer.h"

namespace korvane {
namespace {

// What may follow a word as a reference.
enum class Follow { nothing, one_number, number_list, number_but_zero, comparison };

struct ReferenceWord {
    std::string_view word;
    Follow follow;
};

constexpr ReferenceWord reference_words[] = {
    {"GOTO", Follow::number_list}, {"GOSUB", Follow::number_list},  {"THEN", Follow::one_number},
    {"ELSE", Follow::one_number},  {"RESTORE", Follow::one_number}, {"RESUME", Follow::number_but_zero},
    {"ERL", Follow::comparison},
};

bool same_word(std::string_view word, std::string_view upper) {
    if (word.size() != upper.size()) return false;
    for (std::size_t i = 0; i < word.size(); ++i)
        if (fold_to_upper(word[i]) != upper[i]) return false;
    return true;
}

Follow what_follows(std::string_view word) {
    for (const ReferenceWord& entry : reference_words)
        if (same_word(word, entry.word)) return entry.follow;
    return Follow::nothing;
}

// Copies a text from front to back into a bounded buffer.
class Rewriter {
  public:
    Rewriter(std::string_view text, NewLineNumber new_number, const void* context,
             std::span<std::uint8_t> buffer)
        : rest_(text), new_number_(new_number), context_(context), buffer_(buffer) {}

    Rewriting run() {
        while (!rest_.empty() && outcome_ == Rewriting::done) {
            const char character = rest_.front();
            if (is_blank(character)) {
                copy(1);
            } else if (character == '\'') {
                copy(rest_.size());
            } else if (is_letter(character)) {
                copy_word();
            } else {
                previous_word_ = {};
                copy(token_length(rest_bytes()));
            }
        }
        return outcome_;
    }

    std::uint32_t length() const { return length_; }

  private:
    void put(char character) {
        if (outcome_ != Rewriting::done) return;
        if (length_ == max_line_text)
            outcome_ = Rewriting::text_too_long;
        else if (length_ == buffer_.size())
            outcome_ = Rewriting::out_of_space;
        else
            buffer_[length_++] = static_cast<std::uint8_t>(character);
    }

    void put(std::string_view text) {
        for (const char character : text)
            put(character);
    }

    void copy(std::size_t count) {
        put(rest_.substr(0, count));
        rest_.remove_prefix(count);
    }

    const std::uint8_t* rest_bytes() const { return reinterpret_cast<const std::uint8_t*>(rest_.data()); }

    void copy_blanks() {
        while (!rest_.empty() && is_blank(rest_.front()))
            copy(1);
    }

    // A keyword, or a name with its suffix.
    void copy_word() {
        const std::string_view word = rest_.substr(0, token_length(rest_bytes()));
        copy(word.size());
        if (same_word(word, "REM")) {
            copy(rest_.size());
            return;
        }
        copy_what_follows(word);
        previous_word_ = word;
    }

    void copy_what_follows(std::string_view word) {
        switch (what_follows(word)) {
            case Follow::nothing:
                break;
            case Follow::one_number:
                copy_blanks();
                copy_reference(false);
                break;
            case Follow::number_list:
                copy_reference_list(same_word(previous_word_, "ERROR") || same_word(previous_word_, "BREAK"));
                break;
            case Follow::number_but_zero:
                copy_blanks();
                copy_reference(true);
                break;
            case Follow::comparison:
                copy_comparison();
                break;
        }
    }

    void copy_reference_list(bool keep_zero) {
        for (;;) {
            copy_blanks();
            if (!copy_reference(keep_zero)) return;
            copy_blanks();
            if (rest_.empty() || rest_.front() != ',') return;
            copy(1);
        }
    }

    // ERL compared with a line number: the test of an error line follows the renumbering.
    void copy_comparison() {
        copy_blanks();
        if (rest_.empty() || (rest_[0] != '<' && rest_[0] != '=' && rest_[0] != '>')) return;
        copy(1);
        if (!rest_.empty() && (rest_[0] == '=' || rest_[0] == '>')) copy(1);
        copy_blanks();
        copy_reference(false);
    }

    // Replaces the number that comes next; false when none does. RESUME 0 does not name line 0 but means "the
    // same statement again", and a trap set to 0 is switched off: there a zero is kept.
    bool copy_reference(bool keep_zero) {
        if (rest_.empty() || !begins_literal(rest_bytes())) return false;
        const std::string_view literal = rest_.substr(0, literal_length(rest_bytes()));
        std::size_t digits = 0;
        std::uint64_t number = 0;
        for (; digits < literal.size() && is_digit(literal[digits]); ++digits) {
            // Beyond the largest line number the value no longer matters, only that it stays there.
            if (number <= max_line_number)
                number = number * 10 + static_cast<std::uint64_t>(literal[digits] - '0');
        }
        // Other literals (10.5, 1E3, &H10) are no line numbers; a suffix may follow one.
        const char behind = digits < literal.size() ? literal[digits] : '\0';
        const bool whole = digits != 0 && behind != '.' && !is_letter(behind);
        if (!whole || number > max_line_number || (keep_zero && number == 0)) {
            copy(literal.size());
            return true;
        }
        const auto line = static_cast<std::uint32_t>(number);
        const std::uint32_t renumbered = new_number_(line, context_);
        if (renumbered == line) {
            copy(digits);
        } else {
            put(format_unsigned(renumbered).view());
            rest_.remove_prefix(digits);
        }
        copy(literal.size() - digits);
        return true;
    }

    std::string_view rest_;           // text not yet copied
    std::string_view previous_word_;  // the word before, when only blanks have followed it
    NewLineNumber new_number_;
    const void* context_;
    std::span<std::uint8_t> buffer_;
    std::uint32_t length_ = 0;
    Rewriting outcome_ = Rewriting::done;
};

}  // namespace

Rewriting rewrite_line_references(std::string_view text, NewLineNumber new_number, const void* context,
                                  std::span<std::uint8_t> buffer, std::uint32_t& length) {
    Rewriter rewriter(text, new_number, context, buffer);
    const Rewriting outcome = rewriter.run();
    length = rewriter.length();
    return outcome;
}

}  // namespace korvane
