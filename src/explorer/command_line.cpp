#include "explorer/command_line.h"

#include <algorithm>

#include "platform/characters.h"

namespace korvane {
namespace {

constexpr std::string_view blanks = " \t";

std::string_view skip_blanks(std::string_view text) {
    const std::size_t start = text.find_first_not_of(blanks);
    return start == std::string_view::npos ? std::string_view{} : text.substr(start);
}

}  // namespace

Word::Word(std::string_view text, std::size_t limit) {
    length_ = std::min({text.size(), limit, text_.size()});
    for (std::size_t i = 0; i < length_; ++i)
        text_[i] = fold_to_upper(text[i]);
}

Word WordReader::next(std::size_t limit) {
    text_ = skip_blanks(text_);
    const std::size_t length = std::min(text_.find_first_of(blanks), text_.size());
    const Word word(text_.substr(0, length), limit);
    text_.remove_prefix(length);
    return word;
}

std::string_view WordReader::rest() {
    text_ = skip_blanks(text_);
    return text_;
}

CommandLine split_command_line(std::string_view line) {
    line = skip_blanks(line);
    if (line.starts_with('>')) return {Word(">", command_word_length), WordReader(line.substr(1))};
    WordReader reader(line);
    const Word command = reader.next(command_word_length);
    return {command, reader};
}

std::string_view without_prompt(std::string_view line) {
    if (line.starts_with(explorer_prompt))
        line.remove_prefix(explorer_prompt.size());
    else if (line == explorer_prompt.substr(0, explorer_prompt.size() - 1))
        return {};
    return line.substr(0, command_line_length);
}

std::string_view path_argument(std::string_view rest) {
    const std::size_t last = rest.find_last_not_of(blanks);
    rest = last == std::string_view::npos ? std::string_view{} : rest.substr(0, last + 1);
    if (rest.size() >= 2 && rest.front() == '"' && rest.back() == '"') rest = rest.substr(1, rest.size() - 2);
    return rest;
}

}  // namespace korvane
