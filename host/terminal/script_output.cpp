#include "script_output.h"

#include <utility>

#include "code_page.h"

namespace korvane::host {
namespace {

constexpr std::uint8_t carriage_return = 13;

void append_character(std::string& text, std::uint8_t code) {
    if (code == carriage_return)
        text += '\n';
    else
        append_utf8(text, code_to_unicode(code));
}

}  // namespace

void ScriptOutput::hear(Happening happening, std::uint64_t value) {
    const auto code = static_cast<std::uint8_t>(value);
    if (happening == Happening::text) put(code, static_cast<std::uint8_t>(value >> 8));
    if (happening == Happening::message) append_character(messages_, code);
    if (happening == Happening::moves) move(value);
}

void ScriptOutput::put(std::uint8_t code, std::uint8_t window) {
    if (window != window_) end_line();
    window_ = window;
    std::string text;
    append_character(text, code);
    out_.put(text);
    column_ = code == carriage_return ? 0 : column_ + 1;
    out_.flush_if_due();
}

void ScriptOutput::move(std::uint64_t place) {
    const std::uint64_t column = place % another_row;
    if (place >= another_row || column < column_) end_line();
    if (column > column_) out_.put(std::string(column - column_, ' '));
    column_ = column;
}

void ScriptOutput::end_line() {
    if (column_ != 0) out_.put("\n");
    column_ = 0;
}

std::string ScriptOutput::take_messages() {
    return std::exchange(messages_, {});
}

}  // namespace korvane::host
